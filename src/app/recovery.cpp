// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/recovery.h"

#include "app/busyguard.h"
#include "app/recoverysnapshot.h"
#include "app/smallpicture.h"
#include "core/workspace.h"
#include "formats/load.h"
#include "formats/tagged.h"
#include "formats/writers.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

#include <sys/resource.h>

namespace
{
constexpr int kMinuteMs = 60000;
constexpr int64_t kLongestTickMs = 1000;
constexpr int64_t kShortestTickMs = 5;
constexpr int kBusyMs = 100; ///< between looks whether other work is done
constexpr int kTellMs = 100;
constexpr int kNiceness = 10;
constexpr int kPreviewSide = 128;
constexpr uint16_t kMaster = 1, kLayer = 2;

RecoveredPicture describe(const image &img)
{
    RecoveredPicture picture;
    picture.originalPath = img.fullPath;
    picture.name = img.name;
    picture.savedAt = QDateTime::currentDateTimeUtc();
    picture.layered = img.kind == kMaster;
    picture.size = QSize(img.width, img.height);
    picture.preview = smallPicture(img, kPreviewSide, 1.0, false).toImage();
    picture.tagLines = img.tagLines;
    picture.tagBlock = img.tagBlock;
    picture.guidesX = img.guidesX;
    picture.guidesY = img.guidesY;
    return picture;
}

/// What a restored picture has that its native file does not tell.
void giveIdentity(image *img, const RecoveredPicture &picture)
{
    FileRecord place;
    if (!picture.originalPath.isEmpty()) {
        place = FileRecord::fromPath(picture.originalPath);
        place.isSet = true;
    }
    img->fullPath = place.fullPath;
    img->folder = place.folder;
    img->name = picture.name.isEmpty() ? Recovery::tr("Recovered picture") : picture.name;
    img->saveBag = place;
    for (image *layer : qAsConst(img->layers))
        layer->saveBag = place;
    img->tagLines = picture.tagLines;
    img->tagBlock = picture.tagBlock;
    img->guidesX = picture.guidesX;
    img->guidesY = picture.guidesY;
    img->changed = true;
}
} // namespace

/// One picture on its way into a file.
struct Recovery::Job {
    image *img; ///< compared only
    QByteArray fingerprint;
    RecoveredPicture description;
    std::unique_ptr<RecoverySnapshot> snapshot;
    const image *source = nullptr; ///< what is written
    BackgroundWrite state;
    bool written = false;
    bool abandoned = false; ///< its picture has no files any more
    QString error;
    std::unique_ptr<QThread> thread;

    void write()
    {
        // Threads that this one starts for packing are as patient as it is.
        setpriority(PRIO_PROCESS, 0, kNiceness);
        written = writeInBackground(*source, description.dataPath, &state, &error) && !state.stop &&
                  RecoveryStore::replace(description, &error);
    }
};

Recovery::Recovery(Workspace *workspace, QObject *parent)
    : Recovery(workspace, RecoveryStore::userFolder(), parent)
{
}

Recovery::Recovery(Workspace *workspace, const QString &folder, QObject *parent)
    : QObject(parent), space(workspace), store(folder)
{
    clock.start();
    stepTimer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &Recovery::tick);
    connect(&stepTimer, &QTimer::timeout, this, &Recovery::step);
}

Recovery::~Recovery()
{
    stopJob();
    if (job)
        job->thread->wait();
}

void Recovery::setMinutes(int minutes)
{
    setInterval(std::max(0, minutes) * kMinuteMs);
}

void Recovery::setInterval(int milliseconds)
{
    if (interval == milliseconds)
        return;
    interval = milliseconds;
    roundBegan = clock.elapsed();
    timer.start(int(interval == 0 ? kLongestTickMs
                                  : std::clamp(interval / 8, kShortestTickMs, kLongestTickMs)));
}

void Recovery::tick()
{
    if (waiting)
        return;
    settle();
    // The copy of this round is as old as the round takes when it is complete, so the round
    // begins that much earlier; a disk that is too slow for that gets half of the time.
    const int64_t early = std::min(roundTook + roundTook / 2, interval / 2);
    const int64_t pause = interval - timer.interval() - early;
    if (interval > 0 && !inRound && clock.elapsed() - roundBegan >= pause)
        beginRound();
}

