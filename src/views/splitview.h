// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "area/blendcurve.h"
#include "views/viewrender.h"

#include <QImage>
#include <QPointF>
#include <QRect>
#include <QString>

#include <array>
#include <cstdint>
#include <memory>

class OpWrapper;
class QKeyEvent;
class QMouseEvent;
class QPainter;
class image;
class imgWindow;

/// "Before | after" in the current image window: left of a border the picture as it is, right
/// of it as Apply would leave it.
///
/// The operator runs on a picture of the samples that the view shows, each once, under the
/// selection as Apply would shape it. So the cost follows the client area, and operators that
/// work sample by sample show exactly what Apply makes. Others see only what is in sight:
/// statistics are those of the visible part, and neighbours of a reduced view lie further
/// apart. Operators that go by the place in the picture show their effect only while the
/// whole picture is in sight; those that change no samples, or the picture's size, never do.
/// Apply changes no samples of a layered picture as a whole, so its layers alone are split.
class SplitView
{
public:
    explicit SplitView(imgWindow *shownIn);
    ~SplitView();
    SplitView(const SplitView &) = delete;
    SplitView &operator=(const SplitView &) = delete;

    /// Draws what lies right of the border, then the border. The painter works in device
    /// pixels, and the picture as it is stands there already. Runs the operator if anything
    /// changed since the last time.
    void draw(QPainter *painter, const QRect &due);
    /// Samples or selection changed.
    void pictureOutdated();
    /// The operator or its parameters changed.
    void effectOutdated() { stale = true; }
    /// The setting asks for it in this window.
    bool wanted() const;
    /// It was drawn last time.
    bool drawn() const { return !after.isNull(); }
    /// Why the current operator's effect cannot be drawn, for the status bar; empty if it can.
    QString hindrance() const;
    /// The first column of device pixels that shows the effect.
    int column() const;
    /// How often the operator ran.
    int runCount() const { return runs; }

    /// These return true if they took the event.
    bool press(const QMouseEvent &event);
    bool move(const QMouseEvent &event);
    bool release(const QMouseEvent &event);
    bool doubleClick(const QMouseEvent &event);
    bool keyPress(const QKeyEvent &event);
    /// The cursor of the border, while the mouse is near it.
    void showCursor(QPointF client);
    bool cursorHeld() const { return dragging || cursorShown; }

private:
    /// What the curve of the selection follows from, but for the selection.
    struct Curve {
        int mode = 0, factor = 0;
        double amplitude = 0, floor = 0;
        bool operator==(const Curve &) const = default;
    };
    /// What the effect follows from, but for parameters and samples.
    struct Look {
        ViewGeometry view;
        ViewBackdrop backdrop;
        const image *img = nullptr, *brush = nullptr; ///< compared only
        int id = 0, blendMode = 0;
        bool inverted = false;
        std::array<int, 6> colours{};
        Curve curve;
        bool operator==(const Look &) const = default;
        /// Samples and selection that the operator finds are the same.
        bool sameSource(const Look &other) const
        {
            return view == other.view && img == other.img && inverted == other.inverted &&
                   curve == other.curve;
        }
    };

    OpWrapper *op() const;
    Look lookNow() const;
    bool busy() const;
    void refresh();
    bool makeEffect(const Look &look);
    bool gather(const Look &look);
    bool ensurePicture(std::unique_ptr<image> *held) const;
    void shapeMask(const Look &look);
    bool run() const;
    void drawBorder(QPainter *painter) const;
    bool near(QPointF client) const;
    double place() const;
    void putAt(double percent);

    imgWindow *window;
    std::unique_ptr<image> seen; ///< the samples shown under the shaped selection: a slider's
                                 ///< next step only has to copy them
    Look seenLook;
    std::unique_ptr<image> part;    ///< the copy, as the operator left it
    ShownSamples shown;             ///< which samples they are
    std::unique_ptr<dmask> factors; ///< of the whole selection; null: it stays as it is
    Curve factorsCurve;             ///< for which they were made
    bool factorsStale = true;
    QImage after; ///< the whole client; null if nothing can be shown
    Look shownLook;
    bool stale = true;
    int runs = 0;

    bool dragging = false, cursorShown = false;
    double grabbedAt = 0; ///< the mouse from the border, in client pixels
    double placeBefore = 0;
    double exactPlace = -1; ///< in per cent, while its whole part is that of the setting
};
