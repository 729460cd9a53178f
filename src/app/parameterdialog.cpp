// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/parameterdialog.h"

#include "operators/dialog/colorwell.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kSliderWidth = 150;
constexpr int kHintWidth = 300;
constexpr int kTextLines = 4;
constexpr double kMostSliderSteps = 4000;
} // namespace

ParameterDialog::ParameterDialog(const QString &title, const QString &explanation,
                                 const QString &goOn, QWidget *parent)
    : QDialog(parent), form(new QFormLayout)
{
    setWindowTitle(title);
    auto *column = new QVBoxLayout(this);
    if (!explanation.isEmpty()) {
        auto *hint = new QLabel(explanation);
        hint->setWordWrap(true);
        hint->setMinimumWidth(kHintWidth);
        column->addWidget(hint);
    }
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    column->addLayout(form);
    column->addStretch();
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    goOnButton = buttons->button(QDialogButtonBox::Ok);
    goOnButton->setText(goOn);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
}

void ParameterDialog::addRow(const char *name, const QString &caption, QWidget *field, QWidget *row)
{
    field->setObjectName(QLatin1String(name));
    field->setAccessibleName(caption);
    auto *label = new QLabel(caption + QLatin1Char(':'));
    label->setBuddy(field);
    form->addRow(label, row ? row : field);
    fields.push_back(field);
}

void ParameterDialog::addNumber(const char *name, const QString &caption, double shown,
                                const Range &range, const QString &tip,
                                const std::function<void(double)> &set)
{
    auto *spin = new QDoubleSpinBox;
    spin->setDecimals(range.decimals);
    spin->setRange(range.low, range.high);
    spin->setSuffix(range.suffix);
    spin->setSpecialValueText(range.lowText);
    spin->setValue(shown * range.scale);
    spin->setToolTip(tip);
    spins.push_back(spin);
    const double low = range.reach > 0 ? std::max(range.low, -range.reach) : range.low;
    const double high = range.reach > 0 ? std::min(range.high, range.reach) : range.high;
    // As fine as the field, unless that would be finer than a mouse can be moved.
    const double fine = std::pow(10.0, range.decimals);
    const double steps = std::min((high - low) * fine, kMostSliderSteps);
    const double perStep = (high - low) / steps;
    auto *slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(QLatin1String(name) + QStringLiteral("Slider"));
    slider->setAccessibleName(caption);
    slider->setToolTip(tip);
    slider->setRange(0, int(steps));
    slider->setPageStep(std::max(1, int(steps / 10)));
    slider->setMinimumWidth(kSliderWidth);
    const auto follow = [slider, perStep, low](double value) {
        const QSignalBlocker quiet(slider);
        slider->setValue(qRound((value - low) / perStep));
    };
    follow(spin->value());
    connect(spin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), slider, follow);
    connect(slider, &QSlider::valueChanged, spin,
            [spin, perStep, low](int at) { spin->setValue(low + at * perStep); });
    auto *row = new QWidget;
    auto *line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(slider, 1);
    line->addWidget(spin);
    fields.push_back(slider);
    addRow(name, caption, spin, row);
    const double scale = range.scale;
    writers.emplace_back([spin, set, scale]() { set(spin->value() / scale); });
}

void ParameterDialog::number(const char *name, const QString &caption, double *value,
                             const Range &range, const QString &tip)
{
    addNumber(name, caption, *value, range, tip, [value](double chosen) { *value = chosen; });
}

void ParameterDialog::whole(const char *name, const QString &caption, int *value,
                            const Range &range, const QString &tip)
{
    addNumber(name, caption, *value, range, tip,
              [value](double chosen) { *value = qRound(chosen); });
}

void ParameterDialog::check(const char *name, const QString &caption, bool *value,
                            const QString &tip)
{
    auto *box = new QCheckBox(caption);
    box->setObjectName(QLatin1String(name));
    box->setToolTip(tip);
    box->setChecked(*value);
    form->addRow(QString(), box);
    fields.push_back(box);
    writers.emplace_back([box, value]() { *value = box->isChecked(); });
}

void ParameterDialog::choice(const char *name, const QString &caption, int *value,
                             const QStringList &texts)
{
    auto *combo = new QComboBox;
    combo->addItems(texts);
    combo->setCurrentIndex(*value);
    addRow(name, caption, combo);
    writers.emplace_back([combo, value]() { *value = combo->currentIndex(); });
}

void ParameterDialog::colour(const char *name, const QString &caption, uint16_t *red,
                             uint16_t *green, uint16_t *blue)
{
    auto *well = new ColorWell;
    well->setColor16(*red, *green, *blue);
    well->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(well, &ColorWell::clicked, this, [this, well, caption]() {
        const QColor chosen = QColorDialog::getColor(well->color(), this, caption);
        if (chosen.isValid())
            well->setColor8(chosen.red(), chosen.green(), chosen.blue());
    });
    addRow(name, caption, well);
    writers.emplace_back([well, red, green, blue]() {
        const QColor chosen = well->color();
        // A colour that was left alone keeps the low bytes that the well does not show.
        for (const auto &[component, top] :
             {std::pair(red, chosen.red()), std::pair(green, chosen.green()),
              std::pair(blue, chosen.blue())})
            if (*component >> 8 != top)
                *component = uint16_t(top * 257);
    });
}

void ParameterDialog::text(const char *name, const QString &caption, QString *value)
{
    auto *edit = new QPlainTextEdit(*value);
    edit->setTabChangesFocus(true);
    edit->selectAll();
    edit->setFixedHeight(edit->fontMetrics().lineSpacing() * kTextLines + 14);
    const auto follow = [this, edit]() {
        goOnButton->setEnabled(!edit->toPlainText().trimmed().isEmpty());
    };
    connect(edit, &QPlainTextEdit::textChanged, this, follow);
    follow();
    addRow(name, caption, edit);
    writers.emplace_back([edit, value]() { *value = edit->toPlainText(); });
}

void ParameterDialog::fontFamily(const char *name, const QString &caption, QString *value)
{
    auto *combo = new QFontComboBox;
    combo->setCurrentFont(QFont(*value));
    addRow(name, caption, combo);
    writers.emplace_back([combo, value]() { *value = combo->currentFont().family(); });
}

bool ParameterDialog::ask()
{
    // The buttons were there before the fields, and Tab would start with them.
    for (size_t i = 1; i < fields.size(); ++i)
        setTabOrder(fields[i - 1], fields[i]);
    setTabOrder(fields.back(), goOnButton);
    // A number can be typed at once; its slider stands before it.
    const bool number = !spins.empty() && fields.size() > 1 && fields[1] == spins.front();
    fields[number ? 1 : 0]->setFocus();
    if (number)
        spins.front()->selectAll();
    int widest = 0;
    for (const QDoubleSpinBox *spin : spins)
        widest = std::max(widest, spin->sizeHint().width());
    for (QDoubleSpinBox *spin : spins)
        spin->setMinimumWidth(widest); // and the sliders beside them end in one line
    if (exec() != QDialog::Accepted)
        return false;
    for (const auto &write : writers)
        write();
    return true;
}
