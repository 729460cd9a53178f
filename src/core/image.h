// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/filerecord.h"
#include "core/notation.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>

constexpr uint32_t kImageMark = 0xFEDCBA69;
constexpr int kMaxImageSide = 32767;
constexpr double kWhite = 65535.0;

/// An inclusive rectangle of samples with its extents, as the bounds helpers return
/// it. With no match, left and top are the image's size and right and bottom are 0.
struct Bounds {
    int left, top, right, bottom, width, height;
};

struct Rgba {
    double red, green, blue, alpha;
};

/// The one pixel container: an atomic picture, the composed master of a stack, one of
/// its layers, an undo snapshot, a scratch copy or a warp field.
///
/// Samples are planar, 16 bits unsigned, 0 to 65535; sample (x, y) is element
/// y * width + x of each plane. Each plane has two spare zeroed rows at its end, which
/// reduce() reads. Inner loops index the planes directly. The planes are owned; layers,
/// snapshots and notations too; master, cropSource and target are borrowed.
class image
{
public:
    image();
    ~image();
    image(const image &) = delete;
    image &operator=(const image &) = delete;

    /// Makes the planes, zeroed, and fills a full (not lightweight) image with opaque
    /// grey 36863. Width and height are truncated to signed 16 bits first; false, with
    /// nothing kept, if one of them is not positive then or memory is short.
    /// An empty name becomes "New Image %1" with the serial.
    bool allocate(int newWidth, int newHeight, const QString &newName);

    /// As allocate, but the colour planes stay zero: for a caller that writes every sample,
    /// because filling fresh memory twice is what costs most in making an image.
    bool allocateUnfilled(int newWidth, int newHeight, const QString &newName);

    /// Ends the validity mark, clears a brush or origin assignment, frees the planes.
    void releasePlanes();
    /// Frees notations, redo list, undo list and planes, in this order.
    void release();

    // --- Planes ---------------------------------------------------------------------
    std::array<uint16_t *, 4> colorPlanes() const { return {red, green, blue, alpha}; }
    std::array<uint16_t *, 5> workPlanes() const { return {red, green, blue, alpha, gmask}; }
    int64_t sampleCount() const { return int64_t(width) * height; }
    bool valid() const { return validMark == kImageMark; }

    void fillGmask(uint16_t value);
    /// Red, green and blue 65535, alpha 0; marks the image as changed.
    void clearToTransparentWhite();
    /// Copies gmask to mask3 and sets maskBackupValid; nothing without a mask3.
    void saveMask();
    /// Copies mask3 back to gmask if maskBackupValid is set.
    void restoreMask();
    void invertMask();
    bool anyMaskSet() const;
    /// gmask at (x, y), 0 outside of the image.
    uint16_t maskAt(int x, int y) const;
    /// Copies the five work planes of an image of the same sample count.
    void copyWorkPlanes(const image &source);
    /// Sets all samples of red, green, blue and alpha.
    void fill(uint16_t r, uint16_t g, uint16_t b, uint16_t a);

    // --- Bounds ---------------------------------------------------------------------
    /// Rectangle of the samples whose alpha is at least threshold (0 to 255) x 257.
    Bounds alphaBoundsAbove(int threshold) const;
    /// Rectangle of the samples whose alpha is at most threshold (0 to 255) x 257.
    Bounds alphaBoundsBelow(int threshold) const;
    /// Rectangle of the selected samples; with centre pointers also its middle,
    /// left + width / 2 and top + height / 2.
    Bounds maskBounds(int *centerX = nullptr, int *centerY = nullptr) const;

    // --- Sampling and drawing -------------------------------------------------------
    /// Bilinear sample at (x, y), each channel limited to 0 to 65535. The edge repeats
    /// to the right and below; a place outside of the planes gives zeros.
    Rgba sampleAt(double x, double y) const;
    /// Error-accumulating line into one plane of this image, clipped point by point.
    void line(uint16_t *plane, int x1, int y1, int x2, int y2, uint16_t value) const;
    /// The same in white, 65535.
    void line(uint16_t *plane, int x1, int y1, int x2, int y2) const;
    /// Four-way fill of gmask from (x, y): every connected sample that is neither
    /// `boundary` nor `replacement` becomes `replacement`. False for a seed outside of
    /// the image, a full stack or no memory.
    bool m4fill(int x, int y, uint16_t boundary, uint16_t replacement);

    // --- Conversion -----------------------------------------------------------------
    /// ARGB32 picture of the high bytes.
    QImage toQImage() const;
    /// Distinct colours by the high bytes of red, green and blue; 0 if memory is short.
    int64_t colorCount24() const;
    /// The same by the full samples.
    int64_t colorCount48() const;

    // --- Scaling; see core/scale.h for the forms that take two images ----------------
    /// Quarter turn clockwise with an undo record; the redo list is cleared. False if
    /// memory is short.
    bool quarterTurn();

