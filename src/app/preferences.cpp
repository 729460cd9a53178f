// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferences.h"

#include "app/preferenceicons.h"
#include "core/workspace.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace
{
constexpr const char *kVersionHostKey = "versionHost";
constexpr const char *kSerialNumberKey = "serialNumber";
constexpr int kCheckerCell = 8; ///< points

/// The backdrop of transparency as the fields beside it describe it.
class CheckerPreview : public QWidget
{
public:
    CheckerPreview(const QCheckBox *onBox, const QSpinBox *darkBox, const QSpinBox *lightBox)
        : on(onBox), dark(darkBox), light(lightBox)
    {
        setFixedSize(16 * kCheckerCell, 6 * kCheckerCell);
        setAccessibleName(Preferences::tr("What transparent places look like"));
        setToolTip(accessibleName());
        const auto repaint = [this]() { update(); };
        connect(on, &QCheckBox::toggled, this, repaint);
        for (const QSpinBox *grey : {dark, light})
            connect(grey, QOverload<int>::of(&QSpinBox::valueChanged), this, repaint);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        for (int y = 0; y < height(); y += kCheckerCell)
            for (int x = 0; x < width(); x += kCheckerCell) {
                const bool isLight = on->isChecked() && ((x + y) / kCheckerCell) % 2 == 0;
                const int grey = isLight ? light->value() : dark->value();
                painter.fillRect(x, y, kCheckerCell, kCheckerCell, QColor(grey, grey, grey));
            }
    }

private:
    const QCheckBox *on;
    const QSpinBox *dark, *light;
};
} // namespace

// --- The pages ----------------------------------------------------------------------------

PreferencePage *Preferences::generalPage()
{
    auto *page = new PreferencePage(tr("General"), QString());
    page->heading(tr("Windows"));
    page->check("rememberPosition", tr("&Remember where the main window stood"),
                tr("The main window opens where it was when the program ended"));
    page->check("imgClose", tr("As&k before a changed image is closed"),
                tr("Asks when the last view of an image with unsaved changes closes"));
    page->heading(tr("Safety"));
    page->number("maxUndos", tr("&Undo levels"),
                 tr("How many steps can be undone; images that are open keep the number that they "
                    "were opened with"));
    page->note(tr("Each step keeps a copy of the image in memory."));
    page->number("recoveryMinutes", tr("Reco&very copies every"),
                 tr("How often changed images are saved in the background, so that they can be "
                    "offered again after a crash or a power cut"),
                 tr(" min"), tr("never"));
    page->heading(tr("Lists and keys"));
    page->number("recentLimit", tr("Recent &files kept"),
                 tr("How many files and folders the lists of recent ones hold"));
    connect(page->button("keys", tr("Ke&ys…"), tr("Shows and changes the keys of all commands")),
            &QPushButton::clicked, this, &Preferences::keysRequested);
    page->heading(tr("Version check"));
    page->line(kVersionHostKey, tr("&Host"),
               tr("The computer that is asked at each start whether there is a newer version"));
    page->line(kSerialNumberKey, tr("Serial &number"),
               tr("Is sent along with the question to that host"));
    page->note(tr("Without a host the program makes no connection to the network at all. With one, "
                  "it sends its version and the serial number there at each start."));
    return page;
}

