// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/guidesettings.h"

#include "core/workspace.h"
#include "views/cropguides.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include "ui_guidesettings.h"

#include <iterator>

namespace
{
/// Width to height of the entries of the aspect list; the first stands for any.
constexpr double kAspects[] = {1.5,       1.0,       4.0 / 3,  5.0 / 7, 8.0 / 10,
                               11.0 / 14, 16.0 / 20, 16.0 / 9, 1.85,    2.39};

void repaintWindows()
{
    if (ViewHost *host = viewHost())
        for (imgWindow *window : host->windows)
            window->refreshOverlay();
}
} // namespace

GuideSettings::GuideSettings(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::GuideSettings>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    const Workspace &space = *workspace();
    const int aspect = space.cropAspect, guide = space.cropGuide;
    ui->guide->addItems(cropGuideNames());
    ui->aspect->setCurrentIndex(aspect);
    ui->guide->setCurrentIndex(guide);
    ui->rectuse->setChecked(space.useCropGuides);
    ui->elluse->setChecked(space.useOvalGuides);
    ui->sample->setGuide(guide, kAspects[aspect]);
}

GuideSettings::~GuideSettings() = default;

void GuideSettings::on_aspect_currentIndexChanged(int index)
{
    if (index < 0 || index >= int(std::size(kAspects)))
        return;
    workspace()->cropAspect = index;
    ui->sample->setGuide(workspace()->cropGuide, kAspects[index]);
    repaintWindows();
}

void GuideSettings::on_guide_currentIndexChanged(int index)
{
    if (index < 0)
        return;
    workspace()->cropGuide = index;
    ui->sample->setGuide(index, kAspects[workspace()->cropAspect]);
    repaintWindows();
}

void GuideSettings::on_rectuse_clicked(bool on)
{
    workspace()->useCropGuides = on;
    repaintWindows();
}

void GuideSettings::on_elluse_clicked(bool on)
{
    workspace()->useOvalGuides = on;
    repaintWindows();
}
