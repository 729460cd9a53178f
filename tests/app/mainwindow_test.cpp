// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appsettings.h"
#include "app/downloadmanager.h"
#include "app/imagelist.h"
#include "app/myapplication.h"
#include "apphelpers.h"
#include "core/memory.h"
#include "operators/base/operatortable.h"
#include "operators/dialog/operators.h"
#include "support/debuglog.h"
#include "support/pictures.h"

#include "app/filepicker.h"
#include <QFileOpenEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QUrl>

namespace
{
/// Twenty ticks: more than the slowest duty of the timer waits for.
void ticks(MainWindow *main, int count = 20)
{
    for (int i = 0; i < count; ++i)
        main->OnTimer();
}

QSettings settingsStore()
{
    return QSettings(QStringLiteral("Zolvine"), QStringLiteral("Kestrane"));
}
} // namespace

TEST_F(AppTest, SecondOpenRequestBeforeATickReplacesTheFirst)
{
    const QString first = picture("first.png"), second = picture("second.png");
    for (const QString &path : {first, second}) {
        const QFileOpenEvent event(path);
        noteFileOpen(&event);
    }
    ASSERT_TRUE(QTest::qWaitFor([&]() { return !main->images.isEmpty(); }));
    ASSERT_EQ(main->images.size(), 1);
    EXPECT_EQ(main->images[0]->name, "second.png");
    EXPECT_EQ(main->images[0]->viewCount, 1);
    EXPECT_EQ(main->validCurrent()->img, main->images[0]);
    EXPECT_EQ(main->windowTitle(), main->images[0]->title + " - Kestrane");

    const QFileOpenEvent again(first);
    noteFileOpen(&again);
    ASSERT_TRUE(QTest::qWaitFor([&]() { return main->images.size() == 2; }));
    EXPECT_FALSE(pendingOpen.pending);
}

TEST_F(AppTest, FilesOfTheCommandLineAndDropsOpenOneATick)
{
    main->openUrls({QUrl::fromLocalFile(picture("a.png")), QUrl::fromLocalFile(picture("b.png"))});
    main->OnTimer();
    EXPECT_EQ(main->images.size(), 1);
    main->OnTimer();
    EXPECT_EQ(main->images.size(), 2);

    QStringList files;
    QString unknown;
    EXPECT_TRUE(MyApplication::filesOfArguments({"kestrane", "file:///x%20y.png", "--", "-z.png"},
                                                &files, &unknown));
    EXPECT_EQ(files, QStringList({"/x y.png", QDir::current().absoluteFilePath("-z.png")}));
    EXPECT_FALSE(MyApplication::filesOfArguments({"kestrane", "--nonsense"}, &files, &unknown));
    EXPECT_EQ(unknown, "--nonsense");
}

TEST_F(AppTest, RefusedDropIsToldOnce)
{
    BoxAnswerer answerer("Kestrane", "OK");
    main->openUrls({QUrl(QStringLiteral("https://example.invalid/a&b.png"))});
    ticks(main.get());
    EXPECT_EQ(answerer.answers, 1);
    EXPECT_TRUE(answerer.lastText.startsWith(
        "Drop attempt:<br>\"https://example.invalid/a&amp;b.png\"<br><br>Notice: Cannot drop a "
        "non-local URL as an image.<br>"))
        << answerer.lastText.toStdString();
    EXPECT_TRUE(main->images.isEmpty());
}

