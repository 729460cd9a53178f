// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/operators.h"

#include "core/scale.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/dialog/histogramview.h"
#include "operators/dialog/oppreview.h"
#include "operators/dialog/pagebuilder.h"
#include "operators/pipeline/random15.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include "ui_operators.h"

#include <algorithm>

namespace
{
constexpr int kIdHorizontalRemove = 42;
constexpr int kIdRoll = 77;
constexpr int kIdSample = 80;
constexpr int kIdVerticalRemove = 93;
constexpr int kAgainMs = 50; ///< until a refresh that could not be is tried again

/// An internal image of the given size. An operator may have left the old one with
/// another size, or memory may have been short before: then it is made anew.
/// True if it was.
bool ensureImage(std::unique_ptr<image> *held, int side, const QString &name)
{
    if (*held && (*held)->valid() && (*held)->width == side && (*held)->height == side)
        return false;
    *held = std::make_unique<image>();
    (*held)->noUndo = true;
    if (!(*held)->allocate(side, side, name))
        held->reset();
    return true;
}

/// The layer kinds that operators must know of in the preview too.
int previewLayerMode(int mode)
{
    return mode == 6 || (mode >= 15 && mode <= 21) ? mode : 0;
}

/// Keeps an origin inside a picture. One smaller than the view ends at the view's far
/// edge, since the upper limit is tested last.
int clampOrigin(int origin, int pictureSide, int viewSide)
{
    return std::min(std::max(origin, 0), pictureSide - viewSide);
}

/// Copies one row of the crop; what lies outside of the source is white at alpha 0.
void copyRow(const image &source, int left, int y, image *target, int row)
{
    const int side = target->width;
    const bool inside = y >= 0 && y < source.height;
    const int first = inside ? std::clamp(-left, 0, side) : side;
    const int last = inside ? std::clamp(source.width - left, first, side) : side;
    const auto from = source.colorPlanes();
    const auto to = target->colorPlanes();
    for (size_t plane = 0; plane < to.size(); ++plane) {
        uint16_t *out = to[plane] + int64_t(row) * side;
        const uint16_t outside = to[plane] == target->alpha ? 0 : 65535;
        std::fill(out, out + side, outside);
        if (first < last)
            std::copy_n(from[plane] + int64_t(y) * source.width + left + first, last - first,
                        out + first);
    }
    uint16_t *mask = target->gmask + int64_t(row) * side;
    std::fill(mask, mask + side, uint16_t(0));
    std::fill(mask + first, mask + last, uint16_t(65535));
}

/// Some operators work on what surrounds the selection, so all of a small picture
/// selected would show nothing of them: they get a part of it.
void narrowMask(image *target, int id)
{
    const int side = target->width;
    const bool square = id == kIdHorizontalRemove || id == kIdVerticalRemove;
    const int low = side / 4;
    const int high = side == kPreviewSide ? 76 : 38;
    const auto within = [&](int place) { return place >= low && place < high; };
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            if ((square && !(within(x) && within(y))) || (id == kIdRoll && y < side / 2))
                target->gmask[y * side + x] = 0;
}
} // namespace

void Operators::makeInternalImages()
{
    ensureImage(&preview, kPreviewSide, QStringLiteral("internal-preview"));
    ensureImage(&previewHalf, kHalfPreviewSide, QStringLiteral("internal-preview2"));
    if (ensureImage(&previewThumb, kPreviewSide,
                    QStringLiteral("thumbnail-internal-preview-thumb")))
        sourceStale = true;
    table->preview = preview.get();
    table->previewHalf = previewHalf.get();
    table->previewThumb = previewThumb.get();
}

void Operators::schedulePreview()
{
    sourceStale = true;
    parameterChanged();
}

void Operators::parameterChanged()
{
    if (viewHost())
        viewHost()->splitOutdated();
    scheduleKeepingSource();
}

void Operators::scheduleKeepingSource()
{
    // Without an interval it comes when the queue of events is empty.
    if (!refreshTimer.isActive())
        refreshTimer.start(0);
}

