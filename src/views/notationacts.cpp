// SPDX-License-Identifier: GPL-3.0-or-later
// GCC takes the copy constructor of QVector, where it is inlined, for a null dereference.
// Copies of notes are made here, so that other files keep the warning.
#ifdef __GNUC__
#pragma GCC diagnostic ignored "-Wnull-dereference"
#endif
#include "views/notationacts.h"

#include "core/image.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <algorithm>
#include <utility>

namespace
{
constexpr int kMasterSteps = 50;

/// The last act, which further changes of its kind join.
struct LastAct {
    const image *img = nullptr;
    int note = -1;
    NotationAct act = NotationAct::Remove;
    int32_t undoSerial = 0, redoSerial = 0;
};
LastAct last;

/// The notes of a master as they were before an act. The pointer is compared, not followed;
/// the serial tells a new image at an old address.
struct MasterStep {
    const image *master;
    uint16_t serial;
    QList<Notation> notations;
};
QList<MasterStep> past, future;

/// A note is made and then given its text, which is one step for whoever does it.
bool joins(const image *img, int note, NotationAct act)
{
    const bool sameKind =
        act == last.act || (last.act == NotationAct::Make && act == NotationAct::Look);
    return sameKind && act != NotationAct::Make && act != NotationAct::Remove &&
           act != NotationAct::Reshape && img == last.img && note == last.note &&
           img->undoSerial == last.undoSerial && img->redoSerial == last.redoSerial;
}

void keepStep(QList<MasterStep> *list, const image *master)
{
    list->append({master, master->serial, master->notations});
    if (list->size() > kMasterSteps)
        list->removeFirst();
}

bool stepMaster(image *master, QList<MasterStep> *from, QList<MasterStep> *to)
{
    for (int i = from->size() - 1; i >= 0; --i) {
        if (from->at(i).master != master || from->at(i).serial != master->serial)
            continue;
        keepStep(to, master);
        master->notations = from->takeAt(i).notations;
        closeNotationAct();
        endNotationAct(master, -1);
        return true;
    }
    return false;
}
} // namespace

Notation notationAt(const image &img, int note)
{
    return img.notations.value(note);
}

void setNotation(image *img, int note, Notation changed)
{
    if (note >= 0 && note < img->notations.size())
        std::swap(img->notations[note], changed);
}

void beginNotationAct(image *img, int note, NotationAct act)
{
    if (!joins(img, note, act)) {
        if (img->kind == 1) {
            keepStep(&past, img);
            const auto own = [img](const MasterStep &step) { return step.master == img; };
            future.erase(std::remove_if(future.begin(), future.end(), own), future.end());
        } else {
            beginAct(img);
        }
        last.act = act;
    }
    last.img = img;
    last.note = note;
    last.undoSerial = img->undoSerial;
    last.redoSerial = img->redoSerial;
}

void endNotationAct(image *img, int chosen)
{
    img->changed = true;
    // A layer without a window of its own is asked for through its master's flag.
    if (image *master = masterOf(img))
        master->changed = true;
    img->stampModification();
    ViewHost *host = viewHost();
    if (!host)
        return;
    for (imgWindow *window : host->windowsOf(img)) {
        window->paintOverlayOnly = true;
        window->update();
    }
    host->notationsChanged(img, chosen);
    host->updateMenus();
}

void closeNotationAct()
{
    last.img = nullptr;
}

bool undoMasterNotations(image *master)
{
    return stepMaster(master, &past, &future);
}

bool redoMasterNotations(image *master)
{
    return stepMaster(master, &future, &past);
}