TEST_F(AppTest, StartupSequenceLoadsAndSkipsWhatItCannot)
{
    picture("first.png");
    picture("brush.png");
    QFile file(folder.filePath("sequence.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("nonsense first.png\nload\n\npath   " + folder.path().toUtf8() +
               "\nload missing.png\r\n  load   first.png\nloadbrush brush.png\nload  \n");
    file.close();
    main->runStartupSequence(file.fileName());
    ASSERT_EQ(main->images.size(), 2);
    EXPECT_EQ(main->images[0]->name, "first.png");
    EXPECT_EQ(main->brushImage, main->images[1]);
    EXPECT_EQ(label("brushLabel"), "B: brush.png ");
    main->runStartupSequence(folder.filePath("none.txt"));
    EXPECT_EQ(main->images.size(), 2);
}

TEST_F(AppTest, QuitAsksOnlyAboutChangesAndMarksTheEnd)
{
    image *img = main->loadFile(picture("a.png"));
    ASSERT_NE(img, nullptr);
    img->changed = true;
    main->show();
    {
        BoxAnswerer cancel("Important", "Cancel and don't lose changes");
        action("actionQuit")->trigger();
        EXPECT_EQ(cancel.answers, 1);
        EXPECT_TRUE(cancel.lastText.startsWith("Some images have unsaved changes. If you"));
        EXPECT_TRUE(main->isVisible());
        EXPECT_EQ(main->windows.size(), 1);
        EXPECT_FALSE(settingsStore().value("appWasOkay").toBool());
    }
    BoxAnswerer proceed("Important", "Proceed and lose any changes");
    action("actionQuit")->trigger();
    EXPECT_EQ(proceed.answers, 1);
    EXPECT_FALSE(main->isVisible());
    main.reset();
    EXPECT_TRUE(settingsStore().value("appWasOkay").toBool());

    main = std::make_unique<MainWindow>();
    EXPECT_TRUE(main->lastRunEndedInOrder());
    main = nullptr; // an end without a quit
    main = std::make_unique<MainWindow>();
    EXPECT_FALSE(main->lastRunEndedInOrder());
    main->loadFile(picture("unchanged.png"));
    BoxAnswerer none("Important", "Proceed and lose any changes");
    EXPECT_TRUE(main->close());
    EXPECT_EQ(none.answers, 0);
}

TEST_F(AppTest, OperateUndoAndRedoThroughTheMenus)
{
    for (const char *name : {"actionUndo", "actionRedo", "actionSave_Image", "actionApply"})
        EXPECT_FALSE(enabled(name)) << name;
    action("actionUndo")->trigger(); // with no image nothing happens
    main->on_actionUndo_triggered();
    main->on_operate_clicked();

    image *img = main->loadFile(picture("a.png"));
    ASSERT_NE(img, nullptr);
    const ImagePtr before = copyOf(*img);
    EXPECT_TRUE(enabled("actionSave_Image"));
    EXPECT_FALSE(enabled("actionUndo"));
    action("actionSelect_Entire")->trigger();
    EXPECT_EQ(img->maskAt(3, 3), 65535);
    ticks(main.get());
    EXPECT_EQ(label("areaLabel"), "A: 40 30");

    useOperator(*main, "negative");
    QTest::mouseClick(main->findChild<QPushButton *>("operate"), Qt::LeftButton);
    EXPECT_EQ(img->red[0], 65535 - before->red[0]);
    EXPECT_TRUE(img->changed);
    EXPECT_TRUE(enabled("actionUndo"));
    EXPECT_FALSE(enabled("actionRedo"));

    action("actionUndo")->trigger();
    EXPECT_TRUE(sameColors(*img, *before));
    EXPECT_TRUE(enabled("actionUndo")); // of the selection
    EXPECT_TRUE(enabled("actionRedo"));
    action("actionRedo")->trigger();
    EXPECT_EQ(img->red[0], 65535 - before->red[0]);
    QTest::keyClick(main.get(), Qt::Key_U); // a key of the main window goes the same way
    EXPECT_TRUE(sameColors(*img, *before));

    main->on_operate_clicked();
    action("actionApply_Again")->trigger();
    EXPECT_TRUE(sameColors(*img, *before));
    EXPECT_EQ(img->undoList.size(), 3);
    action("actionClear_Undos_and_Redos")->trigger();
    EXPECT_TRUE(img->undoList.isEmpty());
    EXPECT_FALSE(enabled("actionUndo"));
}

TEST_F(AppTest, SecondViewFollowsEveryChange)
{
    image *img = main->loadFile(picture("a.png"));
    ASSERT_NE(img, nullptr);
    action("actionOpen_Another_View")->trigger();
    ASSERT_EQ(main->windows.size(), 2);
    EXPECT_EQ(img->viewCount, 2);
    EXPECT_EQ(main->images.size(), 1);
    imgWindow *other = main->windows[0];
    ASSERT_NE(other, main->validCurrent());
    const auto shown = [other]() {
        return other->grab().toImage().pixel(other->width() / 2, other->height() / 2);
    };
    const QRgb before = shown();
    EXPECT_EQ(before, 0xFF804020U);
    action("actionSelect_Entire")->trigger();
    useOperator(*main, "negative");
    main->on_operate_clicked();
    EXPECT_EQ(shown(), 0xFF7FBFDFU);
    action("actionUndo")->trigger();
    EXPECT_EQ(shown(), before);

    img->name = "renamed";
    img->rebuildTitle();
    main->refreshViews(img);
    EXPECT_EQ(other->windowTitle(), img->title);
}

TEST_F(AppTest, StaleCurrentWindowDropsTheCommand)
{
    image *img = main->loadFile(picture("a.png"));
    ASSERT_NE(img, nullptr);
    main->closeWindowsOf(img);
    EXPECT_TRUE(main->windows.isEmpty());
    EXPECT_EQ(img->viewCount, 0);
    main->on_actionUndo_triggered();
    main->on_operate_clicked();
    ticks(main.get());
    EXPECT_FALSE(action("actionUndo")->isEnabled());
    EXPECT_EQ(main->windowTitle(), "Kestrane");
}

TEST_F(AppTest, DeferredDiscardTakesTheWholeStack)
{
    auto *master = randomImage(8, 8, 1).release();
    auto *layer = randomImage(8, 8, 2).release();
    master->kind = 1;
    layer->kind = 2;
    layer->master = master;
    master->layers << layer;
    main->showImage(master, FileRecord());
    main->showImage(layer, FileRecord());
    main->images.removeAll(layer); // a layer is reached through its master
    main->assignBrush(layer);
    layer->changed = true;
    main->pendingDiscard = true;
    main->pendingDiscardImage = layer;
    ticks(main.get());
    EXPECT_TRUE(main->images.isEmpty());
    EXPECT_TRUE(main->windows.isEmpty());
    EXPECT_EQ(main->brushImage, nullptr);
    EXPECT_FALSE(main->pendingDiscard);
    EXPECT_EQ(label("brushLabel"), "B: (<i>unset</i>)");
}

TEST_F(AppTest, AssignmentsShowAndEndWithTheirImage)
{
    EXPECT_EQ(label("brushLabel"), "B: (<i>unset</i>)");
    EXPECT_EQ(label("originLabel"), "O: (<i>unset</i>)");
    main->loadFile(picture("a<b.png"));
    action("actionAssign_as_Brush")->trigger();
    action("actionAssign_as_Origin")->trigger();
    EXPECT_EQ(label("brushLabel"), "B: a&lt;b.png ");
    EXPECT_EQ(label("originLabel"), "O: a&lt;b.png ");
    EXPECT_TRUE(enabled("actionClear_Brush"));
    action("actionClear_Brush")->trigger();
    EXPECT_EQ(main->brushImage, nullptr);
    action("actionClose")->trigger();
    EXPECT_TRUE(main->images.isEmpty());
    EXPECT_EQ(main->originImage, nullptr);
    EXPECT_EQ(label("originLabel"), "O:<i>No origin</i>");
    EXPECT_FALSE(enabled("actionClear_Origin"));
}

TEST_F(AppTest, CloseAllAsksOnceForEveryChange)
{
    for (const char *name : {"a.png", "b.png", "c.png"})
        main->loadFile(picture(name))->changed = true;
    action("actionOpen_Another_View")->trigger();
    {
        BoxAnswerer cancel("Important", "Cancel and don't lose changes");
        action("actionClose_All")->trigger();
        EXPECT_EQ(cancel.answers, 1);
        EXPECT_EQ(main->images.size(), 3);
    }
    BoxAnswerer proceed("Important", "Proceed and lose any changes");
    action("actionClose_All")->trigger();
    EXPECT_EQ(proceed.answers, 1);
    EXPECT_TRUE(main->images.isEmpty());
    EXPECT_TRUE(main->windows.isEmpty());
    EXPECT_EQ(main->validCurrent(), nullptr);
}

TEST_F(AppTest, ImagesAreSteppedThroughAndPickedFromTheList)
{
    for (const char *name : {"a.png", "b.png", "c.png"})
        main->loadFile(picture(name));
    const auto current = [this]() { return main->images.indexOf(main->validCurrent()->img); };
    EXPECT_EQ(current(), 2);
    action("actionNext_Image")->trigger();
    EXPECT_EQ(current(), 0);
    action("actionPrevious_Image")->trigger();
    EXPECT_EQ(current(), 2);

    auto *list = main->findChild<ImageList *>("imageList");
    ASSERT_EQ(list->topLevelItemCount(), 3);
    main->show();
    const QRect row = list->visualItemRect(list->topLevelItem(1));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, row.center());
    EXPECT_EQ(current(), 1);
    main->images[1]->changed = true;
    main->OnTimer();
    EXPECT_EQ(list->topLevelItem(1)->text(1), QStringLiteral("40 × 30"));
    EXPECT_EQ(list->topLevelItem(1)->text(2), QStringLiteral("●"));
    EXPECT_EQ(list->currentItem(), list->topLevelItem(1));
    main->images[1]->changed = false;
    QTest::keyClick(list, Qt::Key_U); // no search: nothing to undo, nothing happens
    EXPECT_EQ(current(), 1);
}

