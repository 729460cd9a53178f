// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/guidesettings.h"
#include "app/outlinemode.h"
#include "support/widgets.h"
#include "views/testhost.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTest>
#include <QTextBrowser>

#include <gtest/gtest.h>

TEST(GuideSettingsDialog, ShowsTheSettingsAndWritesThemAtOnce)
{
    TestHost host;
    host.cropAspect = 9;
    host.cropGuide = 5;
    host.useOvalGuides = true;
    image *img = host.keep(plainImage(40, 20, 0, 0, 0));
    imgWindow *window = host.show(img, {200, 100});
    GuideSettings dialog(nullptr);
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    auto *aspect = child<QComboBox>(dialog, "aspect"), *guide = child<QComboBox>(dialog, "guide");
    EXPECT_EQ(aspect->currentText(), "2.39 x 1 (film)");
    EXPECT_EQ(guide->currentText(), "Diagonal");
    EXPECT_EQ(aspect->count(), 10);
    EXPECT_EQ(guide->count(), 6);
    EXPECT_TRUE(child<QCheckBox>(dialog, "elluse")->isChecked());
    window->grab();
    const int traced = window->outlineShown().traceCount();
    QTest::keyClick(guide, Qt::Key_Up);
    QTest::keyClick(aspect, Qt::Key_Home);
    child<QCheckBox>(dialog, "rectuse")->click();
    child<QCheckBox>(dialog, "elluse")->click();
    EXPECT_EQ(host.cropGuide, 4);
    EXPECT_EQ(host.cropAspect, 0);
    EXPECT_TRUE(host.useCropGuides && !host.useOvalGuides);
    window->grab();
    EXPECT_GT(window->outlineShown().traceCount(), traced) << "windows were told";
}

TEST(OutLineModeDialog, OffersWhatTheModeUses)
{
    TestHost host;
    host.outlineExpand = false;
    host.outline8w = true;
    host.outlinethresh = 77;
    OutLineMode dialog(nullptr);
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.show();
    auto *edgeOnly = child<QCheckBox>(dialog, "edgeOnly");
    auto *slider = child<QSlider>(dialog, "horizontalSlider");
    EXPECT_TRUE(child<QRadioButton>(dialog, "alpha")->isChecked());
    EXPECT_TRUE(child<QRadioButton>(dialog, "ol8")->isChecked());
    EXPECT_EQ(child<QLabel>(dialog, "threshold")->text(), "77");
    EXPECT_TRUE(slider->isEnabled() && !edgeOnly->isEnabled());
    QTest::keyClick(slider, Qt::Key_End);
    EXPECT_EQ(host.outlinethresh, 255);
    child<QRadioButton>(dialog, "selection")->click();
    child<QRadioButton>(dialog, "ol4")->click();
    edgeOnly->click();
    EXPECT_TRUE(host.outlineExpand && host.edgeOnly && !host.outline8w);
    EXPECT_TRUE(!slider->isEnabled() && edgeOnly->isEnabled());
    child<QRadioButton>(dialog, "alpha")->click();
    EXPECT_TRUE(!host.outlineExpand && slider->isEnabled());
    child<QDialogButtonBox>(dialog, "buttonBox")->button(QDialogButtonBox::Help)->click();
    const auto *page = dialog.findChild<QTextBrowser *>();
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(page->source().fragment(), "outline");
}
