// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <cstdint>

class image;
class OperatorTable;
class OpPage;

/// Menu groups of operators.
enum OperatorGroup {
    kGroupMacros = -1,
    kGroupAdjustment = 0,
    kGroupAlpha,
    kGroupCompose,
    kGroupFilter,
    kGroupGeometry,
    kGroupMeta,
    kGroupPcb,
    kGroupRender
};

/// Base class of every operator: a small object that changes an image under its area
/// mask. The same object serves the dialog, the preview and Apply, the writer of script
/// lines and the script engine.
class OpWrapper : public QObject
{
    Q_OBJECT
public:
    explicit OpWrapper(OperatorTable *table);
    ~OpWrapper() override;

    /// Restores default parameters, then updates the controls.
    virtual void reset();
    /// Changes `target`; `brush` is the assigned brush image or null.
    virtual void apply(image *target, image *brush);
    /// Writes (save) or reads the parameters and the hotkey.
    virtual void settings(bool save);
    /// Writes the script text of the current parameters, ending in a newline.
    virtual void scriptLine(QString *out);

    /// Control handlers. Nonzero: the change is dealt with. The preview is refreshed in
    /// both cases.
    virtual int dubspin(int index, double value);
    virtual int intspin(int index, int value);
    virtual int button(int index);
    virtual int checkbox(int index, bool state);
    virtual int combo(int index, int value);
    virtual int lineedit(int index, QString text);
    virtual int slider(int index, int value);
    virtual int codeedit(QObject *sender);
    virtual int editor(int index, QObject *sender);
    virtual int colorwell(int index, int value);

    /// Executes one script line: 1 done, 0 failed (*usage tells how), -1 not scriptable.
    virtual int scriptCall(int argc, QStringList *args, image *target, QString *usage);

    /// Reads the parameters of a script line without applying. False leaves all fields
    /// as they were; *usage is set in any case. Not scriptable: false, usage empty.
    virtual bool readArguments(int argc, const QStringList &args, QString *usage);

    /// Describes the operator's controls to the page of the dialog.
    virtual void build(OpPage *page);
    /// The curve that the page edits was changed by hand.
    virtual void curveEdited();

    /// One parameter by its settings key without the prefix, from text and as text: for the
    /// command line and for scripts that set what their operators have no word for. False or a
    /// null text for an unknown key; false, with nothing changed, for a bad value.
    virtual bool setParameter(const QString &key, const QString &value);
    virtual QString parameterText(const QString &key) const;

    /// Rows of a table for the manual page, in mark-up: each parameter's label, its range, its
    /// first value and its place in the script line. Empty without parameters.
    virtual QString helpRows() const;
    /// The usage line to the letter; empty for an operator without one.
    QString usage() const;

    int32_t id = -1;
    int32_t group = 0;
    QString menuName = QStringLiteral("Unset");
    QString scriptName = QStringLiteral("Unset");
    QString hotkey;
    bool scriptable = false;
    OpWrapper *self = nullptr; ///< set by the table; null means there is no operator
    QString usageLine;         ///< set by the table; "%1" stands for the script name

    OperatorTable *ops;
    QString helpPage; ///< for instance "opexposure.html"
};
