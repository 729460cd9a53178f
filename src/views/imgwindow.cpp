// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/imgwindow.h"

#include "core/image.h"
#include "core/memory.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "script/run/macrorecorder.h"
#include "views/snapping.h"
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
    if (img && img->valid())
        setWindowTitle(img->title); // which changeEvent describes to assistive tools
}

imgWindow::~imgWindow()
{
    finishJobs(false);
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
    const QSizeF area = QSizeF(deviceArea().size()) / devicePixelRatioF();
    *xStep = double(img->width) / area.width() / double(zoom);
    *yStep = double(img->height) / area.height() / double(zoom);
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
    const QPointF corner = QPointF(deviceArea().topLeft()) / devicePixelRatioF();
    return {limitedInt((position.x() - panX) / xStep + corner.x()),
            limitedInt((position.y() - panY) / yStep + corner.y())};
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
    const QPointF corner = QPointF(deviceArea().topLeft()) / devicePixelRatioF();
    return {(x - corner.x()) * xStep + panX, (y - corner.y()) * yStep + panY};
}

QPoint imgWindow::windowToSample(double x, double y) const
{
    const QPointF place = windowToImage(x, y);
    return {limitedInt(std::floor(place.x() + 0.5)), limitedInt(std::floor(place.y() + 0.5))};
}

QRect imgWindow::deviceArea() const
{
    const double ratio = devicePixelRatioF();
    const QSize client(qRound(width() * ratio), qRound(height() * ratio));
    const double aspect = shownAspect();
    if (sizeIsGiven() && aspect > 0.0 && !client.isEmpty()) {
        const int wide = std::clamp(int(client.height() * aspect), 1, client.width());
        const int high = std::clamp(int(client.width() / aspect), 1, client.height());
        return {(client.width() - wide) / 2, (client.height() - high) / 2, wide, high};
    }
    const QSize rest = askedPixels - client;
    const bool rounded = size() == asked && std::max(rest.width(), rest.height()) <= 1 &&
                         std::min(rest.width(), rest.height()) >= 0;
    return {QPoint(0, 0), rounded ? askedPixels : client};
}

ViewGeometry imgWindow::geometryShown() const
{
    ViewGeometry view;
    const double ratio = devicePixelRatioF();
    const QRect area = deviceArea();
    view.width = qRound(width() * ratio);
    view.height = qRound(height() * ratio);
    view.panX = panX;
    view.panY = panY;
    view.offsetX = area.left();
    view.offsetY = area.top();
    if (!img || view.width <= 0 || view.height <= 0 || zoom <= 0.0F)
        return {};
    view.xStep = double(img->width) / double(area.width()) / double(zoom);
    view.yStep = double(img->height) / double(area.height()) / double(zoom);
    return view;
}

QPointF imgWindow::snapped(QPointF imagePosition, Qt::KeyboardModifiers modifiers) const
{
    constexpr double reach = 6.0; // client pixels
    if (!validImage() || modifiers & Qt::AltModifier)
        return imagePosition;
    const Workspace &space = *workspace();
    SnapRules rules;
    if (space.snapToGuides && space.guidesShown) { // what is not seen should not pull
        const QPointF distance = scaleToImage(reach, reach);
        rules.guidesX = img->guidesX;
        rules.guidesY = img->guidesY;
        rules.reachX = distance.x();
        rules.reachY = distance.y();
    }
    if (space.snapToGrid) {
        rules.gridX = space.snapGridX;
        rules.gridY = space.snapGridY;
        rules.gridOffsetX = space.snapOffsetX;
        rules.gridOffsetY = space.snapOffsetY;
    }
    return snapPosition(imagePosition, rules);
}

void imgWindow::placeAt(QPointF position, QPointF client)
{
    const QPointF corner = QPointF(deviceArea().topLeft()) / devicePixelRatioF();
    const QPointF offset = scaleToImage(client.x() - corner.x(), client.y() - corner.y());
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

/// A zoom to a box stands between two entries of the table.
int imgWindow::indexFurtherOut() const
{
    return zooms && zooms[zoomIndex] < zoom ? zoomIndex : zoomIndex - 1;
}

void imgWindow::zoomToBox(const QRectF &box)
{
    constexpr double leastSamples = 2.0;
    if (!zooms || !validImage())
        return;
    const double sideX = std::max(box.width(), leastSamples);
    const double sideY = std::max(box.height(), leastSamples);
    const double wanted = std::min(img->width / sideX, img->height / sideY);
    const float *first = zooms, *end = zooms + kLastFitIndex + 1;
    const auto index = std::upper_bound(first, end, float(wanted)) - first - 1;
    if (index < 0)
        return;
    zoomIndex = int(index);
    zoom = float(wanted);
    placeAt(box.center(), clientCentre());
    viewMoved();
}

// --- Keeping up with the image ----------------------------------------------------------

void imgWindow::viewPanned()
{
    rebuildCache = true;
    outlineStale = true;
    if (!waitingPaint)
        paintOverlayOnly = false;
    update();
}

void imgWindow::viewMoved()
{
    onlyPanned = false;
    viewPanned();
}

void imgWindow::refresh()
{
    if (!validImage())
        return;
    if (windowTitle() != img->title)
        setWindowTitle(img->title);
    if (fittedAspect != 0.0 && shownAspect() != fittedAspect)
        fit(true);
    viewMoved();
}

/// The name is the picture's title; the description says what is seen of it.
void imgWindow::describe()
{
    setAccessibleName(windowTitle());
    if (!validImage())
        return;
    const ViewGeometry view = geometryShown();
    const QString text = tr("Picture of %1 by %2 pixels, shown at %3 %")
                             .arg(img->width)
                             .arg(img->height)
                             .arg(qRound(100.0 / view.xStep));
    if (accessibleDescription() != text)
        setAccessibleDescription(text);
}

void imgWindow::refreshOverlay()
{
    outlineStale = true;
    split.pictureOutdated();
    paintOverlayOnly = true;
    update();
}

void imgWindow::splitOutdated()
{
    split.effectOutdated();
    if (!split.wanted() && !split.drawn())
        return;
    paintOverlayOnly = true;
    update();
}

void imgWindow::repaintAll()
{
    fit(false);
    viewMoved();
}

void imgWindow::prepareAndApply(image *target)
{
    ViewHost *host = viewHost();
    if (!validImage() || !target || !host || !host->operatorTable())
        return;
    settleJobs();
    for (imgWindow *window : host->windowsOf(target))
        window->settleJobs(); // their jobs read the image
    MacroRecorder *recorder = host->recorder();
    if (recorder)
        recorder->shapeBegins(*target);
    host->operatorTable()->prepareAndApply(target, true);
    if (recorder)
        recorder->shapeEnds();
}

void imgWindow::applyHere()
{
    prepareAndApply(img);
}
