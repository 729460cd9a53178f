// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/stack.h"
#include "views/testhost.h"

#include <QPointer>
#include <QtTest>

#include <gtest/gtest.h>

class Close : public testing::Test
{
protected:
    TestHost host;
    image *img = host.keep(plainImage(40, 30, 0, 0, 0));
    QPointer<imgWindow> window = host.show(img);

    static bool close(imgWindow *which)
    {
        const bool closed = which->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return closed;
    }
};

TEST_F(Close, OnlyTheLastViewOfAChangedImageAsks)
{
    img->changed = true;
    QPointer<imgWindow> second = host.show(img);
    EXPECT_TRUE(close(window));
    EXPECT_TRUE(host.questions.isEmpty() && window.isNull());
    EXPECT_EQ(img->viewCount, 1);
    EXPECT_EQ(host.windows, QList<imgWindow *>{second});
    host.answer = 0;
    EXPECT_FALSE(close(second));
    EXPECT_EQ(host.questions,
              QStringList("Last view on image<br><br>!<b>This image has been changed.</b><br>You "
                          "are about to close the last view on this image.<br><br><i>Are you "
                          "sure you want to do that?</i>"));
    EXPECT_TRUE(host.images.size() == 1 && host.windows.first()->isVisible());
    host.answer = 1;
    host.assignBrush(img);
    host.assignOrigin(img);
    EXPECT_TRUE(close(second));
    EXPECT_TRUE(host.images.isEmpty() && host.windows.isEmpty() && second.isNull());
    EXPECT_TRUE(!host.brushImage && !host.originImage && !host.currentWindow);
}

TEST_F(Close, UnchangedUnwantedAndDiscardedAskNothing)
{
    imgWindow *other = host.show(host.keep(plainImage(9, 9, 0, 0, 0)));
    host.makeCurrent(window);
    EXPECT_TRUE(close(window));
    EXPECT_EQ(host.currentWindow, other);
    other->img->changed = true;
    host.imgClose = false;
    EXPECT_TRUE(close(other));
    host.imgClose = true;
    image *thrown = host.keep(plainImage(9, 9, 0, 0, 0));
    thrown->changed = thrown->discard = true;
    imgWindow *first = host.show(thrown), *second = host.show(thrown);
    EXPECT_TRUE(close(first) && host.images.size() == 1); // the other view still shows it
    EXPECT_TRUE(close(second));
    EXPECT_TRUE(host.images.isEmpty() && host.questions.isEmpty());
}

TEST_F(Close, NoPromptKeepsTheImageAndWorkRefuses)
{
    img->changed = true;
    img->inUse = true;
    EXPECT_FALSE(close(window));
    img->inUse = false;
    img->noPrompt = true;
    EXPECT_TRUE(close(window));
    EXPECT_TRUE(host.images.contains(img) && host.questions.isEmpty() && host.windows.isEmpty());
}

TEST_F(Close, LayeredImagesAreLeftToTheTimer)
{
    Stack stack;
    image *layer = stack.add(0),
          *master = host.keep(ImagePtr(std::exchange(stack.master, nullptr)));
    master->changed = true;
    imgWindow *view = host.show(layer);
    host.answer = 0;
    EXPECT_FALSE(close(view));
    EXPECT_EQ(host.questions,
              QStringList("Last view on part of a layered image!<br><br><b>This layered image has "
                          "been changed.</b><br>You are about to close the last view on this "
                          "component,<br>which will close the layered image completely.<br><br>"
                          "<i>Are you sure you want to do that?</i>"));
    EXPECT_FALSE(host.pendingDiscard);
    host.answer = 1;
    EXPECT_TRUE(close(view));
    EXPECT_TRUE(host.pendingDiscard && host.pendingDiscardImage == layer);
    EXPECT_TRUE(host.images.contains(master) && host.isWindow(view)); // until the timer
    host.closingAll = true;
    host.show(master);
    EXPECT_TRUE(close(view));
    EXPECT_TRUE(host.images.contains(master)); // a part of it is still shown
    while (host.windows.size() > 1)
        close(host.windows.last());
    EXPECT_FALSE(host.images.contains(master));
    EXPECT_EQ(host.remembered, 0);
    EXPECT_TRUE(close(host.windows.first()));
    EXPECT_EQ(host.remembered, 1);
    EXPECT_TRUE(host.images.isEmpty());
}
