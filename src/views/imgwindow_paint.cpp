// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewrender.h"
#include "views/warprender.h"

#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kCheckerSide = 8, kDashLength = 4;
constexpr double kLeastGridCell = 8.0; // a grid finer than this would hide the picture
const QColor kGridDark(0, 0, 0, 120), kGridLight(255, 255, 255, 120);

int devicePixels(int points, double ratio)
{
    return std::max(1, qRound(points * ratio));
}
} // namespace

void imgWindow::paintEvent(QPaintEvent *)
{
    if (painting || !validImage())
        return;
    const QScopedValueRollback<bool> guard(painting, true);
    composeIfDue();
    if (!paintOverlayOnly || rebuildCache || cache.isNull())
        render();
    waitingPaint = false;
    paintOverlayOnly = false;
    QPainter painter(this);
    if (!cache.isNull())
        painter.drawImage(QPoint(0, 0), cache);
    if (gridShown)
        drawGrid(&painter);
    drawSelection(&painter);
    notes.draw(&painter);
}

/// A master follows its layers when it, or one of them, is next seen: so many changes in a
/// row cost one composition.
void imgWindow::composeIfDue()
{
    const image *master = masterOf(img);
    if (master && master->needsRebuild)
        compose(img, true); // which tells this window too that its cache is out of date
}

bool imgWindow::renderImage(const ViewGeometry &view, const ViewBackdrop &backdrop)
{
    return img->layerMode == kWarpMode ? renderWarp(*img, view, backdrop.surround, &cache)
                                       : renderView(*img, view, backdrop, &cache);
}

void imgWindow::render()
{
    // A plain repaint, when another window moved away, finds the cache as it was.
    const ViewGeometry view = geometryShown();
    const bool fits = cache.width() == view.width && cache.height() == view.height;
    if (!rebuildCache && fits)
        return;
    const double ratio = devicePixelRatioF();
    const Workspace &space = *workspace();
    ViewBackdrop backdrop;
    backdrop.checker = space.checkerOn;
    backdrop.dark = space.checkerDark;
    backdrop.light = space.checkerLight;
    backdrop.cell = devicePixels(kCheckerSide, ratio);
    if (!renderImage(view, backdrop))
        cache = QImage();
    cache.setDevicePixelRatio(ratio);
    rebuildCache = false;
    outlineStale = true;
    ++renders;
}

void imgWindow::drawGrid(QPainter *painter) const
{
    const QPointF step = scaleToImage(1.0, 1.0);
    if (step.x() <= 0.0 || step.y() <= 0.0 || 1.0 / step.x() < kLeastGridCell ||
        1.0 / step.y() < kLeastGridCell)
        return;
    // A dark and a light grid, since no single colour is seen on every picture.
    painter->setPen(QPen(workspace()->gridColorToggle ? kGridLight : kGridDark, 0));
    const QPointF end = windowToImage(width(), height());
    const int left = std::max(0, panX), right = std::min(img->width, int(std::ceil(end.x())));
    const int top = std::max(0, panY), bottom = std::min(img->height, int(std::ceil(end.y())));
    const QPoint from = imageToWindow(QPointF(left, top)),
                 to = imageToWindow(QPointF(right, bottom));
    for (int x = left; x <= right; ++x) {
        const int at = imageToWindow(QPointF(x, top)).x();
        painter->drawLine(at, from.y(), at, to.y());
    }
    for (int y = top; y <= bottom; ++y) {
        const int at = imageToWindow(QPointF(left, y)).y();
        painter->drawLine(from.x(), at, to.x(), at);
    }
}

void imgWindow::drawSelection(QPainter *painter)
{
    if (outlineStale) {
        const double ratio = devicePixelRatioF();
        outlineSeen =
            maskOutline(*img, geometryShown(), devicePixels(kDashLength, ratio), &outline);
        outline.setDevicePixelRatio(ratio);
        outlineStale = false;
    }
    if (outlineSeen)
        painter->drawImage(QPoint(0, 0), outline);
}

void imgWindow::ongridchangetriggered()
{
    gridShown = workspace() && workspace()->gridState;
    paintOverlayOnly = !rebuildCache;
    update();
}
