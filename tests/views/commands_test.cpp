// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "core/undo.h"
#include "support/debuglog.h"
#include "views/testhost.h"

#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QtTest>

#include <gtest/gtest.h>

class Commands : public testing::Test
{
protected:
    TestHost host;
    image *img = host.keep(randomImage(40, 20, 21));
    imgWindow *window = host.show(img, {200, 100});

    void act(image *on, bool group = false, int id = 1)
    {
        beginAct(on);
        if (group)
            markNewestUndoAsGroup(on, id);
        on->fill(7, 7, 7, 7);
    }
    image *layer(image *master, int mode)
    {
        auto *made = plainImage(8, 8, 1, 2, 3).release();
        made->kind = 2;
        made->master = master;
        made->layerMode = mode;
        master->layers << made;
        return made;
    }
    image *makeMaster()
    {
        image *master = host.keep(plainImage(8, 8, 0, 0, 0));
        master->kind = 1;
        return master;
    }
    void destroy(image *master)
    {
        host.images.removeAll(master);
        destroyTree(&master);
    }
};

TEST_F(Commands, FrameEveryNumberAndDropThoseWithoutAnImage)
{
    window->command(156);
    window->command(151);
    EXPECT_EQ(host.started, 2);
    EXPECT_EQ(host.ended, 2);
    EXPECT_EQ(host.centre, QPointF(20, 10));
    window->command(119);
    EXPECT_EQ(host.recent, 3);
    window->img = nullptr;
    takeDebugLines();
    window->command(kCommandRight);
    EXPECT_EQ(host.started, 3);
    EXPECT_EQ(takeDebugLines().filter("invalid image:").size(), 1);
    window->command(kCommandGroupUndo);
    EXPECT_EQ(host.boxes, QStringList("Group undos can only be performed<br>on PCB layers."));
}

TEST_F(Commands, MasterPassesHistoryToItsTarget)
{
    image *master = makeMaster(), *part = layer(master, 0);
    imgWindow *masterView = host.show(master);
    host.show(part);
    act(part);
    masterView->command(kCommandUndo);
    masterView->command(kCommandRedo);
    EXPECT_EQ(host.boxes, QStringList({"Can't undo from master without<br>assigned target",
                                       "Can't redo from master without<br>assigned target"}));
    EXPECT_EQ(part->red[0], 7);
    master->target = part;
    masterView->command(kCommandUndo);
    EXPECT_EQ(part->red[0], 1);
    EXPECT_TRUE(master->needsRebuild);
    masterView->command(kCommandRedo);
    EXPECT_EQ(part->red[0], 7);
    EXPECT_EQ(host.boxes.size(), 2);
    destroy(master);
}

TEST_F(Commands, GroupStepsAllPartsOrNone)
{
    image *master = makeMaster(), *copper = layer(master, 55), *drill = layer(master, 57);
    image *plain = layer(master, 0);
    imgWindow *view = host.show(copper);
    act(copper, true);
    act(drill, true);
    act(plain);
    view->command(kCommandUndo); // the newest snapshot is a group's
    EXPECT_EQ(copper->red[0], 1);
    EXPECT_EQ(drill->red[0], 1);
    EXPECT_EQ(plain->red[0], 7);
    // The redo records carry the group's mark only if the live image did; either way all
    // parts stay in step.
    const auto redone = copper->redoList.size();
    view->command(kCommandGroupRedo);
    EXPECT_EQ(copper->redoList.size(), drill->redoList.size());
    EXPECT_LE(copper->redoList.size(), redone);
    host.boxes.clear();
    act(copper, true, 5);
    act(drill);
    view->command(kCommandUndo);
    EXPECT_EQ(copper->red[0], 7);
    EXPECT_EQ(host.boxes,
              QStringList("PCB group operations out of sync,<br>can't undo group. You probably "
                          "need<br>to undo an atomic action in another<br>layer"));
    window->command(kCommandGroupRedo);
    EXPECT_EQ(host.boxes.last(), "Group redos can only be performed<br>on PCB layers.");
    destroy(master);
}

