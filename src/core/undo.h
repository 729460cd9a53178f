// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class image;

/// Undo works on whole images: every undoable act first copies the five work planes and
/// the small metadata into a snapshot, and undoing copies the snapshot back. Each image
/// has its own two lists, bounded by its undoLevels. A snapshot that memory does not
/// allow is silently not made: the act proceeds without one.

/// Puts a snapshot on the undo list; nothing if the image's noUndo is set. With
/// clearGroup the image's group mark is reset first.
void saveUndo(image *img, bool clearGroup);
void saveRedo(image *img);
/// Steps back, or forward; nothing if the list is empty.
void undo(image *img);
void redo(image *img);
/// The usual opening of an act: clears the redo list, saves undo with clearGroup.
void beginAct(image *img);
/// Deletes the newest undo entry without applying it.
void dropLastUndo(image *img);
void clearUndoList(image *img);
void clearRedoList(image *img);

/// A free-standing full image named "undoMakeCopy" with a copy of red, green, blue and,
/// if asked for, alpha. Null if memory is short.
image *undoMakeCopy(const image *img, bool withAlpha);

/// Gives the newest undo entry of `img` the mark of a group act.
void markNewestUndoAsGroup(image *img, int groupId);
/// A number for a group act that no earlier act of this run has.
int nextGroupId();

/// What a group step came to; `refusal` holds the message for the user if it was refused.
struct GroupResult {
    bool done = false;
    QString refusal;
};
/// Undoes the newest act of every layer of modes 55, 57 and 59 in the stack that `member`
/// (a master or a layer) belongs to, if these all belong to one group act.
GroupResult groupUndo(image *member);
GroupResult groupRedo(image *member);
