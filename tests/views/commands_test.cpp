// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "core/undo.h"
#include "formats/orient.h"
#include "support/debuglog.h"
#include "support/stack.h"
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

    Stack stack;
    image *master = stack.master;

    Commands() { host.images << master; }

    void act(image *on, int group = 0)
    {
        beginAct(on);
        if (group)
            markNewestUndoAsGroup(on, group);
        on->fill(7, 7, 7, 7);
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
    image *part = stack.add(0);
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
}

TEST_F(Commands, MakesAPictureLayeredAndComposesWhenPainted)
{
    image *picture = host.keep(plainImage(8, 8, 900, 800, 700));
    imgWindow *view = host.show(picture);
    view->command(kCommandMakeLayered);
    ASSERT_EQ(picture->kind, 2);
    image *made = picture->master;
    EXPECT_TRUE(host.images.contains(made) && !host.images.contains(picture));
    EXPECT_TRUE(made->name.endsWith(": master"));
    EXPECT_EQ(made->fullPath, QString());

    imgWindow *masterView = host.show(made);
    masterView->grab();
    EXPECT_EQ(made->red[9], 900);
    picture->opacity = 0;
    picture->markMasterForRebuild();
    EXPECT_EQ(made->red[9], 900); // not before it is seen
    masterView->grab();
    EXPECT_EQ(made->red[9], 0);
    EXPECT_FALSE(made->needsRebuild);

    view->command(kCommandMakeLayered); // refused with a word
    EXPECT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(made->layers.size(), 1);
}

TEST_F(Commands, GroupStepsAllPartsOrNone)
{
    image *copper = stack.add(55), *drill = stack.add(57), *plain = stack.add(0);
    imgWindow *view = host.show(copper);
    act(copper, 1);
    act(drill, 1);
    act(plain);
    view->command(kCommandUndo); // the newest snapshot is a group's
    EXPECT_EQ(copper->red[0] + drill->red[0], 2);
    EXPECT_EQ(plain->red[0], 7);
    view->command(kCommandGroupRedo);
    EXPECT_EQ(copper->red[0] + drill->red[0], 14);
    act(copper, 5);
    act(drill);
    view->command(kCommandUndo);
    EXPECT_EQ(copper->red[0], 7);
    window->command(kCommandGroupRedo);
    EXPECT_EQ(host.boxes,
              QStringList({"PCB group operations out of sync,<br>can't undo group. You probably "
                           "need<br>to undo an atomic action in another<br>layer",
                           "Group redos can only be performed<br>on PCB layers."}));
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
    ASSERT_EQ(host.images.size(), 4); // with the master
    const image *clone = host.images[2], *scaled = host.images[3];
    EXPECT_EQ(clone->name + scaled->name, img->name + "[clone]" + img->name + "[scaled]");
    EXPECT_TRUE(samePlanes(*clone, *img));
    EXPECT_EQ(clone->author + clone->tagLines.join('|'), "Aline");
    EXPECT_EQ(QSize(scaled->width, scaled->height), window->size());
    for (int command : {kCommandClone, kCommandCloneScaled}) {
        memFailAt(3);
        window->command(command);
        memFailAt(0);
        EXPECT_EQ(host.boxes.last(), "Image Allocation Failed");
    }
    EXPECT_EQ(host.images.size(), 4);
}

TEST_F(Commands, CropGoesBackWhereItCameFrom)
{
    image *crop = host.keep(plainImage(10, 10, 9, 9, 9));
    imgWindow *view = host.show(crop);
    crop->cropSource = img;
    crop->cropX = 35; // half of it lies past the right edge
    crop->cropY = -4;
    saveRedo(img);
    const ImagePtr before(undoMakeCopy(img, true));
    view->command(kCommandRestoreCrop);
    EXPECT_TRUE(img->undoList.size() == 1 && img->redoList.isEmpty());
    int wrong = 0;
    for (int i = 0; i < 40 * 20; ++i)
        wrong += img->red[i] != (i % 40 >= 35 && i / 40 < 6 ? 9 : before->red[i]);
    EXPECT_EQ(wrong, 0);
    ImagePtr gone = plainImage(10, 10, 0, 0, 0);
    crop->cropSource = gone.get(); // not in the list
    view->command(kCommandRestoreCrop);
    EXPECT_TRUE(gone->undoList.isEmpty());
}

