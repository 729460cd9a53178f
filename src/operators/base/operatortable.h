// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <vector>

class OpPage;
class OpWrapper;
class QSettings;
class colorblending;
class image;

/// All operators in id order, and the way from a pressed Apply to changed pixels.
class OperatorTable
{
public:
    OperatorTable();
    /// What the table says of an operator. A row whose `make` is null stands in the list
    /// without an operator: nothing can select, call or apply it.
    struct Row {
        int id, group;
        const char *scriptName, *menuName, *helpPage;
        const char *usageLine; ///< to the letter, "%1" for the script name; "" without one
        std::unique_ptr<OpWrapper> (*make)(OperatorTable *table);
    };
    /// Adds one row; rows are added in id order.
    void add(const Row &row);
    void add(const Row &row, std::unique_ptr<OpWrapper> op);

    ~OperatorTable();

    const std::vector<OpWrapper *> &operators() const { return opList; }
    OpWrapper *byId(int id) const;
    /// Operators that can be called, by the first word of a script line.
    OpWrapper *byScriptName(const QString &name) const;
    OpWrapper *current() const { return byId(currentOp); }

    /// Runs the current operator on `target` with undo record, flags and stamp. The mask
    /// is used as it stands. `fromWindow`: the call comes from a window on that image.
    void apply(image *target, bool fromWindow);
    /// Shapes the mask by the blend curve, inverts it if that is set, then applies.
    void prepareAndApply(image *target, bool fromWindow);
    /// What prepareAndApply does to the mask before the operator runs.
    static void shapeMask(image *target);

    /// One parameter of any operator by its whole settings key, "operatorExposure" for
    /// instance; see OpWrapper::setParameter.
    bool setParameter(const QString &key, const QString &value);
    QString parameterText(const QString &key) const;

    /// Called before (begins true) and after each Apply to a picture, which is no preview.
    std::function<void(image *target, int id, bool begins)> applyObserver;

    /// Mixes the picture before the present act, which is the newest undo entry, with the
    /// present one: `amount` per cent of the present samples, in all four colour planes and
    /// regardless of the selection. Nothing without an entry of the same size.
    void mix(image *target, double amount);

    /// Whether an operator may work on a master's own pixels or fields.
    static bool allowedOnMaster(int id);
    /// Whether Apply records undo for this operator.
    static bool recordsUndo(int id);

    /// Reads or writes the parameters and hotkeys of all operators; without a store set
    /// nothing is read or written.
    void settings(bool save);
    /// The store that operators use, borrowed; null (the default) keeps them away from it.
    QSettings *store = nullptr;

    int currentOp = 0; ///< id of the current operator, 0 for none
    int lastOp = 0;    ///< id of the last operator applied to a real image
    int returnOp = 0;  ///< the operator that comes back once Sample was applied; 0: none
    QString prefix;    ///< "operator": start of all settings keys
    bool inPreview = false;
    bool suppressOnce = false;
    OpPage *page = nullptr;            ///< the page that shows the current operator, if any
    colorblending *blending = nullptr; ///< borrowed

    /// The three small images of the preview: a change to them is no act of the user.
    image *preview = nullptr;
    image *previewHalf = nullptr;
    image *previewThumb = nullptr;
    bool isInternal(const image *img) const;

private:
    void finish(image *target, int id);
    void comeBack();

    std::vector<std::unique_ptr<OpWrapper>> owned;
    std::vector<OpWrapper *> opList;
};
