// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAction>
#include <QList>
#include <QPair>
#include <QString>
#include <QWidget>

/// What a menu entry or button may need before it makes sense to use it.
enum MenuNeed : unsigned {
    kNeedsImage = 1U << 0,       ///< a valid current window
    kNeedsUndo = 1U << 1,        ///< something to undo
    kNeedsRedo = 1U << 2,        ///< something to redo
    kNeedsRevert = 1U << 3,      ///< an atomic image that came from a file
    kNeedsBrush = 1U << 4,       ///< an assigned brush
    kNeedsOrigin = 1U << 5,      ///< an assigned origin
    kNeedsWindows = 1U << 6,     ///< any window
    kNeedsSeveral = 1U << 7,     ///< two windows or more
    kNeedsOperator = 1U << 8,    ///< an image, and an operator to apply to it
    kNeedsAgain = 1U << 9,       ///< an image, and an operator that was applied before
    kNeedsAtomic = 1U << 10,     ///< an image without layers
    kNeedsStack = 1U << 11,      ///< a master or a layer
    kNeedsClipboard = 1U << 12,  ///< a picture on the clipboard
    kNeedsPaste = 1U << 13,      ///< an image and a picture on the clipboard
    kNeedsCrop = 1U << 14,       ///< an image that was cropped from one that still stands
    kNeedsSameOrigin = 1U << 15, ///< an origin of the current image's size, not that image
    kNeedsTrace = 1U << 16       ///< the ray tracer's picture is there
};

/// Enables what carries a property "needs" with the word of a need. The last state is
/// kept, so that a widget is touched only when its own state changes.
class MenuStates
{
public:
    /// Finds the actions and widgets below `root`.
    void collect(QWidget *root);
    /// `satisfied`: the needs that are met now.
    void update(unsigned satisfied);

private:
    QList<QPair<QAction *, unsigned>> actions;
    QList<QPair<QWidget *, unsigned>> widgets;
    unsigned last = ~0U;
};
