// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/apphelpers.h"
#include "app/appsettings.h"
#include "app/keyeditor.h"
#include "app/preferences.h"
#include "core/settingdefaults.h"
#include "support/debuglog.h"
#include "support/recordingworkspace.h"
#include "views/keyfile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTreeWidget>

namespace
{
void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void press(const QDialog &dialog, QDialogButtonBox::StandardButton which)
{
    dialog.findChild<QDialogButtonBox *>("buttonBox")->button(which)->click();
}

/// A dialog with what it works on.
class PreferencesTest : public testing::Test
{
protected:
    template <class Widget>
    Widget *field(const char *key)
    {
        auto *found = dialog.findChild<Widget *>(QString::fromLatin1(key));
        EXPECT_NE(found, nullptr) << key;
        return found;
    }
    void type(const char *key, const QString &text)
    {
        auto *widget = field<QWidget>(key);
        QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(widget, text);
    }
    static PreferencesExtras extras()
    {
        PreferencesExtras some;
        some.serialNumber = QStringLiteral("42");
        for (int i = 0; i < 16; ++i)
            some.iconNames << QString::number(i);
        return some;
    }

    QTemporaryDir folder;
    QString icon = folder.filePath("icon.png");
    RecordingWorkspace ws;
    Preferences dialog{extras(), [this]() { return icon; }, nullptr};
    QSignalSpy applied{&dialog, &Preferences::applied};
};
} // namespace

TEST_F(PreferencesTest, HasAFieldForWhateverAPersonSetsAndSaysWhatItIs)
{
    // What tools and dialogs keep for themselves.
    const QStringList elsewhere = {"scaleMemory", "tMode",     "tAmplitude",
                                   "tFloor",      "tFactor",   "invertSelection",
                                   "selectMode",  "thumbnail", "opsX2Preview",
                                   "mainOpIndex", "foreRed",   "foreGreen",
                                   "foreBlue",    "backRed",   "backGreen",
                                   "backBlue",    "blendMode", "rgbaDepth",
                                   "splitPlace",  "opFavOn",   "maskWithTargetAlpha"};
    for (const Workspace::Setting &setting : ws.settings()) {
        if (elsewhere.contains(setting.key))
            continue;
        if (QByteArray(setting.key) == "toolSelect")
            break; // from here on they belong to the area tools, with menus of their own
        auto *widget = field<QWidget>(setting.key);
        ASSERT_NE(widget, nullptr);
        EXPECT_FALSE(widget->toolTip().isEmpty() || widget->accessibleName().isEmpty())
            << setting.key;
        if (const auto *spin = qobject_cast<QSpinBox *>(widget)) {
            EXPECT_EQ(spin->minimum(), int(setting.low)) << setting.key;
            EXPECT_EQ(spin->maximum(), int(setting.high)) << setting.key;
        }
    }
    press(dialog, QDialogButtonBox::Ok); // what is only looked at stays as it is
    EXPECT_EQ(applied.count(), 0);
}

