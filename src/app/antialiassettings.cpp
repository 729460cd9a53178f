// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/antialiassettings.h"

#include "area/smoothing.h"
#include "core/image.h"
#include "core/settingdefaults.h"
#include "core/workspace.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kSliderRadius = 20; ///< what is of use, where a slider can still be set finely
constexpr int kSampleSide = 24;   ///< samples
constexpr int kEnlarged = 6;      ///< points for each sample
constexpr int kSampleGap = 10;

struct Switch {
    const char *key;
    bool Workspace::*field;
    const char *caption;
};

constexpr Switch kSwitches[] = {
    {"rectaa", &Workspace::rectaa, QT_TRANSLATE_NOOP("AntialiasSettings", "&Rectangle")},
    {"ellaa", &Workspace::ellaa, QT_TRANSLATE_NOOP("AntialiasSettings", "&Ellipse")},
    {"polyaa", &Workspace::polyaa, QT_TRANSLATE_NOOP("AntialiasSettings", "&Polygon")},
    {"splineaa", &Workspace::splineaa, QT_TRANSLATE_NOOP("AntialiasSettings", "Poly&spline")},
    {"pshapeaa", &Workspace::pshapeaa, QT_TRANSLATE_NOOP("AntialiasSettings", "P-S&hape")},
    {"pencilaa", &Workspace::pencilaa, QT_TRANSLATE_NOOP("AntialiasSettings", "Penci&l")},
    {"wandaa", &Workspace::wandaa, QT_TRANSLATE_NOOP("AntialiasSettings", "&Wand")},
    {"textaa", &Workspace::textaa, QT_TRANSLATE_NOOP("AntialiasSettings", "&Text")},
};
} // namespace

SmoothingSample::SmoothingSample(QWidget *parent)
    : QWidget(parent), picture(std::make_unique<image>())
{
    setAccessibleName(tr("The edge of a selection, crisp and smoothed"));
    setMinimumSize(sizeHint());
    picture->allocate(kSampleSide, kSampleSide, QStringLiteral("smoothing sample"));
    selectDisc();
    crisp = selectionPicture();
    settingsChanged();
}

SmoothingSample::~SmoothingSample() = default;

QSize SmoothingSample::sizeHint() const
{
    const int side = kSampleSide * kEnlarged;
    return {2 * side + kSampleGap, side + fontMetrics().lineSpacing() + 2};
}

void SmoothingSample::selectDisc()
{
    if (!picture->gmask)
        return;
    constexpr double middle = 2.5, radius = 17.3; // a quarter of it is seen
    for (int y = 0; y < kSampleSide; ++y)
        for (int x = 0; x < kSampleSide; ++x) {
            const bool in = std::hypot(x - middle, y - (kSampleSide - middle)) <= radius;
            picture->gmask[y * kSampleSide + x] = in ? 65535 : 0;
        }
}

QImage SmoothingSample::selectionPicture() const
{
    QImage grey(kSampleSide, kSampleSide, QImage::Format_Grayscale8);
    grey.fill(0);
    if (picture->gmask)
        for (int y = 0; y < kSampleSide; ++y)
            for (int x = 0; x < kSampleSide; ++x)
                grey.scanLine(y)[x] = uchar(picture->gmask[y * kSampleSide + x] >> 8);
    return grey;
}

void SmoothingSample::settingsChanged()
{
    selectDisc();
    smoothSelection(picture.get(), workspace()->aarange, workspace()->aaamount);
    smoothed = selectionPicture();
    update();
}

void SmoothingSample::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const int side = kSampleSide * kEnlarged;
    QRect place((width() - 2 * side - kSampleGap) / 2, 0, side, side);
    for (const auto &[shown, caption] :
         {std::pair(&crisp, tr("As drawn")), std::pair(&smoothed, tr("Smoothed"))}) {
        painter.drawImage(place, *shown);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(place.left(), place.bottom() + 3, side, fontMetrics().lineSpacing(),
                         Qt::AlignHCenter, caption);
        place.translate(side + kSampleGap, 0);
    }
}

void AntialiasSettings::Strength::show(int value) const
{
    const QSignalBlocker quietSlider(slider), quietField(field);
    slider->setValue(value);
    field->setValue(value);
}