PreferencePage *Preferences::displayPage()
{
    auto *page = new PreferencePage(tr("Display"), QString());
    page->heading(tr("Behind transparency"));
    const QCheckBox *on = page->check("checkerOn", tr("&Checker of two greys"),
                                      tr("Off: the dark grey alone shows through"));
    const QSpinBox *dark =
        page->number("checkerDark", tr("Dar&k grey"), tr("0 is black, 255 is white"));
    const QSpinBox *light =
        page->number("checkerLight", tr("&Light grey"), tr("0 is black, 255 is white"));
    page->other(new CheckerPreview(on, dark, light), tr("Preview"));
    page->heading(tr("Zoom and pixel grid"));
    page->number("zoomSteps", tr("&Zoom steps per doubling"),
                 tr("1: each step of the zoom doubles or halves the size"));
    page->check("gridState", tr("Show the &pixel grid"),
                tr("Lines between the pixels, as soon as they are large enough"));
    page->choice("gridColorToggle", tr("Pixel &grid colour"),
                 tr("A dark grid is seen on bright images, a light one on dark images"),
                 {tr("dark"), tr("light")});
    page->heading(tr("Rulers and notes"));
    page->check("showRulers", tr("Show &rulers"), tr("Rulers at the top and the left of images"));
    page->choice("rulerUnit", tr("R&uler unit"),
                 tr("Inches and centimetres follow from an image's dots per inch"),
                 {tr("samples"), tr("inches"), tr("centimetres")});
    page->check("showNotations", tr("Show &notes"), tr("Notes on images are drawn over them"));
    page->heading(tr("Main window"));
    page->number("toolIconSize", tr("Size &of tool icons"),
                 tr("Side of the icons on the tool buttons"), tr(" pt"));
    return page;
}

PreferencePage *Preferences::snappingPage()
{
    auto *page = new PreferencePage(tr("Snapping"), QString());
    page->heading(tr("Snap grid"));
    const QString samples = tr(" px");
    page->number("snapGridX", tr("&Horizontal spacing"), tr("From line to line, in samples"),
                 samples);
    page->number("snapGridY", tr("&Vertical spacing"), tr("From line to line, in samples"),
                 samples);
    page->number("snapOffsetX", tr("Ho&rizontal offset"),
                 tr("Where the first upright line stands, from the image's left edge"), samples);
    page->number("snapOffsetY", tr("V&ertical offset"),
                 tr("Where the first level line stands, from the image's top edge"), samples);
    page->check("snapGridShown", tr("&Show the snap grid"), tr("Draws the grid over images"));
    page->check("snapToGrid", tr("Snap to the &grid"),
                tr("What is dragged in an image keeps to the crossings of the grid"));
    page->heading(tr("Guides"));
    page->check("guidesShown", tr("Show g&uides"), tr("Draws an image's guides over it"));
    page->check("snapToGuides", tr("Snap to gui&des"),
                tr("What is dragged in an image keeps to guides that are near"));
    page->note(tr("Drag guides out of the rulers."));
    return page;
}

PreferencePage *Preferences::filesPage()
{
    auto *page = new PreferencePage(tr("Files"), QString());
    page->heading(tr("JPEG and PNG"));
    page->number("jpegImageQuality", tr("&Quality"),
                 tr("What the question on saving begins with; also the one that is used where "
                    "nothing is asked"));
    page->note(tr("JPEG: higher keeps more detail in a larger file. PNG always keeps everything: "
                  "lower makes the file smaller and saving slower; at 90 and more PNG files are "
                  "not compressed at all."));
    page->check("saveEXIF", tr("Save camera data in &JPEG files"),
                tr("The EXIF data that came with an image is written with it"));
    page->check("png16", tr("PNG files with &16 bits a channel"),
                tr("PNG files are read and written with all the precision that images have"));
    page->note(tr("Files of 16 bits lose nothing, but are more than twice as large; some older "
                  "programs cannot read them. Off: 8 bits a channel."));
    page->heading(tr("Camera RAW"));
    page->check("rawDevelop", tr("&Develop after loading"),
                tr("Applies a tone curve and turns the image upright; Undo takes it back"));
    page->note(tr("Off: images show the sensor's linear values, which look dark, and lie as the "
                  "camera held them."));
    page->heading(tr("Choosing files"));
    page->check("systemFileDialog", tr("Use the desktop's &file dialog"),
                tr("Off: the program's own dialog, with previews of all its formats"));
    connect(page->button("assigns", tr("Assigned &Paths…"),
                         tr("Names for folders, which can be typed in place of their paths")),
            &QPushButton::clicked, this, &Preferences::assignsRequested);
    return page;
}

