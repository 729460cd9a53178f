// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/filerecord.h"
#include "core/memory.h"
#include "views/areagesture.h"
#include "views/areaoverlay.h"
#include "views/dropper.h"
#include "views/notationeditor.h"
#include "views/rulers.h"
#include "views/selectionoutline.h"
#include "views/splitview.h"
#include "views/workerthread.h"

#include <QDialog>
#include <QImage>
#include <QList>
#include <QPoint>
#include <QPointF>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

class QKeyEvent;
class QMouseEvent;
class QPainter;
class image;

constexpr uint32_t kWindowMark = 0xBDEEEAFD;
constexpr int kZoomEntries = 510;
constexpr int kZoomsFilled = 502;
constexpr int kLastFitIndex = 500; ///< the fit looks no further in the table
constexpr int kLeastFitWidth = 80;
constexpr int kCommandLast = 155;

/// Commands that the design leaves free and this program uses.
enum WindowCommandNumber {
    kCommandCentre = 1,
    kCommandZoomOne = 2,
    kCommandHome = 3,
    kCommandUp10 = 4,
    kCommandUp = 5,
    kCommandDown10 = 6,
    kCommandDown = 7,
    kCommandLeft10 = 8,
    kCommandLeft = 9,
    kCommandRight10 = 10,
    kCommandRight = 11,
    kCommandGridColor = 12,
    kCommandGrid = 13,
    kCommandUndo = 14,
    kCommandShowAtOne = 15,
    kCommandZoomIn = 16,
    kCommandZoomOut = 17,
    kCommandFitView = 18,
    kCommandSelectEntire = 19,
    kCommandSelectNone = 20,
    kCommandInvertMask = 21,
    kCommandAntialias = 22,
    kCommandCopy = 23,
    kCommandCut = 24,
    kCommandPaste = 25,
    kCommandPasteAsNew = 26,
    kCommandPasteAsLayer = 27,
    kCommandRulers = 28,
    kCommandSnapGrid = 29,
    kCommandSnapToGrid = 30,
    kCommandClone = 31,
    kCommandCloneScaled = 32,
    kCommandGuides = 33,
    kCommandSnapToGuides = 34,
    kCommandClearGuides = 35,
    kCommandNotationsShown = 36,
    kCommandRedo = 37,
    kCommandNotations = 38,
    kCommandChecker = 39,
    kCommandFullScreen = 40,
    kCommandRestoreCrop = 41,
    kCommandSameView = 42,
    kCommandInformation = 43,
    kCommandMakeLayered = 44,
    kCommandRename = 45,
    kCommandClose = 46,
    kCommandAnotherView = 47,
    kCommandSave = 48,
    kCommandSaveAs = 49,
    kCommandApply = 50,
    kCommandQuarterTurn = 51,
    kCommandFitWindow = 52,
    kCommandQuarterTurnLeft = 53,
    kCommandHalfTurn = 54,
    kCommandFlipHorizontal = 55,
    kCommandFlipVertical = 56,
    kCommandTurnUpright = 57,
    kCommandDevelop = 58,
    kCommandSaveFlat = 59,
    kCommandExportAnimation = 60,
    kCommandLoadNext = 61,
    kCommandNextImage = 62,
    kCommandPreviousImage = 63,
    kCommandAssignBrush = 64,
    kCommandAssignOrigin = 65,
    kCommandApplyAgain = 66,
    kCommandPageUp = 67,
    kCommandPageDown = 68,
    kCommandPageLeft = 69,
    kCommandPageRight = 70,
    kCommandPreferences = 71,
    kCommandKeys = 72,
    kCommandLayers = 73,
    kCommandOperators = 74,
    kCommandCloseAll = 75,
    kCommandQuit = 76,
    kCommandPresetIn = 77,
    kCommandPresetOut = 78,
    kCommandScriptEditor = 79,
    kCommandRatioFirst = 80, ///< 10:1; the next ones follow down to 1:4
    kCommandRatioLast = 92,
    kCommandToolRectangle = 93, ///< the area tools; their buttons do the same
    kCommandToolNumericRectangle = 94,
    kCommandToolEllipse = 95,
    kCommandToolEntire = 96,
    kCommandToolMagnify = 97,
    kCommandToolPolygon = 98,
    kCommandToolPencil = 99,
    kCommandToolRedo = 100,
    kCommandToolWand = 101,
    kCommandToolPolyspline = 102,
    kCommandToolPShape = 103,
    kCommandToolText = 104,
    kCommandBlending = 105,
    kCommandInvertSelections = 106,
    kCommandOpenFigure = 107,
    kCommandFilledFigure = 108,
    kCommandOutlineObject = 109,
    kCommandEyepoint = 110,
    kCommandSelectMode = 111,
    kCommandMagnifyOnce = 112,
    kCommandRevert = 113,
    kCommandRunScript = 114,
    kCommandLoadDialog = 115,
    kCommandNewDialog = 116,
    kCommandRecentFirst = 117,
    kCommandRecentLast = 149,
    kCommandGroupUndo = 150,
    kCommandMaskJob = 151,
    kCommandFillScreen = 152,
    kCommandGroupRedo = 153,
    kCommandScriptDebug = 154,
    kCommandFrameMargins = 155
};

