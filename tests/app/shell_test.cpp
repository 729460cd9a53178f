// SPDX-License-Identifier: GPL-3.0-or-later
#include "apphelpers.h"
#include "core/undo.h"
#include "formats/save.h"
#include "support/pictures.h"
#include "views/keytable.h"

#include <QClipboard>
#include <QMenu>
#include <QProgressDialog>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

namespace
{
QSettings store()
{
    return QSettings(QStringLiteral("Zolvine"), QStringLiteral("Kestrane"));
}

/// Closes the next modal dialog and remembers what it was.
class DialogCloser
{
public:
    DialogCloser()
    {
        QObject::connect(&poller, &QTimer::timeout, [this]() {
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                titles << dialog->windowTitle();
                dialog->reject();
            }
        });
        poller.start(10);
    }
    QStringList titles;

private:
    QTimer poller;
};

QStringList entriesOf(QMenu *menu)
{
    emit menu->aboutToShow();
    QStringList texts;
    for (const QAction *action : menu->actions())
        if (!action->isSeparator())
            texts << action->text();
    return texts;
}
} // namespace

TEST_F(AppTest, TheWindowIsLargeEnoughBeforeItIsShown)
{
    // Made larger by its layout at the first show it would be placed without its frame.
    EXPECT_FALSE(main->isVisible());
    EXPECT_EQ(main->size(), main->size().expandedTo(main->minimumSizeHint()));
}

