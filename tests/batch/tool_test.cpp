// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{
struct Finished {
    int status;
    QByteArray out, messages;
};

/// Runs the real program in a folder of its own, with an empty home in it.
class Tool : public testing::Test
{
protected:
    QTemporaryDir folder;
    QString home = folder.filePath("home");

    void SetUp() override { ASSERT_TRUE(QDir().mkpath(home + "/config/Zolvine")); }

    Finished run(const QStringList &arguments, const QByteArray &input = {},
                 const QProcessEnvironment &extra = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(name);
        environment.insert("HOME", home);
        environment.insert("XDG_CONFIG_HOME", home + "/config");
        environment.insert(extra);
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder.path());
        process.start(KESTRANE_BIN_DIR "/kestrane-batch", arguments);
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(60000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), process.readAllStandardOutput(),
                process.readAllStandardError()};
    }
    QByteArray bytes(const QString &name)
    {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QString &name, const QByteArray &content)
    {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QStringList files(const QString &pattern) { return QDir(folder.path()).entryList({pattern}); }
    int homeFiles()
    {
        int count = 0;
        const auto every = QDir::Files | QDir::Hidden;
        for (QDirIterator i(home, every, QDirIterator::Subdirectories); i.hasNext(); i.next())
            ++count;
        return count;
    }
};

TEST_F(Tool, WritesTheRawFormAtBothDepths)
{
    const QByteArray header("\0\x32\0\0\0\0\0\0\0\x31\0\0\0\0\0\0\0", 17);
    const QByteArray samples32 = QByteArray::fromHex("8f8f8fff").repeated(2);
    const QByteArray samples64 = QByteArray::fromHex("8fff8fff8fffffff").repeated(2);
    EXPECT_EQ(run({"new:2x1", "-o", "a.rgba"}).status, 0);
    EXPECT_EQ(bytes("a.rgba"), "RAW64XY" + header + samples64);
    EXPECT_EQ(run({"new:2x1", "--depth=32", "--output=b.rgba"}).status, 0);
    EXPECT_EQ(bytes("b.rgba"), "RAW32XY" + header + samples32);
    EXPECT_EQ(homeFiles(), 0);
}

TEST_F(Tool, LoadsWhatItSavedInEveryForm)
{
    const QByteArray commands =
        ".poke 1 0 4369 8738 13107 65535\n.save a.rgba\n.save a.png\n"
        ".load a.png\n.pixel 1 0\n.load a.rgba\n.pixel 1 0\n.save {name}.jpg\n";
    const Finished done = run({"-i", "new:3x2"}, commands);
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.out, "4369 8738 13107 65535 0\n4369 8738 13107 65535 0\n");
    EXPECT_EQ(QImage(folder.filePath("a.png")).pixel(1, 0), qRgba(0x11, 0x22, 0x33, 0xFF));
    EXPECT_EQ(QImage(folder.filePath("a.jpg")).size(), QSize(3, 2));
}

TEST_F(Tool, QualityDecidesTheSizeOfAJpeg)
{
    QImage noise(64, 64, QImage::Format_RGB32);
    for (int i = 0; i < 64 * 64; ++i)
        noise.setPixel(i % 64, i / 64, qRgb(i * 79, i * 104 / 7, i * i / 13));
    ASSERT_TRUE(noise.save(folder.filePath("a.png")));
    EXPECT_EQ(run({"a.png", "-o", "low.jpg", "--quality", "5"}).status, 0);
    EXPECT_EQ(run({"a.png", "-o", "set.jpg", "--set", "jpegImageQuality=5"}).status, 0);
    EXPECT_EQ(run({"a.png", "-o", "high.jpeg", "--quality", "95"}).status, 0);
    // Pixels, because the files also hold the moment at which they were made.
    EXPECT_EQ(QImage(folder.filePath("low.jpg")), QImage(folder.filePath("set.jpg")));
    EXPECT_GT(bytes("high.jpeg").size(), 2 * bytes("low.jpg").size());
}

TEST_F(Tool, TellsTransparencyAndGoesOn)
{
    QImage clear(2, 2, QImage::Format_ARGB32);
    clear.fill(qRgba(1, 2, 3, 4));
    ASSERT_TRUE(clear.save(folder.filePath("a.png")));
    const Finished done = run({"a.png", "-o", "a.jpg"});
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(done.messages.contains("notice: This image has transparency. Saving in .jpg is"));
    EXPECT_FALSE(files("a.jpg").isEmpty());
}

TEST_F(Tool, EndsAtTheFirstFailureUnlessToldToGoOn)
{
    write("broken.png", "no picture");
    const QStringList images{"new:1x1", "missing.png", "broken.png", "new:2x2"};
    Finished done = run(QStringList{"-o", "x{n}.png"} + images);
    EXPECT_EQ(done.status, 1);
    EXPECT_TRUE(("\n" + done.messages).contains("\nerror: missing.png: no such file\n"));
    EXPECT_EQ(files("x*"), QStringList{"x1.png"});

    done = run(QStringList{"--keep-going", "-o", "y{n}.png"} + images);
    EXPECT_EQ(done.status, 1);
    EXPECT_TRUE(done.messages.contains("error: broken.png: ")) << done.messages.constData();
    EXPECT_EQ(files("y*"), (QStringList{"y1.png", "y4.png"}));
}

