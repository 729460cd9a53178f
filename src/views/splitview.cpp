// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/splitview.h"

#include "area/blendcurve_kernels.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/pipeline/random15.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kReach = 6.0; // client pixels; further off, presses belong to the tools
const QColor kLineColor(255, 255, 255), kLineEdge(0, 0, 0, 150), kPlate(0, 0, 0, 160);

OperatorTable *operatorTable()
{
    ViewHost *host = viewHost();
    return host ? host->operatorTable() : nullptr;
}

template <size_t N>
bool listed(const std::array<int, N> &ids, int id)
{
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

/// Operators that leave samples alone, or of which nobody knows what else they do.
bool showsNothing(const OpWrapper &op)
{
    constexpr std::array<int, 2> ids = {20, 80}; // Crop, Sample
    return op.group == kGroupMacros || op.group == kGroupMeta || op.group == kGroupPcb ||
           listed(ids, op.id);
}

/// Operators that go by where a sample lies in the picture: a part of it taken for the whole
/// would show another effect.
bool goesByPlace(const OpWrapper &op)
{
    constexpr std::array<int, 5> ids = {34, 57, 69, 90,
                                        92}; // Frame, Merge, Place, Tunnel, Vignette
    return op.group == kGroupGeometry || op.group == kGroupRender || listed(ids, op.id);
}

/// The place of a sample among those shown.
int placeAmong(const std::vector<int32_t> &shown, int sample)
{
    return int(std::lower_bound(shown.begin(), shown.end(), sample) - shown.begin());
}

bool wholeIn(const std::vector<int32_t> &shown, int size, double step)
{
    return !shown.empty() && shown.front() < std::max(step, 1.0) &&
           shown.back() >= size - std::max(step, 1.0);
}

void gatherRow(const uint16_t *from, const std::vector<int32_t> &columns, uint16_t *to)
{
    const size_t count = columns.size();
    if (size_t(columns.back() - columns.front()) + 1 == count)
        std::copy_n(from + columns.front(), count, to);
    else
        for (size_t i = 0; i < count; ++i)
            to[i] = from[columns[i]];
}

/// Shapes the words of one row of which only some columns are there.
void shapeRow(const dmask &factors, int y, const std::vector<int32_t> &columns, uint16_t *words)
{
    constexpr int chunk = 256;
    double span[chunk], picked[chunk];
    const int end = int(columns.size());
    int i = placeAmong(columns, factors.left);
    while (i < end && columns[size_t(i)] <= factors.right) {
        const int first = columns[size_t(i)], count = std::min(chunk, factors.right - first + 1);
        factors.factorRow(y - factors.top, first - factors.left, count, span);
        const int from = i;
        for (; i < end && columns[size_t(i)] < first + count; ++i)
            picked[i - from] = span[columns[size_t(i)] - first];
        KERNEL_DISPATCH(shapeWords, words + from, picked, i - from);
    }
}
} // namespace

SplitView::SplitView(imgWindow *shownIn) : window(shownIn) {}

SplitView::~SplitView() = default;

// --- What is to be shown ----------------------------------------------------------------

OpWrapper *SplitView::op() const
{
    const OperatorTable *table = operatorTable();
    OpWrapper *current = table ? table->current() : nullptr;
    return current && current->self ? current : nullptr;
}

bool SplitView::wanted() const
{
    const ViewHost *host = viewHost();
    return workspace() && workspace()->splitView && host && host->currentWindow == window &&
           window->validImage();
}

QString SplitView::hindrance() const
{
    const OpWrapper *current = op();
    if (!window->validImage() || !current)
        return imgWindow::tr("Choose an operator to see its effect in the split view");
    if (window->img->kind == 1)
        return imgWindow::tr("Operators work on layers: open one to see the split view");
    if (showsNothing(*current) || window->img->layerMode == kWarpMode)
        return imgWindow::tr("There is no split view of %1").arg(current->menuName);
    const ViewGeometry view = window->geometryShown();
    if (!goesByPlace(*current) || !view.usableFor(*window->img))
        return QString();
    const ShownSamples visible(*window->img, view);
    const bool whole = wholeIn(visible.columns, window->img->width, view.xStep) &&
                       wholeIn(visible.rows, window->img->height, view.yStep);
    return whole
               ? QString()
               : imgWindow::tr("%1 works on the picture as a whole: zoom out to see the split view")
                     .arg(current->menuName);
}

void SplitView::pictureOutdated()
{
    stale = factorsStale = true;
    seen.reset();
}

SplitView::Look SplitView::lookNow() const
{
    const Workspace &space = *workspace();
    const OperatorTable *table = operatorTable();
    Look look;
    look.view = window->geometryShown();
    look.backdrop = window->backdropShown();
    look.img = window->img;
    look.brush = space.brushImage;
    look.id = table ? table->currentOp : 0;
    look.blendMode = space.blendMode;
    look.inverted = space.invertSelection;
    look.colours = {space.foreRed, space.foreGreen, space.foreBlue,
                    space.backRed, space.backGreen, space.backBlue};
    look.curve = {space.curveMode, space.curveFactor, space.curveAmplitude, space.curveFloor};
    return look;
}

