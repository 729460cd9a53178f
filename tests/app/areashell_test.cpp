// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/apphelpers.h"
#include "area/areatools.h"
#include "views/viewhost.h"

#include <QStatusBar>

// The area tools as the main window offers them: keys, buttons, menu.

namespace
{
bool checked(MainWindow *main, const char *action)
{
    return main->findChild<QAction *>(QLatin1String(action))->isChecked();
}
} // namespace

TEST_F(AppTest, KeysTakeAreaToolsWithAndWithoutAnImage)
{
    const struct {
        int key, tool;
        const char *action;
    } rows[] = {{Qt::Key_F1, kToolEntire, "actionTool_Entire"},
                {Qt::Key_F2, kToolRectangle, "actionTool_Rectangle"},
                {Qt::Key_F3, kToolNumericRectangle, "actionTool_Numeric_Rectangle"},
                {Qt::Key_F4, kToolEllipse, "actionTool_Ellipse"},
                {Qt::Key_F5, kToolPolygon, "actionTool_Polygon"},
                {Qt::Key_F6, kToolPolyspline, "actionTool_Polyspline"},
                {Qt::Key_F7, kToolPShape, "actionTool_P_Shape"},
                {Qt::Key_F8, kToolPencil, "actionTool_Pencil"},
                {Qt::Key_F10, kToolWand, "actionTool_Wand"},
                {Qt::Key_F11, kToolRedo, "actionTool_Redo"},
                {Qt::Key_F12, kToolMagnify, "actionTool_Magnify"}};
    for (const bool shown : {false, true}) {
        if (shown && !main->loadFile(picture("a.png")))
            FAIL();
        for (const auto &row : rows) {
            QTest::keyClick(shown ? static_cast<QWidget *>(main->windows[0]) : main.get(),
                            Qt::Key(row.key));
            EXPECT_EQ(main->toolSelect, row.tool) << row.key;
            EXPECT_TRUE(checked(main.get(), row.action)) << row.action;
        }
    }
    main->on_actionGlobal_Pick_triggered(true);
    EXPECT_EQ(main->statusBar()->toolTip(), "Magic Wand: global pick");
    // above the operator dialog too
    QTest::keyClick(main->operatorDialog(), Qt::Key_F4);
    EXPECT_EQ(main->toolSelect, kToolEllipse);
    QTest::keyClick(main->windows[0], Qt::Key_Z);
    EXPECT_EQ(main->toolSelect, kToolMagnify);
    EXPECT_EQ(main->toolBefore, kToolEllipse);
    QTest::keyClick(main->windows[0], Qt::Key_F2); // taken by hand it stays
    EXPECT_EQ(main->toolBefore, -1);
}

TEST_F(AppTest, SwitchesOfTheAreaToolsFollowKeysAndMenu)
{
    image *img = main->loadFile(picture("a.png"));
    ASSERT_NE(img, nullptr);
    imgWindow *window = main->windows[0];
    const struct {
        int key;
        bool *flag;
        const char *action;
    } rows[] = {{Qt::Key_F2, &main->selectMode, "actionSelect_Mode"},
                {Qt::Key_F3, &main->invertSelection, "actionInvert_Selections"},
                {Qt::Key_F4, &main->openFigure, "actionOpen_Figure"},
                {Qt::Key_F5, &main->filledFigure, "actionFilled_Figure"},
                {Qt::Key_F6, &main->outlineObject, "actionOutline_Object"},
                {Qt::Key_F1, &main->eyepointPending, "actionPreview_Eyepoint"}};
    img->fillGmask(7);
    for (const auto &row : rows) {
        const bool before = *row.flag;
        QTest::keyClick(window, Qt::Key(row.key), Qt::ShiftModifier);
        EXPECT_EQ(*row.flag, !before) << row.action;
        EXPECT_EQ(checked(main.get(), row.action), !before) << row.action;
        action(row.action)->trigger();
        EXPECT_EQ(*row.flag, before) << row.action;
        EXPECT_EQ(checked(main.get(), row.action), before) << row.action;
    }
    action("actionChecker")->trigger(); // has a key too, and acts once all the same
    EXPECT_FALSE(main->checkerOn || checked(main.get(), "actionChecker"));
    EXPECT_FALSE(img->anyMaskSet()) << "applying at once begins without a selection";
    main->chooseTool(kToolEllipse);
    QTest::keyClick(window, Qt::Key_A);
    EXPECT_FALSE(main->ellaa || checked(main.get(), "actionAntialias"));
    main->chooseTool(kToolEntire);
    EXPECT_FALSE(enabled("actionAntialias"));
    QTest::keyClick(window, Qt::Key_A);
    EXPECT_FALSE(main->ellaa);
}

TEST_F(AppTest, TheSelectionMenuActsOnTheCurrentImageWithUndo)
{
    image *img = main->loadFile(picture("a.png"));
    ASSERT_NE(img, nullptr);
    action("actionSelect_Alpha")->trigger();
    EXPECT_EQ(img->maskAt(3, 3), img->alpha[3 * img->width + 3]);
    action("actionSelect_Luma")->trigger();
    EXPECT_NE(img->maskAt(3, 3), 65535);
    action("actionUndo")->trigger();
    EXPECT_EQ(img->maskAt(3, 3), img->alpha[3 * img->width + 3]);
    action("actionDelete_Selection")->trigger();
    EXPECT_FALSE(img->anyMaskSet());
    img->gmask[10 * img->width + 10] = 65535;
    QTimer::singleShot(50, []() {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        QTest::keyClicks(QApplication::focusWidget(), "3");
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    action("actionGrow_Selection")->trigger();
    EXPECT_EQ(img->maskAt(13, 10), 65535);
    EXPECT_EQ(img->maskAt(14, 10), 0);
    EXPECT_EQ(img->maskAt(13, 13), 0) << "round";
    action("actionUndo")->trigger();
    EXPECT_EQ(img->maskAt(13, 10), 0);
    main->eyepointPending = false;
    action("actionConvert_to_P_Shape")->trigger(); // nothing was drawn: told, and no harm
    main->on_actionSave_P_Shape_triggered();
}