TEST_F(AppTest, NextImageOfTheFolderInNameOrder)
{
    const QString first = picture("a 1.png");
    picture("B 2.PNG");
    QFile(folder.filePath("b 3.txt")).open(QIODevice::WriteOnly);
    main->loadFile(first);
    action("actionLoad_Next_Image")->trigger();
    ASSERT_EQ(main->images.size(), 2);
    EXPECT_EQ(main->images[1]->name, "B 2.PNG");
    action("actionLoad_Next_Image")->trigger();
    EXPECT_EQ(main->images.size(), 2);
    EXPECT_EQ(main->statusBar()->toolTip(), "No further image in this folder");
}

TEST_F(AppTest, SettingsLastAndNonsenseIsLeftOut)
{
    main->setSetting("maxUndos", "7", nullptr);
    main->zoomSteps = 4;
    main->mainAuthor = "Ann, \"the\" author";
    main->foreGreen = 257;
    action("actionAsk_on_Close")->trigger();
    EXPECT_FALSE(main->imgClose);
    action("actionMultiply")->trigger();
    EXPECT_EQ(main->blendMode, 5);
    main->setGeometry(QRect(QPoint(77, 66), main->size()));
    ASSERT_TRUE(main->close());
    main.reset();

    main = std::make_unique<MainWindow>();
    EXPECT_EQ(main->maxUndos, 7);
    EXPECT_EQ(main->zoomSteps, 4);
    EXPECT_EQ(main->mainAuthor, "Ann, \"the\" author");
    EXPECT_EQ(main->foreGreen, 257);
    EXPECT_FALSE(main->imgClose);
    EXPECT_EQ(main->blendMode, 0);
    EXPECT_EQ(main->geometry().topLeft(), QPoint(77, 66));
    ASSERT_TRUE(main->close());
    main.reset();

    QSettings store = settingsStore();
    const Workspace::Setting::Type text = Workspace::Setting::Type::Text;
    {
        Workspace defaults;
        for (const auto &setting : defaults.settings())
            if (setting.type != text)
                store.setValue(setting.key, QByteArray("\x00\xFF nonsense", 11));
    }
    store.setValue("windowPosition", "far away");
    store.setValue("imageFileBag/folder", QVariantList{1, 2});
    store.sync();
    main = std::make_unique<MainWindow>();
    Workspace *read = main.get();
    EXPECT_EQ(read->maxUndos, 10);
    EXPECT_EQ(read->zoomSteps, 1);
    EXPECT_TRUE(read->imgClose);
    store.clear();
}

