// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/imgwindow.h"

#include "core/image.h"
#include "core/memory.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "views/viewhost.h"
#include "views/viewrender.h"

#include <QDebug>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr double kFirstZoom = 0.0009765625; // 2 to the power -10
constexpr double kUnityTolerance = 0.0000001;
constexpr int kMostSteps = 50; // more, and scale 1 is not reached within the table
constexpr int kStartWidth = 400, kStartHeight = 300;
constexpr int kSettleMs = 120;

/// Positions far outside of any image are limited, since a conversion of a larger double
/// to int is undefined.
int limitedInt(double value)
{
    constexpr double limit = 1 << 30;
    return value > -limit && value < limit ? int(value) : value > 0 ? int(limit) : -int(limit);
}
} // namespace

imgWindow::imgWindow(image *shown)
    : QDialog(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                           Qt::WindowCloseButtonHint),
      img(shown)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAcceptDrops(true);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    resize(kStartWidth, kStartHeight);
    zooms = static_cast<float *>(ucalloc(kZoomEntries, sizeof(float), "zooms list"));
    buildZooms();
    settle.setSingleShot(true);
    settle.setInterval(kSettleMs);
    connect(&settle, &QTimer::timeout, this, &imgWindow::settleAspect);
    gridShown = workspace() && workspace()->gridState;
    validMark = kWindowMark;
    if (img && img->valid()) {
        setWindowTitle(img->title);
        setAccessibleName(img->title);
    }
}

imgWindow::~imgWindow()
{
    validMark = 0;
    upfree(&zooms);
    if (ViewHost *host = viewHost()) {
        host->windows.removeAll(this);
        if (host->currentWindow == this)
            host->currentWindow = nullptr;
    }
}

bool imgWindow::validImage() const
{
    return valid() && img && workspace() && workspace()->ownsImage(img) && img->valid();
}

void imgWindow::buildZooms()
{
    if (!zooms)
        return;
    const int perDoubling = std::clamp(workspace() ? workspace()->zoomSteps : 1, 1, kMostSteps);
    const double factor = std::pow(2.0, 1.0 / perDoubling);
    presetZooms.clear();
    // The running product is a double: in floats, rounding would lose scale 1.
    double value = kFirstZoom;
    for (int i = 0; i < kZoomsFilled; ++i, value *= factor) {
        zooms[i] = float(std::min(value, double(std::numeric_limits<float>::max())));
        if (i % perDoubling != 0)
            continue;
        presetZooms << i;
        if (std::fabs(value - 1.0) < kUnityTolerance)
            unityIndex = i;
    }
    zoomIndex = unityIndex;
    zoom = zooms[zoomIndex];
    viewMoved();
}

// --- Coordinates ----------------------------------------------------------------------

bool imgWindow::steps(const char *caller, double *xStep, double *yStep) const
{
    if (!img) {
        qDebug().noquote().nospace() << caller << " has null image pointer, forcing 0,0";
        return false;
    }
    if (zoom == 0.0F) {
        qDebug().noquote().nospace() << caller << " has zero zoom, forcing 0,0";
        return false;
    }
    if (width() == 0 || height() == 0) {
        qDebug() << "wxw = 0, forcing 0,0";
        return false;
    }
    *xStep = double(img->width) / double(width()) / double(zoom);
    *yStep = double(img->height) / double(height()) / double(zoom);
    if (*xStep == 0.0)
        qDebug() << "xstep = 0, forcing 0,0";
    else if (*yStep == 0.0)
        qDebug() << "ystep = 0, forcing 0,0";
    return *xStep != 0.0 && *yStep != 0.0;
}

QPoint imgWindow::imageToWindow(QPointF position) const
{
    double xStep, yStep;
    if (!steps("imageToWindow", &xStep, &yStep))
        return {0, 0};
    return {limitedInt((position.x() - panX) / xStep), limitedInt((position.y() - panY) / yStep)};
}

QPointF imgWindow::scaleToImage(double x, double y) const
{
    double xStep, yStep;
    if (!steps("windowToImage", &xStep, &yStep))
        return {0, 0};
    return {x * xStep, y * yStep};
}

QPointF imgWindow::windowToImage(double x, double y) const
{
    double xStep, yStep;
    if (!steps("windowToImage", &xStep, &yStep))
        return {0, 0};
    return {x * xStep + panX, y * yStep + panY};
}

QPoint imgWindow::windowToSample(double x, double y) const
{
    const QPointF place = windowToImage(x, y);
    return {limitedInt(std::floor(place.x() + 0.5)), limitedInt(std::floor(place.y() + 0.5))};
}

ViewGeometry imgWindow::geometryShown() const
{
    ViewGeometry view;
    const double ratio = devicePixelRatioF();
    view.width = qRound(width() * ratio);
    view.height = qRound(height() * ratio);
    view.panX = panX;
    view.panY = panY;
    if (!img || view.width <= 0 || view.height <= 0 || zoom <= 0.0F)
        return {};
    view.xStep = double(img->width) / double(view.width) / double(zoom);
    view.yStep = double(img->height) / double(view.height) / double(zoom);
    return view;
}

void imgWindow::placeAt(QPointF position, QPointF client)
{
    const QPointF offset = scaleToImage(client.x(), client.y());
    panX = limitedInt(std::floor(position.x() - offset.x() + 0.5));
    panY = limitedInt(std::floor(position.y() - offset.y() + 0.5));
}

void imgWindow::zoomTo(int index, QPointF anchor)
{
    constexpr double leastSamples = 2.0, leastPixels = 16.0;
    if (!zooms || !validImage() || index < 0 || index >= kZoomsFilled)
        return;
    const double wanted = zooms[index];
    const bool closer = index > zoomIndex;
    if (closer && std::min(img->width, img->height) / wanted < leastSamples)
        return;
    if (!closer && std::max(width(), height()) * wanted < leastPixels)
        return;
    const QPointF under = windowToImage(anchor.x(), anchor.y());
    zoomIndex = index;
    zoom = zooms[index];
    placeAt(under, anchor);
    viewMoved();
}

// --- Keeping up with the image ----------------------------------------------------------

void imgWindow::viewMoved()
{
    rebuildCache = true;
    outlineStale = true;
    if (!waitingPaint)
        paintOverlayOnly = false;
    update();
}

void imgWindow::refresh()
{
    if (!validImage())
        return;
    if (windowTitle() != img->title) {
        setWindowTitle(img->title);
        setAccessibleName(img->title);
    }
    if (fittedAspect != 0.0 && shownAspect() != fittedAspect)
        fit(true);
    viewMoved();
}

void imgWindow::refreshOverlay()
{
    outlineStale = true;
    paintOverlayOnly = true;
    update();
}

void imgWindow::repaintAll()
{
    fit(false);
    viewMoved();
}

void imgWindow::inTheBalls()
{
    auto *from = qobject_cast<imgWindow *>(sender());
    (from ? from : this)->viewMoved();
}

void imgWindow::prepareAndApply(image *target)
{
    ViewHost *host = viewHost();
    if (!validImage() || !target || !host || !host->operatorTable())
        return;
    host->operatorTable()->prepareAndApply(target, true);
}

void imgWindow::applyHere()
{
    prepareAndApply(img);
}
