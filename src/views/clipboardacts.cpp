// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/clipboardacts.h"

#include "core/colour_inline.h"
#include "core/compose.h"
#include "core/image.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "layers/stack.h"
#include "views/viewhost.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include <algorithm>
#include <memory>

namespace
{
constexpr int kYrbMode = 1;

/// What this program puts on the clipboard: the picture itself, of which other programs
/// are given the high bytes when they ask.
class PictureMime : public QMimeData
{
public:
    explicit PictureMime(std::unique_ptr<image> carried) : img(std::move(carried)) {}
    const image *picture() const { return img.get(); }

    QStringList formats() const override { return {kImageFormat}; }
    bool hasFormat(const QString &type) const override { return type == kImageFormat; }

protected:
    QVariant retrieveData(const QString &type, QVariant::Type) const override
    {
        return type == kImageFormat ? QVariant(img->toQImage()) : QVariant();
    }

private:
    /// The name that Qt knows pictures by; it offers the common forms of it.
    const QString kImageFormat = QStringLiteral("application/x-qt-image");
    std::unique_ptr<image> img;
};

QString translated(const char *text)
{
    return QCoreApplication::translate("imgWindow", text);
}

bool refuse(const char *text)
{
    workspace()->messageBox(QString(), translated(text));
    return false;
}

bool refuseNoMemory()
{
    return refuse("Image Allocation Failed");
}

QRect selectedPart(const image &img)
{
    if (!img.gmask || !img.anyMaskSet())
        return {0, 0, img.width, img.height};
    const Bounds bounds = img.maskBounds();
    return {QPoint(bounds.left, bounds.top), QPoint(bounds.right, bounds.bottom)};
}

uint16_t weighed(uint16_t alpha, uint16_t mask)
{
    return uint16_t(uint32_t(alpha) * mask / 65535U);
}

void decodeRow(const image &img, int64_t at, int count)
{
    for (int64_t i = at; i < at + count; ++i) {
        const Rgb rgb = yrbToRgb({double(img.red[i]), double(img.green[i]), double(img.blue[i])});
        img.red[i] = uint16_t(clampSampleValue(rgb.red));
        img.green[i] = uint16_t(clampSampleValue(rgb.green));
        img.blue[i] = uint16_t(clampSampleValue(rgb.blue));
    }
}

/// The selected part as a picture of its own; null if memory is short.
std::unique_ptr<image> cutOut(const image &img, const QRect &part, bool bySelection)
{
    auto copy = std::make_unique<image>();
    if (!copy->allocateUnfilled(part.width(), part.height(), img.name))
        return nullptr;
    copy->copyMetadata(img);
    const auto from = img.colorPlanes(), to = copy->colorPlanes();
    parallelRows(part.height(), part.width() * int(to.size()), [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const int64_t source = int64_t(part.top() + y) * img.width + part.left();
            const int64_t target = int64_t(y) * part.width();
            for (size_t p = 0; p < to.size(); ++p)
                std::copy_n(from[p] + source, part.width(), to[p] + target);
            if (bySelection)
                for (int x = 0; x < part.width(); ++x)
                    copy->alpha[target + x] =
                        weighed(copy->alpha[target + x], img.gmask[source + x]);
            if (img.imageMode == kYrbMode)
                decodeRow(*copy, target, part.width());
        }
    });
    return copy;
}

/// The clipboard's picture, borrowed from it or made of what another program put there.
struct Carried {
    const image *picture = nullptr;
    std::unique_ptr<image> own;
};

Carried carried()
{
    Carried result;
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData();
    if (const auto *ours = dynamic_cast<const PictureMime *>(mime)) {
        result.picture = ours->picture();
    } else if (mime && mime->hasImage()) {
        const QImage foreign = qvariant_cast<QImage>(mime->imageData());
        if (!foreign.isNull())
            result.own.reset(imgFromQImage(foreign));
        if (result.own)
            result.own->name = translated("Pasted");
        result.picture = result.own.get();
    }
    if (!result.picture)
        refuse("There is no picture on the clipboard.<br>Copy one first.");
    return result;
}

/// The clipboard's picture as an image of its own that may join the others; null, told, if
/// there is none or memory is short.
std::unique_ptr<image> carriedCopy()
{
    Carried from = carried();
    if (!from.picture || from.own)
        return std::move(from.own);
    auto copy = cutOut(*from.picture, {0, 0, from.picture->width, from.picture->height}, false);
    if (!copy)
        refuseNoMemory();
    return copy;
}

struct Over {
    uint16_t colour[3];
    uint16_t alpha;
};

/// A sample of weight `w` (0 to 1) laid over another one.
Over over(const uint16_t *const source[3], const uint16_t *const below[3], uint16_t belowAlpha,
          double w)
{
    Over result = {};
    const double rest = belowAlpha / kWhite * (1.0 - w);
    const double sum = w + rest;
    result.alpha = uint16_t(clampSampleValue(sum * kWhite));
    for (int c = 0; c < 3; ++c)
        result.colour[c] =
            sum > 0 ? uint16_t(clampSampleValue((*source[c] * w + *below[c] * rest) / sum)) : 0;
    return result;
}

