// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/apphelpers.h"
#include "app/notations.h"

#include "app/animationexport.h"
#include "app/imageinformation.h"
#include "core/undo.h"
#include "support/stack.h"
#include "support/widgets.h"
#include "views/testhost.h"

#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace
{
class DialogHost : public TestHost
{
public:
    void notationsChanged(image *img, int chosen) override
    {
        if (dialog)
            dialog->notationsChanged(img, chosen);
    }
    Notations *dialog = nullptr;
};

TEST(NotationsDialog, MakesEditsAndOrdersNotes)
{
    DialogHost host;
    image *img = host.keep(plainImage(200, 150, 30000, 30000, 30000));
    imgWindow *window = host.show(img, {400, 300});
    host.showNotations = false;
    Notations dialog;
    host.dialog = &dialog;
    dialog.show();
    EXPECT_TRUE(host.editingNotations && host.showNotations);
    child<QPushButton>(dialog, "newNote")->click();
    auto *text = child<QPlainTextEdit>(dialog, "noteText");
    QTest::keyClicks(text, "first");
    ASSERT_EQ(img->notations.size(), 1);
    EXPECT_EQ(img->notations.at(0).text, "first");
    EXPECT_EQ(img->notations.at(0).textX, 100) << "the middle of the view";
    EXPECT_EQ(img->undoList.size(), 1) << "making and typing are one act";
    child<QPushButton>(dialog, "newNote")->click();
    QTest::keyClicks(text, "second");
    child<QSpinBox>(dialog, "opacity")->setValue(40);
    EXPECT_DOUBLE_EQ(img->notations.at(1).opacity, 0.4);
    child<QPushButton>(dialog, "moveUp")->click();
    auto *list = child<QTreeWidget>(dialog, "list");
    EXPECT_EQ(list->topLevelItem(0)->text(1), "second");
    EXPECT_EQ(window->notes.chosenNote(), 0);
    undo(img);
    dialog.notationsChanged(img, -1);
    EXPECT_EQ(list->topLevelItem(0)->text(1), "first");
    list->setCurrentItem(list->topLevelItem(1));
    EXPECT_EQ(window->notes.chosenNote(), 1);
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(img->notations.size(), 1);
    dialog.close();
    EXPECT_FALSE(host.editingNotations);
    EXPECT_EQ(window->notes.chosenNote(), -1);
}

TEST(ImageInformationDialog, AppliesFieldsAsOneAct)
{
    DialogHost host;
    image *img = host.keep(plainImage(20, 10, 1, 2, 3));
    img->annotation = "old";
    img->xDpi = img->yDpi = 100;
    img->tagLines = QStringList{"Make: A", "Model: B"};
    {
        ImageInformation untouched(img);
        untouched.accept();
        EXPECT_TRUE(img->undoList.isEmpty() && !img->changed);
    }
    ImageInformation dialog(img);
    child<QPushButton>(dialog, "countColors")->click();
    EXPECT_TRUE(child<QLabel>(dialog, "colorCount")->text().startsWith("1 "));
    QTest::keyClicks(child<QLineEdit>(dialog, "author"), "Me");
    child<QSpinBox>(dialog, "xDpi")->setValue(50);
    QTest::keyClicks(child<QLineEdit>(dialog, "search"), "model");
    EXPECT_TRUE(child<QTreeWidget>(dialog, "lines")->topLevelItem(0)->isHidden());
    dialog.accept();
    EXPECT_EQ(img->author, "Me");
    EXPECT_EQ(img->yDpi, 50) << "equal numbers stay equal";
    EXPECT_EQ(img->undoList.size(), 1);
    undo(img);
    EXPECT_EQ(img->xDpi, 100);
    QTest::qWait(kFadeMs);
}

TEST(AnimationExportDialog, PlaysAndTakesWhatWasChosen)
{
    DialogHost host;
    Stack stack;
    for (int i = 0; i < 3; ++i)
        stack.add(0);
    GifAnimation animation;
    AnimationExport dialog(stack.master, &animation);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitFor([&]() { return dialog.framesReady() == 3; }));
    child<QDoubleSpinBox>(dialog, "delay")->setValue(0.5);
    auto *frames = child<QTableWidget>(dialog, "frames");
    child<QAbstractButton>(dialog, "reversed")->click();
    frames->item(0, 1)->setData(Qt::EditRole, 2.0);
    child<QSpinBox>(dialog, "colors")->setValue(16);
    dialog.accept();
    EXPECT_EQ(animation.delays, QList<int>({50, 50, 200})) << "the top layer plays first";
    EXPECT_TRUE(animation.reversed && animation.colors == 16);
    EXPECT_TRUE(stack.master->layers.at(1)->visible) << "as before";
}
} // namespace
