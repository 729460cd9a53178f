// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filepreview.h"

#include "formats/bounds.h"
#include "formats/load.h"

#include <QCache>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QImageReader>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrentRun>

#include <algorithm>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace
{
constexpr int kPatienceMs = 30'000;
} // namespace

/// The program that makes previews, with bounds on what a hostile file can have it use.
class PreviewProcess : public QProcess
{
public:
    using QProcess::QProcess;

    /// Ends it with what it started in turn.
    void endAll()
    {
        if (processId() > 0)
            ::kill(pid_t(-processId()), SIGKILL);
        kill();
    }

protected:
    void setupChildProcess() override
    {
        setpgid(0, 0);
        const rlimit seconds = {kPatienceMs / 1000, kPatienceMs / 1000};
        setrlimit(RLIMIT_CPU, &seconds);
        // Sanitizers reserve far more address space than they use.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        constexpr rlim_t kMostMemory = rlim_t(2) << 30;
        const rlimit memory = {kMostMemory, kMostMemory};
        setrlimit(RLIMIT_AS, &memory);
#endif
        [[maybe_unused]] const int niceness = nice(10);
    }
};

namespace
{
constexpr int kCacheKilobytes = 64 * 1024;
constexpr int kMostWaiting = 200;
constexpr int64_t kMostPixels = 80'000'000;
constexpr int64_t kPixelsPerDeflatedByte = 1032 * 8;
constexpr int kLeastBytes = 8; ///< shorter files are no pictures
constexpr const char *kProgram = "kestrane-thumbnailer";

QString say(const char *text)
{
    return QCoreApplication::translate("FilePreviews", text);
}

QCache<QString, FilePreview> &cache()
{
    static QCache<QString, FilePreview> previews(kCacheKilobytes);
    return previews;
}

FilePreview noPreview(const QString &note)
{
    FilePreview preview;
    preview.note = note;
    return preview;
}

/// A file that ends as soon as nobody waits for its picture any more.
class StoppableFile : public QFile
{
public:
    StoppableFile(const QString &path, const std::atomic_bool &stopFlag)
        : QFile(path), stop(stopFlag)
    {
    }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        return stop ? -1 : QFile::readData(data, most);
    }

private:
    const std::atomic_bool &stop;
};

int depthOf(QImage::Format format)
{
    switch (format) {
    case QImage::Format_Invalid:
        return 0;
    case QImage::Format_Grayscale16:
    case QImage::Format_RGBX64:
    case QImage::Format_RGBA64:
    case QImage::Format_RGBA64_Premultiplied:
        return 16;
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
        return 1;
    default:
        return 8;
    }
}

/// Of the forms that have one depth; 0 for others.
int depthOf(const QString &name)
{
    const auto endsIn = [&name](const char *extension) {
        return name.endsWith(QLatin1String(extension), Qt::CaseInsensitive);
    };
    if (endsIn(".pix"))
        return 4;
    return endsIn(".ato") || endsIn(".elx") ? 16 : 0;
}

bool isDecodedHere(const QString &name)
{
    return name.endsWith(QLatin1String(".jpg"), Qt::CaseInsensitive) ||
           name.endsWith(QLatin1String(".jpeg"), Qt::CaseInsensitive) ||
           name.endsWith(QLatin1String(".png"), Qt::CaseInsensitive);
}

/// Runs in a thread. The reader scales while it decodes, so that the whole picture is
/// rarely in memory.
FilePreview decode(const PreviewRequest &request, const std::shared_ptr<std::atomic_bool> &stop)
{
    StoppableFile file(request.path, *stop);
    if (!QFileInfo(request.path).isFile() || !file.open(QIODevice::ReadOnly))
        return noPreview(say("The file may not be read"));
    QImageReader reader(&file);
    const QByteArray form = reader.format();
    FilePreview preview;
    if (form != "jpeg" && form != "png")
        return noPreview(say("No preview"));
    preview.pixels = reader.size();
    preview.depth = depthOf(reader.imageFormat());
    const int64_t pixels = int64_t(preview.pixels.width()) * preview.pixels.height();
    if (pixels <= 0 || !fileCanHold(pixels, request.bytes, kPixelsPerDeflatedByte))
        return noPreview(say("The file is damaged"));
    if (pixels > kMostPixels) {
        preview.note = say("Too large for a preview");
        return preview;
    }
    if (std::max(preview.pixels.width(), preview.pixels.height()) > request.side)
        reader.setScaledSize(preview.pixels.scaled(request.side, request.side, Qt::KeepAspectRatio)
                                 .expandedTo({1, 1}));
    preview.picture = reader.read();
    if (preview.picture.isNull())
        preview.note = say("The file is damaged");
    return preview;
}

/// It lies beside the program, or where programs lie.
QString thumbnailer()
{
    const QString name = QLatin1String(kProgram);
    const QString beside =
        QStandardPaths::findExecutable(name, {QCoreApplication::applicationDirPath()});
    return beside.isEmpty() ? QStandardPaths::findExecutable(name) : beside;
}

FilePreview readThumbnail(const QString &path, int side)
{
    QImageReader reader(path, "png");
    const QSize size = reader.size();
    FilePreview preview;
    if (size.isEmpty() || size.width() > side || size.height() > side)
        return noPreview(say("No preview"));
    preview.picture = reader.read();
    preview.pixels = QSize(preview.picture.text(QStringLiteral("Thumb::Image::Width")).toInt(),
                           preview.picture.text(QStringLiteral("Thumb::Image::Height")).toInt());
    return preview;
}