PreferencePage *Preferences::metadataPage()
{
    auto *page =
        new PreferencePage(tr("Metadata"), tr("What new images are given. Images that are open, or "
                                              "that are loaded with data of their own, keep it."));
    page->heading(tr("Texts"));
    page->line("mainAuthor", tr("&Author"), tr("Who made the image"));
    page->line("mainCopyright", tr("&Copyright"), tr("Whose the image is, and what others may do"));
    page->lines("mainAnnotation", tr("A&nnotation"), tr("Any words on the image"));
    page->heading(tr("Resolution"));
    page->number("xDpi", tr("&Horizontally"), tr("Dots per inch across"), tr(" dpi"));
    page->number("yDpi", tr("&Vertically"), tr("Dots per inch down"), tr(" dpi"));
    page->note(tr("If the two differ, images are shown stretched accordingly."));
    return page;
}

PreferencePage *Preferences::operatorsPage()
{
    auto *page = new PreferencePage(tr("Operators"), QString());
    page->heading(tr("In the picture"));
    page->check("splitView", tr("Show &Before | After"),
                tr("The current window shows, right of a border that can be moved, what Apply "
                   "would make of the picture"));
    page->number("dropperSize", tr("&Eyedropper reads"),
                 tr("Side of the square of samples that a click with it takes together"),
                 tr(" px"));
    page->heading(tr("Histogram of the preview"));
    page->choice("histogramChannel", tr("Shows &channels"),
                 tr("Whose levels are counted; a right click on it chooses too"),
                 {tr("all colours"), tr("red"), tr("green"), tr("blue"), tr("luma")});
    page->check("histogramLog", tr("&Logarithmic height"),
                tr("Rare levels are seen too; a click on the histogram switches over"));
    page->heading(tr("Scripts from operators"));
    page->check("showBuiltScript", tr("Show the &Script operator after a line was added"),
                tr("The button with the arrow adds a line of the operator to the script"));
    page->check("confirmClearScipt", tr("&Ask before the script is erased"),
                tr("When the button Clear Script is pressed"));
    return page;
}

// --- The dialog ---------------------------------------------------------------------------

Preferences::Preferences(const PreferencesExtras &extras, std::function<QString()> pick,
                         QWidget *parent)
    : QDialog(parent), given(extras), pickIcon(std::move(pick)), pageList(new QListWidget),
      stack(new QStackedWidget), buttons(new QDialogButtonBox)
{
    setWindowTitle(tr("Preferences"));
    pageList->setObjectName(QStringLiteral("pages"));
    pageList->setAccessibleName(tr("Pages"));
    pageList->setToolTip(tr("The pages of the preferences"));
    auto *column = new QVBoxLayout(this);
    auto *row = new QHBoxLayout;
    row->addWidget(pageList);
    row->addWidget(stack, 1);
    column->addLayout(row, 1);
    column->addWidget(buttons);
    addPages();
    addButtons();
    fitPages();
    connect(pageList, &QListWidget::currentRowChanged, stack, &QStackedWidget::setCurrentIndex);
    showPage(0);
    reload(extras);
}

Preferences::~Preferences() = default;

void Preferences::addPages()
{
    addPage(generalPage());
    addPage(displayPage());
    addPage(snappingPage());
    addPage(filesPage());
    addPage(metadataPage());
    addPage(operatorsPage());
    addPage(new ToolIconPage(given.iconNames, given.toolIcons, pickIcon));
}

/// Gives all pages one width and the dialog the height of the longest.
void Preferences::fitPages()
{
    const int margin = 2 * (pageList->frameWidth() + pageList->fontMetrics().height());
    pageList->setFixedWidth(pageList->sizeHintForColumn(0) + margin);
    int captions = 0;
    for (const PreferencePage *page : pages)
        captions = std::max(captions, page->captionWidth());
    // No page needs a scroll bar on a screen that has room for it.
    QSize room;
    for (PreferencePage *page : pages) {
        page->setCaptionWidth(captions);
        page->layout()->activate();
        const int wide = std::max(page->sizeHint().width(), page->minimumWidth());
        const int high = std::max(page->sizeHint().height(), page->layout()->heightForWidth(wide));
        room = room.expandedTo({wide, high});
    }
    const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    stack->setMinimumWidth(room.width() + bar);
    resize(sizeHint().width(), room.height() + 2 * buttons->sizeHint().height() + 2 * bar);
}

