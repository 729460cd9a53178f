// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QPointF>

#include <optional>

class QKeyEvent;
class QMouseEvent;
class image;
class imgWindow;

/// The sample that a position lies in, limited to what an int holds.
QPoint sampleUnder(QPointF position);

/// Turns the mouse in an image window into figures of the active area tool. The handlers
/// return true if they took the event; `position` is in image samples, snapped.
///
/// The state is open for the overlay, which draws it. Places are in image samples, so that a
/// figure stays where it is while the view moves. The points of a polygon, a pencil stroke or
/// a spline are those of the shared list, which outlives a change of tool or window.
class AreaGesture
{
public:
    explicit AreaGesture(imgWindow *shownIn) : window(shownIn) {}

    bool press(const QMouseEvent &event, QPointF position);
    bool move(const QMouseEvent &event, QPointF position);
    bool release(const QMouseEvent &event, QPointF position);
    bool keyPress(const QKeyEvent &event);
    /// Control went down or up, which shows at once in a band.
    void keysHeld(Qt::KeyboardModifiers keys);
    /// Gives up what is going on; the selection stays as it is.
    void cancel();
    /// The cursor that the active tool has over the picture.
    void showCursor();

    /// Where the band ends on the picture: bandEnd as `constrain` or the aspect of the Crop
    /// operator moves it. Of an ellipse, whose middle is bandStart, the corner of the quarter.
    QPointF shownEnd() const;
    /// A polygon or spline of the active tool is waiting for its next point.
    bool figureOpen() const;
    /// Runs the wand again where it was clicked last, with the tolerance as it is now; false
    /// if there is no such place in this window's image.
    bool rerunWand();
    /// The wand's mask into the image of `taker`, which the figure is handed to at an offset.
    bool produceWand(imgWindow *taker, QPoint offset);
    /// The sample of this window's image that the wand was clicked on last.
    QPoint wandSample() const { return wandPlace; }
    /// A mask job of the wand is over: starts the next one if the tolerance has moved on.
    void wandJobEnded();
    /// Completes a selection that mask jobs are making.
    void settle();
    /// The window is going: what its gesture made so far stays.
    void letGo();

    bool rubberBand = false;    ///< a band, or the line to a figure's next point, is drawn
    QPointF bandStart, bandEnd; ///< of the band
    bool moveBand = false;      ///< the right button moves the band
    QPointF grab;               ///< where it was grabbed
    bool constrain = false;     ///< square or circle
    bool wandDown = false;
    int wandStartY = 0; ///< in window pixels
    int wandStartTolerance = 0;
    int vertexIndex = -1; ///< the vertex being worked on
    bool vertexMove = false, vertexDelete = false, vertexInsert = false;
    QPointF pointer; ///< where the mouse is

private:
    /// What a mask job of the wand was started with.
    struct WandRun {
        int tolerance;
        bool add, subtract;
        bool operator==(const WandRun &) const = default;
    };

    // The mouse
    void pressLeft(const QMouseEvent &event);
    void dragLeft(const QMouseEvent &event);
    void followBand(const QMouseEvent &event);
    void releaseLeft(const QMouseEvent &event);
    void releaseRight(const QMouseEvent &event);
    void endPress();
    void redraw() const;
    void joinBy(Qt::KeyboardModifiers keys) const;
    void askRectangle(Qt::KeyboardModifiers keys) const;
    void zoomByBand(QPointF client) const;
    void giveToolBack() const;
    int bandTool() const;
    double bandAspect() const; ///< longer side by shorter side, 0 for any

    // The shared list and the P-Shape
    bool chooseVertex(Qt::KeyboardModifiers keys);
    void finishVertex();
    void append() const;
    void showLineToNext();
    void finishFigure(Qt::KeyboardModifiers keys);
    void finishPencil(Qt::KeyboardModifiers keys);
    void placeShape() const;
    void turnShape(Qt::KeyboardModifiers keys) const;

    // The wand
    void pressWand(const QMouseEvent &event);
    void dragWand(const QMouseEvent &event);
    void runWandJob();
    void endWandDrag();
    void stopWand();

    imgWindow *window;
    int tool = -1; ///< that the left button went down with last
    bool leftDown = false;
    QPoint vertexFrom; ///< where the vertex stood that is being moved

    QPoint wandPlace;                 ///< sample of this window's image that was clicked last
    const image *wandImage = nullptr; ///< compared only
    bool wandDragged = false;         ///< mask jobs make the selection; endWandDrag completes it
    std::optional<WandRun> wandStarted;
};