/// An operator is at work and lets events through, or works beside the main thread: a second
/// run would share its tables.
bool SplitView::busy() const
{
    const auto inUse = [](const image *img) {
        return img->inUse || std::any_of(img->layers.begin(), img->layers.end(),
                                         [](const image *layer) { return layer->inUse; });
    };
    const OperatorTable *table = operatorTable();
    const auto &images = workspace()->images;
    const auto &windows = viewHost()->windows;
    return !table || table->inPreview || std::any_of(images.begin(), images.end(), inUse) ||
           std::any_of(windows.begin(), windows.end(),
                       [](const imgWindow *other) { return other->previewJobRunning(); });
}

// --- The effect -------------------------------------------------------------------------

void SplitView::refresh()
{
    const Look look = lookNow();
    if (!stale && look == shownLook)
        return;
    stale = true; // unless it is made
    const bool possible = hindrance().isEmpty();
    if (possible && busy()) {
        after = QImage();
        return;
    }
    stale = false;
    shownLook = look;
    if (!possible || !makeEffect(look))
        after = QImage();
}

bool SplitView::makeEffect(const Look &look)
{
    const bool known = seen && look.sameSource(seenLook);
    if ((!known && !gather(look)) || !ensurePicture(&part))
        return false;
    part->copyWorkPlanes(*seen);
    ++runs;
    return run() && renderShown(*window->img, *part, look.view, look.backdrop, &after);
}

/// A picture for the shown samples. An operator may have left the last one with another size.
bool SplitView::ensurePicture(std::unique_ptr<image> *held) const
{
    const image &img = *window->img;
    const int wide = int(shown.columns.size()), high = int(shown.rows.size());
    if (wide == 0 || high == 0)
        return false;
    image *made = held->get();
    if (!made || !made->valid() || made->width != wide || made->height != high) {
        *held = std::make_unique<image>();
        made = held->get();
        made->noUndo = true;
        if (!made->allocateUnfilled(wide, high, QStringLiteral("split-view"))) {
            held->reset();
            return false;
        }
    }
    made->imageMode = img.imageMode;
    made->layerMode = img.layerMode;
    made->quantised = img.quantised;
    made->xDpi = img.xDpi;
    made->yDpi = img.yDpi;
    made->xCenter = placeAmong(shown.columns, img.xCenter);
    made->yCenter = placeAmong(shown.rows, img.yCenter);
    return true;
}

bool SplitView::gather(const Look &look)
{
    const image &img = *window->img;
    shown = ShownSamples(img, look.view);
    if (!ensurePicture(&seen)) {
        seen.reset();
        return false;
    }
    const auto from = img.workPlanes(), to = seen->workPlanes();
    parallelRows(seen->height, seen->width, [&](int first, int end) {
        for (size_t plane = 0; plane < to.size(); ++plane)
            for (int y = first; y < end; ++y)
                gatherRow(from[plane] + int64_t(shown.rows[size_t(y)]) * img.width, shown.columns,
                          to[plane] + int64_t(y) * seen->width);
    });
    shapeMask(look);
    seenLook = look;
    return true;
}

/// As Apply does, whose curve spans the whole selection, of which a part may be in sight.
void SplitView::shapeMask(const Look &look)
{
    if (factorsStale || !(look.curve == factorsCurve)) {
        factors = std::make_unique<dmask>();
        if (!factors->prepare(window->img))
            factors.reset();
        factorsCurve = look.curve;
        factorsStale = false;
    }
    if (factors)
        parallelRows(seen->height, seen->width, [&](int first, int end) {
            for (int y = first; y < end; ++y) {
                const int row = shown.rows[size_t(y)];
                if (row >= factors->top && row <= factors->bottom)
                    shapeRow(*factors, row, shown.columns, seen->gmask + int64_t(y) * seen->width);
            }
        });
    if (look.inverted)
        seen->invertMask();
}

/// As the preview of the dialog: no act of the person's, and no numbers taken from the work.
bool SplitView::run() const
{
    OperatorTable &table = *operatorTable();
    const int wide = part->width, high = part->height;
    const RandomAside aside;
    const QScopedValueRollback<image *> internal(table.preview, part.get());
    const QScopedValueRollback<bool> preview(table.inPreview, true);
    table.apply(part.get(), false);
    return part->valid() && part->width == wide && part->height == high;
}

// --- Paint ------------------------------------------------------------------------------

void SplitView::draw(QPainter *painter, const QRect &due)
{
    if (!wanted()) { // in most windows, so nothing is kept for it
        after = QImage();
        part.reset();
        factors.reset();
        pictureOutdated();
        return;
    }
    refresh();
    if (after.isNull())
        return;
    const int at = column();
    const QRect right = due & QRect(at, 0, after.width() - at, after.height());
    if (!right.isEmpty())
        painter->drawImage(right.topLeft(), after, right);
    drawBorder(painter);
}

