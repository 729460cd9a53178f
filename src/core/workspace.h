// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/filerecord.h"
#include "core/image.h"
#include "core/layermodes.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <vector>

/// The state that the lower floors share, and the few things they ask of whoever runs
/// the program. MainWindow is a Workspace; kestrane-batch and the tests have their own.
/// The constructor sets the global pointer, so an image can be made right after it.
class Workspace
{
public:
    Workspace();
    virtual ~Workspace();
    Workspace(const Workspace &) = delete;
    Workspace &operator=(const Workspace &) = delete;

    // --- Images -----------------------------------------------------------------------
    /// Atomic images and masters that have a window; layers are reached by their masters.
    QList<image *> images;
    uint16_t imageSerial = 0; ///< last serial given to an image
    image *brushImage = nullptr;
    image *originImage = nullptr;
    FileRecord fileRecord; ///< used by the load dispatch when a caller passes none

    /// Gives an image the next serial and rebuilds its title.
    void giveSerial(image *img);
    /// Whether a pointer is a live image: not null and its mark matches. Only for
    /// pointers whose memory is known to stand; otherwise use ownsImage.
    static bool validImage(const image *img);
    /// Whether a pointer is in the image list, or a layer or master of one in it. Reads
    /// nothing through the pointer itself.
    bool ownsImage(const image *img) const;
    void assignBrush(image *img);
    void assignOrigin(image *img);
    /// Ends the assignments that point at this image, with their notifications.
    void forgetImage(const image *img);

    // --- Tables, in tracked memory ------------------------------------------------------
    uint8_t *colorCount = nullptr;   ///< set bits of each byte value
    uint32_t *cvt8to32 = nullptr;    ///< entry i is i x 0x01010101
    uint16_t *colorMapRed = nullptr; ///< look-up tables of the tone operators
    uint16_t *colorMapGreen = nullptr;
    uint16_t *colorMapBlue = nullptr;
    /// A set of colours, one bit each, which Sample gathers and Key to Colorspace takes; and
    /// the set as it was before the last Sample. Made when first needed.
    uint8_t *colorSpace = nullptr;
    uint8_t *colorSpaceBackup = nullptr;
    static constexpr size_t kColorSpaceBytes = 2097152;
    /// False if memory is short.
    bool ensureColorSpace();

    // --- Settings (see settings() for their keys and defaults) --------------------------
    int maxUndos = 10;
    int xDpi = 300, yDpi = 300;
    double scaleMemory = 1.0;
    QString mainAnnotation, mainAuthor, mainCopyright;
    int jpegImageQuality = 90;
    bool saveEXIF = true;
    bool imgClose = true; ///< ask before the last view of a changed image closes
    int zoomSteps = 1;    ///< steps of the zoom table per doubling
    bool checkerOn = true;
    int checkerDark = 118, checkerLight = 138;
    bool gridState = false, gridColorToggle = false;
    bool rememberPosition = true;
    bool showRulers = false;
    int rulerUnit = 0; ///< 0 samples, 1 inches, 2 centimetres, by the image's dots per inch
    int snapGridX = 16, snapGridY = 16;   ///< spacing of the snap grid in samples
    int snapOffsetX = 0, snapOffsetY = 0; ///< where its first lines stand
    bool snapGridShown = false;
    bool snapToGrid = false, snapToGuides = true;
    bool guidesShown = true;
    bool showNotations = true;
    bool png16 = false;            ///< PNG is read and written at 16 bits a channel
    bool rawDevelop = false;       ///< a camera RAW picture is developed after it was read
    bool systemFileDialog = false; ///< the desktop's file dialog instead of the program's own
    int recentLimit = 16;          ///< recent files kept, 1 to 33
    int recoveryMinutes = 5;       ///< between background saves of changed pictures; 0: none
    int toolIconSize = 24;         ///< side of the tool buttons' icons, in points
    int curveMode = 1;             ///< blend curve: 0 conical, 1 flat, 2 maximum axis, 3 sine
    double curveAmplitude = 1.0;
    double curveFloor = 0.0;
    int curveFactor = 0; ///< index in the factor list
    bool invertSelection = false;
    bool selectMode = false;
    bool thumbnail = true; ///< the preview shows the whole image
    bool opsX2Preview = false;
    bool splitView = false;         ///< "Before | after" in the current image window
    int splitPlace = 50;            ///< of its border, in per cent of the window's width
    int histogramChannel = 0;       ///< 0 all colours, 1 red, 2 green, 3 blue, 4 luma
    bool histogramLog = false;      ///< the histogram's height is logarithmic
    bool confirmClearScript = true; ///< "Clear Script" asks before it erases
    bool showBuiltScript = false;   ///< a line built from an operator shows the Script page
    bool favoritesShown = false;    ///< the panel of favourite operators
    int dropperSize = 5;            ///< side of the square that the eyedropper reads
    int mainOpIndex = 0;            ///< id of the current operator, 0 for none
    int foreRed = 0, foreGreen = 0, foreBlue = 0;             ///< 16-bit components
    int backRed = 65535, backGreen = 65535, backBlue = 65535; ///< 16-bit components
    int blendMode = 0;                ///< 0 to 10; not stored, 0 at each start
    int rgbaDepth = 64;               ///< answer of the batch tool to the depth question
    bool maskWithTargetAlpha = false; ///< the wand refuses fully transparent samples

