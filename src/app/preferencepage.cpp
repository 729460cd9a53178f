// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferencepage.h"

#include "core/settingdefaults.h"
#include "core/workspace.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace
{
constexpr int kTextLines = 4;
constexpr int kPageLetters = 80; ///< width of a page
constexpr int kNoteLetters = 50;
constexpr int kMostLetters = 10000;

/// The range of a number among the workspace's settings.
std::pair<int, int> rangeOf(const char *key)
{
    for (const Workspace::Setting &setting : workspace()->settings())
        if (qstrcmp(setting.key, key) == 0)
            return {int(setting.low), int(setting.high)};
    return {0, 0};
}

QString withoutMnemonic(QString caption)
{
    return caption.remove(QLatin1Char('&'));
}

/// A label of several lines that takes just the height that they need: a plain one asks for
/// the height that it would have if it were narrow.
class WrappedLabel : public QLabel
{
public:
    explicit WrappedLabel(const QString &text) : QLabel(text)
    {
        setWordWrap(true);
        setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    QSize sizeHint() const override
    {
        const int width = fontMetrics().averageCharWidth() * kNoteLetters;
        return {width, heightForWidth(width)};
    }
    QSize minimumSizeHint() const override
    {
        return {sizeHint().width() / 2, fontMetrics().lineSpacing()};
    }
};
} // namespace

PreferencePage::PreferencePage(const QString &name, const QString &explanation)
    : title(name), form(new QFormLayout)
{
    auto *column = new QVBoxLayout(this);
    column->addLayout(form);
    column->addStretch(1);
    setMinimumWidth(fontMetrics().averageCharWidth() * kPageLetters);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    if (!explanation.isEmpty())
        form->addRow(new WrappedLabel(explanation));
}

void PreferencePage::heading(const QString &text)
{
    auto *label = new QLabel(text);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    label->setContentsMargins(0, form->rowCount() > 0 ? fontMetrics().height() / 2 : 0, 0, 0);
    form->addRow(label);
}

void PreferencePage::note(const QString &text)
{
    form->addRow(QString(), new WrappedLabel(text));
}

QPushButton *PreferencePage::button(const char *name, const QString &caption, const QString &tip)
{
    auto *button = new QPushButton(caption);
    button->setObjectName(QLatin1String(name));
    button->setToolTip(tip);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    form->addRow(QString(), button);
    return button;
}

void PreferencePage::other(QWidget *widget, const QString &caption)
{
    if (caption.isEmpty()) {
        form->addRow(widget);
        if (widget->sizePolicy().verticalPolicy() == QSizePolicy::Expanding) {
            auto *column = static_cast<QVBoxLayout *>(layout());
            column->setStretchFactor(form, 1);
            column->setStretch(column->count() - 1, 0);
        }
        return;
    }
    captions.push_back(new QLabel(caption + QLatin1Char(':')));
    form->addRow(captions.back(), widget);
}

int PreferencePage::captionWidth() const
{
    int widest = 0;
    for (const QLabel *caption : captions)
        widest = std::max(widest, caption->sizeHint().width());
    return widest;
}

void PreferencePage::setCaptionWidth(int width)
{
    for (QLabel *caption : captions)
        caption->setMinimumWidth(width);
}

void PreferencePage::addRow(const char *key, const QString &caption, const QString &tip,
                            QWidget *field)
{
    field->setObjectName(QLatin1String(key));
    field->setAccessibleName(withoutMnemonic(caption));
    field->setToolTip(tip);
    auto *label = new QLabel(caption + QLatin1Char(':'));
    label->setToolTip(tip);
    label->setBuddy(field);
    captions.push_back(label);
    form->addRow(label, field);
}

template <class Widget, class Read, class Show>
void PreferencePage::addField(Widget *widget, const char *key, Read read, Show show)
{
    fields.push_back({QLatin1String(key), [widget, read]() { return read(widget); },
                      [widget, show](const QString &text) { show(widget, text); }});
}

QCheckBox *PreferencePage::check(const char *key, const QString &caption, const QString &tip)
{
    auto *box = new QCheckBox(caption);
    box->setObjectName(QLatin1String(key));
    box->setAccessibleName(withoutMnemonic(caption));
    box->setToolTip(tip);
    form->addRow(QString(), box);
    connect(box, &QCheckBox::toggled, this, &PreferencePage::edited);
    addField(
        box, key, [](const QCheckBox *b) { return QString::number(int(b->isChecked())); },
        [](QCheckBox *b, const QString &text) { b->setChecked(text.toInt() != 0); });
    return box;
}

QSpinBox *PreferencePage::number(const char *key, const QString &caption, const QString &tip,
                                 const QString &suffix, const QString &lowText)
{
    auto *spin = new QSpinBox;
    const auto [low, high] = rangeOf(key);
    spin->setRange(low, high);
    spin->setSuffix(suffix);
    spin->setSpecialValueText(lowText);
    spin->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    spin->setAccelerated(true);
    addRow(key, caption, tip, spin);
    connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this, &PreferencePage::edited);
    addField(
        spin, key, [](const QSpinBox *s) { return QString::number(s->value()); },
        [](QSpinBox *s, const QString &text) { s->setValue(text.toInt()); });
    return spin;
}

QComboBox *PreferencePage::choice(const char *key, const QString &caption, const QString &tip,
                                  const QStringList &texts)
{
    auto *combo = new QComboBox;
    combo->addItems(texts);
    combo->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    addRow(key, caption, tip, combo);
    connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &PreferencePage::edited);
    addField(
        combo, key, [](const QComboBox *c) { return QString::number(c->currentIndex()); },
        [](QComboBox *c, const QString &text) { c->setCurrentIndex(text.toInt()); });
    return combo;
}

QLineEdit *PreferencePage::line(const char *key, const QString &caption, const QString &tip)
{
    auto *edit = new QLineEdit;
    edit->setMaxLength(kMostLetters);
    addRow(key, caption, tip, edit);
    connect(edit, &QLineEdit::textChanged, this, &PreferencePage::edited);
    addField(
        edit, key, [](const QLineEdit *e) { return e->text(); },
        [](QLineEdit *e, const QString &text) {
            e->setText(text);
            e->setCursorPosition(0);
        });
    return edit;
}

void PreferencePage::lines(const char *key, const QString &caption, const QString &tip)
{
    auto *edit = new QPlainTextEdit;
    edit->setTabChangesFocus(true);
    edit->setFixedHeight(edit->fontMetrics().lineSpacing() * kTextLines + 14);
    addRow(key, caption, tip, edit);
    connect(edit, &QPlainTextEdit::textChanged, this, &PreferencePage::edited);
    addField(
        edit, key, [](const QPlainTextEdit *e) { return e->toPlainText(); },
        [](QPlainTextEdit *e, const QString &text) { e->setPlainText(text); });
}

void PreferencePage::show(const PreferenceValues &values)
{
    for (const Field &field : fields)
        field.show(values.value(field.key));
}

void PreferencePage::read(PreferenceValues *values) const
{
    for (const Field &field : fields)
        values->insert(field.key, field.read());
}

void PreferencePage::showDefaults()
{
    for (const Field &field : fields)
        field.show(defaultSettingText(field.key));
}
