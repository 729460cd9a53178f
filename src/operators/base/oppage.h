// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <functional>

class ToneCurve;

/// What an operator's build step may ask of the page that shows its controls. The dialog
/// implements it with widgets; operators know no widget. Each add function returns the
/// index in the pool of its kind, or -1 when the pool is used up.
class OpPage
{
public:
    virtual ~OpPage() = default;

    /// A label in its row, then a slider in the next. With `showValue` the label is
    /// followed by the value in a fixed-width face, `unit` after it.
    virtual int addSlider(const QString &label, int low, int high, int value, bool showValue,
                          const QString &unit = QString()) = 0;
    virtual int addIntSpin(int low, int high, int value, bool advance) = 0;
    virtual int addDoubleSpin(double low, double high, double step, int decimals, double value,
                              bool advance) = 0;
    virtual int addCombo(const QStringList &names, int index, bool advance) = 0;
    virtual int addComboData(const QStringList &names, const QVariantList &values, int index,
                             bool advance) = 0;
    virtual int addCheck(const QString &text, bool state, bool advance) = 0;
    virtual int addButton(const QString &text, bool advance) = 0;
    enum class LabelAlign { Left, Right, Centre };
    virtual int addLabel(const QString &text, LabelAlign align, bool advance) = 0;
    virtual int addLine(const QString &text, bool advance) = 0;
    virtual int addEditor(const QString &text) = 0;
    /// An editor for a text of the script language, in colours; codeedit() hears of changes.
    virtual int addCodeEditor(const QString &text) = 0;
    /// A colour well; the components are 16-bit, of which the top byte is shown.
    virtual int addWell(int red, int green, int blue, bool advance) = 0;
    /// A strip as wide as the page that shows a range of colours: `colourAt` gives the colour
    /// 0xRRGGBB for a place of 0 (left) to 1 (right).
    virtual int addRangeStrip(std::function<uint32_t(double place)> colourAt) = 0;
    /// A curve whose knots can be dragged. It edits `curve`, which must outlive the page, and
    /// then tells the operator by curveEdited().
    virtual int addCurve(ToneCurve *curve) = 0;

    /// Shows new values in controls that exist, without their signals.
    virtual void setSlider(int index, int value) = 0;
    virtual void setIntSpin(int index, int value) = 0;
    virtual void setDoubleSpin(int index, double value) = 0;
    virtual void setCombo(int index, int value) = 0;
    virtual void setCheck(int index, bool state) = 0;
    virtual void setLine(int index, const QString &text) = 0;
    virtual void setCodeEditor(int index, const QString &text) = 0;
    virtual void setWell(int index, int red, int green, int blue) = 0;
    virtual void setLabel(int index, const QString &text) = 0;
    virtual void setRangeStrip(int index) = 0; ///< draws it anew
    virtual void setCurve(int index) = 0;      ///< shows the curve as it is now

    /// Makes another operator the current one.
    virtual void chooseOperator(int id) = 0;
    /// The next press or drag in a picture reads the samples there into the statistics that
    /// Sample keeps; the preview then follows. The operator stays the current one.
    virtual void armEyedropper() = 0;
    /// Asks for a file to open or save (`filter` as in "Curves (*.crv)"); empty if given up.
    virtual QString askFile(const QString &title, const QString &filter, bool save) = 0;
};
