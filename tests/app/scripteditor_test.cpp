// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/apphelpers.h"
#include "app/getstringgeneral.h"
#include "app/scriptdebug.h"
#include "app/scriptdesk.h"
#include "app/scripteditor.h"
#include "app/scriptlibrarydialog.h"
#include "app/scriptreference.h"
#include "app/singleslider.h"
#include "support/widgets.h"
#include "views/codeedit.h"

#include <QLineEdit>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTextBrowser>
#include <QTreeWidget>

namespace
{
class ScriptWindow : public AppTest
{
protected:
    void open(const QString &script)
    {
        main->show();
        action("actionScript_Editor")->trigger();
        editor = main->findChild<ScriptEditor *>();
        ASSERT_NE(editor, nullptr);
        ASSERT_TRUE(editor->isVisible());
        editor->scriptEdit()->selectAll();
        editor->scriptEdit()->insertPlainText(script);
    }
    void run() { editor->findChild<QAction *>(QStringLiteral("actionRun"))->trigger(); }
    QString message() const
    {
        return editor->findChild<QLabel *>(QStringLiteral("message"))->text();
    }
    image *picture16()
    {
        image *img = main->loadFile(picture(QStringLiteral("a.png")));
        img->fillGmask(65535);
        return img;
    }
    ScriptEditor *editor = nullptr;
};
} // namespace

TEST_F(ScriptWindow, ARunChangesThePictureInOneActAndMarksItsErrors)
{
    image *img = picture16();
    const ImagePtr before = copyOf(*img);
    open(QStringLiteral("x=3\nnegative\nnegative 1\ny=ceil(exposur)\n"));
    run();
    EXPECT_EQ(img->undoList.size(), 1);
    EXPECT_EQ(img->red[0], 65535 - before->red[0]);
    EXPECT_EQ(editor->scriptEdit()->errors().keys().contains(4), true);
    auto *debug = main->findChild<ScriptDebug *>();
    ASSERT_NE(debug, nullptr);
    EXPECT_TRUE(debug->isVisible());
    EXPECT_TRUE(debug->plainText().contains(QStringLiteral("did you mean \"exposure\"?")))
        << debug->plainText().toStdString();
    emit child<QTextBrowser>(*debug, "log")->anchorClicked(QUrl(QStringLiteral("script:3")));
    EXPECT_EQ(editor->scriptEdit()->currentLine(), 3);
    editor->scriptEdit()->replaceText(QStringLiteral("x=1"));
    run();
    EXPECT_TRUE(editor->scriptEdit()->errors().isEmpty());
    EXPECT_TRUE(message().startsWith(QStringLiteral("Done"))) << message().toStdString();
}

TEST_F(ScriptWindow, EscapeStopsAnEndlessLoopAndOtherWindowsStayDeaf)
{
    picture16();
    open(QStringLiteral("m_maxops=1000000000000\nloop()\nx=x+1\nwhile(1)"));
    int strayClicks = 0;
    auto *apply = child<QAbstractButton>(*main->operatorDialog(), "operate");
    QObject::connect(apply, &QAbstractButton::clicked, [&strayClicks]() { ++strayClicks; });
    QTimer::singleShot(100, [&]() {
        EXPECT_TRUE(main->scriptDesk()->isRunning());
        QTest::mouseClick(apply, Qt::LeftButton);
        main->close();
        EXPECT_TRUE(main->isVisible());
        EXPECT_TRUE(editor->scriptEdit()->isReadOnly());
        editor->findChild<QAction *>(QStringLiteral("actionStop"))->trigger();
    });
    run();
    EXPECT_FALSE(main->scriptDesk()->isRunning());
    EXPECT_FALSE(editor->scriptEdit()->isReadOnly());
    EXPECT_EQ(strayClicks, 0);
    EXPECT_TRUE(message().startsWith(QStringLiteral("Stopped"))) << message().toStdString();
}

TEST_F(ScriptWindow, WithoutAPictureAMessageSaysWhatToDo)
{
    open(QStringLiteral("x=1"));
    BoxAnswerer box(QStringLiteral("Run Script"), QStringLiteral("OK"));
    run();
    EXPECT_EQ(box.answers, 1);
    EXPECT_TRUE(box.lastText.contains(QStringLiteral("no picture")));
}

TEST_F(ScriptWindow, TheTextIsTheOperatorsAndComesBackInTheNextRun)
{
    open(QStringLiteral("negative\n# kept"));
    auto *page = child<CodeEdit>(*main->operatorDialog(), "ceditor0");
    EXPECT_EQ(page->toPlainText(), QStringLiteral("negative\n# kept"));
    page->selectAll();
    page->insertPlainText(QStringLiteral("x=7"));
    EXPECT_EQ(editor->script(), QStringLiteral("x=7"));
    main->close();
    main = std::make_unique<MainWindow>();
    action("actionScript_Editor")->trigger();
    EXPECT_EQ(main->findChild<ScriptEditor *>()->script(), QStringLiteral("x=7"));
    main->operatorDialog()->selectOperator(62); // another operator: its editor closes
    EXPECT_FALSE(main->findChild<ScriptEditor *>()->isVisible());
}