TEST_F(Tool, AFailedSaveIsStatus1AndLeavesTheOldFile)
{
    write("old.bmp", "old");
    Finished done = run({"new:1x1", "-o", "old.bmp"});
    EXPECT_EQ(done.status, 1);
    EXPECT_EQ(bytes("old.bmp"), "old");
    EXPECT_TRUE(done.messages.startsWith("notice: Can't save in this format. Use .ato, "));
    done = run({"new:1x1", "-o", "none/a.png"});
    EXPECT_EQ(done.status, 1);
    EXPECT_TRUE(done.messages.endsWith("error: none/a.png: there is no folder of that name\n"));
}

TEST_F(Tool, StoredSettingsAreReadWhenAskedForAndNeverWritten)
{
    const QString store = "home/config/Zolvine/Kestrane.conf";
    const QByteArray before = "[General]\ninvertSelection=true\ntMode=77\noperatorExposure=25\n";
    write(store, before);
    const QByteArray commands = ".apply negative\n.pixel 0 0\n.scriptline exposure\n";
    EXPECT_EQ(run({"-i", "new:1x1"}, commands).out, "36863 36863 36863 65535 0\nexposure 0 0\n");
    const Finished done = run({"-i", "--settings", "new:1x1"}, commands);
    EXPECT_EQ(done.out, "28672 28672 28672 65535 65535\nexposure 25 0\n");
    EXPECT_TRUE(done.messages.startsWith("warning: stored setting passed over: "));
    EXPECT_EQ(bytes(store), before);
    EXPECT_EQ(homeFiles(), 1) << "the store alone";
}

TEST_F(Tool, NeedsNoDisplayAndNoLocale)
{
    QProcessEnvironment bad;
    bad.insert("DISPLAY", ":4711");
    bad.insert("LC_ALL", "C");
    const QString name = QString::fromUtf8("gr\xc3\xbc\xc3\x9f.png");
    EXPECT_EQ(run({"new:1x1", "-o", name}, {}, bad).status, 0);
    EXPECT_EQ(files("*.png"), QStringList{name});
    bad.insert("QT_QPA_PLATFORM", "xcb");
    EXPECT_EQ(run({name}, {}, bad).status, 0);
}

TEST_F(Tool, ScriptsRunOnEachImageAsApplyDoes)
{
    // A carriage return before the line end is no part of a statement.
    write("half.script", "# half the light\r\nif(exists(seen))\r\nx=1/0\r\nendif\r\nentire\r\n"
                         "exposure -50 0\r\n");
    const QStringList options{"-s", "half.script", "-e", "seen=m_width:x=5", "-e", "m_made=x/0"};
    Finished done = run(options + QStringList{"-o", "x{n}.png", "new:2x1", "new:3x1"});
    EXPECT_EQ(done.status, 0);
    // Variables of one image are not seen by the next.
    EXPECT_EQ(done.messages,
              QByteArray("error: line 2 of --execute: Division by zero\n").repeated(2));
    EXPECT_EQ(QImage(folder.filePath("x1.png")).pixel(1, 0), qRgb(0x47, 0x47, 0x47));
    EXPECT_EQ(QImage(folder.filePath("x2.png")).size(), QSize(3, 1));

    done = run(options + QStringList{"-i", "new:1x1"}, ".pixel 0 0\n.undo\n.pixel 0 0\n.undo\n");
    EXPECT_EQ(done.out, "18431 18431 18431 65535 65535\n36863 36863 36863 65535 0\nnothing\n");
}

TEST_F(Tool, StrictFailsWhereAScriptDoes)
{
    struct {
        const char *script;
        int status;
        const char *messages;
    } const cases[] = {
        {"x=1:pop()", 0, "warning: line 1: user stack is empty\n"},
        {"x=1\n\nx=x/0", 3, "error: line 3: Division by zero\n"},
        {"exposure 1", 3,
         "error: line 1: exposure 1\nerror: line 1: incorrect parameters for exposure [Amount="},
        {"exposur 25 0", 0,
         "warning: line 1: unknown word \"exposur\", did you mean \"exposure\"?"},
        {"loop():while(1)", 3, "notice: Script aborted; number of operations exceeded the value"}};
    for (const auto &c : cases) {
        for (const bool strict : {false, true}) {
            const Finished done = run(QStringList{"-e", c.script, "-o", "s.png", "new:1x1"} +
                                      (strict ? QStringList{"--strict"} : QStringList()));
            EXPECT_EQ(done.status, strict ? c.status : 0) << c.script;
            EXPECT_TRUE(done.messages.startsWith(c.messages)) << done.messages.constData();
            EXPECT_EQ(files("s.png").size(), done.status == 0) << "what failed is not saved";
            QFile::remove(folder.filePath("s.png"));
        }
    }
    const QStringList mixed{"--strict", "--keep-going", "-e",      "if(m_width==1):x=1/0:endif",
                            "-o",       "m{n}.png",     "new:1x1", "none.png",
                            "new:2x2"};
    EXPECT_EQ(run(mixed).status, 1) << "a missing picture outweighs the script";
    EXPECT_EQ(files("m*"), QStringList{"m3.png"});
}

TEST_F(Tool, RefusesAScriptThatIsNoText)
{
    write("bad.script", "x=\xff\xfe");
    const Finished done = run({"-s", "bad.script", "-o", "a.png", "new:1x1"});
    EXPECT_EQ(done.status, 2);
    EXPECT_EQ(done.messages, "error: bad.script: is not UTF-8 text\n");
    EXPECT_TRUE(files("a.png").isEmpty());
}
} // namespace
