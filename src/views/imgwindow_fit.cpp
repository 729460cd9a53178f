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
    const QSizeF room = QSizeF(desktop().size() - frameSize()) * devicePixelRatioF();
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

/// Full screen, maximised, or held by the window manager.
bool imgWindow::sizeIsGiven() const
{
    return isMaximized() || isFullScreen() || sizeRefused;
}

/// The height is a double, since an extreme aspect gives more than an int holds. Points
/// are rounded down: what does not fill a point is cut off, and no gap shows.
void imgWindow::setClient(int wantedWidth, double wantedHeight)
{
    const bool before = fitting;
    fitting = true;
    const double ratio = devicePixelRatioF();
    askedPixels = QSize(wantedWidth, int(std::clamp(wantedHeight, 1.0, kMostSide)));
    asked = QSize(std::max(1, int(askedPixels.width() / ratio)),
                  std::max(1, int(askedPixels.height() / ratio)));
    sizeRefused = askedAgain = false;
    overruled = QSize();
    resize(asked);
    fitting = before;
}

void imgWindow::fit(bool open)
{
    if (fitting || !img || !img->valid())
        return;
    fittedAspect = shownAspect();
    if (open)
        savedPanX = savedPanY = 0, fitView();
    if (isMaximized() || isFullScreen()) { // which hold the picture as it is
        viewMoved();
        return;
    }
    const double ratio = devicePixelRatioF();
    int wide = open && zooms ? widthThatFits(fittedAspect) : deviceArea().width();
    const int least = int(kLeastFitWidth * ratio);
    wide = std::max(wide, least);
    // Of a picture like a thread the desktop shows a stretched one rather than none.
    const double most = std::max(desktop().height(), height()) * ratio;
    const double high = std::max(wide / fittedAspect, kLeastHeight * ratio);
    setClient(wide, wide == least ? std::min(high, most) : high);
    viewMoved();
}

void imgWindow::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    if (event->size() != asked)
        sizeRefused = false; // whoever sized it gets the aspect, if he lets the window have it
    viewMoved();
    // While the person drags the frame the picture stretches with it; correcting at each
    // step would fight the window manager. A size that a fit asked for needs nothing.
    if (!fitting && event->size() != asked && fittedAspect > 0.0)
        settle.start();
}

/// The client size of the image's aspect nearest to what the person made of the window.
QSizeF imgWindow::settledSize() const
{
    const double aspect = shownAspect();
    // Who moved only the lower or upper edge meant the height. He may have paused on the
    // way, so that the size was settled under his hand.
    const bool onlyHigher = width() == asked.width() ||
                            (width() == overruled.width() && height() != overruled.height());
    double wide = onlyHigher ? height() * aspect : width();
    const double roomHigh = desktop().height() - frameSize().height();
    if (wide / aspect > roomHigh)
        wide = std::min(wide, std::max(roomHigh, double(height())) * aspect);
    wide = std::clamp(wide, double(kLeastFitWidth), kMostSide);
    return {std::floor(wide), wide / aspect};
}

void imgWindow::settleAspect()
{
    if (!validImage() || isMaximized() || isFullScreen() || size() == asked)
        return;
    // At the end of a drag a window manager sets the size of the drag again, over what was
    // settled meanwhile: that is asked for once more. One that insists even then (it may
    // tile its windows) has its will, and the picture keeps its aspect within that size.
    const bool again = size() == overruled;
    if (again && askedAgain) {
        sizeRefused = true;
        viewMoved();
        return;
    }
    const QSize was = size();
    const double ratio = devicePixelRatioF();
    const QSizeF target = again ? QSizeF(askedPixels) / ratio : settledSize();
    if (QSize(int(target.width()), int(target.height())) == was)
        return;
    fittedAspect = shownAspect();
    setClient(int(target.width() * ratio), target.height() * ratio);
    overruled = was;
    askedAgain = again;
}

/// Back from full screen the window has its former size, but the picture may have been
/// turned meanwhile.
void imgWindow::stateChanged()
{
    viewMoved();
    if (isMaximized() || isFullScreen() || fittedAspect == 0.0)
        return;
    asked = askedPixels = QSize();
    settle.start();
}

void imgWindow::toggleFullScreen()
{
    if (isFullScreen())
        showNormal();
    else
        showFullScreen();
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
    if (isMaximized() || isFullScreen())
        showNormal(); // a window that fills the screen has no size of its own
    setClient(int(wide), high);
    viewMoved();
}

void imgWindow::fillScreen()
{
    const QRect room = desktop();
    const QSize frame = frameGeometry().size(), margins = frameSize();
    if (frame.isEmpty() || !img)
        return;
    const double ratio = devicePixelRatioF();
    const double scale = std::min(kScreenShare * room.width() / frame.width(),
                                  kScreenShare * room.height() / frame.height());
    const double aspect = shownAspect();
    const int wide = std::max(int(frame.width() * scale - margins.width()), kLeastFitWidth);
    if (isMaximized() || isFullScreen())
        showNormal();
    setClient(int(wide * ratio), wide / aspect * ratio);
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
