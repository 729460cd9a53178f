// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/undo.h"
#include "views/testhost.h"

#include <QPointer>
#include <QtTest>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

class Jobs : public testing::Test
{
protected:
    TestHost host;
    image *img = host.keep(plainImage(80, 60, 9, 9, 9));
    imgWindow *const window = host.show(img, {80, 60});
    std::atomic<int> runs{0};
    std::atomic<bool> go{true};

    Jobs()
    {
        img->fillGmask(40000);
        window->maskProducer = [this](const image &of, uint16_t *mask) {
            while (!go)
                QThread::yieldCurrentThread();
            ++runs;
            for (int64_t i = 0; i < of.sampleCount(); ++i)
                mask[i] = uint16_t(of.red[i] + 29991);
            return true;
        };
    }
    uint16_t maskAfterJob()
    {
        window->startWorker(WorkerThread::Mask);
        EXPECT_TRUE(QTest::qWaitFor([this]() { return !window->wandBusy; }));
        return img->gmask[17];
    }
};

TEST_F(Jobs, MasksAreMadeOneAtATimeAndJoinedWithTheBackCopy)
{
    go = false;
    EXPECT_TRUE(window->startWorker(WorkerThread::Mask));
    EXPECT_TRUE(window->wandBusy);
    EXPECT_FALSE(window->startWorker(WorkerThread::Mask));
    window->grab(); // paints while the job runs
    EXPECT_EQ(img->gmask[17], 40000);
    go = true;
    EXPECT_TRUE(QTest::qWaitFor([this]() { return !window->wandBusy; }));
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(img->gmask[17], 30000);
    window->addToMask = true;
    EXPECT_EQ(maskAfterJob(), 60000);
    EXPECT_EQ(maskAfterJob(), 60000);   // still the copy that the drag began with
    EXPECT_EQ(img->undoList.size(), 1); // likewise
    window->beginMaskDrag();
    window->addToMask = false;
    window->subtractFromMask = true;
    EXPECT_EQ(maskAfterJob(), 30000);
    window->cancelMaskDrag();
    EXPECT_EQ(img->gmask[17], 60000);
    EXPECT_EQ(img->undoList.size(), 1);
    window->maskProducer = nullptr;
    img->fillGmask(5);
    EXPECT_EQ(maskAfterJob(), 5);
}

TEST_F(Jobs, WhatEndsOrChangesTheImageWaitsForThem)
{
    const auto startSlow = [this]() {
        go = false;
        window->startWorker(WorkerThread::Mask);
        std::thread([this]() {
            QThread::msleep(30);
            go = true;
        }).detach();
    };
    startSlow();
    window->command(kCommandSelectEntire); // after the job's mask
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(img->gmask[17], 65535);
    EXPECT_FALSE(window->wandBusy);
    QCoreApplication::processEvents();
    EXPECT_EQ(img->gmask[17], 65535); // the report came late
    startSlow();
    window->img = nullptr; // as the main window does before the image goes
    window->hide();
    EXPECT_EQ(runs, 2);
    window->img = img;
    const QPointer<imgWindow> closed(window);
    startSlow();
    window->close();
    EXPECT_EQ(runs, 3);
    EXPECT_TRUE(host.images.isEmpty());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(closed.isNull());
}

TEST_F(Jobs, PreviewsTakeTheImagesPlaceWithUndo)
{
    window->wandClick = true;
    window->previewProducer = [](image *copy) { return copy->fill(1, 2, 3, 65535), true; };
    ASSERT_TRUE(window->startWorker(WorkerThread::Preview));
    EXPECT_FALSE(window->wandClick);
    EXPECT_EQ(img->green[0], 9);
    EXPECT_TRUE(QTest::qWaitFor([this]() { return img->green[0] == 2; }));
    EXPECT_TRUE(img->changed);
    window->command(kCommandUndo);
    EXPECT_EQ(img->green[0], 9);
    window->previewProducer = nullptr;
    window->grab();
    ASSERT_TRUE(window->startWorker(WorkerThread::Preview));
    EXPECT_TRUE(QTest::qWaitFor([this]() { return window->rebuildCache; }));
}