TEST_F(PreferencesTest, WritesWhatChangedAndNothingBefore)
{
    dialog.show();
    type("maxUndos", "23");
    QTest::keyClick(field<QCheckBox>("imgClose"), Qt::Key_Space);
    type("versionHost", " example.org ");
    dialog.showPage(1);
    QTest::keyClick(field<QComboBox>("rulerUnit"), Qt::Key_Down);
    type("checkerDark", "7");
    dialog.showPage(4);
    type("mainAuthor", "Ärne, \"x\"");
    QTest::keyClick(field<QPlainTextEdit>("mainAnnotation"), Qt::Key_Return);
    EXPECT_EQ(ws.maxUndos, 10);
    press(dialog, QDialogButtonBox::Apply);
    ASSERT_EQ(applied.count(), 1);
    EXPECT_EQ(applied.takeFirst().at(0).toStringList(),
              (QStringList{"checkerDark", "imgClose", "mainAnnotation", "mainAuthor", "maxUndos",
                           "rulerUnit", "versionHost"}));
    EXPECT_EQ(ws.maxUndos, 23);
    EXPECT_FALSE(ws.imgClose);
    EXPECT_EQ(ws.rulerUnit, 1);
    EXPECT_EQ(ws.checkerDark, 7);
    EXPECT_EQ(ws.mainAuthor, QStringLiteral("Ärne, \"x\""));
    EXPECT_EQ(ws.mainAnnotation, "\n");
    EXPECT_EQ(dialog.extras().versionHost, "example.org");
    EXPECT_EQ(dialog.extras().serialNumber, "42");

    dialog.showPage(1); // its defaults, and of no other page
    QTest::mouseClick(field<QPushButton>("restoreDefaults"), Qt::LeftButton);
    EXPECT_EQ(field<QSpinBox>("checkerDark")->value(), 118);
    EXPECT_EQ(ws.checkerDark, 7);
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_EQ(applied.takeFirst().at(0).toStringList(), (QStringList{"checkerDark", "rulerUnit"}));
    EXPECT_EQ(ws.checkerDark, 118);
    EXPECT_EQ(ws.maxUndos, 23);

    dialog.show();
    type("checkerLight", "9");
    press(dialog, QDialogButtonBox::Cancel);
    EXPECT_EQ(ws.checkerLight, 138);
}

TEST_F(PreferencesTest, TakesOnlyPicturesAsToolIcons)
{
    dialog.show();
    dialog.showPage(5);
    auto *list = field<QTreeWidget>("customIcons");
    list->setCurrentItem(list->topLevelItem(3));
    auto *change = field<QPushButton>("changeIcon");
    BoxAnswerer answerer("Tool Icon", "OK");
    writeFile(icon, "GIF89a");
    QTest::mouseClick(change, Qt::LeftButton);
    ASSERT_TRUE(QImage(600, 1, QImage::Format_ARGB32).save(icon));
    QTest::mouseClick(change, Qt::LeftButton);
    EXPECT_TRUE(answerer.lastText.contains("600")) << answerer.lastText.toStdString();
    ASSERT_TRUE(QImage(32, 32, QImage::Format_ARGB32).save(icon));
    QTest::mouseClick(change, Qt::LeftButton);
    EXPECT_EQ(answerer.answers, 2);
    press(dialog, QDialogButtonBox::Apply);
    EXPECT_EQ(applied.takeFirst().at(0).toStringList(), QStringList{"customIcons"});
    ASSERT_EQ(dialog.extras().customIcons.size(), 16);
    EXPECT_EQ(dialog.extras().customIcons.at(3), icon);
    QTest::mouseClick(field<QPushButton>("defaultIcon"), Qt::LeftButton);
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_TRUE(dialog.extras().customIcons.isEmpty());
}

// --- Keys ---------------------------------------------------------------------------------

namespace
{
class KeyEditorTest : public testing::Test
{
protected:
    void SetUp() override
    {
        keyTable() = KeyTable::defaults();
        dialog.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    }
    void TearDown() override { keyTable() = KeyTable::defaults(); }

    /// Asks for a key of the command and presses it.
    void capture(int command, int key, Qt::KeyboardModifiers modifiers = {})
    {
        dialog.activateWindow(); // a box was in front of it
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
        dialog.choose(command);
        QTest::mouseClick(dialog.findChild<QPushButton *>("add"), Qt::LeftButton);
        ASSERT_TRUE(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), modifiers);
    }
    QList<int> keys(int command) const { return dialog.edited().keysOf(command); }
    void click(const char *name)
    {
        QTest::mouseClick(dialog.findChild<QPushButton *>(name), Qt::LeftButton);
    }

    QTemporaryDir folder;
    QString file = folder.filePath("my.kbc");
    KeyEditor dialog{[](int key) { return key == Qt::Key_E ? QString("an operator") : QString(); },
                     [this](bool) { return file; }, nullptr};
    QSignalSpy changed{&dialog, &KeyEditor::keysChanged};
};
} // namespace

