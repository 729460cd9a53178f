// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/viewrender.h"
#include "views/warprender.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kCheckerSide = 8;

int devicePixels(int points, double ratio)
{
    return std::max(1, qRound(points * ratio));
}

/// All device pixels that a rectangle of points touches.
QRect deviceRect(const QRect &points, double ratio)
{
    return QRectF(QPointF(points.topLeft()) * ratio, QSizeF(points.size()) * ratio).toAlignedRect();
}
} // namespace

void imgWindow::paintEvent(QPaintEvent *event)
{
    if (painting || !validImage())
        return;
    const QScopedValueRollback<bool> guard(painting, true);
    composeIfDue();
    if (!paintOverlayOnly || rebuildCache || cache.isNull())
        renderCache();
    waitingPaint = false;
    paintOverlayOnly = false;
    QPainter painter(this);
    painter.save();
    // In device pixels picture and lines are sharp whatever the ratio.
    const double ratio = devicePixelRatioF();
    painter.scale(1.0 / ratio, 1.0 / ratio);
    const QRect due = deviceRect(event->rect(), ratio).intersected(cache.rect());
    painter.drawImage(due.topLeft(), cache, due);
    split.draw(&painter, due);
    drawOverlay(&painter);
    painter.restore();
    painter.setClipRect(pictureRect(), Qt::IntersectClip);
    notes.draw(&painter);
    painter.scale(1.0 / ratio, 1.0 / ratio);
    drawGuides(&painter);
}

/// A master follows its layers when it, or one of them, is next seen: so many changes in a
/// row cost one composition.
void imgWindow::composeIfDue()
{
    const image *master = masterOf(img);
    if (!master || !master->needsRebuild)
        return;
    compose(img, true); // which tells this window too that its cache is out of date
    ViewHost *host = viewHost();
    if (host && host->currentWindow == this && img->kind == 1) // a preview of it is of the old one
        host->refreshOperatorSource();
}

bool imgWindow::renderImage(const ViewGeometry &view, const ViewBackdrop &backdrop)
{
    return img->layerMode == kWarpMode ? renderWarp(*img, view, backdrop.surround, &cache)
                                       : renderView(*img, view, backdrop, &cache);
}

/// After a pan most of the picture stands in the cache, elsewhere.
bool imgWindow::scroll(const ViewGeometry &view, const ViewBackdrop &backdrop)
{
    return onlyPanned && img->layerMode != kWarpMode && !cache.isNull() && !(cached == view) &&
           scrollView(*img, cached, view, backdrop, &cache);
}

ViewBackdrop imgWindow::backdropShown() const
{
    const Workspace &space = *workspace();
    ViewBackdrop backdrop;
    backdrop.checker = space.checkerOn;
    backdrop.dark = space.checkerDark;
    backdrop.light = space.checkerLight;
    backdrop.cell = devicePixels(kCheckerSide, devicePixelRatioF());
    return backdrop;
}

void imgWindow::renderCache()
{
    // A plain repaint, when another window moved away, finds the cache as it was.
    const ViewGeometry view = geometryShown();
    const bool fits = cache.width() == view.width && cache.height() == view.height;
    if (!rebuildCache && fits)
        return;
    const ViewBackdrop backdrop = backdropShown();
    if (scroll(view, backdrop)) {
        ++scrolls;
    } else {
        if (!renderImage(view, backdrop))
            cache = QImage();
        ++renders;
        split.pictureOutdated();
        describe();
    }
    cached = view;
    onlyPanned = true;
    rebuildCache = false;
    outlineStale = true;
}