TEST_F(AppTest, ExactlyOneBlendModeIsMarked)
{
    const auto marked = [this]() {
        QStringList names;
        for (const QAction *item : main->findChild<QMenu *>("menuBlend_Mode")->actions())
            if (item->isChecked())
                names << item->text();
        return names;
    };
    const QStringList names = {
        "Matte",  "Add",      "Add Grey",      "Subtract Grey",    "Subtract",        "Multiply",
        "Divide", "Dissolve", "Soft Dissolve", "Foreground Color", "Background Color"};
    EXPECT_EQ(marked(), QStringList("Matte"));
    const auto items = main->findChild<QMenu *>("menuBlend_Mode")->actions();
    ASSERT_EQ(items.size(), names.size());
    for (int i = 0; i < names.size(); ++i) {
        items[i]->trigger();
        items[i]->trigger(); // a second choice of the same mode keeps it
        EXPECT_EQ(main->blendMode, i);
        EXPECT_EQ(marked(), QStringList(names[i]));
    }
}

TEST_F(AppTest, SaveDialogWritesAndNamesThePicture)
{
    image *img = main->loadFile(picture("a.png"));
    ASSERT_NE(img, nullptr);
    img->changed = true;
    const QString path = folder.filePath("saved.png");
    int dialogs = 0, sightings = 0;
    QTimer poller;
    QObject::connect(&poller, &QTimer::timeout, [&]() {
        auto *dialog = qobject_cast<filePicker *>(QApplication::activeModalWidget());
        // Its first events complete the name by themselves and would undo what is typed.
        if (!dialog || dialogs > 0 || ++sightings < 3)
            return;
        ++dialogs;
        auto *edit = dialog->findChild<QLineEdit *>("nameLine");
        edit->selectAll();
        QTest::keyClicks(edit, "saved");
        QTest::keyClick(edit, Qt::Key_Return);
    });
    poller.start(10);
    main->showSaveDialog(main->validCurrent(), false);
    EXPECT_EQ(dialogs, 1);
    EXPECT_TRUE(QFile::exists(path));
    EXPECT_FALSE(img->changed);
    EXPECT_EQ(img->fullPath, path);
    EXPECT_EQ(main->validCurrent()->windowTitle(), img->title);
    EXPECT_TRUE(img->title.contains("saved.png"));

    img->fill(0, 0, 0, 65535);
    img->changed = true;
    action("actionSave_Image")->trigger(); // to the same file, without a dialog
    EXPECT_EQ(dialogs, 1);
    EXPECT_FALSE(img->changed);
    EXPECT_EQ(QImage(path).pixel(0, 0), 0xFF000000U);
}

