// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/notation.h"

class image;

/// What a change of a note is about. Changes of one kind to one note that follow each other
/// make one step of undo, where that is what a person takes them for: a text typed, a slider
/// drawn, an arrow key held.
enum class NotationAct { Make, Reshape, Nudge, Look, Remove };

/// A note of an image to work on; setNotation puts it back.
Notation notationAt(const image &img, int note);
void setNotation(image *img, int note, Notation changed);

/// Opens an act on the notes of an image, before they are changed. An atomic image or a layer
/// gets an undo record; a master, whose undo belongs to its target layer, an entry of a short
/// history of its own, of the notes alone.
void beginNotationAct(image *img, int note, NotationAct act);
/// The notes were changed: marks the image, repaints the overlay of its views, tells the host.
void endNotationAct(image *img, int chosen);
/// The next change is a step of undo of its own.
void closeNotationAct();

/// Steps a master's notes back, or forward. False if there is no such step.
bool undoMasterNotations(image *master);
bool redoMasterNotations(image *master);
