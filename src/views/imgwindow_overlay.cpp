// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/viewrender.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kDashLength = 4;
constexpr double kLeastGridCell = 8.0; // points; a finer grid would hide the picture
// No single colour is seen on every picture: grids come in a dark and a light one, guides
// in dashes of two.
const QColor kGridDark(0, 0, 0, 120), kGridLight(255, 255, 255, 120);
const QColor kSnapDark(0, 40, 160, 150), kSnapLight(150, 200, 255, 150);
const QColor kGuideDark(0, 0, 130), kGuideLight(0, 235, 255);

/// Lines on every `spacing`-th sample from `offset` on, within the image, and where they
/// stand among the client's pixels.
struct GridLines {
    const ViewGeometry &view;
    QRect box; ///< the image, in device pixels within the client
    QColor color;

    GridLines(const ViewGeometry &of, const image &img, const QColor &lines)
        : view(of), color(lines)
    {
        box.setCoords(std::max(view.columnAt(0), 0), std::max(view.rowAt(0), 0),
                      std::min(view.columnAt(img.width), view.width),
                      std::min(view.rowAt(img.height), view.height));
    }
    void draw(QPainter *painter, int spacingX, int spacingY, int offsetX, int offsetY) const
    {
        for (int64_t x = first(box.left(), view.offsetX, view.xStep, view.panX, spacingX, offsetX);;
             x += spacingX) {
            const int at = view.columnAt(double(x));
            if (at > box.right())
                break;
            if (at >= box.left())
                painter->fillRect(at, box.top(), 1, box.bottom() - box.top(), color);
        }
        for (int64_t y = first(box.top(), view.offsetY, view.yStep, view.panY, spacingY, offsetY);;
             y += spacingY) {
            const int at = view.rowAt(double(y));
            if (at > box.bottom())
                break;
            if (at >= box.top())
                painter->fillRect(box.left(), at, box.right() - box.left(), 1, color);
        }
    }

private:
    /// The last line at or before a pixel.
    static int64_t first(int pixel, int from, double step, int pan, int spacing, int offset)
    {
        const double place = (pixel - from) * step + pan;
        return int64_t(std::floor((place - offset) / spacing)) * spacing + offset;
    }
};
} // namespace

bool imgWindow::rulersOn() const
{
    return workspace() && workspace()->showRulers;
}

QRect imgWindow::pictureRect() const
{
    return rulersOn() ? rect().adjusted(kRulerThickness, kRulerThickness, 0, 0) : rect();
}

/// What lies over the picture and under its notes, drawn in device pixels.
void imgWindow::drawOverlay(QPainter *painter)
{
    if (gridShown)
        drawGrid(painter);
    if (workspace()->snapGridShown)
        drawSnapGrid(painter);
    if (rulersOn()) {
        drawRulers(painter);
        const int thick = qRound(kRulerThickness * devicePixelRatioF());
        painter->setClipRect(QRect(thick, thick, cache.width(), cache.height()), Qt::IntersectClip);
    }
    drawSelection(painter);
    figure.draw(painter, *this);
}

void imgWindow::drawGrid(QPainter *painter) const
{
    const QPointF step = scaleToImage(1.0, 1.0);
    if (step.x() <= 0.0 || step.y() <= 0.0 || 1.0 / step.x() < kLeastGridCell ||
        1.0 / step.y() < kLeastGridCell)
        return;
    const ViewGeometry view = geometryShown();
    const QColor &color = workspace()->gridColorToggle ? kGridLight : kGridDark;
    GridLines(view, *img, color).draw(painter, 1, 1, 0, 0);
}

void imgWindow::drawSnapGrid(QPainter *painter) const
{
    const Workspace &space = *workspace();
    const QPointF step = scaleToImage(1.0, 1.0);
    if (step.x() <= 0.0 || step.y() <= 0.0 || space.snapGridX / step.x() < kLeastGridCell ||
        space.snapGridY / step.y() < kLeastGridCell)
        return;
    const ViewGeometry view = geometryShown();
    const QColor &color = space.gridColorToggle ? kSnapLight : kSnapDark;
    GridLines(view, *img, color)
        .draw(painter, space.snapGridX, space.snapGridY, space.snapOffsetX, space.snapOffsetY);
}

void imgWindow::drawRulers(QPainter *painter)
{
    RulerLook look;
    look.view = geometryShown();
    look.ratio = devicePixelRatioF();
    look.unit = workspace()->rulerUnit;
    look.perX = samplesPerRulerUnit(look.unit, img->xDpi);
    look.perY = samplesPerRulerUnit(look.unit, img->yDpi);
    look.palette = palette().cacheKey();
    rulers.draw(painter, look, palette(), pointerMark);
}

void imgWindow::drawGuides(QPainter *painter) const
{
    if (workspace()->guidesShown) {
        for (const int place : img->guidesX)
            drawGuide(painter, Qt::Vertical, place);
        for (const int place : img->guidesY)
            drawGuide(painter, Qt::Horizontal, place);
    }
    if (draggedGuide)
        drawGuide(painter, draggedGuide->way, draggedGuide->place);
}

void imgWindow::drawGuide(QPainter *painter, Qt::Orientation way, int place) const
{
    const ViewGeometry view = geometryShown();
    const double ratio = devicePixelRatioF();
    const int line = std::max(1, int(ratio)), dash = qRound(2 * kDashLength * ratio);
    const bool upright = way == Qt::Vertical;
    const int at = upright ? view.columnAt(place) : view.rowAt(place);
    const int most = upright ? view.width : view.height;
    if (at < 0 || at > most)
        return;
    const int kept = std::min(at, most - line); // a guide on the far edge of the picture
    const int length = upright ? view.height : view.width;
    for (int from = 0, turn = 0; from < length; from += dash, ++turn)
        painter->fillRect(upright ? QRect(kept, from, line, dash) : QRect(from, kept, dash, line),
                          turn & 1 ? kGuideLight : kGuideDark);
}

void imgWindow::drawSelection(QPainter *painter)
{
    DashLook look = dashLook(devicePixelRatioF());
    if (outlineStale) {
        outline.trace(*img, geometryShown(), look.line);
        outlineStale = false;
    }
    look.phase = outlinePhase;
    outline.draw(painter, look);
    march.settle();
}

bool imgWindow::outlineMoves() const
{
    const ViewHost *host = viewHost();
    return outline.seen() && workspace()->marchingOutline && host && host->currentWindow == this &&
           isVisible() && !isMinimized() && isActiveWindow() && !gesture.rubberBand && validImage();
}

/// Only where the outline is seen the window is painted again.
void imgWindow::moveOutline()
{
    const double ratio = devicePixelRatioF();
    const DashLook look = dashLook(ratio);
    outlinePhase = (outlinePhase + look.line) % look.period();
    QRegion due;
    for (const QRect &place : outline.places())
        due +=
            QRectF(QPointF(place.topLeft()) / ratio, QSizeF(place.size()) / ratio).toAlignedRect();
    paintOverlayOnly = !rebuildCache;
    update(due);
}

void imgWindow::ongridchangetriggered()
{
    gridShown = workspace() && workspace()->gridState;
    paintOverlayOnly = !rebuildCache;
    update();
}
