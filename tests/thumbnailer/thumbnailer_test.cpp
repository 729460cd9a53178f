// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/tagged.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

namespace
{
/// Runs the real program as a file manager does, with no display.
class Thumbnailer : public testing::Test
{
protected:
    int run(const QStringList &arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(name);
        environment.insert("LC_ALL", "C");
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(KESTRANE_BIN_DIR "/kestrane-thumbnailer", arguments);
        EXPECT_TRUE(process.waitForFinished(60000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        messages = process.readAllStandardError();
        return process.exitCode();
    }
    QString at(const char *name) const { return folder.filePath(QString::fromUtf8(name)); }
    QByteArray head(const QString &path) const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.read(8) : QByteArray();
    }

    QTemporaryDir folder;
    QByteArray messages;
    RecordingWorkspace ws;
};

TEST_F(Thumbnailer, KeepsAspectAndAlphaWithinTheSize)
{
    // Green with a hidden red under its transparent half.
    const ImagePtr img = plainImage(300, 90, 0, 65535, 0);
    for (int64_t i = 0; i < img->sampleCount(); ++i)
        if (i % 300 >= 150)
            img->red[i] = 65535, img->green[i] = 0, img->alpha[i] = 0;
    QString error;
    const QString input = at("a picture, ünïcode.ato");
    ASSERT_TRUE(writeAtomic(img.get(), input, &error)) << qPrintable(error);
    const QUrl url = QUrl::fromLocalFile(input);
    struct Case {
        QStringList size;
        QString input;
        QSize expected;
    };
    const Case cases[] = {{{"-s", "101"}, input, {101, 30}},
                          {{"-s", "1"}, input, {1, 1}},
                          {{"-s", "512"}, url.toEncoded(), {300, 90}},
                          {{}, input, {128, 38}}};
    for (const Case &c : cases) {
        ASSERT_EQ(run(c.size + QStringList{c.input, at("out.png")}), 0) << messages.constData();
        const QImage got(at("out.png"), "png");
        EXPECT_EQ(got.size(), c.expected);
        EXPECT_EQ(got.text("Thumb::URI").toLatin1(), url.toEncoded());
        EXPECT_EQ(got.text("Thumb::MTime").toLongLong(),
                  QFileInfo(input).lastModified().toSecsSinceEpoch());
        EXPECT_EQ(got.text("Thumb::Image::Width"), "300");
        for (int x = 0; x < got.width(); ++x)
            EXPECT_TRUE(qAlpha(got.pixel(x, 0)) < 8 || qRed(got.pixel(x, 0)) < 8) << x;
        if (got.width() > 1) {
            EXPECT_EQ(got.pixel(0, 0), qRgb(0, 255, 0));
            EXPECT_EQ(qAlpha(got.pixel(got.width() - 1, got.height() - 1)), 0);
        }
    }
}

TEST_F(Thumbnailer, ReadsOtherFormsToo)
{
    ASSERT_TRUE(plainImage(20, 40, 0, 0, 65535)->toQImage().save(at("a.png")));
    ASSERT_EQ(run({"-s", "10", at("a.png"), at("out.png")}), 0) << messages.constData();
    EXPECT_EQ(QImage(at("out.png")).size(), QSize(5, 10));
}

TEST_F(Thumbnailer, BadInputLeavesNoFile)
{
    QFile broken(at("broken.ato"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write(QByteArray("ATO16BIT") + QByteArray(100, '\xFF'));
    broken.close();
    ASSERT_TRUE(QImage(4, 4, QImage::Format_RGB32).save(at("a.png")));
    const QStringList cases[] = {
        {at("broken.ato"), at("out.png")},
        {at("missing.ato"), at("out.png")},
        {folder.path(), at("out.png")},
        {at("a.png"), at("no/out.png")},
        {"-s", "0", at("a.png"), at("out.png")},
        {"-s", "10k", at("a.png"), at("out.png")},
        {at("a.png")},
        {"-s"},
        {"--sise", at("out.png")},
    };
    for (const QStringList &arguments : cases) {
        EXPECT_EQ(run(arguments), 1) << qPrintable(arguments.join(' '));
        EXPECT_FALSE(messages.isEmpty());
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList({"a.png", "broken.ato"}));
    }
}

TEST_F(Thumbnailer, DesktopFilesNameTheFormsAsTheyAreWritten)
{
    const QString packaging = KESTRANE_SOURCE_DIR "/packaging/";
    QMap<QString, QByteArray> magics; // by extension
    QStringList types;
    QFile file(packaging + "kestrane-mime.xml");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&file);
    for (QByteArray magic; !xml.atEnd(); xml.readNext()) {
        const auto value = [&xml](const char *name) {
            return xml.attributes().value(QLatin1String(name)).toString();
        };
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("mime-type"))
            types += value("type");
        else if (xml.name() == QLatin1String("match"))
            magic = value("offset") == "0" ? value("value").toLatin1() : QByteArray();
        else if (xml.name() == QLatin1String("glob"))
            magics[value("pattern").mid(1)] = magic;
    }
    EXPECT_FALSE(xml.hasError()) << qPrintable(xml.errorString());

    QString error;
    const ImagePtr layer = plainImage(2, 2, 1, 2, 3), master = plainImage(2, 2, 1, 2, 3);
    ASSERT_TRUE(writeAtomic(layer.get(), at("a.ato"), &error));
    layer->kind = 2;
    master->kind = 1;
    layer->master = master.get();
    master->layers = {layer.get()};
    ASSERT_TRUE(writeMaster(master.get(), at("a.elx"), &error)) << qPrintable(error);
    master->layers.clear();
    for (const char *extension : {".ato", ".elx"})
        EXPECT_EQ(magics.value(extension), head(at("a") + extension)) << extension;

    for (const char *name : {"kestrane.desktop", "kestrane.thumbnailer"}) {
        QFile entry(packaging + name);
        ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
        const QByteArray text = entry.readAll();
        for (const QString &type : qAsConst(types))
            EXPECT_TRUE(text.contains(type.toLatin1() + ';')) << name << qPrintable(type);
    }
}
} // namespace
