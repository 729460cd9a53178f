// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/oppage.h"

#include <QObject>

#include <array>
#include <vector>

class CodeEdit;
class ColorWell;
class Curve;
class OpWrapper;
class Operators;
class cRange;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QScrollArea;
class QSlider;
class QSpinBox;
class QVBoxLayout;
class image;

/// Widgets of one kind on the page, in the order in which they were added.
template <class Widget, int size>
class WidgetPool
{
public:
    bool full() const { return used == size; }
    int count() const { return used; }
    /// The index of the added widget; the pool must not be full.
    int add(Widget *widget)
    {
        slots_[size_t(used)] = widget;
        return used++;
    }
    /// Null for an index that is not in use.
    Widget *at(int index) const
    {
        return index >= 0 && index < used ? slots_[size_t(index)] : nullptr;
    }
    void clear()
    {
        slots_ = {};
        used = 0;
    }

private:
    std::array<Widget *, size_t(size)> slots_{};
    int used = 0;
};

/// Makes the widgets of an operator's page. Widgets of a kind share a pool of fixed size;
/// their signals reach the dialog's slot of the same kind and index.
class PageBuilder : public QObject, public OpPage
{
    Q_OBJECT
public:
    /// In the tab order the page's controls follow `tabStart`.
    PageBuilder(Operators *owner, QScrollArea *pageArea, QWidget *tabStart);

    /// Throws the old page away and makes that of `op`; null leaves the page empty.
    void rebuild(OpWrapper *op);

    int addSlider(const QString &label, int low, int high, int value, bool showValue,
                  const QString &unit = QString()) override;
    int addIntSpin(int low, int high, int value, bool advance) override;
    int addDoubleSpin(double low, double high, double step, int decimals, double value,
                      bool advance) override;
    int addCombo(const QStringList &names, int index, bool advance) override;
    int addComboData(const QStringList &names, const QVariantList &values, int index,
                     bool advance) override;
    int addCheck(const QString &text, bool state, bool advance) override;
    int addButton(const QString &text, bool advance) override;
    int addLabel(const QString &text, LabelAlign align, bool advance) override;
    int addLine(const QString &text, bool advance) override;
    int addEditor(const QString &text) override;
    int addCodeEditor(const QString &text) override;
    int addWell(int red, int green, int blue, bool advance) override;
    int addRangeStrip(std::function<uint32_t(double place)> colourAt) override;
    int addCurve(ToneCurve *curve) override;

    void setSlider(int index, int value) override;
    void setIntSpin(int index, int value) override;
    void setDoubleSpin(int index, double value) override;
    void setCombo(int index, int value) override;
    void setCheck(int index, bool state) override;
    void setLine(int index, const QString &text) override;
    void setCodeEditor(int index, const QString &text) override;
    void setWell(int index, int red, int green, int blue) override;
    void setLabel(int index, const QString &text) override;
    void setRangeStrip(int index) override;
    void setCurve(int index) override;

    void chooseOperator(int id) override;
    void armEyedropper() override;
    QString askFile(const QString &title, const QString &filter, bool save) override;

    /// What the operator is about to change, for a histogram behind a curve on the page.
    void showCurveSource(const image *picture);

    // The pools, for the slots that pass a widget on and for tests.
    WidgetPool<QPushButton, 8> buttons;
    WidgetPool<QCheckBox, 9> checks;
    WidgetPool<QComboBox, 13> combos;
    WidgetPool<QSpinBox, 9> intSpins;
    WidgetPool<QDoubleSpinBox, 9> doubleSpins;
    WidgetPool<QSlider, 6> sliders;
    WidgetPool<QLineEdit, 2> lines;
    WidgetPool<QPlainTextEdit, 1> editors;
    WidgetPool<CodeEdit, 1> codeEditors;
    std::vector<ColorWell *> wells;
    Curve *curve = nullptr;
    std::vector<cRange *> strips;
    std::vector<QLabel *> labels;

private:
    struct ValueLabel {
        QLabel *label = nullptr;
        QString unit;
    };

    void clear();
    QHBoxLayout *currentRow();
    void nextRow();
    /// Puts a control into the current row, names it, and ties the label before it to it.
    void place(QWidget *control, const QString &name, int stretch, bool advance);
    QLabel *makeLabel(const QString &text);
    void showValue(int index, int value);
    /// Gives the labels that start a row with a control the same width.
    void alignLabels();
    /// Makes the page area large enough for the page, within reason.
    void fitArea();
    void connectPage();
    void hook(QObject *widget, const char *signal, const char *slot, int index,
              const char *arguments);

    Operators *dialog;
    QScrollArea *area;
    QWidget *tabStart;
    QWidget *lastControl;    ///< the next one follows it in the tab order
    QWidget *page = nullptr; ///< belongs to the area
    QVBoxLayout *column = nullptr;
    std::vector<QHBoxLayout *> rows;
    int row = 0;
    QLabel *pendingLabel = nullptr; ///< waits for the control that it names
    std::array<ValueLabel, 6> valueLabels;
};
