// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/recovery.h"
#include "app/recoverydialog.h"
#include "core/memory.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"
#include "support/stack.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QMessageBox>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include <sys/resource.h>

namespace
{
class Space : public RecordingWorkspace
{
public:
    bool cancelRequested() override { return cancel; }
    bool cancel = false;
};

class RecoveryTest : public testing::Test
{
protected:
    image *open(ImagePtr img)
    {
        img->changed = true;
        img->name = QStringLiteral("a.png");
        ws.giveSerial(img.get());
        ws.images << img.get();
        return img.release();
    }
    image *openStack()
    {
        image *master = open(plainImage(8, 6, 0, 0, 0));
        master->kind = 1;
        for (int i = 1; i <= 2; ++i) {
            image *layer = randomImage(8, 6, uint32_t(i)).release();
            layer->kind = 2;
            layer->master = master;
            master->layers << layer;
        }
        return master;
    }
    void save(Recovery *recovery)
    {
        recovery->saveNow();
        recovery->waitForDone();
    }
    /// All files below the folder but locks, each as path within it.
    QStringList files() const
    {
        QStringList found;
        QDirIterator all(root(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (all.hasNext())
            if (!all.next().endsWith(QLatin1String("/lock")))
                found << all.fileName();
        found.sort();
        return found;
    }
    QString root() const { return folder.filePath(QStringLiteral("recovery")); }
    QList<RecoveredPicture> offered() { return Recovery(&ws, root(), nullptr).leftovers(); }

    QTemporaryDir folder;
    Space ws;
};

/// What the program does that is killed below: every picture always has one value, which
/// its annotation names.
TEST_F(RecoveryTest, DISABLED_EditUntilKilled)
{
    ASSERT_TRUE(qEnvironmentVariableIsSet("KESTRANE_TEST_RECOVERY"));
    const QString place = qEnvironmentVariable("KESTRANE_TEST_RECOVERY");
    image *single = open(plainImage(200, 150, 0, 0, 0, 0));
    single->fullPath = place + QStringLiteral("/a.png");
    image *master = openStack();
    uint16_t value = 0;
    const auto set = [&value](image *img) {
        img->fill(value, value, value, value);
        img->annotation = QString::number(value);
    };
    Recovery recovery(&ws, place + QStringLiteral("/recovery"), nullptr);
    recovery.setInterval(20);
    for (;;) {
        ++value;
        set(single);
        for (image *layer : qAsConst(master->layers))
            set(layer);
        QTest::qWait(1);
    }
}

TEST_F(RecoveryTest, AKillAtAnyMomentLeavesWholePictures)
{
    const QString original = folder.filePath(QStringLiteral("a.png"));
    QFile file(original);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("as saved") > 0);
    file.close();
    QRandomGenerator random(7);
    for (int kill = 0; kill < 8; ++kill) {
        SCOPED_TRACE(kill);
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("KESTRANE_TEST_RECOVERY", folder.path());
        environment.insert("TMPDIR", folder.path());
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(),
                      {"--gtest_also_run_disabled_tests",
                       "--gtest_filter=RecoveryTest.DISABLED_EditUntilKilled"});
        ASSERT_TRUE(QTest::qWaitFor([&] { return files().filter(".json").size() == 2; }, 60000));
        EXPECT_TRUE(offered().isEmpty()) << "files of a run that goes on";
        QTest::qWait(int(random.bounded(120)));
        process.kill();
        ASSERT_TRUE(process.waitForFinished());

        Recovery recovery(&ws, root(), nullptr);
        const QList<RecoveredPicture> left = recovery.leftovers();
        ASSERT_EQ(left.size(), 2);
        for (const RecoveredPicture &picture : left) {
            const image *img = recovery.restore(picture);
            ASSERT_NE(img, nullptr);
            EXPECT_EQ(img->layers.size(), picture.layered ? 2 : 0);
            EXPECT_EQ(img->fullPath, picture.layered ? QString() : original);
            const image *first = picture.layered ? img->layers.first() : img;
            const auto value = uint16_t(first->annotation.toInt());
            EXPECT_GT(value, 0);
            const ImagePtr expected =
                plainImage(first->width, first->height, value, value, value, value);
            for (const image *one :
                 picture.layered ? img->layers : QList<image *>{ws.images.last()})
                EXPECT_TRUE(sameColors(*one, *expected)) << "copied amidst a change";
        }
        recovery.endInOrder();
        EXPECT_TRUE(QDir(root()).isEmpty()) << "restored, and ended in order";
    }
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "as saved");
}

