// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/singleslider.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace
{
constexpr int kSliderLetters = 36; ///< of the slider's width
constexpr int kPages = 10;
} // namespace

SingleSlider::SingleSlider(const QString &title, const QString &label, int low, int high, int value,
                           QWidget *parent)
    : QDialog(parent), slider(new QSlider(Qt::Horizontal))
{
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowTitle(title);
    const int most = std::max(low, high);
    auto *field = new QSpinBox;
    field->setObjectName(QStringLiteral("value"));
    field->setRange(low, most);
    slider->setObjectName(QStringLiteral("slider"));
    slider->setRange(low, most);
    const qint64 range = qint64(most) - low;
    slider->setPageStep(int(std::max<qint64>(1, range / kPages)));
    slider->setMinimumWidth(fontMetrics().averageCharWidth() * kSliderLetters);
    slider->setValue(value);
    field->setValue(slider->value());
    connect(slider, &QSlider::valueChanged, field, &QSpinBox::setValue);
    connect(field, QOverload<int>::of(&QSpinBox::valueChanged), slider, &QSlider::setValue);

    auto *caption = new QLabel;
    caption->setTextFormat(Qt::PlainText); // a script's text is no mark-up
    caption->setText(label);
    caption->setWordWrap(true);
    caption->setBuddy(slider);
    slider->setAccessibleName(label);
    field->setAccessibleName(label);
    auto *row = new QHBoxLayout;
    row->addWidget(slider, 1);
    row->addWidget(field);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *column = new QVBoxLayout(this);
    column->addWidget(caption);
    column->addLayout(row);
    column->addStretch(1);
    column->addWidget(buttons);
    slider->setFocus();
}

int SingleSlider::value() const
{
    return slider->value();
}