void layOver(image *img, const image &picture, const QRect &place, bool bySelection)
{
    const QRect seen = place & QRect(0, 0, img->width, img->height);
    parallelRows(seen.height(), seen.width() * 4, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const int64_t to = int64_t(seen.top() + y) * img->width + seen.left();
            const int64_t from = int64_t(seen.top() + y - place.top()) * picture.width +
                                 (seen.left() - place.left());
            for (int x = 0; x < seen.width(); ++x) {
                const int64_t i = to + x, j = from + x;
                const double selected = bySelection ? img->gmask[i] / kWhite : 1.0;
                const double w = picture.alpha[j] / kWhite * selected;
                if (w <= 0.0)
                    continue;
                const uint16_t *const source[3] = {picture.red + j, picture.green + j,
                                                   picture.blue + j};
                const uint16_t *const below[3] = {img->red + i, img->green + i, img->blue + i};
                const Over mixed = over(source, below, img->alpha[i], w);
                img->red[i] = mixed.colour[0];
                img->green[i] = mixed.colour[1];
                img->blue[i] = mixed.colour[2];
                img->alpha[i] = mixed.alpha;
            }
        }
    });
}

/// Undo, redo and menus follow a change that a clipboard act made.
void changed(image *img)
{
    samplesChanged(img);
    if (ViewHost *host = viewHost()) {
        host->refreshOperatorSource();
        host->updateMenus();
    }
}

/// Where a paste into this image goes: a master is composed anew at any time, so its
/// target takes the picture. Null, told, if there is none.
image *pasteTarget(image *img)
{
    if (img->kind != 1)
        return img;
    if (img->target && img->layers.contains(img->target) && img->target->valid())
        return img->target;
    refuse("Can't paste into a master without<br>assigned target");
    return nullptr;
}
} // namespace

bool clipboardHasPicture()
{
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData();
    return mime && (dynamic_cast<const PictureMime *>(mime) || mime->hasImage());
}

void releaseClipboard()
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (const auto *ours = dynamic_cast<const PictureMime *>(clipboard->mimeData()))
        clipboard->setImage(ours->picture()->toQImage());
}

bool copyToClipboard(image *img)
{
    if (img->kind == 1 && img->needsRebuild)
        compose(img, true);
    auto copy = cutOut(*img, selectedPart(*img), img->gmask && img->anyMaskSet());
    if (!copy)
        return refuseNoMemory();
    workspace()->statusText(translated("Copied %1 x %2").arg(copy->width).arg(copy->height));
    QGuiApplication::clipboard()->setMimeData(new PictureMime(std::move(copy)));
    return true;
}

bool cutToClipboard(image *img)
{
    if (img->kind == 1)
        return refuse("A layered image is composed of its layers:<br>cut in a layer's window.");
    if (!img->gmask || !img->anyMaskSet())
        return refuse("Nothing is selected.<br>Select what is to be cut first.");
    if (!copyToClipboard(img))
        return false;
    beginAct(img);
    for (int64_t i = 0; i < img->sampleCount(); ++i)
        img->alpha[i] = weighed(img->alpha[i], uint16_t(65535 - img->gmask[i]));
    changed(img);
    return true;
}

bool pasteInto(image *shown, QPoint centre)
{
    image *img = pasteTarget(shown);
    if (!img)
        return false;
    if (img->imageMode == kYrbMode)
        return refuse("The samples of this image stand for luma and colour differences.<br>"
                      "Paste as a new image instead.");
    const Carried from = carried();
    if (!from.picture)
        return false;
    const bool bySelection = img->gmask && img->anyMaskSet();
    if (bySelection)
        centre = selectedPart(*img).center();
    else if (img != shown)
        centre -= QPoint(img->xOffset, img->yOffset);
    QRect place(0, 0, from.picture->width, from.picture->height);
    place.moveCenter(centre);
    if (!bySelection && !place.intersects(QRect(0, 0, img->width, img->height)))
        place.moveCenter(QRect(0, 0, img->width, img->height).center());
    beginAct(img);
    layOver(img, *from.picture, place, bySelection);
    changed(img);
    return true;
}

bool pasteAsNew()
{
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData();
    // A file copied in a file manager comes with its place: opening it keeps all of it.
    if (mime && !dynamic_cast<const PictureMime *>(mime) && mime->hasUrls() && viewHost()) {
        viewHost()->openUrls(mime->urls());
        return true;
    }
    auto copy = carriedCopy();
    if (!copy)
        return false;
    copy->changed = true;
    workspace()->showImage(copy.release(), FileRecord());
    return true;
}

bool pasteAsLayer(image *img)
{
    auto copy = carriedCopy();
    if (!copy)
        return false;
    image *master = masterOf(img);
    const bool made = !master;
    if (made)
        master = makeLayered(img);
    if (!master)
        return refuseNoMemory();
    image *layer = copy.release();
    layer->xOffset = (master->width - layer->width) / 2;
    layer->yOffset = (master->height - layer->height) / 2;
    if (!addLayer(master, layer)) {
        delete layer;
        return false;
    }
    layer->changed = true;
    if (viewHost() && made)
        viewHost()->openView(master);
    return true;
}