TEST_F(RecoveryTest, OnlyWhatChangedIsWrittenAgain)
{
    image *single = open(randomImage(9, 7, 3));
    image *master = openStack();
    Recovery recovery(&ws, root(), nullptr);
    save(&recovery);
    const struct {
        const char *fault;
        std::function<void()> change;
        int written;
    } cases[] = {
        {"NothingChanged", [] {}, 0},
        {"SampleWithoutAnyStamp", [&] { single->alpha[62] ^= 1; }, 1},
        {"SampleOfALayer", [&] { master->layers[0]->green[0] ^= 1; }, 1},
        {"SettingOfALayer", [&] { master->layers[1]->opacity = 0.5; }, 1},
        {"OrderOfLayers", [&] { master->layers.swapItemsAt(0, 1); }, 1},
        {"Note", [&] { single->notations << Notation(); }, 1},
        {"BothPictures", [&] { single->red[0] ^= 1, master->author = "me"; }, 2},
        {"SelectionIsNotKept", [&] { single->gmask[0] ^= 1; }, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.fault);
        const QStringList before = files();
        c.change();
        save(&recovery);
        const QStringList after = files();
        EXPECT_EQ(after.size(), 4) << "an old version stays";
        const auto isNew = [&before](const QString &name) { return !before.contains(name); };
        EXPECT_EQ(std::count_if(after.begin(), after.end(), isNew), c.written);
    }
}

TEST_F(RecoveryTest, FilesGoWithTheUnsavedChanges)
{
    Recovery recovery(&ws, root(), nullptr);
    recovery.setInterval(3600000);
    const struct {
        const char *fault;
        std::function<void(image *)> end;
        bool promptly;
    } cases[] = {
        {"Saved",
         [&](image *img) {
             img->changed = false;
             recovery.pictureSaved(img);
         },
         true},
        {"SavedUnnoticed", [](image *img) { img->changed = false; }, false},
        {"Closed",
         [&](image *img) {
             ws.images.removeAll(img);
             delete img;
             recovery.pictureGone(img);
         },
         true},
        {"ClosedUnnoticed",
         [&](image *img) {
             ws.images.removeAll(img);
             delete img;
         },
         false},
    };
    for (const auto &c : cases)
        for (const bool amidst : {false, true}) {
            if (amidst && !c.promptly)
                continue;
            SCOPED_TRACE(testing::Message() << c.fault << (amidst ? " while it is written" : ""));
            image *img = open(randomImage(600, 400, 1));
            recovery.saveNow();
            if (!amidst)
                recovery.waitForDone();
            else
                QCoreApplication::processEvents();
            c.end(img);
            if (c.promptly)
                recovery.waitForDone();
            else
                EXPECT_TRUE(QTest::qWaitFor([this] { return files().isEmpty(); }, 20000));
            EXPECT_EQ(files(), QStringList());
        }
    open(randomImage(600, 400, 1));
    recovery.saveNow();
    QCoreApplication::processEvents();
    recovery.endInOrder();
    EXPECT_TRUE(QDir(root()).isEmpty());
}

TEST_F(RecoveryTest, APictureThatJoinsAStackStaysUntilTheStackIsSaved)
{
    Recovery recovery(&ws, root(), nullptr);
    recovery.setInterval(3600000);
    image *single = open(randomImage(9, 7, 3));
    save(&recovery);
    int others = 1;
    recovery.setBusyDepth(&others);
    image *master = openStack();
    ws.images.removeAll(single);
    single->kind = 2;
    single->master = master;
    master->layers << single;
    QTest::qWait(1500); // the picture is seen to have left
    EXPECT_EQ(files().filter(".ato").size(), 1) << "what the stack holds now has no other copy";
    others = 0;
    EXPECT_TRUE(QTest::qWaitFor([this] { return files().filter(".ato").isEmpty(); }, 20000));
    EXPECT_EQ(files().filter(".elx").size(), 1);
}

