// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/recoverystore.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <vector>

class Workspace;
class image;

/// Saves changed pictures in the background, so that a program that ends badly costs at most
/// an interval of work, and brings back what such a run left behind. Never touches the
/// person's own files. docs/recovery.md tells people about it.
///
/// A round goes over all changed pictures, one at a time: a copy is made on the main thread,
/// a thread of low priority writes it. A picture that is as at its last background save is
/// passed over. The files of a picture go when it is saved or closed; of one that became part
/// of another picture when that one has been through a round.
class Recovery : public QObject
{
    Q_OBJECT
public:
    /// With its files in the user's state folder.
    Recovery(Workspace *workspace, QObject *parent);
    Recovery(Workspace *workspace, const QString &folder, QObject *parent);
    /// Leaves the files as they are; endInOrder() takes them away.
    ~Recovery() override;

    /// The longest that a change stays without a copy; 0 turns background saving off.
    void setMinutes(int minutes);
    void setInterval(int milliseconds);
    /// A counter of work amidst which pictures must not be copied: rounds wait until it is 0.
    void setBusyDepth(int *depth) { busyDepth = depth; }

    /// Begins a round, or has another one follow the one that goes on.
    void saveNow();
    /// Returns when the rounds that were begun are complete; those that wait for other work
    /// are not waited for.
    void waitForDone();

    /// The person saved the picture: unless it still has unsaved changes its files go.
    void pictureSaved(image *img);
    /// The person closed the picture: its files go. Nothing is read through the pointer.
    void pictureGone(const image *img);
    /// The program ends as the person wanted it: what this run made or restored goes, what an
    /// earlier one left and nobody decided about stays.
    void endInOrder();

    /// Pictures that runs which did not end in order left behind, latest first, without those
    /// that were restored or discarded since. Programs that still run keep theirs.
    QList<RecoveredPicture> leftovers();
    /// Opens one, with its old name and path, as a changed picture. Its files stay until the
    /// picture is saved, closed, or in the files of this run. Null if it cannot be read.
    image *restore(const RecoveredPicture &picture);
    /// Deletes the files of one for good.
    void discard(const RecoveredPicture &picture);

private:
    /// A changed picture that has files.
    struct Entry {
        image *img;      ///< compared; used only if the workspace has it
        uint16_t serial; ///< an address may come back with another picture
        QString stem;    ///< of its files in this run; empty until there are some
        QByteArray fingerprint = {};
        QString heirloom = {}; ///< stem of the files that it was restored from
        bool refused = false;  ///< the person stopped its save, which was in the way
        int leftAfter = -1;    ///< gone since this round; its files go after the next one
    };
    struct Job;

    void tick();
    void beginRound();
    bool step();
    void endRound();
    void startPicture(image *img);
    std::unique_ptr<Job> makeJob(const Entry &entry, image *img);
    void writeMeanwhileWaiting();
    void finishJob();
    void stopJob();

    bool othersWork(const image *img) const;
    bool isDue(image *img);
    bool owns(const Entry &entry) const;
    Entry *entryOf(const image *img);
    void settle();
    void drop(const Entry &entry);
    void forget(const image *img);
    void complain(const QString &error);

    Workspace *space;
    RecoveryStore store;
    QTimer timer, stepTimer;
    QElapsedTimer clock;
    int *busyDepth = nullptr;
    int64_t interval = 0;   ///< milliseconds; 0: off
    int64_t roundBegan = 0; ///< on the clock
    int64_t roundTook = 0;
    int round = 0; ///< number of the one begun last
    bool inRound = false;
    bool again = false;      ///< another round is to follow
    bool incomplete = false; ///< something of this round could not be written
    bool waiting = false;    ///< writeMeanwhileWaiting() is on the way
    bool complained = false;
    std::vector<Entry> entries;
    QList<image *> queue; ///< what this round has not come to
    QStringList decided;  ///< stems that are offered no more
    std::unique_ptr<Job> job;
};
