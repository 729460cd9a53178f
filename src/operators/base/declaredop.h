// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/opwrapper.h"

#include <variant>
#include <vector>

/// How a parameter is shown. Make one with slider(), spin(), choice() or check().
struct OpControl {
    enum class Kind { None, Slider, IntSpin, DoubleSpin, Combo, Check } kind = Kind::None;
    const char *label = "";            ///< marked with QT_TR_NOOP
    std::vector<const char *> choices; ///< of a combo, in the order of their values
    double step = 1;                   ///< of a double spin box
    int decimals = 0;                  ///< of a double spin box
    const char *unit = "";
};
OpControl slider(const char *label, const char *unit = "");
OpControl spin(const char *label);
OpControl doubleSpin(const char *label, double step, int decimals);
OpControl choice(const char *label, std::vector<const char *> names);
OpControl check(const char *label);

/// One parameter of an operator, declared once. Its place among the declarations is its
/// place in the script line and decides its control's index within its kind.
struct OpParameter {
    std::variant<int *, double *, bool *> field;
    const char *key;          ///< settings key after the "operator" prefix
    double low = 0, high = 0; ///< inclusive; both 0: any value
    double initial = 0;       ///< what reset gives
    OpControl control;
    bool keptByReset = false;
    bool inScriptLine = true;
};

/// An operator whose controls, reset, settings, script line and script call follow from
/// its declared parameters. A subclass declares and writes apply; its usage line stands in
/// the table.
class DeclaredOp : public OpWrapper
{
    Q_OBJECT
public:
    explicit DeclaredOp(OperatorTable *table);

    void reset() override;
    void settings(bool save) override;
    void scriptLine(QString *out) override;
    int intspin(int index, int value) override;
    int dubspin(int index, double value) override;
    int checkbox(int index, bool state) override;
    int combo(int index, int value) override;
    int slider(int index, int value) override;
    int scriptCall(int argc, QStringList *args, image *target, QString *usage) override;
    bool readArguments(int argc, const QStringList &args, QString *usage) override;
    void build(OpPage *page) override;

    const std::vector<OpParameter> &parameters() const { return declared; }
    bool setParameter(const QString &key, const QString &value) override;
    QString parameterText(const QString &key) const override;
    QString helpRows() const override;
    int colorwell(int index, int value) override;

protected:
    /// Adds a parameter and gives its field the initial value.
    void declare(OpParameter parameter);
    QString hotkeyKey; ///< settings key of the hotkey, for instance "ExposureHotkey"

    /// Adds a colour well, after all other controls, that shows three parameters of 0 to 255
    /// as a colour and sets them to the one picked.
    void declareWell(const char *label, int *red, int *green, int *blue);

    /// Shows the fields in the controls if this is the current operator's page.
    void showFields();
    /// The page while it shows this operator, else null.
    OpPage *ownPage() const;

private:
    const OpParameter *ofKind(OpControl::Kind kind, int index) const;
    int changed(OpControl::Kind kind, int index, double value);
    void addControl(OpPage *page, const OpParameter &parameter) const;
    QString translated(const char *source) const;
    QString rangeText(const OpParameter &parameter) const;
    QString initialText(const OpParameter &parameter) const;
    void showWells();

    struct Well {
        const char *label;
        int *red, *green, *blue;
    };
    std::vector<OpParameter> declared;
    std::vector<Well> wells;
};