TEST_F(ScriptWindow, ASavedScriptRunsByItsKeyAndLeavesTheEditorAlone)
{
    image *img = picture16();
    open(QStringLiteral("x=1"));
    QString error;
    ScriptLibrary &library = main->scriptDesk()->library;
    ASSERT_TRUE(
        library.store({QStringLiteral("Invert"), QStringLiteral("negative"), {}, 0}, &error));
    main->scriptDesk()->showLibrary();
    auto *dialog = main->findChild<ScriptLibraryDialog *>();
    auto *capture = child<QLineEdit>(*dialog, "capture");
    QTest::mouseClick(capture, Qt::LeftButton);
    QTest::keyClick(capture, Qt::Key_A, Qt::ControlModifier); // selects all: refused
    EXPECT_EQ(library.scripts().constFirst().key, 0);
    QTest::mouseClick(capture, Qt::LeftButton);
    QTest::keyClick(capture, Qt::Key_F6, Qt::ControlModifier);
    EXPECT_EQ(library.scripts().constFirst().key, int(Qt::CTRL) | Qt::Key_F6);
    dialog->close();
    const uint16_t before = img->red[0];
    QTest::keyClick(main->currentWindow, Qt::Key_F6, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor([&]() { return img->red[0] != before; }, 2000));
    EXPECT_EQ(img->undoList.size(), 1);
    EXPECT_EQ(editor->script(), QStringLiteral("x=1"));
    const BoxAnswerer proceed(QStringLiteral("Important"),
                              QStringLiteral("Proceed and lose any changes"));
    main->close();
    main = std::make_unique<MainWindow>();
    ASSERT_EQ(main->scriptDesk()->library.scripts().size(), 1);
    EXPECT_EQ(main->scriptDesk()->library.scripts().constFirst().key, int(Qt::CTRL) | Qt::Key_F6);
}

TEST(ScriptLibraryFile, ComesBackWholeAndRefusesWhatIsNone)
{
    ScriptLibrary library, other;
    QString error;
    EXPECT_TRUE(library.store({QStringLiteral(" Two  words "), QStringLiteral("a::\n\"ä\""),
                               QStringLiteral("p=1"), int(Qt::CTRL) | Qt::Key_F6},
                              &error));
    EXPECT_FALSE(library.store({QString(), QStringLiteral("x"), {}, 0}, &error));
    EXPECT_EQ(other.addJson(library.toJson(), &error), 1);
    EXPECT_EQ(other.scripts(), library.scripts());
    EXPECT_EQ(other.addJson(library.toJson(), &error), 1); // a name that is taken
    EXPECT_EQ(other.scripts().size(), 2);
    EXPECT_EQ(other.scripts().at(1).key, 0);
    for (const char *bad : {"", "{", "[1]", "{\"format\":\"other\"}",
                            "{\"format\":\"kestrane-scripts\",\"scripts\":[3]}"})
        EXPECT_EQ(other.addJson(bad, &error), -1) << bad;
    EXPECT_EQ(other.scripts().size(), 2);
    EXPECT_FALSE(other.rename(other.scripts().at(1).name, QStringLiteral("TWO words"), &error));
}

TEST_F(ScriptWindow, FilesAreReadOfAnyKindAndSavedWhole)
{
    open(QString());
    const QString path = folder.filePath(QStringLiteral("s.script"));
    const auto write = [&path](const QByteArray &bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    QString text, error;
    write("\xEF\xBB\xBF"
          "a=1\r\nb=2\rc~\"\xC3\xA4\"");
    ASSERT_TRUE(readScriptFile(path, &text, &error));
    EXPECT_EQ(text, QStringLiteral("a=1\nb=2\nc~\"ä\""));
    write("c~\"\xE4\"");
    ASSERT_TRUE(readScriptFile(path, &text, &error));
    EXPECT_EQ(text, QStringLiteral("c~\"ä\""));
    ASSERT_TRUE(editor->openFile(path));
    EXPECT_FALSE(editor->isWindowModified());
    editor->scriptEdit()->insertPlainText(QStringLiteral("x"));
    EXPECT_TRUE(editor->isWindowModified());
    editor->findChild<QAction *>(QStringLiteral("actionSave"))->trigger();
    EXPECT_FALSE(editor->isWindowModified());
    ASSERT_TRUE(readScriptFile(path, &text, &error));
    EXPECT_EQ(text, QStringLiteral("xc~\"ä\"\n"));
    write(QByteArray("a\0b", 3));
    EXPECT_FALSE(readScriptFile(path, &text, &error));
}

TEST_F(ScriptWindow, TheReferenceFindsWordsAndPutsThemIntoTheText)
{
    open(QString());
    auto *filter = child<QLineEdit>(*editor, "filter");
    QTest::keyClicks(filter, QStringLiteral("hypo"));
    QTest::keyClick(filter, Qt::Key_Return);
    QTest::keyClicks(editor->scriptEdit(), QStringLiteral("3,4"));
    EXPECT_EQ(editor->script(), QStringLiteral("hypo(3,4)"));
    for (const char *word : {"rect", "negative", "m_maxops", "pops", "while", "=="})
        EXPECT_TRUE(editor->reference()->choose(QString::fromLatin1(word))) << word;
    EXPECT_FALSE(editor->reference()->choose(QStringLiteral("x9v3p09")));
    for (const ReferenceEntry &entry :
         referenceEntries(*main->operatorTable(), {QStringLiteral("m_pi")}))
        EXPECT_FALSE(entry.explanation.isEmpty()) << entry.word.toStdString();
}

TEST(ScriptQuestions, AnswerWithWhatWasSetAndShowTextsAsTheyAre)
{
    SingleSlider slider(QStringLiteral("T"), QStringLiteral("<b>L"), -5, 5, 99);
    EXPECT_EQ(slider.value(), 5);
    child<QSpinBox>(slider, "value")->setValue(-2);
    EXPECT_EQ(slider.value(), -2);
    SingleSlider reversed(QStringLiteral("T"), QString(), 9, 3, 4);
    EXPECT_EQ(reversed.value(), 9);
    GetStringGeneral text(QStringLiteral("T"), QStringLiteral("P"), QStringLiteral("old"));
    QTest::keyClicks(child<QLineEdit>(text, "text"), QStringLiteral("new"));
    EXPECT_EQ(text.text(), QStringLiteral("new"));
}
