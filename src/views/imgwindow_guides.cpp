// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <algorithm>
#include <cmath>

// Guides are made by a drag out of a ruler and taken away by a drag back into it. While the
// rulers are shown a guide can be moved by the mouse; with them hidden a press on a guide
// belongs to the tool, which may want to begin right there.

namespace
{
constexpr double kGrabReach = 3.0; // points
} // namespace

QList<int> &imgWindow::guideList(Qt::Orientation way) const
{
    return way == Qt::Vertical ? img->guidesX : img->guidesY;
}

/// The guide under the mouse, if guides can be moved.
std::optional<imgWindow::Guide> imgWindow::guideAt(QPointF client) const
{
    if (!rulersOn() || !workspace()->guidesShown || !pictureRect().contains(client.toPoint()))
        return std::nullopt;
    for (const Qt::Orientation way : {Qt::Vertical, Qt::Horizontal})
        for (const int place : guideList(way)) {
            const bool upright = way == Qt::Vertical;
            const QPoint at = imageToWindow(upright ? QPointF(place, 0) : QPointF(0, place));
            const double distance = upright ? at.x() - client.x() : at.y() - client.y();
            if (std::fabs(distance) <= kGrabReach)
                return Guide{way, place};
        }
    return std::nullopt;
}

/// A press in a ruler begins a guide; one in the corner takes the next unit.
bool imgWindow::pressRuler(QPointF client)
{
    if (!rulersOn() || pictureRect().contains(client.toPoint()))
        return false;
    const bool inTop = client.y() < kRulerThickness, inLeft = client.x() < kRulerThickness;
    if (inTop && inLeft) {
        const QString units[] = {tr("Rulers count pixels"), tr("Rulers count inches"),
                                 tr("Rulers count centimetres")};
        int &unit = workspace()->rulerUnit;
        unit = (unit + 1) % 3;
        workspace()->statusText(units[unit]);
        for (imgWindow *window : viewHost() ? viewHost()->windows : QList<imgWindow *>())
            window->update();
        return true;
    }
    grabbedFrom.reset();
    draggedGuide = Guide{inTop ? Qt::Horizontal : Qt::Vertical, -1};
    return true;
}

bool imgWindow::grabGuide(QPointF client)
{
    const std::optional<Guide> found = guideAt(client);
    if (!found)
        return false;
    draggedGuide = found;
    grabbedFrom = found->place;
    guideList(found->way).removeOne(found->place);
    return true;
}

void imgWindow::dragGuide(QPointF client, Qt::KeyboardModifiers modifiers)
{
    QPointF place = windowToImage(client.x(), client.y());
    const Workspace &space = *workspace();
    if (space.snapToGrid && !(modifiers & Qt::AltModifier))
        place = snapped(place, modifiers);
    updateGuide(*draggedGuide);
    const double along = draggedGuide->way == Qt::Vertical ? place.x() : place.y();
    draggedGuide->place =
        int(std::floor(std::clamp(along, -double(kMaxImageSide), 2.0 * kMaxImageSide) + 0.5));
    updateGuide(*draggedGuide);
    showGuideCursor(client);
    workspace()->statusText(tr("Guide at %1").arg(draggedGuide->place));
}

void imgWindow::dropGuide(QPointF client)
{
    const Guide guide = *draggedGuide;
    const bool kept = pictureRect().contains(client.toPoint());
    draggedGuide.reset();
    if (kept && !guideList(guide.way).contains(guide.place))
        guideList(guide.way) << guide.place;
    if (kept && !workspace()->guidesShown) // or the new one would vanish at once
        workspace()->guidesShown = true;
    if (!kept && grabbedFrom)
        workspace()->statusText(tr("The guide is removed"));
    guidesChanged();
    showGuideCursor(client);
}

/// Puts a moved guide back; a new one is given up.
void imgWindow::cancelGuide()
{
    if (!draggedGuide)
        return;
    if (grabbedFrom)
        guideList(draggedGuide->way) << *grabbedFrom;
    draggedGuide.reset();
    guidesChanged();
}

/// Only the strip in which a guide stands is painted again.
void imgWindow::updateGuide(const Guide &guide)
{
    const bool upright = guide.way == Qt::Vertical;
    const QPoint at = imageToWindow(upright ? QPointF(guide.place, 0) : QPointF(0, guide.place));
    update(upright ? QRect(at.x() - 2, 0, 5, height()) : QRect(0, at.y() - 2, width(), 5));
}

/// All views of the image show its guides.
void imgWindow::guidesChanged()
{
    ViewHost *host = viewHost();
    for (imgWindow *window : host ? host->windowsOf(img) : QList<imgWindow *>{this})
        window->update();
    if (host)
        host->updateMenus();
}

void imgWindow::clearGuides()
{
    if (img->guidesX.isEmpty() && img->guidesY.isEmpty()) {
        workspace()->statusText(tr("This image has no guides"));
        return;
    }
    img->guidesX.clear();
    img->guidesY.clear();
    guidesChanged();
}

void imgWindow::showGuideCursor(QPointF client)
{
    const std::optional<Guide> under = draggedGuide ? draggedGuide : guideAt(client);
    if (under)
        setCursor(under->way == Qt::Vertical ? Qt::SplitHCursor : Qt::SplitVCursor);
    else if (guideCursor)
        unsetCursor();
    guideCursor = under.has_value();
}

/// The rulers show where the pointer is; only their two marks are painted again.
void imgWindow::markPointer(QPointF client)
{
    if (!rulersOn())
        return;
    const double ratio = devicePixelRatioF();
    const auto updateMark = [this, ratio]() {
        const int x = int(pointerMark.x() / ratio), y = int(pointerMark.y() / ratio);
        update(x - 1, 0, 4, kRulerThickness);
        update(0, y - 1, kRulerThickness, 4);
    };
    updateMark();
    pointerMark = rect().contains(client.toPoint()) ? (client * ratio).toPoint() : QPoint(-1, -1);
    updateMark();
}
