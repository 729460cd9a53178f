// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/layeranimation.h"

#include "core/compose.h"
#include "core/image.h"
#include "core/layermodes.h"

#include <QCoreApplication>

#include <memory>
#include <vector>

namespace
{
struct Settings {
    int32_t mode;
    bool visible, localStack, globalMask;
};

/// Gives the layers of a stack their settings back.
class SettingsKeeper
{
public:
    explicit SettingsKeeper(image *kept) : master(kept)
    {
        for (const image *layer : qAsConst(master->layers))
            settings.push_back(
                {layer->layerMode, layer->visible, layer->localStack, layer->globalMask});
    }
    ~SettingsKeeper()
    {
        for (size_t i = 0; i < settings.size(); ++i) {
            image *layer = master->layers.at(int(i));
            layer->layerMode = settings[i].mode;
            layer->visible = settings[i].visible;
            layer->localStack = settings[i].localStack;
            layer->globalMask = settings[i].globalMask;
        }
        master->needsRebuild = true;
    }
    SettingsKeeper(const SettingsKeeper &) = delete;
    SettingsKeeper &operator=(const SettingsKeeper &) = delete;

private:
    image *master;
    std::vector<Settings> settings;
};

using Frames = std::vector<std::unique_ptr<image>>;

/// The offsets of a run in lock step count even where its layers are not seen, so each
/// frame is composed with the whole stack in place and all other layers hidden. Modes that
/// need something below would leave a frame black.
bool makeFrames(image *master, Frames *frames)
{
    const QList<image *> shown = master->layers;
    std::vector<bool> wanted;
    for (const image *layer : shown)
        wanted.push_back(isFrame(layer));
    const SettingsKeeper keeper(master);
    for (image *layer : shown)
        layer->visible = layer->localStack = layer->globalMask = false;
    for (int i = 0; i < shown.size(); ++i) {
        if (!wanted[size_t(i)])
            continue;
        image *layer = shown.at(i);
        const int32_t mode = layer->layerMode;
        layer->visible = true;
        layer->layerMode = kNormalMode;
        compose(master, false);
        layer->visible = false;
        layer->layerMode = mode;
        auto frame = std::make_unique<image>();
        if (!frame->allocateUnfilled(master->width, master->height, layer->name))
            return false;
        frame->copyWorkPlanes(*master);
        frames->push_back(std::move(frame));
    }
    return true;
}
} // namespace

bool isFrame(const image *layer)
{
    return layer->visible && layer->layerMode != kWarpMode;
}

bool writeLayerAnimation(image *master, const GifAnimation &animation, const QString &path,
                         QString *error)
{
    Frames frames;
    if (!makeFrames(master, &frames)) {
        *error = QCoreApplication::translate("Layers", "Image Allocation Failed");
        return false;
    }
    QList<const image *> list;
    for (const auto &frame : frames)
        list << frame.get();
    return writeGif(list, animation, path, error);
}