void Preferences::addPage(PreferencePage *page)
{
    auto *area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(page);
    stack->addWidget(area);
    pageList->addItem(page->title);
    pages.push_back(page);
    connect(page, &PreferencePage::edited, this, &Preferences::updateApply);
}

void Preferences::addButtons()
{
    buttons->setObjectName(QStringLiteral("buttonBox"));
    const auto add = [this](const char *name, const QString &text, const QString &tip) {
        QPushButton *button = buttons->addButton(text, QDialogButtonBox::ResetRole);
        button->setObjectName(QLatin1String(name));
        button->setToolTip(tip);
        return button;
    };
    connect(add("importSettings", tr("&Import…"), tr("Takes the settings of a file over")),
            &QPushButton::clicked, this, &Preferences::importRequested);
    connect(add("exportSettings", tr("E&xport…"),
                tr("Writes the settings, as they were last applied, to a file")),
            &QPushButton::clicked, this, &Preferences::exportRequested);
    connect(add("restoreDefaults", tr("Restore Defaul&ts"), tr("Sets this page to its defaults")),
            &QPushButton::clicked, this,
            [this]() { pages[size_t(stack->currentIndex())]->showDefaults(); });
    buttons->addButton(QDialogButtonBox::Ok)->setDefault(true);
    buttons->addButton(QDialogButtonBox::Cancel);
    buttons->addButton(QDialogButtonBox::Apply);
    connect(buttons, &QDialogButtonBox::accepted, this, &Preferences::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &Preferences::reject);
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            &Preferences::apply);
}

void Preferences::showPage(int page)
{
    pageList->setCurrentRow(page);
}

void Preferences::reload(const PreferencesExtras &extras)
{
    given = extras;
    const PreferenceValues values = presentValues();
    for (PreferencePage *page : pages)
        page->show(values);
    updateApply();
}

// --- Values -------------------------------------------------------------------------------

PreferenceValues Preferences::presentValues() const
{
    PreferenceValues values;
    for (const Workspace::Setting &setting : workspace()->settings())
        values.insert(QLatin1String(setting.key),
                      workspace()->settingText(QLatin1String(setting.key)));
    values.insert(QLatin1String(kVersionHostKey), given.versionHost);
    values.insert(QLatin1String(kSerialNumberKey), given.serialNumber);
    values.insert(QLatin1String(kCustomIconsKey), given.customIcons.join(QLatin1Char('\n')));
    return values;
}

PreferenceValues Preferences::fieldValues() const
{
    PreferenceValues values = presentValues();
    for (const PreferencePage *page : pages)
        page->read(&values);
    return values;
}

void Preferences::updateApply()
{
    if (QPushButton *button = buttons->button(QDialogButtonBox::Apply))
        button->setEnabled(fieldValues() != presentValues());
}

void Preferences::store(const QString &key, const QString &value)
{
    if (key == QLatin1String(kVersionHostKey))
        given.versionHost = value.trimmed();
    else if (key == QLatin1String(kSerialNumberKey))
        given.serialNumber = value.trimmed();
    else if (key == QLatin1String(kCustomIconsKey))
        given.customIcons = value.isEmpty() ? QStringList() : value.split(QLatin1Char('\n'));
    else
        workspace()->setSetting(key, value, nullptr);
}

void Preferences::apply()
{
    const PreferenceValues wanted = fieldValues(), before = presentValues();
    QStringList changed;
    for (auto value = wanted.cbegin(); value != wanted.cend(); ++value)
        if (before.value(value.key()) != value.value()) {
            store(value.key(), value.value());
            changed << value.key();
        }
    if (!changed.isEmpty())
        emit applied(changed);
    reload(given);
}

void Preferences::accept()
{
    apply();
    QDialog::accept();
}
