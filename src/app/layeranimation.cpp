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

} // namespace

bool isFrame(const image *layer)
{
    return layer->visible && layer->layerMode != kWarpMode;
}

QList<int> frameLayers(const image &master)
{
    QList<int> places;
    for (int i = 0; i < master.layers.size(); ++i)
        if (isFrame(master.layers.at(i)))
            places << i;
    return places;
}

/// The offsets of a run in lock step count even where its layers are not seen, so the frame
/// is composed with the whole stack in place and all other layers hidden. Modes that need
/// something below would leave a frame black.
std::unique_ptr<image> makeFrame(image *master, int layer)
{
    auto frame = std::make_unique<image>();
    if (!frame->allocateUnfilled(master->width, master->height, master->layers.at(layer)->name))
        return nullptr;
    const SettingsKeeper keeper(master);
    for (image *other : qAsConst(master->layers))
        other->visible = other->localStack = other->globalMask = false;
    master->layers.at(layer)->visible = true;
    master->layers.at(layer)->layerMode = kNormalMode;
    compose(master, false);
    frame->copyWorkPlanes(*master);
    return frame;
}

bool writeLayerAnimation(image *master, const GifAnimation &animation, const QString &path,
                         QString *error)
{
    const QList<int> places = frameLayers(*master);
    const auto source = [&](int number) {
        return std::shared_ptr<const image>(makeFrame(master, places.at(number)));
    };
    return writeGif(places.size(), source, animation, path, error);
}
