// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QSize>
#include <QString>

#include <functional>

class image;

/// What window commands do to images, apart from any window. Refusals and failures are
/// told through the workspace; views are told that they are out of date.

/// Hands a copy of the image (of a master: as composed), an atomic one, to the workspace to be
/// shown; with a size it is scaled to that.
void cloneImage(image *source, QSize scaledTo = {});

/// Makes an atomic image the only layer of a new master and opens a view of the master.
void showAsLayered(image *img);

/// Copies a cropped image back to where it came from, if that image still stands.
void restoreCrop(const image *cropped);

/// Reads the image's file afresh and puts it in the place of an atomic image of the same
/// number of samples, with an undo record. True if the image changed.
bool revertImage(image *img);

/// Turns or mirrors an atomic image or a layer by an EXIF orientation: 2 mirrors left to
/// right, 3 is a half turn, 4 mirrors top to bottom, 6 a quarter turn clockwise, 8 one
/// counterclockwise.
void turnImage(image *img, int orientation);

/// Turns an image as its EXIF block says that it is to be seen.
void turnImageUpright(image *img);

/// Develops a camera RAW, which was read as the sensor saw it.
void developImage(image *img);

/// Gives the image another name, with its title.
void renameImage(image *img, const QString &name);

/// An undo record of an act that may yet fail: unless keep() is called, the record goes
/// again and the redo list is as it was. A master gets none, since undo goes to its target.
class UndoRecord
{
public:
    explicit UndoRecord(image *of);
    ~UndoRecord();
    UndoRecord(const UndoRecord &) = delete;
    UndoRecord &operator=(const UndoRecord &) = delete;

    void keep() { kept = true; }

private:
    image *img;
    QList<image *> redoList;
    bool recorded = false, kept = false;
};

/// Changes an image's selection by `act`, which returns false, with the selection as it was,
/// if memory is short: then that is told and no undo record is left. True if it was done.
/// `words` stand behind the verb `area` in a recorded script; without any the selection itself
/// is recorded.
bool actOnSelection(image *img, const std::function<bool()> &act, const QString &words = {});

/// Sets the whole selection to one value, with an undo record if that changes anything.
void selectWhole(image *img, bool selected);
void invertSelection(image *img);

/// Whether a finished selection applies the current operator at once. Turning it on clears
/// the selections of all windows, which would be what the first operator works on.
void setSelectMode(bool on);

/// What every change of an image through a window ends with: flags and stamp, and whatever
/// shows the image follows.
void changeDone(image *img);
/// The same for its area selection.
void selectionChanged(const image *img);