/// Whether an operator runs at present, which lets events through now and then: its fields and
/// the tables that it fills must not serve a preview meanwhile.
bool Operators::isWorkGoingOn() const
{
    const auto busy = [](const image *img) { return img->inUse; };
    const QList<image *> &all = workspace()->images;
    return table->inPreview || std::any_of(all.begin(), all.end(), [&](const image *img) {
               return busy(img) || std::any_of(img->layers.begin(), img->layers.end(), busy);
           });
}

void Operators::refreshWhenFree()
{
    if (isWorkGoingOn()) {
        refreshTimer.start(kAgainMs);
        return;
    }
    showPreview();
}

void Operators::refreshPreview()
{
    // An operator that asks for a refresh while the preview runs it would go round for ever.
    if (table->inPreview)
        return;
    sourceStale = true;
    showPreview();
}

void Operators::showPreview()
{
    refreshTimer.stop();
    const bool keptThumbnail = workspace()->thumbnail;
    thumbnailUsed = false;
    updateButtons();
    imgWindow *window = currentView();
    PreviewPlan plan{};
    makeInternalImages();
    if (window && planPreview(window, &plan))
        runPreview(plan);
    else
        clearPreview();
    workspace()->thumbnail = keptThumbnail;
    emit previewRefreshed();
}

/// The whole picture, scaled into the third internal image. Reading samples all over a large
/// picture takes longer than all else of a refresh, so what stands there serves as long as
/// nothing but the operator's parameters changed.
bool Operators::fillThumbnail(const image *img)
{
    const ThumbnailSource now = {
        img,         img->red,       img->serial,          img->width,
        img->height, img->layerMode, img->undoList.size(), img->modificationTime};
    if (!sourceStale && now == thumbnailSource)
        return true;
    if (!scaleBilinear(img, previewThumb.get(), true))
        return false;
    previewThumb->layerMode = img->layerMode;
    previewThumb->imageMode = img->imageMode;
    thumbnailSource = now;
    return true;
}
bool Operators::planPreview(imgWindow *window, PreviewPlan *plan)
{
    if (!preview || !previewHalf || !previewThumb)
        return false;
    const image *img = window->img;
    const bool x2 = workspace()->opsX2Preview;
    const int side = x2 ? kHalfPreviewSide : kPreviewSide;
    const bool small = img->width < side && img->height < side;
    if (workspace()->thumbnail || small) {
        workspace()->thumbnail = true;
        thumbnailUsed = true;
        if (!fillThumbnail(img))
            return false;
        *plan = {previewThumb.get(), preview.get(), 0, 0, false};
        return true;
    }
    window->previewX = clampOrigin(window->previewX, img->width, side);
    window->previewY = clampOrigin(window->previewY, img->height, side);
    *plan = {img, x2 ? previewHalf.get() : preview.get(), window->previewX, window->previewY, x2};
    return true;
}

void Operators::runPreview(const PreviewPlan &plan)
{
    for (int row = 0; row < plan.target->height; ++row)
        copyRow(*plan.source, plan.x, plan.y + row, plan.target, row);
    preview->layerMode = previewHalf->layerMode = previewLayerMode(plan.source->layerMode);
    plan.target->imageMode = plan.source->imageMode;
    narrowMask(plan.target, table->currentOp);

    builder->showCurveSource(plan.target);
    const bool sampling = table->currentOp == kIdSample;
    if (!sampling && !beforeShown) {
        const RandomAside aside;
        table->inPreview = true;
        table->apply(plan.target, false);
        table->inPreview = false;
    }
    // The samples of a whole large picture are counted only when they may be others.
    if (!sampling || sourceStale)
        ui->histogram->setPicture(sampling ? plan.source : plan.target);
    ui->oppreview->setPicture(plan.target, plan.x2);
    sourceStale = false;
}

void Operators::clearPreview()
{
    builder->showCurveSource(nullptr);
    ui->histogram->setPicture(nullptr);
    ui->oppreview->setPicture(nullptr, false);
}

void Operators::prod(int dx, int dy)
{
    imgWindow *window = currentView();
    if (!window)
        return;
    window->previewX += dx;
    window->previewY += dy;
    scheduleKeepingSource();
}