TEST_F(Commands, TurnsAndFlipsRefitAndUndo)
{
    imgWindow *second = host.show(img);
    window->command(kCommandQuarterTurn);
    EXPECT_EQ(QSize(img->width, img->height), QSize(20, 40));
    EXPECT_EQ(window->height(), window->width() * 2);
    EXPECT_EQ(second->height(), second->width() * 2);
    window->command(kCommandUndo);
    EXPECT_EQ(window->width(), window->height() * 2);
    const ImagePtr before(undoMakeCopy(img, true));
    const int last = 40 * 20 - 1;
    const int rows[][2] = {{kCommandQuarterTurn, last - 39}, // where sample 0 comes from
                           {kCommandQuarterTurnLeft, 39},
                           {kCommandHalfTurn, last},
                           {kCommandFlipHorizontal, 39},
                           {kCommandFlipVertical, last - 39}};
    const QByteArray turned("Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0", 28);
    img->tagBlock = turned;
    for (const auto &[command, from] : rows) {
        window->command(command);
        EXPECT_EQ(img->red[0], before->red[from]) << command;
        EXPECT_EQ(exifOrientation(img->tagBlock), 1) << "holds no more after our own turn";
        window->command(kCommandUndo);
        EXPECT_EQ(img->tagBlock, turned);
        EXPECT_TRUE(sameColors(*img, *before)) << command;
    }
    EXPECT_TRUE(host.boxes.isEmpty());
    img->tagBlock.clear();
    window->command(kCommandTurnUpright);
    window->command(kCommandDevelop);
    host.show(master)->command(kCommandFlipVertical);
    EXPECT_EQ(host.boxes,
              QStringList({"This image has no EXIF data that say<br>how the camera was held.",
                           "This is no camera RAW, or it is developed already.",
                           "A layered image is turned<br>layer by layer, in their windows."}));
}

TEST_F(Commands, ThePreviewFollowsAMasterThatAPaintComposed)
{
    stack.add(0);
    imgWindow *view = host.show(master);
    host.makeCurrent(view);
    view->grab();
    const int before = host.sourceRefreshes;
    master->needsRebuild = true;
    view->refresh();
    view->grab();
    EXPECT_FALSE(master->needsRebuild);
    EXPECT_EQ(host.sourceRefreshes, before + 1);
}

TEST_F(Commands, MoveTheView)
{
    const int pages[][3] = {{kCommandPageDown, 0, 9},
                            {kCommandPageRight, 18, 9},
                            {kCommandPageUp, 18, 0},
                            {kCommandPageLeft, 0, 0}};
    window->command(kCommandZoomIn); // 20 by 10 samples are seen
    window->command(kCommandHome);
    for (const auto &[command, x, y] : pages) {
        window->command(command);
        EXPECT_EQ(QPoint(window->panX, window->panY), QPoint(x, y)) << command;
    }
    host.zoomSteps = 4;
    window->buildZooms();
    window->command(kCommandZoomIn);
    window->command(kCommandPresetIn);
    EXPECT_FLOAT_EQ(window->zoom, 2.0F);
    window->command(kCommandPresetIn);
    EXPECT_FLOAT_EQ(window->zoom, 4.0F);
    window->command(kCommandZoomOut);
    window->command(kCommandPresetOut);
    EXPECT_FLOAT_EQ(window->zoom, 2.0F);
    window->command(kCommandRatioFirst);
    EXPECT_EQ(window->size(), QSize(400, 200));
    window->command(kCommandRatioLast - 2);
    EXPECT_EQ(window->size(), QSize(20, 10));
    window->command(kCommandSameView);
    EXPECT_EQ(host.statusTexts.last(), "No other view shows an image of this size");
    imgWindow *other = host.show(host.keep(plainImage(40, 20, 0, 0, 0)));
    imgWindow *larger = host.show(host.keep(plainImage(41, 20, 0, 0, 0)));
    window->command(kCommandSameView);
    EXPECT_EQ(QPoint(other->panX, other->panY), QPoint(window->panX, window->panY));
    EXPECT_EQ(other->zoom, window->zoom);
    EXPECT_EQ(larger->zoom, 1.0F);
    window->command(kCommandAntialias);
    EXPECT_EQ(host.statusTexts.last(), "Entire has no antialias switch");
}

TEST_F(Commands, SelectionCommands)
{
    const int steps[][2] = {{kCommandSelectEntire, 65535},
                            {kCommandInvertMask, 0},
                            {kCommandInvertMask, 65535},
                            {kCommandSelectNone, 0}};
    for (const auto &[command, mask] : steps) {
        window->command(command);
        EXPECT_EQ(std::count(img->gmask, img->gmask + 800, mask), 800) << command;
    }
}

TEST_F(Commands, RenameAsks)
{
    img->name = "old";
    int answered = 0;
    QTimer poller;
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
    EXPECT_EQ(window->windowTitle(), "[1] new");
}
