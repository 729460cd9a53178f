// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/base/operatortable.h"

#include "area/blendcurve.h"
#include "core/image.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "operators/base/oppage.h"
#include "operators/base/opwrapper.h"

#include <QDebug>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace
{
enum OperatorId {
    kCenterDefine = 10,
    kCrop = 20,
    kLayerClear = 49,
    kMeasure = 55,
    kPads = 65,
    kSample = 80,
    kScript = 82,
    kValves = 91
};

template <size_t N>
bool listed(const std::array<int, N> &ids, int id)
{
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

/// Marks an image as being worked on for the length of a scope. The operator may let
/// events through, in which an assigned image can go away: its mark is taken back only
/// if the assignment still stands.
class InUse
{
public:
    explicit InUse(image *target) : space(workspace()), work(target)
    {
        if (space) {
            listed = space->ownsImage(work);
            brush = space->brushImage;
            origin = space->originImage;
        }
        for (image *img : {work, brush, origin})
            if (img)
                img->inUse = true;
    }
    ~InUse()
    {
        if (stillThere())
            work->inUse = false;
        if (brush && space->brushImage == brush)
            brush->inUse = false;
        if (origin && space->originImage == origin)
            origin->inUse = false;
    }
    InUse(const InUse &) = delete;
    InUse &operator=(const InUse &) = delete;

    image *brushImage() const { return brush; }
    /// Whether the image outlived the operator; one that no list holds is its caller's care.
    bool stillThere() const { return !listed || space->ownsImage(work); }

private:
    Workspace *space;
    image *work;
    bool listed = false; ///< the workspace knew the image when the operator began
    image *brush = nullptr;
    image *origin = nullptr;
};

/// The views of the image follow, and the master of a layer at its next paint.
void tellViews(image *target, image *master, bool preview)
{
    if (Workspace::validImage(master)) {
        master->parentDirty = true;
        target->markMasterForRebuild();
    }
    if (!workspace())
        return;
    workspace()->refreshViews(target);
    if (preview)
        workspace()->previewOutdated();
}
} // namespace

OperatorTable::OperatorTable() : prefix(QStringLiteral("operator")) {}

OperatorTable::~OperatorTable() = default;

void OperatorTable::add(const Row &row)
{
    const bool empty = !row.make;
    add(row,
        empty ? std::unique_ptr<OpWrapper>(new (std::nothrow) OpWrapper(this)) : row.make(this));
    if (empty && !opList.empty() && opList.back()->id == row.id)
        opList.back()->self = nullptr;
}

void OperatorTable::add(const Row &row, std::unique_ptr<OpWrapper> op)
{
    if (!op) {
        qDebug() << "operator list allocation failed";
        return;
    }
    op->id = row.id;
    op->group = row.group;
    op->scriptName = QString::fromUtf8(row.scriptName);
    op->menuName = QString::fromUtf8(row.menuName);
    op->helpPage = QString::fromUtf8(row.helpPage);
    op->usageLine = QString::fromUtf8(row.usageLine);
    op->self = op.get();
    opList.push_back(op.get());
    owned.push_back(std::move(op));
}

OpWrapper *OperatorTable::byId(int id) const
{
    for (OpWrapper *op : opList)
        if (op->id == id)
            return op;
    return nullptr;
}

OpWrapper *OperatorTable::byScriptName(const QString &name) const
{
    for (OpWrapper *op : opList)
        if (op->self && op->scriptName == name)
            return op;
    return nullptr;
}

bool OperatorTable::allowedOnMaster(int id)
{
    constexpr std::array<int, 12> ids = {2, 3, 19, 20, 26, 38, 49, 55, 63, 65, 80, 91};
    return listed(ids, id);
}

bool OperatorTable::recordsUndo(int id)
{
    constexpr std::array<int, 7> ids = {kCenterDefine, kCrop,   kLayerClear, kMeasure,
                                        kPads,         kSample, kValves};
    return !listed(ids, id);
}

bool OperatorTable::isInternal(const image *img) const
{
    return img && (img == preview || img == previewHalf || img == previewThumb);
}

void OperatorTable::apply(image *target, bool fromWindow)
{
    OpWrapper *op = current();
    if (!Workspace::validImage(target) || !op)
        return;
    const int id = currentOp; // the operator may let events through that change it
    if (target->kind == 1 && !allowedOnMaster(id))
        return;
    const bool internal = isInternal(target);
    const bool observed = applyObserver && !internal && !inPreview;
    if (internal && (id == kMeasure || id == kSample))
        return;
    if (!internal)
        lastOp = id;
    if (observed)
        applyObserver(target, id, true);
    if (recordsUndo(id)) {
        beginAct(target);
        target->changed = true;
    }
    image *master = target->kind == 2 ? target->master : nullptr;
    if (op->self) {
        const InUse marks(target);
        op->self->apply(target, marks.brushImage());
        if (!marks.stillThere())
            return;
    }
    if (fromWindow)
        tellViews(target, master, id != kSample && id != kCenterDefine);
    if (id == kSample)
        comeBack();
    finish(target, id);
    if (observed)
        applyObserver(target, id, false);
}

void OperatorTable::finish(image *target, int id)
{
    constexpr std::array<int, 4> unstamped = {kCenterDefine, kCrop, kMeasure, kSample};
    if (inPreview || listed(unstamped, id))
        return;
    if (suppressOnce) {
        if (id == kScript)
            suppressOnce = false;
        return;
    }
    target->stampModification();
}

void OperatorTable::prepareAndApply(image *target, bool fromWindow)
{
    if (!Workspace::validImage(target))
        return;
    shapeMask(target);
    apply(target, fromWindow);
}

void OperatorTable::shapeMask(image *target)
{
    diffuseMask(target);
    if (workspace() && workspace()->invertSelection)
        target->invertMask();
}

/// From Sample to the operator that sent for its statistics.
void OperatorTable::comeBack()
{
    const int wanted = std::exchange(returnOp, 0);
    if (wanted == 0)
        return;
    if (page)
        page->chooseOperator(wanted);
    else
        currentOp = wanted;
}

bool OperatorTable::setParameter(const QString &key, const QString &value)
{
    if (!key.startsWith(prefix))
        return false;
    const QString own = key.mid(prefix.size());
    return std::any_of(opList.begin(), opList.end(),
                       [&](OpWrapper *op) { return op->self && op->setParameter(own, value); });
}

QString OperatorTable::parameterText(const QString &key) const
{
    if (!key.startsWith(prefix))
        return QString();
    const QString own = key.mid(prefix.size());
    for (const OpWrapper *op : opList) {
        const QString text = op->self ? op->parameterText(own) : QString();
        if (!text.isNull())
            return text;
    }
    return QString();
}

void OperatorTable::mix(image *target, double amount)
{
    if (!Workspace::validImage(target) || target->undoList.isEmpty())
        return;
    const image *before = target->undoList.last();
    if (before->width != target->width || before->height != target->height)
        return;
    const double now = std::clamp(amount, 0.0, 100.0) / 100.0;
    const double old = 1.0 - now;
    const auto from = before->colorPlanes(), to = target->colorPlanes();
    parallelRows(target->height, target->width, [&](int first, int end) {
        const int64_t start = int64_t(first) * target->width;
        const int64_t stop = int64_t(end) * target->width;
        for (size_t plane = 0; plane < to.size(); ++plane)
            for (int64_t i = start; i < stop; ++i)
                to[plane][i] = uint16_t(from[plane][i] * old + to[plane][i] * now);
    });
}

void OperatorTable::settings(bool save)
{
    if (!store)
        return;
    for (OpWrapper *op : opList)
        if (op->self)
            op->settings(save);
}
