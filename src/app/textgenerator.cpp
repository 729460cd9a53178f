// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/textgenerator.h"

#include "area/areastate.h"
#include "area/maskops.h"
#include "area/outline.h"
#include "area/polygon.h"
#include "core/image.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "text/textimage.h"
#include "text/textselect.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/windowacts.h"

#include "ui_textgenerator.h"

#include <QImage>
#include <QPixmap>
#include <QSignalBlocker>

#include <algorithm>

namespace
{
constexpr int kTextLines = 3;
constexpr int kTextLetters = 46;  // of the text field's width
constexpr int kPreviewLines = 6;  // of the dialog's own font
constexpr int kPreviewMargin = 4; // points on each side

/// A rendered text as it is selected: where its coverage is, the colour is.
QImage tinted(const image &glyphs, const QColor &colour)
{
    QImage picture(glyphs.width, glyphs.height, QImage::Format_ARGB32);
    for (int y = 0; y < glyphs.height; ++y) {
        auto *out = reinterpret_cast<QRgb *>(picture.scanLine(y));
        const uint16_t *coverage = glyphs.alpha + int64_t(y) * glyphs.width;
        for (int x = 0; x < glyphs.width; ++x)
            out[x] = qRgba(colour.red(), colour.green(), colour.blue(), coverage[x] >> 8);
    }
    return picture;
}
} // namespace

TextGenerator::TextGenerator(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::TextGenerator>())
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    const QFontMetrics metrics(font());
    ui->text->setMinimumSize(metrics.averageCharWidth() * kTextLetters,
                             metrics.lineSpacing() * kTextLines + 14);
    ui->preview->setMinimumHeight(metrics.lineSpacing() * kPreviewLines);
    ui->preview->setBackgroundRole(QPalette::Base);
    ui->preview->setAutoFillBackground(true);
    for (QWidget *field : {static_cast<QWidget *>(ui->left), static_cast<QWidget *>(ui->top)})
        field->setMinimumWidth(field->sizeHint().width());
    showSettings();
    on_atPlace_toggled(ui->atPlace->isChecked());
}

TextGenerator::~TextGenerator() = default;

void TextGenerator::showSettings()
{
    const Workspace *space = workspace();
    const QSignalBlocker family(ui->family), points(ui->points);
    ui->family->setCurrentFont(space->textFont.isEmpty() ? font() : QFont(space->textFont));
    ui->points->setValue(space->textPoints);
    ui->bold->setChecked(space->textBold);
    ui->italic->setChecked(space->textItalic);
    ui->smooth->setChecked(space->textaa);
    ui->align->setCurrentIndex(space->textAlign);
}

TextStyle TextGenerator::style() const
{
    TextStyle style;
    style.family = ui->family->currentFont().family();
    style.pixels = ui->points->value();
    style.bold = ui->bold->isChecked();
    style.italic = ui->italic->isChecked();
    style.antialias = ui->smooth->isChecked();
    style.align = ui->align->currentIndex();
    style.leading = ui->leading->value() / 100.0;
    return style;
}

// --- The preview ------------------------------------------------------------------------

void TextGenerator::showPreview()
{
    const QMargins margins(kPreviewMargin, kPreviewMargin, kPreviewMargin, kPreviewMargin);
    const QRect room = ui->preview->contentsRect().marginsRemoved(margins);
    ui->preview->setPixmap(previewPicture(room.size()));
    showSize();
}

void TextGenerator::showSize()
{
    const TextMetrics size = measureText(ui->text->toPlainText(), style());
    ui->message->setText(size.width == 0 ? QString()
                                         : tr("%1 x %2 samples").arg(size.width).arg(size.height));
}

/// The text as large as it will be, or as large as there is room for.
QPixmap TextGenerator::previewPicture(QSize size) const
{
    const QString text = ui->text->toPlainText();
    TextStyle look = style();
    const TextMetrics metrics = measureText(text, look);
    if (metrics.width == 0 || size.isEmpty())
        return {};
    const double ratio = devicePixelRatioF();
    const double part = std::min(
        {1.0, size.width() * ratio / metrics.width, size.height() * ratio / metrics.height});
    look.pixels = std::max(1.0, look.pixels * part);
    const std::unique_ptr<image> glyphs(renderText(text, look));
    if (!glyphs)
        return {};
    const QColor colour = ui->preview->palette().color(QPalette::Text);
    // Sizes of fonts are whole numbers: what is a little too large is scaled.
    const QSize room = size * ratio;
    QImage picture = tinted(*glyphs, colour);
    if (picture.width() > room.width() || picture.height() > room.height())
        picture = picture.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    picture.setDevicePixelRatio(ratio);
    return QPixmap::fromImage(picture);
}