TEST_F(KeyEditorTest, TakesWhateverKeyIsPressed)
{
    const struct {
        int key;
        Qt::KeyboardModifiers modifiers;
        int stored;
    } rows[] = {
        {Qt::Key_Tab, {}, Qt::Key_Tab},
        {Qt::Key_Backtab, Qt::ShiftModifier, int(Qt::SHIFT) | Qt::Key_Backtab},
        {Qt::Key_F5, Qt::AltModifier, int(Qt::ALT) | Qt::Key_F5},
        {Qt::Key_Up, Qt::ControlModifier, int(Qt::CTRL) | Qt::Key_Up},
        {Qt::Key_Return, {}, Qt::Key_Return},
        {Qt::Key_F, Qt::AltModifier, int(Qt::ALT) | Qt::Key_F}, // leads to a field otherwise
        {Qt::Key_Asterisk, Qt::KeypadModifier, Qt::Key_Asterisk},
        {Qt::Key_Question, Qt::ShiftModifier, Qt::Key_Question},
    };
    QList<int> expected = keys(kCommandDevelop);
    for (const auto &row : rows) {
        capture(kCommandDevelop, row.key, row.modifiers);
        expected << row.stored;
        EXPECT_EQ(keys(kCommandDevelop), expected) << std::hex << row.key;
    }
    capture(kCommandDevelop, Qt::Key_Shift, Qt::ShiftModifier); // waits for more
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(keys(kCommandDevelop), expected);
    EXPECT_TRUE(dialog.isVisible());

    click("first"); // the last one, which was captured last and is selected
    EXPECT_EQ(keys(kCommandDevelop).constFirst(), int(Qt::Key_Question));
    click("remove");
    expected.removeLast();
    EXPECT_EQ(keys(kCommandDevelop), expected);
    EXPECT_EQ(keyTable().keysOf(kCommandDevelop), KeyTable::defaults().keysOf(kCommandDevelop));
    press(dialog, QDialogButtonBox::Apply);
    EXPECT_EQ(keyTable().keysOf(kCommandDevelop), expected);
    click("reset");
    press(dialog, QDialogButtonBox::Cancel);
    EXPECT_EQ(keyTable().keysOf(kCommandDevelop), expected);
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(KeyEditorTest, NamesWhatAKeyIsInUseForAndMovesItOnRequest)
{
    {
        BoxAnswerer answerer("Key in Use", "Cancel");
        capture(kCommandDevelop, Qt::Key_S, Qt::ControlModifier);
        EXPECT_EQ(answerer.answers, 1);
        EXPECT_TRUE(answerer.lastText.contains(QStringLiteral("“Save”")))
            << answerer.lastText.toStdString();
        capture(kCommandDevelop, Qt::Key_E);
        EXPECT_TRUE(answerer.lastText.contains("an operator"));
        capture(kCommandDevelop, Qt::Key_Space);
        EXPECT_EQ(answerer.answers, 3);
        EXPECT_EQ(keys(kCommandDevelop), KeyTable::defaults().keysOf(kCommandDevelop));
    }
    BoxAnswerer answerer("Key in Use", "Move the Key");
    capture(kCommandDevelop, Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(keys(kCommandDevelop).contains(int(Qt::CTRL) | Qt::Key_S));
    EXPECT_EQ(keys(kCommandSave), QList<int>());
    dialog.choose(kCommandSave); // and gets it back with its defaults
    click("reset");
    EXPECT_EQ(answerer.answers, 2);
    EXPECT_EQ(dialog.edited().commandAt(int(Qt::CTRL) | Qt::Key_S), kCommandSave);
}

TEST_F(KeyEditorTest, FindsCommandsByNameAndKey)
{
    auto *search = dialog.findChild<QLineEdit *>("search");
    auto *tree = dialog.findChild<QTreeWidget *>("commands");
    search->setFocus();
    const std::pair<const char *, const char *> rows[] = {{"guide", "Guides"},
                                                          {"ctrl+comma", ""},
                                                          {"Ctrl+,", "Preferences"},
                                                          {"group u", "Group undo"}};
    for (const auto &[text, name] : rows) {
        search->clear();
        QTest::keyClicks(search, text);
        const QTreeWidgetItem *item = tree->currentItem();
        EXPECT_EQ(item ? item->text(0).toStdString() : "", name) << text;
    }
    QTest::keyClick(search, Qt::Key_Return); // goes on to the command, then to its new key
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Insert);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.edited().commandAt(Qt::Key_Insert), kCommandGroupUndo);
    QTest::qWait(kFadeMs);
}