TEST_F(AppTest, TablesAreTrackedAndFreed)
{
    const QString report = memReport(true);
    for (const char *labelText : {"primary poly list", "inote poly list", "colorSpace",
                                  "colorSpaceBackup", "colorcount array", "cvt8to32 map"})
        EXPECT_TRUE(report.contains(labelText)) << labelText;
    main->loadFile(picture("a.png"));
    main.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(memRecord.currentBlocks, 0) << memReport(true).toStdString();
}

TEST(MemoryTrigger, WritesTheReportOnlyWhereTheFileStands)
{
    takeDebugLines();
    reportMemoryIfTriggered();
    EXPECT_TRUE(takeDebugLines().isEmpty());
    QFile trigger(QDir::homePath() + "/kstdebugtrigger.txt");
    ASSERT_TRUE(trigger.open(QIODevice::WriteOnly));
    trigger.close();
    reportMemoryIfTriggered();
    EXPECT_EQ(takeDebugLines(), memReport(true).split('\n'));
    trigger.remove();
}

TEST(VersionCheck, AsksNobodyWithoutAHostAndEncodesTheSerial)
{
    EXPECT_EQ(DownloadManager::query(1, 2, "a&b %2", 3),
              "/cgi-bin/kstversion.py?ver=1.2&sn=a%26b%20%252&kv=3");
    DownloadManager manager;
    manager.execute();
    EXPECT_EQ(manager.findChildren<QObject *>().size(), 0);
    EXPECT_EQ(manager.versionText, "unknown");
}