TEST_F(AppTest, CommandsOfTheProgramWorkWithoutAPicture)
{
    main->show();
    DialogCloser closer;
    QTest::keyClick(main.get(), Qt::Key_N, Qt::ControlModifier);
    QTest::keyClick(main.get(), Qt::Key_Comma, Qt::ControlModifier);
    QTest::keyClick(main.get(), Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(closer.titles.size(), 3) << closer.titles.join(';').toStdString();
    EXPECT_FALSE(main->hostCommand(nullptr, 0));
    EXPECT_FALSE(main->hostCommand(nullptr, kCommandUndo)); // needs a window
    QTest::keyClick(main.get(), Qt::Key_1, Qt::ControlModifier);
    QTest::keyClick(main.get(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(main->isVisible());
}

TEST_F(AppTest, AReboundKeyChangesMenuAndKeyboardAndLasts)
{
    keyTable().bind(Qt::Key_F9, kCommandRename); // as the editor does
    keyTable().bind(Qt::Key_N, kCommandClone);
    main->on_actionQuit_triggered(); // writes the settings
    main.reset();
    main = std::make_unique<MainWindow>();
    main->show();
    const image *img = main->loadFile(picture("a.png"));
    ASSERT_NE(img, nullptr);
    EXPECT_TRUE(action("actionRename")->text().endsWith("\tF9"));
    QTest::keyClick(main->validCurrent(), Qt::Key_N);
    ASSERT_EQ(main->images.size(), 2);
    EXPECT_EQ(main->images[1]->name, "a.png[clone]");
    DialogCloser closer;
    action("actionRename")->trigger(); // sends the key that the command has now
    EXPECT_EQ(closer.titles, QStringList{"Rename: a.png[clone]"});

    main->images[1]->changed = false;
    main.reset();
    store().setValue("keyBindings", QByteArray("\0\1nonsense", 10));
    main = std::make_unique<MainWindow>();
    EXPECT_EQ(keyTable().command(Qt::Key_N, Qt::NoModifier), kCommandRename);
    store().remove("keyBindings");
}

TEST_F(AppTest, RecentFilesOpenByMenuAndCommandAndForgetWhatIsGone)
{
    const QString a = picture("a.png"), b = picture("b & c.png");
    ASSERT_NE(main->loadFile(a), nullptr);
    ASSERT_NE(main->loadFile(b), nullptr);
    auto *menu = main->findChild<QMenu *>("menuRecent_Files");
    const QStringList texts = entriesOf(menu);
    ASSERT_GE(texts.size(), 3);
    EXPECT_TRUE(texts[0].startsWith("b && c.png — ")) << texts[0].toStdString();
    EXPECT_TRUE(texts[1].startsWith("a.png — "));
    main->validCurrent()->command(kCommandRecentFirst + 1);
    main->OnTimer();
    EXPECT_EQ(main->images.size(), 3);

    ASSERT_TRUE(QFile::remove(b)); // it vanished between the list and the load
    BoxAnswerer answerer("Load Image", "OK");
    EXPECT_EQ(main->loadFile(b), nullptr);
    EXPECT_EQ(answerer.answers, 1);
    EXPECT_TRUE(answerer.lastText.contains("was not found")) << "";
    EXPECT_TRUE(entriesOf(menu)[0].startsWith("a.png — "));
}

TEST_F(AppTest, WhatNeedsAnOriginNeedsOneOfThisSize)
{
    EXPECT_FALSE(enabled("actionRestore_from_Origin"));
    image *origin = main->loadFile(picture("a.png", {6, 4}, 0xFFFF0000U));
    main->on_actionAssign_as_Origin_triggered();
    EXPECT_FALSE(enabled("actionRestore_from_Origin")); // the origin itself
    main->loadFile(picture("b.png", {5, 4}));
    EXPECT_FALSE(enabled("actionRestore_from_Origin")); // another size
    image *img = main->loadFile(picture("c.png", {6, 4}, 0xFF000000U));
    EXPECT_TRUE(enabled("actionRestore_from_Origin"));

    img->fillGmask(0);
    img->gmask[3] = 65535;
    img->gmask[4] = 32768;
    action("actionRestore_from_Origin")->trigger();
    EXPECT_EQ(img->red[3], origin->red[3]);
    EXPECT_EQ(img->red[4], 32768);
    EXPECT_EQ(img->red[5], 0);
    undo(img);
    EXPECT_EQ(img->red[3], 0);
}

TEST_F(AppTest, TheRayTracersPictureIsOfferedWhenItIsThere)
{
    EXPECT_FALSE(action("actionRetrieve_Ray_Trace")->isVisible());
    main->traceResultFile = folder.filePath("trace.png");
    for (int i = 0; i < 20; ++i)
        main->OnTimer();
    EXPECT_TRUE(action("actionRetrieve_Ray_Trace")->isVisible());
    EXPECT_FALSE(enabled("actionRetrieve_Ray_Trace"));
    picture("trace.png");
    for (int i = 0; i < 20; ++i)
        main->OnTimer();
    ASSERT_TRUE(enabled("actionRetrieve_Ray_Trace"));
    action("actionRetrieve_Ray_Trace")->trigger();
    main->OnTimer();
    EXPECT_EQ(main->images.size(), 1);
}

TEST_F(AppTest, ToolButtonsTakeOwnIconsAndFollowSettings)
{
    int tools = 0;
    for (const char *bar : {"toolBar", "viewBar"})
        for (const QToolButton *button :
             main->findChild<QToolBar *>(bar)->findChildren<QToolButton *>())
            tools += button->contextMenuPolicy() == Qt::CustomContextMenu;
    EXPECT_EQ(tools, 16);
    QStringList icons;
    for (int i = 0; i < 16; ++i)
        icons << QString();
    icons[2] = picture("icon.png", {24, 24}, 0xFF00FF00U);
    icons[3] = folder.filePath("none.png");
    store().setValue("customIcons", icons);
    store().setValue("toolIconSize", 32);
    const QIcon copyIcon = action("actionCopy")->icon();
    main.reset();
    main = std::make_unique<MainWindow>();
    const QImage shown = action("actionSave_Image")->icon().pixmap(24, 24).toImage();
    EXPECT_EQ(shown.pixelColor(12, 12), QColor(0, 255, 0));
    EXPECT_FALSE(action("actionCopy")->icon().isNull());
    main->showRulers = true; // whoever changed it: the entry follows
    main->OnTimer();
    EXPECT_TRUE(action("actionRulers")->isChecked());
    store().remove("customIcons");
    store().remove("toolIconSize");
}

TEST_F(AppTest, PasteIsOfferedWhileThereIsAPicture)
{
    QGuiApplication::clipboard()->clear();
    image *img = main->loadFile(picture("a.png"));
    EXPECT_FALSE(enabled("actionPaste"));
    QTest::keyClick(main->validCurrent(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(enabled("actionPaste"));
    EXPECT_TRUE(enabled("actionPaste_as_New_Image"));
    QTest::keyClick(main->validCurrent(), Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(main->images.size(), 2);
    EXPECT_TRUE(sameColors(*img, *main->images[1]));
    main->images[1]->changed = false;
    QGuiApplication::clipboard()->clear();
}

TEST_F(AppTest, AStartupSequenceWithoutItsPicturesSaysSoInTheStatusLine)
{
    QFile file(folder.filePath("sequence.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("path " + folder.path().toUtf8() + "\nload none.png\nloadbrush gone.png\n");
    file.close();
    main->runStartupSequence(file.fileName());
    EXPECT_TRUE(main->images.isEmpty());
    EXPECT_TRUE(main->statusBar()->toolTip().endsWith("not found: none.png, gone.png"));
}

TEST_F(AppTest, LoadingAndSavingLeaveNoProgressBarBehind)
{
    image *img = main->loadFile(picture("a.png"));
    for (const char *name : {"a.ato", "a.mcai", "a.png"}) {
        FileRecord record = FileRecord::fromPath(folder.filePath(name));
        ASSERT_TRUE(saveImageFile(record, img, false)) << name;
        EXPECT_EQ(main->findChild<QProgressDialog *>(), nullptr) << "saving " << name;
        ASSERT_NE(main->loadFile(record.fullPath), nullptr) << name;
        EXPECT_EQ(main->findChild<QProgressDialog *>(), nullptr) << "loading " << name;
    }
}
