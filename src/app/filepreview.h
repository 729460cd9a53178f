// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QImage>
#include <QObject>
#include <QString>
#include <QVector>

#include <atomic>
#include <memory>
#include <optional>

class PreviewProcess;
class QTemporaryDir;
class QThreadPool;

/// What is shown of a picture file before it is opened.
struct FilePreview {
    QImage picture; ///< null if there is none
    QSize pixels;   ///< of the picture in the file; not valid if unknown
    int depth = 0;  ///< bits a channel, 0 if unknown
    QString note;   ///< why there is no picture
};

/// One version of one file, to be shown in a square of `side` device pixels.
struct PreviewRequest {
    QString path;
    QDateTime modified;
    qint64 bytes = 0;
    int side = 0;

    QString key() const;
};

/// Makes previews one at a time in the background and keeps those made lately for all
/// dialogs. JPEG and PNG files are decoded in a thread, everything else by
/// kestrane-thumbnailer in a process of its own: no file can bring the program down, make
/// it wait or have it say something. To be used in the main thread.
class FilePreviews : public QObject
{
    Q_OBJECT
public:
    explicit FilePreviews(QObject *parent);
    ~FilePreviews() override;

    /// A preview made before; null if there is none yet.
    static const FilePreview *made(const PreviewRequest &request);

    /// The preview that the person waits for: goes before everything else, and the one
    /// that was asked for before is given up.
    void askNow(const PreviewRequest &request);
    /// One of many small pictures; the last asked for are made first, and the oldest of
    /// too many are forgotten.
    void askLater(const PreviewRequest &request);
    /// Nobody waits for anything any more.
    void giveUp();

    /// Whether a file is a picture by its name.
    static bool isPictureName(const QString &name);

signals:
    /// made() has it from now on.
    void ready(const PreviewRequest &request);

private:
    void startNext();
    void start(const PreviewRequest &request);
    void startDecoding();
    void startProcess();
    void stopCurrent();
    void takeThumbnail(bool made, const QByteArray &complaint);
    void keep(const FilePreview &preview);

    std::optional<PreviewRequest> current, urgent;
    bool currentIsUrgent = false;
    QVector<PreviewRequest> later;          ///< the next one last
    QObject *decoding = nullptr;            ///< what waits for the thread that decodes `current`
    std::shared_ptr<std::atomic_bool> stop; ///< of that thread
    PreviewProcess *process = nullptr;      ///< that decodes `current`
    std::unique_ptr<QTemporaryDir> folder;
    QString output; ///< of the process
    int serial = 0;
};

/// Threads for what may wait for a disk that is asleep, apart from those that compute.
QThreadPool *waitingThreads();