TEST_F(RecoveryTest, RestoringGivesThePictureItsIdentity)
{
    {
        image *img = open(randomImage(9, 7, 3));
        img->fullPath = QStringLiteral("/photos/a.png");
        img->tagBlock = QByteArray("\0\1\xFF", 3);
        img->guidesX = {3, 5};
        Recovery recovery(&ws, root(), nullptr);
        save(&recovery);
    }
    const ImagePtr saved(ws.images.takeFirst());
    {
        // Killed again before the first round of this run: still offered to the next one.
        Recovery recovery(&ws, root(), nullptr);
        ASSERT_NE(recovery.restore(recovery.leftovers().value(0)), nullptr);
        EXPECT_TRUE(recovery.leftovers().isEmpty());
        EXPECT_TRUE(offered().isEmpty()) << "two programs offer the same picture";
    }
    qDeleteAll(ws.images);
    ws.images.clear();
    Recovery recovery(&ws, root(), nullptr);
    const QList<RecoveredPicture> left = recovery.leftovers();
    ASSERT_EQ(left.size(), 1);
    EXPECT_FALSE(left[0].preview.isNull());
    const image *img = recovery.restore(left[0]);
    ASSERT_NE(img, nullptr);
    EXPECT_TRUE(sameColors(*img, *saved));
    EXPECT_EQ(img->name, "a.png");
    EXPECT_EQ(img->fullPath, "/photos/a.png");
    EXPECT_EQ(img->saveBag.folder, "/photos");
    EXPECT_EQ(img->tagBlock, saved->tagBlock);
    EXPECT_EQ(img->guidesX, saved->guidesX);
    EXPECT_TRUE(img->hasUnsavedChanges());
    EXPECT_EQ(ws.images.size(), 1) << "not shown";
    save(&recovery);
    EXPECT_FALSE(QFile::exists(left[0].dataPath)) << "two copies of one picture";
    EXPECT_EQ(files().size(), 2);
}

TEST_F(RecoveryTest, DamagedFilesAreToldFromWholeOnes)
{
    const char *whole = R"({"version":1,"data":"picture-1-1.ato","name":"b"})";
    const struct {
        const char *fault;
        QByteArray index;
        const char *data;
        QString name;
        bool offered, readable;
    } cases[] = {
        {"Whole", whole, "picture-1-1.ato", "b", true, true},
        {"IndexMissing", "", "picture-1-1.ato", "Recovered picture", true, true},
        {"IndexCut", R"({"version":1,"data":"pict)", "picture-1-1.ato", "Recovered picture", true,
         true},
        {"IndexOfNonsense", R"([[[]]])", "picture-1-1.ato", "Recovered picture", true, true},
        {"IndexWithWrongTypes",
         R"({"version":1,"data":"picture-1-1.ato","preview":7,"tagLines":{}})", "picture-1-1.ato",
         "Recovered picture", true, true},
        {"IndexOfAFileElsewhere", R"({"version":1,"data":"../../a.ato"})", "picture-1-1.ato",
         "Recovered picture", true, true},
        {"HalfWritten", "", "picture-1-1.ato.Xa4Bc1", "", false, false},
        {"NoPicture", whole, nullptr, "", false, false},
        {"DamagedPicture", whole, "picture-1-1.ato", "b", true, false},
    };
    QByteArray bytes;
    {
        open(randomImage(9, 7, 3));
        Recovery recovery(&ws, folder.filePath("made"), nullptr);
        save(&recovery);
        QFile file(recovery.leftovers().value(0).dataPath);
        QDirIterator all(folder.filePath("made"), {"*.ato"}, QDir::Files,
                         QDirIterator::Subdirectories);
        file.setFileName(all.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        bytes = file.readAll();
    }
    for (const auto &c : cases) {
        SCOPED_TRACE(c.fault);
        ASSERT_TRUE(QDir(root()).mkpath("run-abcdef"));
        const auto put = [this](const QString &name, const QByteArray &content) {
            QFile file(root() + "/run-abcdef/" + name);
            EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        };
        if (!c.index.isEmpty())
            put("picture-1.json", c.index);
        if (c.data)
            put(c.data, c.offered && !c.readable ? bytes.left(900) : bytes);
        Recovery recovery(&ws, root(), nullptr);
        const QList<RecoveredPicture> left = recovery.leftovers();
        ASSERT_EQ(left.size(), c.offered ? 1 : 0);
        if (c.offered) {
            const image *img = recovery.restore(left[0]);
            EXPECT_EQ(img != nullptr, c.readable);
            EXPECT_EQ(img ? img->name : c.name, c.name);
            EXPECT_EQ(recovery.leftovers().size(), c.readable ? 0 : 1);
            recovery.discard(left[0]);
        }
        recovery.endInOrder();
        EXPECT_TRUE(QDir(root()).isEmpty());
    }
}