void Recovery::saveNow()
{
    if (inRound)
        again = true;
    else
        beginRound();
}

void Recovery::beginRound()
{
    ++round;
    inRound = true;
    again = incomplete = false;
    roundBegan = clock.elapsed();
    queue = space->images;
    stepTimer.start(0);
}

/// Goes on to the next picture. Only one is looked at in a turn of the event loop, since
/// that costs a moment for a large one. False if it has to wait for other work.
bool Recovery::step()
{
    if (job || waiting)
        return true;
    if (!inRound && again)
        beginRound();
    while (!queue.isEmpty() && !isDue(queue.constFirst()))
        queue.removeFirst();
    if (!queue.isEmpty() && othersWork(queue.constFirst())) {
        stepTimer.start(kBusyMs);
        return false;
    }
    if (!queue.isEmpty())
        startPicture(queue.takeFirst());
    else if (inRound)
        endRound();
    if (!job && (inRound || again))
        stepTimer.start(0);
    return true;
}

void Recovery::endRound()
{
    inRound = false;
    roundTook = clock.elapsed() - roundBegan;
    const auto isOver = [this](const Entry &entry) {
        return entry.leftAfter >= 0 && entry.leftAfter < round && !incomplete;
    };
    for (const Entry &entry : entries)
        if (isOver(entry))
            drop(entry);
    entries.erase(std::remove_if(entries.begin(), entries.end(), isOver), entries.end());
}

void Recovery::startPicture(image *img)
{
    QString error;
    if (!store.open(&error)) {
        complain(error);
        return;
    }
    if (!entryOf(img))
        entries.push_back({img, img->serial, store.newStem()});
    Entry *entry = entryOf(img);
    if (entry->stem.isEmpty()) // restored, and not written since
        entry->stem = store.newStem();
    const QByteArray fingerprint = fingerprintOf(*img);
    if (fingerprint == entry->fingerprint)
        return;
    job = makeJob(*entry, img);
    job->fingerprint = fingerprint;
    // A write that ended may be waited for before its signal comes: then it is told twice.
    connect(job->thread.get(), &QThread::finished, this, [this, running = job->thread.get()] {
        if (job && job->thread.get() == running && !waiting)
            finishJob();
    });
    job->thread->start();
    if (!job->snapshot)
        writeMeanwhileWaiting();
}

std::unique_ptr<Recovery::Job> Recovery::makeJob(const Entry &entry, image *img)
{
    auto made = std::make_unique<Job>();
    made->img = img;
    made->description = describe(*img);
    made->description.stem = entry.stem;
    made->description.dataPath = store.newDataPath(entry.stem, img->kind == kMaster);
    made->snapshot = RecoverySnapshot::of(*img);
    made->source = made->snapshot ? &made->snapshot->picture() : img;
    made->thread.reset(QThread::create([running = made.get()] { running->write(); }));
    return made;
}

/// There is no memory for a copy: the picture itself is written, and as with any other save
/// the person waits for it, or stops it.
void Recovery::writeMeanwhileWaiting()
{
    qDebug("background save: no memory for a copy of %s", qPrintable(job->description.name));
    int noDepth = 0;
    const BusyGuard guard(busyDepth ? *busyDepth : noDepth);
    waiting = true;
    while (!job->thread->wait(kTellMs)) {
        space->progress(tr("Saving %1 for recovery").arg(job->description.name), job->state.percent,
                        100);
        if (space->cancelRequested())
            job->state.stop = true;
    }
    space->progress(QString(), 0, 0);
    waiting = false;
    Entry *entry = entryOf(job->img);
    if (entry && job->state.stop) {
        entry->refused = true;
        space->statusText(
            tr("%1 is left out of background saving until you save it").arg(job->description.name));
    }
    finishJob();
}

void Recovery::finishJob()
{
    const std::unique_ptr<Job> done = std::move(job);
    done->thread->wait();
    Entry *entry = entryOf(done->img);
    if (done->abandoned || !entry) {
        RecoveryStore::remove(done->description.stem);
    } else if (done->written) {
        entry->fingerprint = done->fingerprint;
        if (!entry->heirloom.isEmpty())
            RecoveryStore::remove(entry->heirloom);
        entry->heirloom.clear();
    } else {
        QFile::remove(done->description.dataPath);
        if (!done->state.stop)
            complain(done->error);
    }
    if (inRound)
        stepTimer.start(0);
}