double SplitView::place() const
{
    const int setting = workspace()->splitPlace;
    return exactPlace >= 0 && qRound(exactPlace) == setting ? exactPlace : setting;
}

int SplitView::column() const
{
    const double ratio = window->devicePixelRatioF();
    const int first = qRound(window->pictureRect().left() * ratio);
    const int end = qRound(window->width() * ratio);
    return std::clamp(qRound(window->width() * ratio * place() / 100.0), first,
                      std::max(first, end));
}

/// A line that is seen on any picture, with a handle in its middle and a word on each side.
void SplitView::drawBorder(QPainter *painter) const
{
    constexpr double handle = 9.0, arrow = 4.0, gap = 10.0, margin = 5.0;
    const double ratio = window->devicePixelRatioF();
    const int at = column(), thick = std::max(1, qRound(ratio));
    painter->fillRect(at - 2 * thick, 0, 3 * thick, after.height(), kLineEdge);
    painter->fillRect(at - thick, 0, thick, after.height(), kLineColor);

    painter->save();
    painter->scale(ratio, ratio);
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF picture = window->pictureRect();
    const QPointF middle((at - thick / 2.0) / ratio, picture.center().y());
    painter->setPen(QPen(kLineColor, 1.5));
    painter->setBrush(QColor(0, 0, 0, 200));
    painter->drawEllipse(middle, handle, handle);
    painter->setPen(Qt::NoPen);
    painter->setBrush(kLineColor);
    for (const double side : {-1.0, 1.0}) {
        const QPointF tip = middle + QPointF(side * (arrow + 2.5), 0);
        const QPointF base(tip.x() - side * arrow, tip.y());
        const QPointF corners[] = {tip, base + QPointF(0, arrow), base - QPointF(0, arrow)};
        painter->drawPolygon(corners, 3);
    }

    const QFontMetricsF metrics(window->font(), window);
    const double high = metrics.height() + margin, top = picture.top() + gap;
    const QString before = imgWindow::tr("Before"), behind = imgWindow::tr("After");
    const double beforeWide = metrics.horizontalAdvance(before) + 2 * margin;
    const QRectF left(middle.x() - gap - beforeWide, top, beforeWide, high);
    const QRectF right(middle.x() + gap, top, metrics.horizontalAdvance(behind) + 2 * margin, high);
    painter->setFont(window->font());
    for (const auto &[plate, text] : {std::pair(left, before), std::pair(right, behind)}) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(kPlate);
        painter->drawRoundedRect(plate, margin, margin);
        painter->setPen(kLineColor);
        painter->drawText(plate, Qt::AlignCenter, text);
    }
    painter->restore();
}

// --- The border under the mouse -----------------------------------------------------------

bool SplitView::near(QPointF client) const
{
    return wanted() && drawn() && !viewHost()->eyepointPending &&
           window->pictureRect().contains(client.toPoint()) &&
           std::fabs(client.x() - column() / window->devicePixelRatioF()) <= kReach;
}

void SplitView::putAt(double percent)
{
    exactPlace = std::clamp(percent, 0.0, 100.0);
    workspace()->splitPlace = qRound(exactPlace);
    window->paintOverlayOnly = true;
    window->update();
}

bool SplitView::press(const QMouseEvent &event)
{
    if (event.button() != Qt::LeftButton || !near(event.localPos()))
        return dragging; // other buttons wait for the end of the drag
    dragging = true;
    grabbedAt = event.localPos().x() - column() / window->devicePixelRatioF();
    placeBefore = place();
    showCursor(event.localPos());
    return true;
}

bool SplitView::move(const QMouseEvent &event)
{
    if (!(event.buttons() & Qt::LeftButton)) // the release may have gone elsewhere
        dragging = false;
    if (dragging && window->width() > 0)
        putAt(100.0 * (event.localPos().x() - grabbedAt) / window->width());
    return dragging;
}

bool SplitView::release(const QMouseEvent &event)
{
    const bool taken = dragging;
    if (event.button() == Qt::LeftButton && dragging) {
        dragging = false;
        showCursor(event.localPos());
    }
    return taken;
}

bool SplitView::doubleClick(const QMouseEvent &event)
{
    if (event.button() != Qt::LeftButton || !near(event.localPos()))
        return false;
    putAt(50.0);
    return true;
}

bool SplitView::keyPress(const QKeyEvent &event)
{
    if (!dragging || event.key() != Qt::Key_Escape)
        return false;
    dragging = false;
    putAt(placeBefore);
    return true;
}

void SplitView::showCursor(QPointF client)
{
    const bool held = dragging || near(client);
    if (held)
        window->setCursor(Qt::SplitHCursor);
    else if (cursorShown)
        window->unsetCursor();
    cursorShown = held;
}