AntialiasSettings::AntialiasSettings(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Antialias Settings"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setAttribute(Qt::WA_DeleteOnClose);
    auto *column = new QVBoxLayout(this);
    sample = new SmoothingSample;
    column->addWidget(sample, 0, Qt::AlignHCenter);
    auto *grid = new QGridLayout;
    column->addLayout(grid);
    radius = addStrength(grid, "radius", tr("Ra&dius"), 1, kSliderRadius, kMostSmoothingRadius,
                         tr(" px"));
    amount = addStrength(grid, "amount", tr("A&mount"), 0, 100, 100, tr(" %"));
    // A value that the controls cannot show is kept until one of them is moved.
    connect(radius.field, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int value) {
        workspace()->aarange = value;
        sample->settingsChanged();
    });
    connect(amount.field, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int value) {
        workspace()->aaamount = value / 100.0;
        sample->settingsChanged();
    });
    addSwitches(column);
    addButtons(column);
    column->setSizeConstraint(QLayout::SetFixedSize);
    settingsChanged();
}

AntialiasSettings::Strength AntialiasSettings::addStrength(QGridLayout *grid, const char *name,
                                                           const QString &caption, int low,
                                                           int sliderHigh, int high,
                                                           const QString &suffix)
{
    Strength made;
    made.slider = new QSlider(Qt::Horizontal);
    made.slider->setRange(low, sliderHigh);
    made.slider->setPageStep(std::max(1, sliderHigh / 10));
    made.slider->setObjectName(QLatin1String(name) + QStringLiteral("Slider"));
    made.field = new QSpinBox;
    made.field->setRange(low, high);
    made.field->setSuffix(suffix);
    made.field->setObjectName(QLatin1String(name));
    const QString spoken = QString(caption).remove(QLatin1Char('&'));
    made.slider->setAccessibleName(spoken);
    made.field->setAccessibleName(spoken);
    auto *label = new QLabel(caption);
    label->setBuddy(made.field);
    const int row = grid->rowCount();
    grid->addWidget(label, row, 0);
    grid->addWidget(made.slider, row, 1);
    grid->addWidget(made.field, row, 2);
    connect(made.slider, &QSlider::valueChanged, made.field, &QSpinBox::setValue);
    connect(made.field, QOverload<int>::of(&QSpinBox::valueChanged), made.slider,
            [slider = made.slider](int value) {
                const QSignalBlocker quiet(slider);
                slider->setValue(value);
            });
    return made;
}

void AntialiasSettings::addSwitches(QBoxLayout *column)
{
    auto *group = new QGroupBox(tr("Smooth what these tools select"));
    auto *grid = new QGridLayout(group);
    constexpr int kRows = 4;
    for (const Switch &entry : kSwitches) {
        auto *box = new QCheckBox(tr(entry.caption));
        box->setObjectName(QLatin1String(entry.key));
        const int place = int(switches.size());
        grid->addWidget(box, place % kRows, place / kRows);
        connect(box, &QCheckBox::clicked, this,
                [field = entry.field](bool on) { workspace()->*field = on; });
        switches.push_back(box);
    }
    column->addWidget(group);
}

void AntialiasSettings::addButtons(QBoxLayout *column)
{
    auto *buttons =
        new QDialogButtonBox(QDialogButtonBox::RestoreDefaults | QDialogButtonBox::Close);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    for (QAbstractButton *button : buttons->buttons())
        static_cast<QPushButton *>(button)->setAutoDefault(false);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            &AntialiasSettings::restoreDefaults);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
}

void AntialiasSettings::settingsChanged()
{
    const Workspace *space = workspace();
    radius.show(space->aarange);
    amount.show(int(std::lround(space->aaamount * 100)));
    for (size_t i = 0; i < switches.size(); ++i)
        switches[i]->setChecked(space->*kSwitches[i].field);
    sample->settingsChanged();
}

void AntialiasSettings::restoreDefaults()
{
    QStringList keys = {QStringLiteral("aarange"), QStringLiteral("aaamount")};
    for (const Switch &entry : kSwitches)
        keys << QLatin1String(entry.key);
    for (const QString &key : keys)
        workspace()->setSetting(key, defaultSettingText(key), nullptr);
    settingsChanged();
}