TEST_F(KeyEditorTest, LoadsAndSavesFiles)
{
    capture(kCommandDevelop, Qt::Key_F5, Qt::AltModifier);
    click("save");
    EXPECT_EQ(contentOf(file), keysToText(dialog.edited()));
    EXPECT_NE(contentOf(file), keysToText(keyTable()));

    QStringList said;
    QTimer poller;
    QObject::connect(&poller, &QTimer::timeout, [&said]() {
        auto *box = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!box || box->objectName() != QLatin1String("problemList"))
            return;
        said << box->findChild<QPlainTextEdit *>("problems")->toPlainText();
        box->accept();
    });
    poller.start(10);
    writeFile(file, "Kestrane keys 1\n14 Alt+U\n999 B\n");
    click("load");
    EXPECT_EQ(keys(kCommandUndo), QList<int>{int(Qt::ALT) | Qt::Key_U});
    EXPECT_EQ(said, QStringList{"Line 3: there is no command 999"});
    writeFile(file, "something else");
    click("load");
    EXPECT_EQ(said.size(), 2);
    EXPECT_EQ(keys(kCommandUndo), QList<int>{int(Qt::ALT) | Qt::Key_U});

    BoxAnswerer answerer("Keys", "OK");
    file = folder.filePath("missing/folder/my.kbc");
    click("load");
    click("save");
    EXPECT_EQ(answerer.answers, 2);
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_EQ(keyTable().keyOf(kCommandUndo), int(Qt::ALT) | Qt::Key_U);
}

// --- The store ----------------------------------------------------------------------------

namespace
{
/// What nobody's setting is.
QList<QVariant> nonsense()
{
    return {QVariant(),
            QByteArray("\0\xFF\xFE", 3),
            QString(3 << 20, 'x'),
            QString::fromLatin1("1\0"
                                "2",
                                3),
            QPoint(1, 2),
            QVariantList{1, QVariantList{2}},
            QVariantMap{{"a", 1}},
            QColor(Qt::red),
            QString("nan"),
            QString("99999999999999999999"),
            QString("-1e300"),
            -5000000,
            QString("0x10"),
            QStringList{"1", "2"}};
}
} // namespace

TEST(SettingsStore, NonsenseInAnyKeyLeavesTheDefault)
{
    const QTemporaryDir folder;
    QSettings store(folder.filePath("store.ini"), QSettings::IniFormat);
    for (const QVariant &value : nonsense()) {
        RecordingWorkspace ws;
        for (const Workspace::Setting &setting : ws.settings())
            store.setValue(setting.key, value);
        takeDebugLines();
        loadWorkspaceSettings(store, ws);
        EXPECT_GE(takeDebugLines().size(), 40);
        for (const Workspace::Setting &setting : ws.settings()) {
            if (setting.type == Workspace::Setting::Type::Text)
                continue;
            EXPECT_EQ(ws.settingText(setting.key), defaultSettingText(setting.key))
                << setting.key << " by " << value.typeName();
        }
        EXPECT_LT(ws.mainAuthor.size(), 1 << 20);
        EXPECT_FALSE(ws.mainAuthor.contains(QChar(0)));
        store.setValue("list", value);
        EXPECT_LE(storedTexts(store, "list").size(), 2);
    }
    // The main window starts with nonsense in all that it keeps, bags and places too.
    QSettings own("Zolvine", "Kestrane");
    {
        MainWindow first;
        first.close();
    }
    const QStringList keys = own.allKeys();
    ASSERT_GT(keys.size(), 60);
    for (const QVariant &value : {nonsense().at(1), nonsense().at(4), nonsense().at(5),
                                  nonsense().at(9), nonsense().at(13)}) {
        for (const QString &key : keys)
            own.setValue(key, value);
        own.sync();
        MainWindow window;
        EXPECT_EQ(window.maxUndos, 10);
        EXPECT_EQ(keysToText(keyTable()), keysToText(KeyTable::defaults()));
    }
    own.clear();
}

