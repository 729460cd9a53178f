// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/operatortable.h"
#include "operators/dialog/operators.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

constexpr int kExposure = 29;
constexpr int kNegative = 62;

/// Plays the person in front of modal boxes: types `key` into the key grabber and closes
/// message boxes, keeping what they said.
class ModalPerson
{
public:
    /// An empty text stands for the Escape key.
    explicit ModalPerson(const QString &keys)
    {
        QObject::connect(&poller, &QTimer::timeout, [this, keys]() {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal)
                return;
            if (modal->objectName() == QLatin1String("keyGrabber")) {
                ++grabbers;
                if (keys.isEmpty())
                    QTest::keyClick(modal, Qt::Key_Escape);
                else
                    QTest::keyClicks(modal, keys);
            } else if (auto *box = qobject_cast<QMessageBox *>(modal)) {
                boxes << box->windowTitle() + QLatin1String(": ") + box->text();
                boxSize = box->size();
                box->accept();
            }
        });
        poller.start(10);
    }
    int grabbers = 0;
    QStringList boxes;
    QSize boxSize;

private:
    QTimer poller;
};

class DialogHost : public ViewHost
{
public:
    void showNewImageDialog() override { ++newImageDialogs; }
    bool globalKey(QKeyEvent *) override { return takesKeys; }
    int newImageDialogs = 0;
    bool takesKeys = false;
};

/// The dialog over all operators, with one window open on a picture.
class DialogTest : public testing::Test
{
protected:
    void open(int width, int height)
    {
        close();
        picture = randomImage(width, height, 7);
        ws.images = {picture.get()};
        window = std::make_unique<imgWindow>(picture.get());
        host.windows = {window.get()};
        host.currentWindow = window.get();
        makeDialog();
    }
    void makeDialog()
    {
        if (table.operators().empty())
            addAllOperators(&table);
        dialog.reset();
        dialog = std::make_unique<Operators>(&table);
        dialog->show();
    }
    void close()
    {
        host.windows.clear();
        host.currentWindow = nullptr;
        window.reset();
        ws.images.clear();
        picture.reset();
    }
    ~DialogTest() override
    {
        dialog.reset();
        close();
    }

    template <class Widget>
    Widget *child(const char *name)
    {
        auto *found = dialog->findChild<Widget *>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    RecordingWorkspace ws;
    DialogHost host;
    OperatorTable table;
    ImagePtr picture;
    std::unique_ptr<imgWindow> window;
    std::unique_ptr<Operators> dialog;
};