/// One view onto one image: zoom, pan, the picture, mouse and keys. A free-standing
/// window; several may show the same image, sharing its planes.
class imgWindow : public QDialog
{
    Q_OBJECT
public:
    explicit imgWindow(image *shown);
    ~imgWindow() override;

    bool valid() const { return validMark == kWindowMark; }
    /// The window and its image are both live. The image has to be in the workspace's
    /// list, or a part of one that is, before its mark is read.
    bool validImage() const;

    QPoint imageToWindow(QPointF position) const;
    /// A distance in window pixels, in image samples.
    QPointF scaleToImage(double x, double y) const;
    /// A window position as an image position.
    QPointF windowToImage(double x, double y) const;
    /// The same, rounded to whole samples.
    QPoint windowToSample(double x, double y) const;

    /// An image position drawn to the guides within 6 client pixels, else to the snap grid,
    /// as the settings have it; as it is while Alt is held.
    QPointF snapped(QPointF imagePosition, Qt::KeyboardModifiers modifiers) const;
    /// The part of the client, in device pixels, onto which zoom 1 stretches the image: the
    /// whole of it, unless the window's size is not its own to choose (full screen,
    /// maximised, tiled): then the middle part that has the image's aspect. At fractional
    /// device pixel ratios it may reach past the client by one pixel, so that a window shown
    /// at 1:1 has exactly one image pixel for each device pixel.
    QRect deviceArea() const;

    /// Sizes the window to image size x scale and repaints. The scale counts device pixels:
    /// at 1.0 each image pixel has one, on a screen of high density too.
    void showAt(double scale);
    /// Recomputes the fit, renders anew, repaints.
    void repaintAll();
    /// The image changed: renders anew and repaints, keeping size, zoom and pan unless the
    /// image has got another aspect.
    void refresh();
    /// The selection or the grid changed: repaints without rendering the image again.
    void refreshOverlay();
    /// The operator's effect right of the split view's border is out of date, if there is one.
    void splitOutdated();
    /// Runs a window command, 1 to 155.
    void command(int number);
    /// Fills the zoom table from the setting zoomSteps and stands at scale 1.
    void buildZooms();
    /// Shapes the mask and applies the current operator to the window's image.
    void applyHere();
    void prepareAndApply(image *target);
    /// Sizes the client area to the image's aspect. With `open` the largest preset zoom
    /// that fits the desktop is taken first.
    void fit(bool open);
    /// width / (height x (xDpi / yDpi)) of the image.
    double shownAspect() const;
    /// Sets the zoom to a table entry so that the image stays where it is under `anchor`,
    /// a client position. Nothing if that entry would show too little or too much.
    void zoomTo(int index, QPointF anchor);
    /// Image samples for each device pixel of the client, and their number.
    ViewGeometry geometryShown() const;
    /// How often the whole picture was rendered into the cache, and how often only the
    /// strips that a pan brought into sight.
    int renderCount() const { return renders; }
    int scrollCount() const { return scrolls; }
    const Rulers &rulersShown() const { return rulers; }
    const SelectionOutline &outlineShown() const { return outline; }
    const OutlineMarch &outlineMarch() const { return march; }
    const AreaFigure &figureShown() const { return figure; }

