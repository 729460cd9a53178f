// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/guidesettings.h"

#include "core/workspace.h"
#include "views/cropguides.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include "ui_guidesettings.h"

namespace
{
/// Width to height of the sample, which lies on its long side; any will do for "None".
double sampleAspect(int entry)
{
    constexpr double usual = 1.5;
    const double ratio = cropAspectRatio(entry);
    return ratio > 0.0 ? ratio : usual;
}

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
    ui->sample->setGuide(guide, sampleAspect(aspect));
}

GuideSettings::~GuideSettings() = default;

void GuideSettings::on_aspect_currentIndexChanged(int index)
{
    if (index < 0)
        return;
    workspace()->cropAspect = index;
    ui->sample->setGuide(workspace()->cropGuide, sampleAspect(index));
    repaintWindows();
}

void GuideSettings::on_guide_currentIndexChanged(int index)
{
    if (index < 0)
        return;
    workspace()->cropGuide = index;
    ui->sample->setGuide(index, sampleAspect(workspace()->cropAspect));
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