TEST_F(Commands, RevertReadsTheFileAgain)
{
    QTemporaryDir folder;
    const QString path = folder.filePath("a.png");
    img->fill(0, 65535, 0, 65535);
    ASSERT_TRUE(img->toQImage().save(path));
    img->fullPath = path;
    img->fill(1, 1, 1, 65535);
    window->command(kCommandRevert);
    EXPECT_EQ(img->green[0], 65535);
    EXPECT_EQ(img->undoList.size(), 1);
    window->command(kCommandUndo);
    EXPECT_EQ(img->green[0], 1);
    ASSERT_TRUE(img->toQImage().scaled(5, 5).save(path)); // another count: left alone
    window->command(kCommandRevert);
    EXPECT_EQ(img->green[0], 1);
    img->fullPath.clear();
    window->command(kCommandRevert);
    EXPECT_TRUE(img->undoList.isEmpty());
}

TEST_F(Commands, CloneCopiesAndScales)
{
    img->author = "A";
    img->tagLines << "line";
    window->command(kCommandClone);
    window->command(kCommandCloneScaled);
    ASSERT_EQ(host.images.size(), 3);
    EXPECT_EQ(host.images[1]->name, img->name + "[clone]");
    EXPECT_TRUE(samePlanes(*host.images[1], *img));
    EXPECT_EQ(host.images[1]->author, "A");
    EXPECT_EQ(host.images[1]->tagLines, img->tagLines);
    EXPECT_EQ(host.images[2]->name, img->name + "[scaled]");
    EXPECT_EQ(QSize(host.images[2]->width, host.images[2]->height), window->size());
    for (int command : {kCommandClone, kCommandCloneScaled}) {
        memFailAt(3);
        window->command(command);
        memFailAt(0);
        EXPECT_EQ(host.boxes.last(), "Image Allocation Failed");
    }
    EXPECT_EQ(host.images.size(), 3);
}

TEST_F(Commands, CropGoesBackWhereItCameFrom)
{
    image *crop = host.keep(plainImage(10, 10, 9, 9, 9));
    imgWindow *view = host.show(crop);
    crop->cropSource = img;
    crop->cropX = 35; // half of it lies past the right edge
    crop->cropY = -4;
    saveRedo(img);
    const image *before = undoMakeCopy(img, true);
    view->command(kCommandRestoreCrop);
    EXPECT_EQ(img->undoList.size(), 1);
    EXPECT_TRUE(img->redoList.isEmpty());
    int wrong = 0;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
            wrong += img->red[y * 40 + x] != (x >= 35 && y < 6 ? 9 : before->red[y * 40 + x]);
    EXPECT_EQ(wrong, 0);
    delete before;
    ImagePtr gone = plainImage(10, 10, 0, 0, 0);
    crop->cropSource = gone.get(); // not in the list
    view->command(kCommandRestoreCrop);
    EXPECT_TRUE(gone->undoList.isEmpty());
}

TEST_F(Commands, TurnRefitsAndUndoes)
{
    const QSize before = window->size();
    imgWindow *second = host.show(img);
    window->command(kCommandQuarterTurn);
    EXPECT_EQ(QSize(img->width, img->height), QSize(20, 40));
    EXPECT_EQ(window->height(), window->width() * 2);
    EXPECT_EQ(second->height(), second->width() * 2);
    window->command(kCommandUndo);
    EXPECT_EQ(window->width(), window->height() * 2);
    EXPECT_NE(before, QSize());
    image *master = makeMaster();
    host.show(master)->command(kCommandQuarterTurn);
    EXPECT_EQ(host.boxes.size(), 1);
}

TEST_F(Commands, SelectionCommands)
{
    img->fillGmask(5);
    window->command(kCommandSelectEntire);
    EXPECT_EQ(img->gmask[799], 65535);
    window->command(kCommandInvertMask);
    EXPECT_FALSE(img->anyMaskSet());
    window->command(kCommandInvertMask);
    window->command(kCommandSelectNone);
    EXPECT_FALSE(img->anyMaskSet());
}

TEST_F(Commands, RenameAsks)
{
    img->name = "old";
    QTimer poller;
    int answered = 0;
    QObject::connect(&poller, &QTimer::timeout, [&]() {
        auto *dialog = qobject_cast<QInputDialog *>(QApplication::activeModalWidget());
        if (!dialog || dialog->windowTitle() != "Rename: old")
            return;
        ++answered;
        EXPECT_EQ(dialog->labelText(), "Name");
        dialog->findChild<QLineEdit *>()->setText("new");
        dialog->accept();
    });
    poller.start(10);
    window->command(kCommandRename);
    EXPECT_EQ(answered, 1);
    EXPECT_EQ(img->title, "[1] new");
    EXPECT_EQ(window->windowTitle(), "[1] new");
}