    /// Starts a job beside the main thread. A preview job lets previewProducer work on a
    /// copy, which then takes the image's place with an undo record; a mask job lets
    /// maskProducer make a selection, which is combined with the back copy as addToMask and
    /// subtractFromMask say and becomes the image's. A job without a producer reports at
    /// once. False if it is refused: no image, no memory, or a mask job is going on.
    bool startWorker(WorkerThread::Mode mode);
    /// Waits for the window's jobs; their results are taken over, or dropped.
    void finishJobs(bool keepResults);
    /// The same, with a selection that is being made by jobs completed.
    void settleJobs();
    /// A job works on a copy of the image, which takes its place later.
    bool previewJobRunning() const;

    /// The mask jobs from here on make one selection: they share an undo record, which comes
    /// with the first result, and the copy of the mask as it stands.
    void beginMaskDrag();
    /// Puts the mask back that stood before, and takes the undo record away.
    void cancelMaskDrag();
    /// False if memory is short.
    bool saveBackMask();
    const uint16_t *backCopy() const { return backMask ? backMask->get() : nullptr; }
    /// Makes what the last mask job found, before it was joined, the selection; false if there
    /// is nothing.
    bool takeJobMask();

    /// Zooms so that a box of image samples fills the window.
    void zoomToBox(const QRectF &box);
    /// The table entry that one step further out shows.
    int indexFurtherOut() const;
    /// The operator preview shows the surroundings of a client position.
    void choosePreview(QPointF position);
    /// The space bar, a dragged view, a guide or the notes have a cursor of their own.
    bool cursorTaken() const;
    /// The client without the rulers, in points.
    QRect pictureRect() const;
    ViewBackdrop backdropShown() const;

    image *img = nullptr;
    float *zooms = nullptr; ///< tracked, kZoomEntries entries
    QList<int> presetZooms; ///< indices of the whole powers of two
    int unityIndex = 100;
    bool waitingPaint = false;
    bool paintOverlayOnly = false;
    bool rebuildCache = true;
    int panX = 0, panY = 0;
    int savedPanX = 0, savedPanY = 0;
    int previewX = 0, previewY = 0; ///< origin of the operator preview's crop
    float zoom = 1.0F;
    int zoomIndex = 100;
    int lastKey = 0;
    bool control = false, shift = false, alt = false, meta = false;
    uint32_t validMark = 0;
    QImage cache;
    QKeyEvent *event_ = nullptr; ///< only while it is handled
    FileRecord bag;
    bool gridShown = false;
    NotationEditor notes{this};
    AreaGesture gesture{this};
    Dropper dropper{this};
    SplitView split{this};

    // Gestures of the area tools
    bool wandBusy = false;  ///< a mask job is going on
    bool wandClick = false; ///< a press of the wand that was not dragged yet
    bool addToMask = false, subtractFromMask = false;
    bool backSaved = false;      ///< this drag has saved the mask in the back copy
    bool actRecorded = false;    ///< this drag has made its undo record
    bool skipCommitOnce = false; ///< the next finished gesture selects nothing
    /// Set by the active tool; they run beside the main thread and may only read the image
    /// that they are given, and write the copy or the mask of as many samples.
    std::function<bool(image *copy)> previewProducer;
    std::function<bool(const image &img, uint16_t *mask)> maskProducer;
    std::function<void()> maskJobEnded; ///< called when a mask job has reported

public slots:
    void ona10to1triggered();
    void ona9to1triggered();
    void ona8to1triggered();
    void ona7to1triggered();
    void ona6to1triggered();
    void ona5to1triggered();
    void ona4to1triggered();
    void ona3to1triggered();
    void ona2to1triggered();
    void ona1to1triggered();
    void ona1to2triggered();
    void ona1to3triggered();
    void ona1to4triggered();
    void ongridchangetriggered();
    /// A preview job is over: its window is rendered anew.
    void inTheBalls();
    void maskReady();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

public:
    /// Escape and the like close by the same questions as the frame's button.
    void reject() override;

private:
    QPointF clientCentre() const { return {width() / 2.0, height() / 2.0}; }
    /// Samples per client pixel; false, with a debug line that starts with `caller`,
    /// if there are none.
    bool steps(const char *caller, double *xStep, double *yStep) const;
    void placeAt(QPointF position, QPointF client);

    // Size
    int widthThatFits(double aspect) const;
    QRect desktop() const;
    QSize frameSize() const;
    /// In device pixels.
    void setClient(int wantedWidth, double wantedHeight);
    void settleAspect();
    QSizeF settledSize() const;
    bool sizeIsGiven() const;
    void stateChanged();
    void describe();