void TextGenerator::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    showPreview();
}

void TextGenerator::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    showPreview();
}

void TextGenerator::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showPreview();
}

// --- The fields -------------------------------------------------------------------------

void TextGenerator::on_text_textChanged()
{
    showPreview();
}

void TextGenerator::on_family_currentFontChanged(const QFont &font)
{
    workspace()->textFont = font.family();
    showPreview();
}

void TextGenerator::on_points_valueChanged(int samples)
{
    workspace()->textPoints = samples;
    showPreview();
}

void TextGenerator::on_leading_valueChanged(int)
{
    showPreview();
}

void TextGenerator::on_bold_clicked(bool on)
{
    workspace()->textBold = on;
    showPreview();
}

void TextGenerator::on_italic_clicked(bool on)
{
    workspace()->textItalic = on;
    showPreview();
}

void TextGenerator::on_smooth_clicked(bool on)
{
    workspace()->textaa = on;
    showPreview();
}

void TextGenerator::on_align_activated(int align)
{
    workspace()->textAlign = align;
    showPreview();
}

void TextGenerator::on_atPlace_toggled(bool on)
{
    ui->left->setEnabled(on);
    ui->top->setEnabled(on);
}

// --- The selection ----------------------------------------------------------------------

void TextGenerator::on_select_clicked()
{
    make(Joining::Replace);
}

void TextGenerator::on_add_clicked()
{
    make(Joining::Add);
}

void TextGenerator::on_subtract_clicked()
{
    make(Joining::Subtract);
}

QPoint TextGenerator::placeIn(const imgWindow &window, QSize size) const
{
    if (ui->atPlace->isChecked())
        return {ui->left->value(), ui->top->value()};
    const QPoint middle = window.windowToSample(window.width() / 2.0, window.height() / 2.0);
    return middle - QPoint(size.width() / 2, size.height() / 2);
}

void TextGenerator::make(Joining joining)
{
    imgWindow *window = viewHost() ? viewHost()->validCurrent() : nullptr;
    if (!window) {
        ui->message->setText(tr("No picture is open"));
        return;
    }
    TextResult result = TextResult::Nothing;
    const std::unique_ptr<image> glyphs(renderInk(ui->text->toPlainText(), style(), &result));
    if (!glyphs) {
        ui->message->setText(result == TextResult::Nothing    ? tr("Nothing to draw")
                             : result == TextResult::TooLarge ? tr("The text is too large")
                                                              : tr("There is not enough memory"));
        return;
    }
    const QPoint place = placeIn(*window, QSize(glyphs->width, glyphs->height));
    QPoint offset;
    imgWindow *taker = selectionTaker(window, &offset);
    showSize();
    if (const QString said = selectIn(taker, *glyphs, place - offset, joining); !said.isEmpty())
        ui->message->setText(said);
}

/// Returns what went wrong, if anything did.
QString TextGenerator::selectIn(imgWindow *window, const image &glyphs, QPoint place,
                                Joining joining)
{
    image *img = window->img;
    if (!glyphsMeet(*img, glyphs, place.x(), place.y()))
        return tr("The text lies outside of the picture");
    window->settleJobs(); // one of them may be about to make another selection
    Mask old;
    if (joining != Joining::Replace && !old.copyFrom(*img))
        return tr("There is not enough memory");
    const bool applies = workspace()->selectMode;
    if (!applies) // the Apply makes a record of its own
        beginAct(img);
    selectGlyphs(img, glyphs, place.x(), place.y());
    followSelectionCenter(img);
    img->saveMask();
    const OutlineResult outlined =
        workspace()->outlineObject ? outlineSelect(img) : OutlineResult::Done;
    if (AreaState *state = areaState())
        state->savedSelection.copyFrom(*img);
    if (joining != Joining::Replace)
        combineMasks(img->gmask, old.mask, img->width, img->height, joining == Joining::Add);
    selectionChanged(img);
    if (applies)
        viewHost()->operate();
    return outlined == OutlineResult::Nothing
               ? tr("The text has no outline of its own: it is selected whole")
           : outlined == OutlineResult::NoMemory ? tr("There is not enough memory")
                                                 : QString();
}
