// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPointF>
#include <QRect>
#include <QString>
#include <QUrl>

class MacroRecorder;
class OperatorTable;
class QKeyEvent;
class QWidget;
class image;
class imgWindow;

/// What image windows and the operator dialog ask of the main window. MainWindow is one;
/// tests have a small one of their own.
class ViewHost
{
public:
    ViewHost();
    virtual ~ViewHost();

    QList<imgWindow *> windows;         ///< all open views
    imgWindow *currentWindow = nullptr; ///< only trusted after validCurrent()
    bool shuttingDown = false;
    bool closingAll = false;
    bool pendingDiscard = false; ///< a master is to be destroyed by the timer
    image *pendingDiscardImage = nullptr;
    bool editingNotations = false; ///< mouse and keys in image windows work on the notes

    int toolBefore = -1;          ///< tool that returns after Magnify was taken once, or -1
    bool eyepointPending = false; ///< the next press says what the operator preview shows
    bool dropperArmed = false;    ///< the next press in a picture reads samples; see armDropper

    /// The current window if it is in the list and both validity marks match, else null.
    imgWindow *validCurrent() const;
    /// A window on this image, or null.
    imgWindow *findWindow(const image *img) const;
    QList<imgWindow *> windowsOf(const image *img) const;
    bool isWindow(const imgWindow *window) const
    {
        return windows.contains(const_cast<imgWindow *>(window));
    }

    /// Lets the next left press in a picture read a square of samples, or calls that off. All
    /// windows show it by their cursors.
    void armDropper(bool armed);
    /// What the split views show right of their borders is out of date: a parameter, the
    /// operator, the way it is mixed in or the current window changed, or the split view was
    /// switched on or off. Cheap: the operator runs at the next paint, and once for all calls.
    void splitOutdated();

    /// The operators, or null while there are none.
    virtual OperatorTable *operatorTable();
    /// Writes what is done by hand as a script, or null where nothing does.
    virtual MacroRecorder *recorder();
    virtual void makeCurrent(imgWindow *window);
    /// A window command starts or is over; `centre` is the client centre in image samples.
    virtual void commandRunning(bool running, QPointF centre);
    virtual void showLoadDialog();
    virtual void showNewImageDialog();
    /// Saves to the file that the image came from or went to last, if it has one that can
    /// be written; otherwise as showSaveDialog does.
    virtual void saveImage(imgWindow *window);
    virtual void showSaveDialog(imgWindow *window, bool flat);
    virtual void openRecentFile(int position);
    /// A command that the main window carries out: dialogs, next image, quit and the like.
    /// True if it was one.
    virtual bool hostCommand(imgWindow *window, int number);
    virtual void openUrls(const QList<QUrl> &urls);
    /// Asks for a file to open or to save that the filter ("Curves (*.json)") describes; empty
    /// if the person gave up.
    virtual QString askFile(QWidget *parent, const QString &title, const QString &filter,
                            bool save);
    /// Enabled states of menus and buttons may have changed.
    virtual void updateMenus();
    /// Source image and preview of the operator dialog are out of date.
    virtual void refreshOperatorSource();
    /// Applies the current operator to the current window: the Apply button's work.
    virtual void operate();
    /// Switches antialiasing of the active area tool over, and says in a line for the status
    /// bar how it stands now, or that the tool has no such switch.
    virtual QString toggleToolAntialias();
    /// Makes this the active area tool, and shows it so.
    virtual void chooseTool(int tool);
    /// Asks for the numeric rectangle, which the settings then hold; false if it was refused.
    virtual bool askNumericRectangle(imgWindow *window);
    /// The current P-Shape was turned, or another one took its place.
    virtual void shapeChanged();
    /// A key that no window command is bound to; true if it was taken.
    virtual bool globalKey(QKeyEvent *event);
    /// The mouse stands over this sample of the image (outside: x is -1).
    virtual void pointerOver(imgWindow *window, int x, int y);
    /// The eyedropper reads these samples of an image, which all lie in it: at the press, and
    /// at each move to another sample until the button is up.
    virtual void dropperPicked(image *img, const QRect &samples);
    /// The eyedropper is no longer armed: it has read, or it was given up.
    virtual void dropperEnded(bool hasRead);
    virtual void openView(image *img);
    /// The notes of an image changed, or another one was chosen in a window (-1: none).
    virtual void notationsChanged(image *img, int chosen);
    /// The person asked for the text and the look of a note, by a double click or a key.
    virtual void editNotation(imgWindow *window, int index);
    /// The window is going: it is out of the list already.
    virtual void windowClosed(imgWindow *window);
    /// Margins that the window manager puts around a window.
    virtual void recordFrameMargins(imgWindow *window);
    /// The only window is going in a close of everything: its place is worth keeping.
    virtual void rememberPlace(imgWindow *window);
    /// Everything is being closed: dialogs that show a part of an image close too.
    virtual void closeHelpers();
};

/// The one host, or null before it exists.
ViewHost *viewHost();
