// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QGuiApplication>
#include <QResizeEvent>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace
{
/// What a window system and the memory of the cache can bear for one client area.
constexpr double kMostSide = 32767.0;
constexpr double kMostPixels = 1 << 26;
constexpr double kLeastHeight = 8.0; // a window of no height could not be found again
constexpr double kScreenShare = 0.95;
} // namespace

double imgWindow::shownAspect() const
{
    if (!img || !img->valid())
        return 1.0;
    return img->width / (img->height * img->dpiAspect());
}

QRect imgWindow::desktop() const
{
    const QScreen *on = screen() ? screen() : QGuiApplication::primaryScreen();
    return on ? on->availableGeometry() : QRect(0, 0, 1024, 768);
}

QSize imgWindow::frameSize() const
{
    return frameGeometry().size() - size();
}

int imgWindow::widthThatFits(double aspect) const
{
    const QSize room = desktop().size() - frameSize();
    double best = 0.0;
    for (int index : presetZooms) {
        if (index > kLastFitIndex)
            break;
        const double wide = img->width * double(zooms[index]);
        if (wide <= room.width() && wide / aspect <= room.height())
            best = wide;
    }
    return int(best);
}

/// The height is a double, since an extreme aspect gives more than an int holds.
void imgWindow::setClient(int wantedWidth, double wantedHeight)
{
    const bool before = fitting;
    fitting = true;
    asked = QSize(wantedWidth, int(std::clamp(wantedHeight, 1.0, kMostSide)));
    resize(asked);
    fitting = before;
}

void imgWindow::fit(bool open)
{
    if (fitting || !img || !img->valid())
        return;
    fittedAspect = shownAspect();
    int wide = width();
    if (open) {
        wide = zooms ? widthThatFits(fittedAspect) : wide;
        zoomIndex = unityIndex;
        zoom = zooms ? zooms[zoomIndex] : 1.0F;
        panX = panY = savedPanX = savedPanY = 0;
    }
    wide = std::max(wide, kLeastFitWidth);
    // Of a picture like a thread the desktop shows a stretched one rather than none.
    const double most = std::max(desktop().height(), height());
    const double high = std::max(wide / fittedAspect, kLeastHeight);
    setClient(wide, wide == kLeastFitWidth ? std::min(high, most) : high);
    viewMoved();
}

void imgWindow::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    viewMoved();
    // While the person drags the frame the picture stretches with it; correcting at each
    // step would fight the window manager. A size that a fit asked for needs nothing.
    if (!fitting && event->size() != asked && fittedAspect > 0.0)
        settle.start();
}

void imgWindow::settleAspect()
{
    if (!validImage() || isMaximized() || isFullScreen())
        return;
    const double aspect = shownAspect();
    // Who moved only the lower or upper edge meant the height.
    double wide = width() == asked.width() ? height() * aspect : width();
    const double roomHigh = desktop().height() - frameSize().height();
    if (wide / aspect > roomHigh)
        wide = std::min(wide, std::max(roomHigh, double(height())) * aspect);
    wide = std::clamp(wide, double(kLeastFitWidth), kMostSide);
    const QSize target(int(wide), int(wide / aspect));
    if (target == asked) {
        // The window manager insists on its size: asking again would go on for ever.
        return;
    }
    fittedAspect = aspect;
    setClient(target.width(), wide / aspect);
}

void imgWindow::showAt(double scale)
{
    if (!validImage() || !(scale > 0.0))
        return;
    double wide = img->width * scale, high = img->height * scale;
    const double excess =
        std::max({wide / kMostSide, high / kMostSide, std::sqrt(wide * high / kMostPixels), 1.0});
    wide = std::max(1.0, wide / excess);
    high = std::max(1.0, high / excess);
    fittedAspect = shownAspect();
    setClient(int(wide), high);
    viewMoved();
}

void imgWindow::fillScreen()
{
    const QRect room = desktop();
    const QSize frame = frameGeometry().size(), margins = frameSize();
    if (frame.isEmpty() || !img)
        return;
    const double scale = std::min(kScreenShare * room.width() / frame.width(),
                                  kScreenShare * room.height() / frame.height());
    const double aspect = shownAspect();
    const double wide = std::max(frame.width() * scale - margins.width(), double(kLeastFitWidth));
    setClient(int(wide), int(wide) / aspect);
    move(room.right() + 1 - (width() + margins.width()), room.top());
    viewMoved();
}

void imgWindow::ona10to1triggered()
{
    showAt(10.0);
}
void imgWindow::ona9to1triggered()
{
    showAt(9.0);
}
void imgWindow::ona8to1triggered()
{
    showAt(8.0);
}
void imgWindow::ona7to1triggered()
{
    showAt(7.0);
}
void imgWindow::ona6to1triggered()
{
    showAt(6.0);
}
void imgWindow::ona5to1triggered()
{
    showAt(5.0);
}
void imgWindow::ona4to1triggered()
{
    showAt(4.0);
}
void imgWindow::ona3to1triggered()
{
    showAt(3.0);
}
void imgWindow::ona2to1triggered()
{
    showAt(2.0);
}
void imgWindow::ona1to1triggered()
{
    showAt(1.0);
}
void imgWindow::ona1to2triggered()
{
    showAt(1.0 / 2.0);
}
void imgWindow::ona1to3triggered()
{
    showAt(1.0 / 3.0);
}
void imgWindow::ona1to4triggered()
{
    showAt(1.0 / 4.0);
}