TEST_F(RecoveryTest, AFullDiskCostsOnlyTheNewVersion)
{
    image *img = open(randomImage(60, 40, 1));
    Recovery recovery(&ws, root(), nullptr);
    save(&recovery);
    const QStringList before = files();
    img->red[0] ^= 1;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual = {};
    getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit full = {500, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    save(&recovery);
    save(&recovery);
    setrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(files(), before);
    EXPECT_EQ(ws.statusTexts.filter("Background saving to " + root() + " failed: ").size(), 1);
    EXPECT_TRUE(ws.boxes.isEmpty());
    save(&recovery);
    EXPECT_NE(files(), before) << "there is room again";

    Recovery nowhere(&ws, "/dev/null/recovery", nullptr);
    save(&nowhere);
    EXPECT_EQ(ws.statusTexts.filter("/dev/null/recovery failed: ").size(), 1);
}

TEST_F(RecoveryTest, WithoutMemoryForACopyThePictureItselfIsWritten)
{
    open(randomImage(1500, 1200, 1));
    Recovery recovery(&ws, root(), nullptr);
    for (const bool cancel : {true, false}) {
        SCOPED_TRACE(cancel);
        ws.cancel = cancel;
        memFailAt(1);
        save(&recovery);
        memFailAt(0);
        EXPECT_EQ(files().size(), cancel ? 0 : 2);
        if (cancel) {
            ws.cancel = false;
            save(&recovery);
            EXPECT_EQ(files().size(), 0) << "the person did not want it";
            ws.images[0]->changed = false;
            recovery.pictureSaved(ws.images[0]);
            ws.images[0]->changed = true;
        }
    }
}

TEST_F(RecoveryTest, TheIntervalHoldsAndNothingIsCopiedAmidstOtherWork)
{
    open(randomImage(60, 40, 1));
    Recovery recovery(&ws, root(), nullptr);
    int others = 1;
    recovery.setBusyDepth(&others);
    recovery.setInterval(20);
    QTest::qWait(200);
    EXPECT_EQ(files(), QStringList());
    others = 0;
    EXPECT_TRUE(QTest::qWaitFor([this] { return files().size() == 2; }, 20000));
}

TEST_F(RecoveryTest, TheDialogActsOnWhatIsChecked)
{
    {
        Recovery recovery(&ws, root(), nullptr);
        for (int i = 0; i < 3; ++i)
            open(randomImage(9, 7, uint32_t(i)));
        save(&recovery);
    }
    qDeleteAll(ws.images);
    ws.images.clear();
    Recovery recovery(&ws, root(), nullptr);
    RecoveryDialog dialog(&recovery, recovery.leftovers(), nullptr);
    dialog.show();
    auto *list = dialog.findChild<QTreeWidget *>("pictures");
    const auto press = [&dialog](const char *name) {
        QTest::mouseClick(dialog.findChild<QAbstractButton *>(name), Qt::LeftButton);
    };
    QString answer;
    QTimer poller;
    QObject::connect(&poller, &QTimer::timeout, &dialog, [&answer] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            for (QAbstractButton *button : box->buttons())
                if (button->text() == answer)
                    button->click();
    });
    poller.start(10);
    ASSERT_EQ(list->topLevelItemCount(), 3);
    list->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    list->topLevelItem(2)->setCheckState(0, Qt::Unchecked);
    press("recover");
    EXPECT_EQ(ws.images.size(), 1);
    EXPECT_EQ(list->topLevelItemCount(), 2);
    EXPECT_FALSE(dialog.findChild<QAbstractButton *>("discard")->isEnabled());
    list->topLevelItem(1)->setCheckState(0, Qt::Checked);
    answer = "Keep";
    press("discard");
    EXPECT_EQ(recovery.leftovers().size(), 2);
    answer = "Discard";
    press("discard");
    EXPECT_EQ(recovery.leftovers().size(), 1);
    EXPECT_TRUE(dialog.isVisible());
    press("later");
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(recovery.leftovers().size(), 1) << "kept for the next start";
}
} // namespace