    // Area tools: see area/areatools.h for the numbers of the tools
    int toolSelect = 0;
    bool openFigure = false;    ///< the closing segment of a figure is not drawn
    bool filledFigure = true;   ///< the inside of a figure is selected, not its line alone
    bool outlineObject = false; ///< each selection becomes its outline
    bool outline8w = false;     ///< diagonal neighbours count for the outline
    bool outlineExpand = true;  ///< the selection's edge is traced, not that of alpha
    bool edgeOnly = false;      ///< the traced edge replaces the selection
    int outlinethresh = 128;    ///< alpha below it lies outside of an object, 0 to 255
    int wandTolerance = 10;     ///< 0 to 100
    bool globalPick = false;    ///< the wand looks at the whole image
    bool rectaa = false, ellaa = true, polyaa = true, splineaa = true; ///< smoothing by tool
    bool pshapeaa = true, pencilaa = true, wandaa = false, textaa = true;
    int aarange = 1;                                   ///< radius of the smoothing
    double aaamount = 1.0;                             ///< share of the smoothed selection
    bool useCropGuides = false, useOvalGuides = false; ///< guides in every rectangle, ellipse
    int cropAspect = 0, cropGuide = 0; ///< of the Crop operator, entries of its lists
    int nrectX1 = 0, nrectY1 = 0, nrectX2 = 99, nrectY2 = 99; ///< numeric rectangle, inclusive
    int nrectWidth = 100, nrectHeight = 100;
    int stepXY = 10;             ///< of the buttons that shift the numeric rectangle
    int dashLength = 4;          ///< of the selection's outline; 2 to 20 are used
    bool marchingOutline = true; ///< the dashes of the current window's outline move
    QString aSelectColor = QStringLiteral("#000000 #ffffff"); ///< the outline's two colours
    bool lockPAspect = false;                                 ///< a P-Shape keeps its proportions
    int transX = -1, transY = -1; ///< where the blending dialog stood; -1: nowhere yet
    QString textFont;             ///< of the text generator, empty: the program's
    int textPoints = 72;
    bool textBold = false, textItalic = false;
    int textAlign = 0; ///< 0 left, 1 middle, 2 right

    /// Minima of red, green, blue, then maxima, then averages: written by Sample.
    int32_t sampleStatistics[9] = {};

    /// One setting that lives in a field of the workspace.
    struct Setting {
        const char *key;
        enum class Type { Bool, Int, Double, Text } type;
        void *field;
        double low, high; ///< inclusive range of a number; both 0: any
        bool stored;      ///< kept in the settings store between runs
        int step = 0;     ///< if not 0, values are low and whole steps above it
    };
    const std::vector<Setting> &settings() const { return settingTable; }
    /// Sets one setting from text. False with a reason for an unknown key or bad value.
    bool setSetting(const QString &key, const QString &value, QString *error);
    /// The value of one setting as text, null for an unknown key.
    QString settingText(const QString &key) const;

    // --- Notifications: harmless by default ----------------------------------------------
    /// All views of an image are to be rendered again.
    virtual void refreshViews(image *img);
    /// A line for the status bar.
    virtual void statusText(const QString &text);
    /// A message with a single button. The text may hold mark-up.
    virtual void messageBox(const QString &title, const QString &text);
    /// A question; returns the index of the button chosen. The going-on answer is the
    /// one that batch work gives by itself.
    virtual int question(const QString &title, const QString &text, const QStringList &buttons,
                         int goingOnAnswer, int defaultAnswer);
    /// The JPEG quality of this save, 1 to 100, preset with jpegImageQuality.
    /// Returns false if the person gave the save up.
    virtual bool askQuality(int *quality, bool forPng);
    /// A line of text, preset with *text. False if the person gave it up.
    virtual bool askText(const QString &title, const QString &prompt, QString *text);
    /// A whole number of low to high on a slider, preset with *value. False if given up.
    virtual bool askSlider(const QString &title, const QString &label, int low, int high,
                           int *value);
    /// Progress of long work, done out of total; an empty text or total 0 ends it.
    virtual void progress(const QString &text, int64_t done, int64_t total);
    /// Whether the person asked to stop the long work that is going on.
    virtual bool cancelRequested();
    virtual void brushCleared();
    virtual void originCleared();
    /// An image was read and asked to be shown: opens a view of it.
    virtual void showImage(image *img, const FileRecord &record);
    /// Closes all windows of an image without a question; the image stays.
    virtual void closeWindowsOf(image *img);
    /// The list of a master's layers, or a setting of one, changed: what shows it follows.
    virtual void layersChanged(image *master);
    /// The undo and redo lists of an image changed.
    virtual void undoStateChanged(image *img);
    /// The preview of the current operator is out of date.
    virtual void previewOutdated();
    /// Where an area selection is to be dropped because its image turned or changed size.
    virtual void clearAreaSelection(image *img);

private:
    std::vector<Setting> settingTable;
    void buildSettings();
    bool buildTables();
};

/// The one workspace, or null before it exists.
Workspace *workspace();

/// As `value` in the plain C locale, whatever the user's.
QString numberText(double value);