/// What the program gave up for, as far as it helps a person.
QString reasonOf(const QByteArray &complaint)
{
    return complaint.contains("allocation failed") || complaint.contains("enough memory")
               ? say("Too large for a preview")
               : say("No preview");
}
} // namespace

QThreadPool *waitingThreads()
{
    static QThreadPool *pool = []() {
        auto *threads = new QThreadPool(QCoreApplication::instance());
        threads->setMaxThreadCount(4);
        return threads;
    }();
    return pool;
}

QString PreviewRequest::key() const
{
    return QStringLiteral("%1 %2 %3 %4")
        .arg(side)
        .arg(modified.toMSecsSinceEpoch())
        .arg(bytes)
        .arg(path);
}

FilePreviews::FilePreviews(QObject *parent) : QObject(parent) {}

FilePreviews::~FilePreviews()
{
    giveUp();
}

const FilePreview *FilePreviews::made(const PreviewRequest &request)
{
    return cache().object(request.key());
}

bool FilePreviews::isPictureName(const QString &name)
{
    const auto endsIn = [&name](const QStringList &extensions) {
        return std::any_of(extensions.begin(), extensions.end(), [&name](const QString &extension) {
            return name.endsWith(extension, Qt::CaseInsensitive);
        });
    };
    static const QStringList small = {QStringLiteral(".mcai"), QStringLiteral(".pix"),
                                      QStringLiteral(".iff")};
    return endsIn(qtExtensions()) || endsIn(nativeExtensions()) || endsIn(rawExtensions()) ||
           endsIn(small);
}

void FilePreviews::askNow(const PreviewRequest &request)
{
    urgent = request;
    if (current && !currentIsUrgent) // a small picture can wait, the person cannot
        later << *current;
    stopCurrent();
    startNext();
}

void FilePreviews::askLater(const PreviewRequest &request)
{
    const auto isIt = [key = request.key()](const PreviewRequest &other) {
        return other.key() == key;
    };
    if (current && isIt(*current))
        return;
    later.erase(std::remove_if(later.begin(), later.end(), isIt), later.end());
    later << request;
    if (later.size() > kMostWaiting)
        later.removeFirst();
    // Not from here: the caller is painting.
    QTimer::singleShot(0, this, &FilePreviews::startNext);
}

void FilePreviews::giveUp()
{
    urgent.reset();
    later.clear();
    stopCurrent();
}

void FilePreviews::startNext()
{
    if (current)
        return;
    currentIsUrgent = urgent.has_value();
    if (!urgent && later.isEmpty())
        return;
    const PreviewRequest next = urgent ? *urgent : later.takeLast();
    urgent.reset();
    if (made(next)) {
        emit ready(next);
        startNext();
    } else {
        start(next);
    }
}

void FilePreviews::start(const PreviewRequest &request)
{
    current = request;
    if (request.bytes < kLeastBytes)
        keep(noPreview(say("No preview")));
    else if (isDecodedHere(request.path))
        startDecoding();
    else
        startProcess();
}

void FilePreviews::startDecoding()
{
    stop = std::make_shared<std::atomic_bool>(false);
    auto *watcher = new QFutureWatcher<FilePreview>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher]() {
        watcher->deleteLater();
        decoding = nullptr;
        stop.reset();
        keep(watcher->result());
    });
    decoding = watcher;
    watcher->setFuture(QtConcurrent::run(waitingThreads(), decode, *current, stop));
}

void FilePreviews::startProcess()
{
    const QString program = thumbnailer();
    if (!folder)
        folder = std::make_unique<QTemporaryDir>();
    if (program.isEmpty() || !folder->isValid()) {
        keep(noPreview(say("No preview")));
        return;
    }
    // One that was given up may still be writing: each has a file of its own.
    output = folder->filePath(QStringLiteral("%1.png").arg(++serial));
    auto *started = new PreviewProcess(QCoreApplication::instance());
    process = started;
    started->setStandardInputFile(QProcess::nullDevice());
    started->setStandardOutputFile(QProcess::nullDevice());
    connect(started, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this, started](int code, QProcess::ExitStatus status) {
                takeThumbnail(status == QProcess::NormalExit && code == 0,
                              started->readAllStandardError());
            });
    connect(started, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            takeThumbnail(false, {});
    });
    connect(started, &QProcess::stateChanged, started, [started](QProcess::ProcessState state) {
        if (state == QProcess::NotRunning)
            started->deleteLater();
    });
    QTimer::singleShot(kPatienceMs, started, [started]() { started->endAll(); });
    started->start(program,
                   {QStringLiteral("-s"), QString::number(current->side), current->path, output});
}

/// Whatever runs is forgotten; it ends by itself soon after.
void FilePreviews::stopCurrent()
{
    current.reset();
    if (stop)
        *stop = true;
    stop.reset();
    delete decoding; // the thread goes on to its next read
    decoding = nullptr;
    if (process) {
        process->disconnect(this);
        process->endAll();
    }
    process = nullptr;
}

void FilePreviews::takeThumbnail(bool made, const QByteArray &complaint)
{
    process = nullptr;
    FilePreview preview =
        made ? readThumbnail(output, current->side) : noPreview(reasonOf(complaint));
    preview.depth = made ? depthOf(current->path) : 0;
    QFile::remove(output);
    keep(preview);
}

void FilePreviews::keep(const FilePreview &preview)
{
    const PreviewRequest request = *current;
    current.reset();
    const int kilobytes = int(preview.picture.sizeInBytes() / 1024) + 1;
    cache().insert(request.key(), new FilePreview(preview), kilobytes);
    emit ready(request);
    startNext();
}