TEST(SettingsFile, CarriesSettingsFromOneMachineToAnother)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("my settings.ini");
    RecordingWorkspace ws;
    QSettings here(folder.filePath("here.ini"), QSettings::IniFormat);
    const QMap<QString, QVariant> carried = {
        {"mainAnnotation", " back\\slash\\n\r\n=;# Ä \t"},
        {"mainAuthor", ""},
        {"jpegImageQuality", "77"},
        {"customIcons", QStringList{"/a,b.png", "", " \\ "}},
        {"keyBindings", QString::fromUtf8(keysToText(KeyTable::defaults()))},
        {"operatorExposure amount", "0.25"},
        {"bag/filter", "*.png"},
    };
    const QStringList left = {"appWasOkay",  "successOnAsk", "windowPosition", "layersPlace",
                              "recentFiles", "bag/folder",   "versionHost"};
    for (auto value = carried.cbegin(); value != carried.cend(); ++value)
        here.setValue(value.key(), value.value());
    for (const QString &key : left)
        here.setValue(key, "here");
    QString error;
    ASSERT_TRUE(exportSettings(here, path, &error)) << error.toStdString();
    QSettings there(folder.filePath("there.ini"), QSettings::IniFormat);
    there.setValue("jpegImageQuality", "50");
    QStringList problems;
    ASSERT_TRUE(importSettings(path, &there, &problems, &error)) << error.toStdString();
    EXPECT_EQ(problems.join('\n').toStdString(), "");
    EXPECT_EQ(there.allKeys(), carried.keys());
    for (auto value = carried.cbegin(); value != carried.cend(); ++value)
        EXPECT_EQ(there.value(value.key()), value.value()) << value.key().toStdString();

    const QByteArray before = contentOf(path);
    EXPECT_FALSE(exportSettings(here, folder.path(), &error)); // not a file
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(contentOf(path), before);
}

TEST(SettingsFile, TakesNothingHarmfulFromAStrangersFile)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("strange.ini");
    RecordingWorkspace ws;
    QSettings store(folder.filePath("store.ini"), QSettings::IniFormat);
    const QByteArray head = "[Kestrane settings 1]\n";
    writeFile(path, head +
                        "maxUndos=5000\n"
                        "jpegImageQuality[]=12\n"
                        "versionHost=example.org\n"
                        "appWasOkay=true\n"
                        "keyBindings=nonsense\n"
                        "[another section]\n"
                        "no sense\n"
                        "=x\n"
                        "zoomSteps=\n" +
                        QByteArray(5000, 'k') +
                        "=v\n"
                        "; a remark\n"
                        "harmless=@Variant(\\x0\\x0\\x0\\x7F)\n"
                        "maxUndos=20\r\n");
    QStringList problems;
    QString error;
    ASSERT_TRUE(importSettings(path, &store, &problems, &error));
    EXPECT_EQ(problems.size(), 10) << problems.join('\n').toStdString();
    EXPECT_EQ(store.allKeys(), (QStringList{"harmless", "maxUndos"}));
    EXPECT_EQ(store.value("maxUndos"), "20");
    EXPECT_EQ(store.value("harmless").type(), QVariant::String);
    EXPECT_EQ(ws.maxUndos, 10) << "an import changes no live setting";

    const QByteArray rows[] = {{},
                               "[General]\nmaxUndos=20\n",
                               QByteArray(5 << 20, '\n'),
                               head + QByteArray("a=b\n").repeated(30000),
                               head + QByteArray(5 << 20, 'x')};
    for (const QByteArray &row : rows) {
        writeFile(path, row);
        store.clear();
        error.clear();
        EXPECT_FALSE(importSettings(path, &store, &problems, &error)) << row.left(30).toStdString();
        EXPECT_FALSE(error.isEmpty());
        EXPECT_TRUE(store.allKeys().isEmpty());
    }
    EXPECT_FALSE(importSettings(folder.filePath("missing"), &store, &problems, &error));
}
