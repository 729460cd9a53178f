// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/assigns.h"
#include "app/assignsdialog.h"
#include "app/filebag.h"
#include "app/filepicker.h"
#include "app/filepickerrules.h"
#include "app/filepreviewpane.h"
#include "app/recentlist.h"
#include "core/workspace.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <gtest/gtest.h>

#include <memory>

namespace
{
using PickFor = filePicker::PickFor;

/// Presses a button of every message box, and keeps what the boxes said.
class Boxes
{
public:
    explicit Boxes(const QString &button)
    {
        QObject::connect(&poller, &QTimer::timeout, [this, button]() {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box)
                return;
            for (QAbstractButton *each : box->buttons())
                if (each->text().remove(QLatin1Char('&')) == button) {
                    said << box->text();
                    each->click();
                    return;
                }
        });
        poller.start(10);
    }
    QStringList said;

private:
    QTimer poller;
};

class Picker : public testing::Test
{
protected:
    void SetUp() override
    {
        assigns().clear();
        ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("sub/deep")));
        for (const char *name : {"a2.png", "a10.png", "b.jpg", "sub/inner.png"})
            picture(QLatin1String(name));
        write("notes.txt", "hello");
        write(".hidden.png", "x");
        bag.filters = QStringLiteral("PNG picture (*.png);;JPEG picture (*.jpg *.jpeg);;"
                                     "Pixels (*.pix *.png *.jpg);;All files (*)");
        bag.record.folder = folder.path();
        bag.record.viewStyle = 1;
    }
    void picture(const QString &name)
    {
        QImage img(40, 30, QImage::Format_RGB32);
        img.fill(QColor(200, 30, 60));
        ASSERT_TRUE(img.save(folder.filePath(name)));
    }
    void write(const char *name, const QByteArray &bytes)
    {
        QFile file(folder.filePath(QLatin1String(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    void open(PickFor mode, const QString &suggestedName = {})
    {
        dialog = std::make_unique<filePicker>(mode, &bag, QStringLiteral("Test"), nullptr);
        dialog->setSuggestedName(suggestedName);
        dialog->show();
        dialog->activateWindow();
        settle();
    }
    void settle()
    {
        ASSERT_TRUE(QTest::qWaitFor([this]() {
            return !dialog->findChild<QLabel *>("stateLabel")->text().startsWith("Reading");
        }));
    }
    QLineEdit *line(const char *name) { return dialog->findChild<QLineEdit *>(name); }
    QAbstractItemView *view()
    {
        auto *details = dialog->findChild<QAbstractItemView *>("detailView");
        auto *list = dialog->findChild<QAbstractItemView *>("listView");
        return details->isVisible() ? details : list;
    }
    QStringList names()
    {
        QStringList shown;
        for (int row = 0; row < view()->model()->rowCount(); ++row)
            shown << view()->model()->index(row, 0).data().toString();
        return shown;
    }
    /// A click on the file of that name.
    void click(const QString &name, Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        const int row = names().indexOf(name);
        ASSERT_GE(row, 0) << name.toStdString();
        const QRect place = view()->visualRect(view()->model()->index(row, 0));
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, keys, place.center());
    }
    /// Replaces what stands in the name line as a person would, and presses Enter.
    void enter(const char *lineName, const QString &text)
    {
        QLineEdit *edit = line(lineName);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    void key(Qt::Key which, Qt::KeyboardModifiers keys)
    {
        // Offscreen, a list of completions stays the active window when it is closed.
        dialog->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(dialog.get()));
        QTest::keyClick(dialog.get(), which, keys);
        settle();
    }
    QString shownFolder() { return line("pathLine")->text(); }
    void chooseFilter(int index)
    {
        auto *combo = dialog->findChild<QComboBox *>("filterCombo");
        combo->setFocus();
        QTest::keyClick(combo, Qt::Key_Home);
        for (int i = 0; i < index; ++i)
            QTest::keyClick(combo, Qt::Key_Down);
        ASSERT_EQ(combo->currentIndex(), index);
    }
    bool accepted() const { return dialog->result() == QDialog::Accepted; }
    QStringList inFolder(const QStringList &files) const
    {
        QStringList paths;
        for (const QString &name : files)
            paths << folder.filePath(name);
        return paths;
    }

    QTemporaryDir folder;
    FileBag bag;
    std::unique_ptr<filePicker> dialog;
};
} // namespace

TEST_F(Picker, ShowsFoldersFirstInTheOrderOfPeopleAndByFilterDateAndHidden)
{
    open(PickFor::Open);
    EXPECT_EQ(names(), QStringList({"sub", "a2.png", "a10.png"}));
    chooseFilter(3);
    EXPECT_EQ(names(), QStringList({"sub", "a2.png", "a10.png", "b.jpg", "notes.txt"}));
    key(Qt::Key_H, Qt::ControlModifier);
    EXPECT_TRUE(names().contains(".hidden.png"));
    // Something new appears by itself, and what is selected stays selected.
    click("a2.png");
    picture("a1.png");
    ASSERT_TRUE(QTest::qWaitFor([this]() { return names().contains("a1.png"); }));
    EXPECT_EQ(line("nameLine")->text(), "a2.png");
    EXPECT_EQ(view()->currentIndex().siblingAtColumn(0).data().toString(), "a2.png");
    QTest::keyClick(dialog.get(), Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(view()->objectName(), "listView");
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    EXPECT_TRUE(dialog->paths().isEmpty());
    EXPECT_TRUE(bag.record.showHidden);
    EXPECT_EQ(bag.record.viewStyle, 2U);
    EXPECT_TRUE(bag.record.filter.isEmpty()) << "given up: the filter stays";
    EXPECT_TRUE(bag.dialogSize.isValid());
}

TEST_F(Picker, OpensWhatIsNamedOrSelected)
{
    struct Case {
        QString typed, path;
    } cases[] = {{"a2.png", folder.filePath("a2.png")},
                 {"a2", folder.filePath("a2.png")},
                 {"sub/inner.png", folder.filePath("sub/inner.png")},
                 {"here:inner.png", folder.filePath("sub/inner.png")},
                 {folder.filePath("notes.txt"), folder.filePath("notes.txt")}};
    QString error;
    ASSERT_TRUE(assigns().set("here", folder.filePath("sub"), &error));
    for (const Case &each : cases) {
        open(PickFor::Open);
        enter("nameLine", each.typed);
        EXPECT_EQ(dialog->paths(), QStringList(each.path)) << each.typed.toStdString();
    }
    open(PickFor::OpenMany);
    click("a2.png");
    click("a10.png", Qt::ControlModifier);
    EXPECT_EQ(line("nameLine")->text(), "\"a2.png\" \"a10.png\"");
    QTest::keyClick(view(), Qt::Key_Return);
    EXPECT_EQ(dialog->paths(), inFolder({"a2.png", "a10.png"}));
    EXPECT_EQ(bag.record.filter, "PNG picture (*.png)");

    open(PickFor::OpenMany);
    enter("nameLine", "\"a2.png\" \"b.jpg\"");
    EXPECT_EQ(dialog->paths(), inFolder({"a2.png", "b.jpg"}));
}

TEST_F(Picker, RefusesWhatIsNotThere)
{
    Boxes boxes("OK");
    open(PickFor::Open);
    enter("nameLine", "missing.png");
    ASSERT_EQ(boxes.said.size(), 1);
    EXPECT_TRUE(boxes.said[0].startsWith("There is no file “")) << boxes.said[0].toStdString();
    enter("pathLine", folder.filePath("nowhere/at/all"));
    ASSERT_EQ(boxes.said.size(), 2);
    EXPECT_TRUE(boxes.said[1].startsWith("There is no folder “"));
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(names(), QStringList({"sub", "a2.png", "a10.png"}));
}

TEST_F(Picker, GoesThroughFoldersByKeys)
{
    open(PickFor::Open);
    view()->setFocus();
    click("sub");
    QTest::keyClick(view(), Qt::Key_Return);
    settle();
    EXPECT_EQ(shownFolder(), folder.filePath("sub"));
    EXPECT_TRUE(dialog->isVisible()) << "Enter on a folder opens it and does no more";
    enter("nameLine", "deep");
    settle();
    EXPECT_EQ(shownFolder(), folder.filePath("sub/deep"));
    key(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(shownFolder(), folder.filePath("sub"));
    key(Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(shownFolder(), folder.filePath("sub/deep"));
    EXPECT_FALSE(dialog->findChild<QToolButton *>("forward")->isEnabled());
    key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(view()->currentIndex().siblingAtColumn(0).data().toString(), "deep");
    view()->setFocus();
    QTest::keyClick(view(), Qt::Key_Backspace);
    settle();
    EXPECT_EQ(shownFolder(), folder.path());
    QTest::keyClicks(view(), "a1"); // type-ahead
    EXPECT_EQ(line("nameLine")->text(), "a10.png");
    QTest::keyClick(view(), '~');
    EXPECT_EQ(line("nameLine")->text(), "~");
    key(Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(line("pathLine")->selectedText(), folder.path());
    enter("pathLine", folder.filePath("sub/inner.png"));
    settle();
    EXPECT_EQ(shownFolder(), folder.filePath("sub"));
    EXPECT_EQ(line("nameLine")->text(), "inner.png");
}

TEST_F(Picker, SaveKeepsExtensionAndFileTypeInStep)
{
    open(PickFor::Save, QStringLiteral("shot"));
    QLineEdit *name = line("nameLine");
    EXPECT_EQ(name->text(), "shot.png");
    EXPECT_EQ(name->selectedText(), "shot");
    chooseFilter(1);
    EXPECT_EQ(name->text(), "shot.jpg");
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, "new.png"); // a typed extension chooses the file type
    EXPECT_EQ(dialog->findChild<QComboBox *>("filterCombo")->currentIndex(), 0);
    enter("nameLine", "notes.2024");
    EXPECT_EQ(dialog->paths(), inFolder({"notes.2024.png"}));
    open(PickFor::Save, QStringLiteral("shot"));
    enter("nameLine", "scan.nef");
    EXPECT_EQ(dialog->paths(), inFolder({"scan.png"}));
    // A whole name typed over the selected stem leaves the old extension standing behind it.
    open(PickFor::Save, QStringLiteral("shot"));
    line("nameLine")->setFocus();
    line("nameLine")->setSelection(0, int(qstrlen("shot")));
    QTest::keyClicks(line("nameLine"), "new.jpg");
    EXPECT_EQ(line("nameLine")->text(), "new.jpg.png");
    QTest::keyClick(line("nameLine"), Qt::Key_Return);
    EXPECT_EQ(dialog->paths(), inFolder({"new.jpg"}));
    EXPECT_EQ(bag.record.filter, "JPEG picture (*.jpg *.jpeg)");
}

TEST_F(Picker, SaveAsksBeforeItReplacesAndRefusesWhatCannotBe)
{
    open(PickFor::Save, QStringLiteral("a2"));
    {
        Boxes cancel("Cancel");
        QTest::keyClick(line("nameLine"), Qt::Key_Return);
        EXPECT_EQ(cancel.said, QStringList("a2.png exists already. Replace it?"));
        EXPECT_TRUE(dialog->isVisible());
    }
    {
        Boxes ok("OK");
        for (const QString &text : {QStringLiteral("none/x.png"), QStringLiteral("none/"),
                                    QString(300, QLatin1Char('x'))})
            enter("nameLine", text);
        EXPECT_EQ(ok.said.size(), 3);
        EXPECT_TRUE(dialog->isVisible());
    }
    enter("nameLine", "sub"); // a folder is entered, and the offered name comes back
    EXPECT_EQ(shownFolder(), folder.filePath("sub"));
    EXPECT_EQ(line("nameLine")->text(), "a2.png");
    Boxes replace("Replace");
    enter("nameLine", "inner");
    EXPECT_EQ(replace.said.size(), 1);
    EXPECT_TRUE(accepted());
    EXPECT_EQ(dialog->paths(), inFolder({"sub/inner.png"}));
}

TEST_F(Picker, OneCallPicksByEitherDialogAndKeepsTheBag)
{
    Workspace space;
    recentFolders().clear();
    // The first answer would replace a file that the person then wants to keep.
    Boxes cancel("Cancel");
    for (const bool system : {false, true}) {
        space.systemFileDialog = system;
        bag.record.folder = folder.path();
        bag.record.filter.clear();
        QStringList answers = {QStringLiteral("a2"), QStringLiteral("sub/fresh")};
        QTimer answerer;
        QObject::connect(&answerer, &QTimer::timeout, &answerer, [&answers]() {
            auto *asking = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!asking || qobject_cast<QMessageBox *>(asking) || answers.isEmpty())
                return;
            auto *edit = asking->findChild<QLineEdit *>("nameLine");
            edit = edit ? edit : asking->findChild<QLineEdit *>("fileNameEdit");
            edit->setText(answers.takeFirst());
            QMetaObject::invokeMethod(asking, "accept", Qt::QueuedConnection);
        });
        answerer.start(50);
        EXPECT_EQ(filePicker::pick(nullptr, &bag, PickFor::Save, "Save", "a2"),
                  inFolder({"sub/fresh.png"}));
        EXPECT_EQ(bag.record.folder, folder.filePath("sub"));
        EXPECT_EQ(bag.record.filter, "PNG picture (*.png)");
    }
    EXPECT_EQ(cancel.said.size(), 2);
    EXPECT_EQ(recentFolders().entries(), inFolder({"sub"}));
}

TEST_F(Picker, FolderModeTakesTheShownOrTheSelectedFolder)
{
    open(PickFor::Folder);
    EXPECT_EQ(names(), QStringList("sub"));
    click("sub");
    dialog->findChild<QPushButton *>("goOn")->click();
    EXPECT_EQ(dialog->paths(), inFolder({"sub"}));
    open(PickFor::Folder);
    dialog->findChild<QPushButton *>("goOn")->click();
    EXPECT_EQ(dialog->paths(), QStringList(folder.path()));
}

TEST_F(Picker, PreviewsArriveForQtFormsNativeOnesAndDamage)
{
    QByteArray raw("RAW32XY");
    raw += QByteArray(1, '\0') + QByteArray("20").leftJustified(8, '\0') +
           QByteArray("10").leftJustified(8, '\0') + QByteArray(20 * 10 * 4, '\x7F');
    write("raw.rgba", raw);
    write("bad.png", QByteArray("\x89PNG\r\n\x1A\n damaged from here on"));
    bag.record.filter = QStringLiteral("All files (*)");
    open(PickFor::Open);
    auto *pane = dialog->findChild<FilePreviewPane *>();
    const auto facts = [pane]() { return pane->findChild<QLabel *>("facts")->text(); };
    click("a2.png");
    ASSERT_TRUE(QTest::qWaitFor([pane]() { return !pane->picture().isNull(); }));
    EXPECT_EQ(pane->picture().pixelColor(5, 5), QColor(200, 30, 60));
    EXPECT_TRUE(facts().contains("40 × 30 pixels")) << facts().toStdString();
    click("bad.png");
    EXPECT_TRUE(pane->picture().isNull()) << "the picture before belongs to another file";
    click("raw.rgba");
    ASSERT_TRUE(QTest::qWaitFor([pane]() { return !pane->picture().isNull(); }, 20000));
    EXPECT_EQ(pane->picture().size(), QSize(20, 10));
    click("notes.txt");
    EXPECT_TRUE(pane->picture().isNull());
    dialog.reset(); // while something is still being made
}

TEST_F(Picker, BagsSurviveNonsenseAndVanishedFolders)
{
    QSettings store(folder.filePath("store.ini"), QSettings::IniFormat);
    bag.key = QStringLiteral("someBag");
    bag.record.showPreview = false;
    bag.record.filter = QStringLiteral("JPEG picture (*.jpg *.jpeg)");
    bag.dialogSize = QSize(700, 500);
    bag.save(store);
    FileBag other;
    other.key = bag.key;
    other.filters = bag.filters;
    other.load(store);
    EXPECT_EQ(other.record.folder, folder.path());
    EXPECT_EQ(other.record.filter, bag.record.filter);
    EXPECT_EQ(other.record.viewStyle, 1U);
    EXPECT_FALSE(other.record.showPreview);
    EXPECT_EQ(other.dialogSize, bag.dialogSize);
    for (const char *name : {"folder", "filter", "showHidden", "showPreview", "viewStyle",
                             "dialogSize", "sortByDate", "reverseSort"})
        for (const QVariant &nonsense : {QVariant("../x\1"), QVariant(-7), QVariant(QSize(1, 1)),
                                         QVariant(QString(100000, QLatin1Char('9')))}) {
            store.setValue("someBag/" + QLatin1String(name), nonsense);
            FileBag read;
            read.key = bag.key;
            read.load(store);
            EXPECT_LT(read.record.viewStyle, 3U);
            EXPECT_TRUE(read.record.filter.isEmpty());
            EXPECT_TRUE(!read.dialogSize.isValid() || read.dialogSize == bag.dialogSize);
        }
    bag.record.folder = folder.filePath("sub/gone/and/away");
    EXPECT_EQ(bag.startFolder(), folder.filePath("sub"));
    bag.record.folder = QStringLiteral("/no/such/tree");
    EXPECT_EQ(bag.startFolder(), QDir::homePath());
}

TEST_F(Picker, RecentListKeepsEachPathOnceUnderItsRealName)
{
    RecentList list(QStringLiteral("recent"));
    ASSERT_TRUE(QFile::link(folder.filePath("a2.png"), folder.filePath("link.png")));
    list.add(folder.filePath("b.jpg"), 3);
    list.add(folder.filePath("a2.png"), 3);
    list.add(folder.filePath("sub/../link.png"), 3);
    EXPECT_EQ(list.entries(), inFolder({"a2.png", "b.jpg"}));
    list.add("/gone/x.png", 3);
    list.add("/gone/y.png", 3);
    EXPECT_EQ(list.entries(),
              QStringList({"/gone/y.png", "/gone/x.png", folder.filePath("a2.png")}));
    QSettings store(folder.filePath("store.ini"), QSettings::IniFormat);
    list.save(store);
    RecentList again(QStringLiteral("recent"));
    again.load(store);
    EXPECT_EQ(again.entries(), list.entries()) << "what is asleep is kept";
    again.setLimit(-5);
    EXPECT_EQ(again.entries().size(), 1);
    QStringList nonsense = {"relative.png", "", "/a", "/a/../a", QString(5000, QLatin1Char('/'))};
    for (int i = 0; i < 100; ++i)
        nonsense << QStringLiteral("/n/%1").arg(i);
    store.setValue("recent", nonsense);
    again.load(store);
    EXPECT_EQ(again.entries().size(), int(RecentList::kMost));
    EXPECT_EQ(again.entries().first(), "/a");
    store.setValue("recent", QSize(3, 4));
    again.load(store);
    EXPECT_TRUE(again.entries().isEmpty());
}

TEST(AssignsTable, ResolvesShortensAndRefuses)
{
    Assigns table;
    QString error;
    ASSERT_TRUE(table.set("photos", "/data/pictures/", &error)) << error.toStdString();
    ASSERT_TRUE(table.set("Trips", "PHOTOS:trips", &error));
    ASSERT_TRUE(table.set("mine", "~/p", &error));
    const struct {
        QString typed, path;
    } resolved[] = {{"photos:2024/a.png", "/data/pictures/2024/a.png"},
                    {"TRIPS:x", "/data/pictures/trips/x"},
                    {"photos:", "/data/pictures"},
                    {"photos:/x", "/data/pictures/x"},
                    {"mine:a", QDir::homePath() + "/p/a"},
                    {"unknown:a", "unknown:a"},
                    {"/data/photos:a", "/data/photos:a"},
                    {"sub/photos:a", "sub/photos:a"},
                    {":a", ":a"},
                    {"", ""}};
    for (const auto &each : resolved)
        EXPECT_EQ(table.resolve(each.typed), each.path) << each.typed.toStdString();
    EXPECT_EQ(table.shorten("/data/pictures/trips/a"), "Trips:a");
    EXPECT_EQ(table.shorten("/data/pictures"), "photos:");
    EXPECT_EQ(table.shorten("/data/pictures2/a"), "/data/pictures2/a");
    const struct {
        const char *name, *folder;
    } refused[] = {{"c", "/x"},           {"a b", "/x"},     {"a/b", "/x"}, {"", "/x"},
                   {"file", "/x"},        {"ok", ""},        {"ok", "x/y"}, {"ok", "none:x"},
                   {"photos", "trips:x"}, {"self", "self:x"}};
    for (const auto &each : refused) {
        EXPECT_FALSE(table.set(each.name, each.folder, &error)) << each.name << each.folder;
        EXPECT_FALSE(error.isEmpty());
    }
    EXPECT_EQ(table.names(), QStringList({"mine", "photos", "Trips"}));

    QTemporaryDir folder;
    QSettings store(folder.filePath("s.ini"), QSettings::IniFormat);
    table.save(store);
    for (const auto &[key, value] : {std::pair("x", "/x"), std::pair("loop1", "loop2:"),
                                     std::pair("loop2", "loop1:"), std::pair("rel", "a/b")})
        store.setValue(QLatin1String("assigns/") + QLatin1String(key), QLatin1String(value));
    Assigns again;
    again.load(store);
    EXPECT_EQ(again.names(), QStringList({"loop1", "loop2", "mine", "photos", "Trips"}));
    EXPECT_EQ(again.resolve("loop1:a"), "loop1:a");
    EXPECT_EQ(again.shorten("/a"), "/a");
}

TEST(AssignsTable, DialogMarksWhatIsMissingAndWritesWhenAccepted)
{
    QString error;
    assigns().clear();
    ASSERT_TRUE(assigns().set("gone", "/no/such/folder", &error));
    AssignsDialog dialog(nullptr);
    dialog.show();
    auto *name = dialog.findChild<QLineEdit *>("name");
    auto *add = dialog.findChild<QPushButton *>("add");
    const auto fill = [&dialog, name](const char *text, const QString &place) {
        auto *edit = dialog.findChild<QLineEdit *>("folder");
        name->selectAll();
        QTest::keyClicks(name, QLatin1String(text));
        edit->selectAll();
        QTest::keyClicks(edit, place);
    };
    EXPECT_EQ(dialog.findChild<QLabel *>("note")->text(), "This folder does not exist now.");
    fill("GONE", "/tmp");
    EXPECT_FALSE(add->isEnabled()) << "one name, one folder";
    fill("x:", "/tmp");
    EXPECT_FALSE(add->isEnabled());
    fill("temp", "/tmp");
    QTest::mouseClick(add, Qt::LeftButton);
    EXPECT_FALSE(assigns().contains("temp")) << "nothing is written before OK";
    fill("temp", "/usr");
    QTest::mouseClick(dialog.findChild<QPushButton *>("change"), Qt::LeftButton);
    dialog.accept();
    EXPECT_EQ(assigns().resolve("temp:a"), "/usr/a");
    EXPECT_EQ(assigns().names(), QStringList({"gone", "temp"}));
    assigns().clear();
}