void Recovery::stopJob()
{
    if (!job)
        return;
    job->state.stop = true;
    job->abandoned = true;
}

void Recovery::waitForDone()
{
    while (!waiting && (job || inRound || again)) {
        if (job)
            finishJob();
        else if (!step())
            return;
    }
}

bool Recovery::othersWork(const image *img) const
{
    const auto inUse = [](const image *one) { return one->inUse; };
    return (busyDepth && *busyDepth > 0) || inUse(img) ||
           std::any_of(img->layers.cbegin(), img->layers.cend(), inUse);
}

bool Recovery::isDue(image *img)
{
    if (!space->images.contains(img) || !img->valid() || img->kind == kLayer ||
        !img->hasUnsavedChanges())
        return false;
    const Entry *entry = entryOf(img);
    return !entry || !entry->refused;
}

bool Recovery::owns(const Entry &entry) const
{
    return entry.leftAfter < 0 && space->images.contains(entry.img) &&
           entry.img->serial == entry.serial;
}

Recovery::Entry *Recovery::entryOf(const image *img)
{
    for (Entry &entry : entries)
        if (entry.img == img && owns(entry))
            return &entry;
    return nullptr;
}

/// Follows what became of the pictures. Of one that is gone nobody knows whether it was closed
/// or joined another picture, which is then saved before the files go.
void Recovery::settle()
{
    bool someLeft = false;
    for (size_t i = entries.size(); i-- > 0;) {
        Entry &entry = entries[i];
        if (entry.leftAfter >= 0)
            continue;
        if (owns(entry)) {
            if (entry.img->hasUnsavedChanges())
                continue;
        } else if (interval > 0) {
            entry.leftAfter = round;
            someLeft = true;
            continue;
        }
        const Entry settled = entry;
        entries.erase(entries.begin() + std::ptrdiff_t(i));
        drop(settled);
    }
    if (someLeft)
        saveNow();
}

void Recovery::drop(const Entry &entry)
{
    if (job && job->description.stem == entry.stem)
        stopJob();
    for (const QString &stem : {entry.stem, entry.heirloom})
        if (!stem.isEmpty())
            RecoveryStore::remove(stem);
}

void Recovery::forget(const image *img)
{
    for (size_t i = entries.size(); i-- > 0;)
        if (entries[i].img == img) {
            const Entry gone = entries[i];
            entries.erase(entries.begin() + std::ptrdiff_t(i));
            drop(gone);
        }
}

void Recovery::pictureSaved(image *img)
{
    image *top = masterOf(img) ? masterOf(img) : img;
    if (top && !top->hasUnsavedChanges())
        forget(top);
}

void Recovery::pictureGone(const image *img)
{
    forget(img);
}

void Recovery::endInOrder()
{
    timer.stop();
    stepTimer.stop();
    interval = 0;
    inRound = again = false;
    queue.clear();
    stopJob();
    if (job)
        finishJob();
    for (const Entry &entry : entries)
        drop(entry);
    entries.clear();
    store.close();
    store.leftovers(); // folders that everything was restored from go
}

void Recovery::complain(const QString &error)
{
    incomplete = true;
    qDebug("background save: %s", qPrintable(error));
    if (!complained)
        space->statusText(tr("Background saving to %1 failed: %2").arg(store.root(), error));
    complained = true;
}

QList<RecoveredPicture> Recovery::leftovers()
{
    QList<RecoveredPicture> found = store.leftovers();
    found.erase(std::remove_if(found.begin(), found.end(),
                               [this](const RecoveredPicture &picture) {
                                   return decided.contains(picture.stem);
                               }),
                found.end());
    return found;
}

image *Recovery::restore(const RecoveredPicture &picture)
{
    const FileRecord record = FileRecord::fromPath(picture.dataPath);
    image *img = loadImageFile(record.fullPath, record.name, &record, false);
    if (!img)
        return nullptr;
    giveIdentity(img, picture);
    decided << picture.stem;
    space->showImage(img, img->saveBag);
    Entry entry{img, img->serial, QString()};
    entry.heirloom = picture.stem;
    entries.push_back(entry);
    return img;
}

void Recovery::discard(const RecoveredPicture &picture)
{
    decided << picture.stem;
    RecoveryStore::remove(picture.stem);
}