    // --- Standing among other images -------------------------------------------------
    /// xDpi / yDpi, 1.0 if either is zero.
    double dpiAspect() const;
    /// Place of a layer in its master from the top, counted from 1; -1 if there is none.
    int layerIndex() const;
    void removeLayer(image *layer);
    /// Unsaved changes: a layer asks its master; a master has some if a layer with
    /// exactly one view has changed, else by its own flag; false for an atomic image.
    bool layeredChanged() const;
    /// Unsaved changes of any kind of image: what the close and quit questions ask.
    bool hasUnsavedChanges() const;
    void copyMetadata(const image &source);
    void copyNotations(const image &source);
    /// Copies the notations, scaled from one size to another where they differ.
    void copyNotations(const image &source, int oldWidth, int oldHeight, int newWidth,
                       int newHeight);
    /// For a layer: its master is to be composed before the next paint.
    void markMasterForRebuild();
    /// "[serial]", "[M]" or "[Lindex/Mserial]", a blank and the name, into title.
    void rebuildTitle();
    /// Writes the moment of a change into modificationTime.
    void stampModification();

    /// Mean vertical activity, 0 to 1: the green plane alone, or all three.
    double verticalActivity(int threshold, bool allChannels) const;

    // --- Fields, in the order that the design gives them -----------------------------
    QStringList tagLines; ///< lines that travel with the image
    QByteArray tagBlock;  ///< an EXIF block that travels with the image
    uint32_t validMark = 0;
    bool discard = false; ///< being thrown away: its windows close without asking
    int32_t undoLevels;
    int32_t undoSerial = 0;
    int32_t redoSerial = 0;
    bool noUndo = false;
    FileRecord saveBag;
    QString fullPath; ///< the file it was read from
    QString folder;
    bool maskBackupValid = false;
    int32_t cropX = -1, cropY = -1;
    image *cropSource = nullptr;
    QList<image *> undoList; ///< oldest first
    QList<image *> redoList; ///< oldest first
    uint16_t kind = 0;       ///< 0 atomic, 1 master, 2 layer
    uint16_t serial = 0;
    bool changed = false;
    QString title = QStringLiteral("No Name");
    QList<image *> layers; ///< bottom first
    bool lightweight = false;
    image *master = nullptr;
    bool needsRebuild = false;
    bool parentDirty = false; ///< a layer whose master has to follow
    bool inUse = false;       ///< an operator is at work on it
    bool noPrompt = false;    ///< its windows close without a question
    bool groupFlag = false;
    int32_t groupId = -1;
    QList<Notation> notations;
    float scaleMemory;
    double latitude = 0, longitude = 0, altitude = 0;
    double shutter = 0, aperture = 0, focalLength = 0, iso = 0;
    QString annotation, author, copyright, software;
    QString creationTime, modificationTime;
    bool globalMask = false;
    bool visible = true;
    bool localStack = false;
    bool lockStep = false;
    int32_t xDpi, yDpi;
    int32_t xCenter = 0, yCenter = 0;
    double factor = 1.0;
    int32_t layerMode = 0;
    double opacity = 1.0;
    double rotation = 0;
    double rotationCos = 0, rotationSin = 0;
    double xFraction = 0, yFraction = 0;
    int32_t xOffset = 0, yOffset = 0;
    QString name;
    uint16_t *red = nullptr;
    uint16_t *green = nullptr;
    uint16_t *blue = nullptr;
    uint16_t *alpha = nullptr;
    uint16_t *gmask = nullptr; ///< the area selection: 0 none, 65535 full effect
    uint16_t *mask2 = nullptr;
    uint16_t *mask3 = nullptr;
    int32_t viewCount = 0;
    int32_t width = 0, height = 0;
    int32_t imageMode = 0; ///< 0 the planes hold RGB, 1 the YRB encoding
    bool quantised = false;
    QString paletteSource = QStringLiteral("Unset");
    image *target = nullptr;
    QList<int> guidesX, guidesY;   ///< places of the guides, in samples; not stored in files
    int32_t cameraOrientation = 0; ///< of a camera RAW as recorded, EXIF 1 to 8; 0: no RAW

private:
    bool allocatePlane(uint16_t **plane, const char *label, int64_t samples);
};

/// A free-standing image of a QImage's size and pixels, each byte x 257, named
/// "imgFromQImage()"; null if the size or memory does not allow it.
image *imgFromQImage(const QImage &source);

/// The master itself, or a layer's master; null for an atomic image or a null pointer.
image *masterOf(image *member);

/// Frees every layer, then the image itself, and nulls the caller's pointer.
void destroyTree(image **tree);

/// Throws a master (or a layer's master) away with all its layers: all are marked as
/// discarded and unchanged, then their windows are closed, or they are deleted at once.
void discardMasterAndLayers(image *member, bool closeWindows);

/// The first master in the workspace's list other than `except`, or null.
image *findAnotherMaster(const image *except);
/// How many images in the workspace's list are atomic.
int countAtomicImages();

/// "yyyyMMdd:hhmmss UTC" of the present moment.
QString timeStamp();
