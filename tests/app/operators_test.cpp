// SPDX-License-Identifier: GPL-3.0-or-later
#include "apphelpers.h"
#include "core/undo.h"
#include "operators/dialog/opfavorites.h"
#include "script/run/script.h"
#include "views/imgwindow.h"

#include <QThread>

#include <atomic>

namespace
{
constexpr int kScriptId = 82;

class OperatorsShell : public AppTest
{
protected:
    imgWindow *open() { return main->findWindow(main->loadFile(picture("one.png"))); }
};
} // namespace

TEST_F(OperatorsShell, RowsWithoutAnOperatorStandGreyedInTheMenu)
{
    int waiting = 0, there = 0;
    for (const OpWrapper *op : main->operatorTable()->operators())
        for (const QAction *entry : main->findChildren<QAction *>())
            if (entry->text() == op->menuName && entry->data().toInt() == op->id) {
                EXPECT_EQ(entry->isEnabled(), op->self != nullptr) << op->menuName.toStdString();
                (op->self ? there : waiting) += 1;
            }
    EXPECT_EQ(waiting + there, 95); // but for Script, which has a menu of its own
}

TEST_F(OperatorsShell, AHotkeyTypedInAPictureChoosesItsOperator)
{
    imgWindow *window = open();
    main->operatorTable()->byScriptName("hue")->hotkey = "H";
    useOperator(*main, "negative");
    QApplication::setActiveWindow(window); // the dialog, where it is active, takes keys itself
    QTest::keyClick(window, 'H', Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(main->operatorTable()->current()->scriptName, "negative");
    QTest::keyClick(window, 'H', Qt::ShiftModifier);
    EXPECT_EQ(main->operatorTable()->current()->scriptName, "hue");
}

TEST_F(OperatorsShell, TheFavoritesPanelIsRememberedAsItWasLeft)
{
    auto *panel = main->findChild<OpFavorites *>();
    for (const bool on : {true, false, true}) {
        action("actionOperator_Favorites")->trigger();
        EXPECT_EQ(panel->isVisible(), on);
        EXPECT_EQ(main->favoritesShown, on);
    }
    panel->close(); // by its own button
    EXPECT_FALSE(main->favoritesShown);
}

TEST_F(OperatorsShell, WhileARunIsOnAnotherApplyIsRefused)
{
    imgWindow *window = open();
    window->img->fillGmask(65535);
    useOperator(*main, "negative");
    std::atomic<bool> goOn{false};
    window->previewProducer = [&goOn](image *) {
        while (!goOn)
            QThread::msleep(1);
        return false;
    };
    ASSERT_TRUE(window->startWorker(WorkerThread::Preview));
    const ImagePtr before = copyOf(*window->img);
    main->on_operate_clicked();
    main->on_actionApply_Again_triggered();
    EXPECT_TRUE(window->img->undoList.isEmpty());
    EXPECT_TRUE(samePlanes(*window->img, *before));
    goOn = true;
    window->finishJobs(true);
    main->on_operate_clicked();
    EXPECT_EQ(window->img->undoList.size(), 1);
}

TEST_F(OperatorsShell, ARecordedMacroMakesTheSamePictureAgain)
{
    imgWindow *window = open();
    const ImagePtr untouched = copyOf(*window->img);
    auto *script = qobject_cast<Script *>(main->operatorTable()->byId(kScriptId));
    action("actionRecord_Macro")->setChecked(true);
    action("actionSelect_Entire")->trigger();
    useOperator(*main, "hue");
    main->operatorTable()->setParameter("operatorHue", "70");
    main->on_operate_clicked();
    main->blendMode = 5;
    useOperator(*main, "burn");
    main->operatorTable()->setParameter("operatorBurn", "15");
    main->on_operate_clicked();
    action("actionRecord_Macro")->setChecked(false);
    const ImagePtr made = copyOf(*window->img);
    EXPECT_FALSE(samePlanes(*made, *untouched));
    main->blendMode = 0;
    window->img->copyWorkPlanes(*untouched);
    useOperator(*main, "script");
    main->on_operate_clicked();
    EXPECT_TRUE(samePlanes(*window->img, *made)) << script->text.toStdString();
}