    // Commands
    void runCommand(int number);
    bool panCommand(int number);
    bool viewCommand(int number);
    bool actCommand(int number);
    bool areaCommand(int number);
    bool overlayCommand(int number);
    void clearGuides();
    void pan(int dx, int dy);
    void page(int dx, int dy);
    void fitView();
    void zoomToPreset(bool closer);
    void copyViewToOthers();
    void toggleFullScreen();
    void viewMoved();
    /// Only the pan changed: what is known of the picture is moved.
    void viewPanned();
    void fillScreen();

    // Paint
    void composeIfDue();
    void renderCache();
    bool renderImage(const ViewGeometry &view, const ViewBackdrop &backdrop);
    bool scroll(const ViewGeometry &view, const ViewBackdrop &backdrop);
    void drawOverlay(QPainter *painter);
    void drawGrid(QPainter *painter) const;
    void drawSnapGrid(QPainter *painter) const;
    void drawRulers(QPainter *painter);
    void drawGuides(QPainter *painter) const;
    void drawGuide(QPainter *painter, Qt::Orientation way, int place) const;
    void drawSelection(QPainter *painter);
    /// The window is the one that the person works in, and an outline is seen.
    bool outlineMoves() const;
    void moveOutline();
    bool rulersOn() const;

    // Guides
    struct Guide {
        Qt::Orientation way; ///< Qt::Vertical: a line from top to bottom
        int place;           ///< in samples
    };
    QList<int> &guideList(Qt::Orientation way) const;
    std::optional<Guide> guideAt(QPointF client) const;
    bool pressRuler(QPointF client);
    bool grabGuide(QPointF client);
    void dragGuide(QPointF client, Qt::KeyboardModifiers modifiers);
    void dropGuide(QPointF client);
    void cancelGuide();
    void updateGuide(const Guide &guide);
    void guidesChanged();
    void markPointer(QPointF client);
    void showGuideCursor(QPointF client);

    // Jobs
    void endJob(WorkerThread *worker, bool keepResult);
    using MaskBuffer = TrackedBuffer<uint16_t>;
    void takeMask(const MaskBuffer &mask, bool joins, bool add);
    void takePreview(const image &copy);

    // Mouse
    bool dragsView(const QMouseEvent *event) const;
    QPointF positionOf(const QMouseEvent &event) const;
    void dragView(QPointF position);
    void reportPointer(QPointF position);
    void hover(const QMouseEvent &event);
    void endViewDrag();

    // Close
    bool lastView() const;
    bool mayClose();
    void closeInCloseAll();
    void leaveList();
    void closeLastView();

    bool painting = false;
    bool fitting = false;
    bool outlineStale = true;
    SelectionOutline outline; ///< as `cache` shows the image
    int outlinePhase = 0;     ///< in device pixels
    OutlineMarch march{this, [this] { return outlineMoves(); }, [this] { moveOutline(); }};
    AreaFigure figure;
    int renders = 0, scrolls = 0;
    ViewGeometry cached;      ///< what the cache shows
    bool onlyPanned = false;  ///< since then
    QSize asked;              ///< client size that the last fit asked for
    QSize askedPixels;        ///< the same in device pixels, before rounding to points
    QSize overruled;          ///< client size that the last settling replaced
    bool askedAgain = false;  ///< for the same size, after it was set over
    bool sizeRefused = false; ///< the window manager insists on another size
    double fittedAspect = 0;
    QTimer settle; ///< runs out when the person has stopped resizing
    bool spaceHeld = false;
    bool draggingView = false;
    Qt::MouseButton dragButton = Qt::NoButton;
    QPointF dragFrom;  ///< image position under the mouse when the drag began
    int wheelRest = 0; ///< parts of a wheel notch not used yet

    Rulers rulers;
    QPoint pointerMark{-1, -1}; ///< of the rulers, in device pixels
    std::optional<Guide> draggedGuide;
    std::optional<int> grabbedFrom; ///< place of the dragged guide before the drag
    bool guideCursor = false;

    QList<WorkerThread *> workers;
    std::unique_ptr<MaskBuffer> backMask;
    std::shared_ptr<MaskBuffer> jobMask; ///< of the last mask job
    QSize backSize;
};
