// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/layers.h"
#include "app/newimage.h"
#include "app/notations.h"
#include "app/scriptdesk.h"
#include "app/setquality.h"
#include "operators/base/operatortable.h"
#include "operators/dialog/operators.h"
#include "ui_mainwindow.h"
#include "views/imgwindow.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QScreen>
#include <QSettings>

#include <algorithm>

namespace
{
constexpr int kCascadeStep = 28;
constexpr int kCascadeLength = 8;
constexpr int kWindowGap = 12;
const QString kLonePlaceKey = QStringLiteral("imageWindowPosition");
constexpr int kProgressSteps = 1000;
constexpr int kProgressDelayMs = 700;

/// The widget that a box belongs to, so that it opens above what the user looks at.
QWidget *boxParent(MainWindow *window, const QWidget *notThis)
{
    QWidget *parent = QApplication::activeModalWidget();
    if (!parent || parent == notThis)
        parent = QApplication::activeWindow();
    return !parent || parent == notThis ? window : parent;
}

/// What the window manager puts around a window.
QMargins marginsOf(const QWidget &window)
{
    const QRect outer = window.frameGeometry();
    const QRect inner = window.geometry();
    return {inner.left() - outer.left(), inner.top() - outer.top(), outer.right() - inner.right(),
            outer.bottom() - inner.bottom()};
}

const image *rootOf(const image *img)
{
    return img->master ? img->master : img;
}
} // namespace

void MainWindow::refreshViews(image *img)
{
    if (!img)
        return;
    const image *root = rootOf(img);
    for (imgWindow *window : qAsConst(windows)) {
        if (!window->validImage() || rootOf(window->img) != root)
            continue;
        // A layer shows in its master, but a change of the master leaves the layers alone:
        // with many windows open that is what makes a setting follow the mouse.
        if (window->img == img || window->img == root)
            window->refresh();
        window->setWindowTitle(window->img->title);
    }
    if (layersDialog && layersDialog->master() == root)
        layersDialog->picturesChanged();
    ui->imageList->markStale(root);
    areaStale = true;
    updateTitle();
    updateAssignmentLabels();
}

void MainWindow::messageBox(const QString &title, const QString &text)
{
    ++messagesSaid;
    QMessageBox box(boxParent(this, progressDialog));
    box.setWindowTitle(title.isEmpty() ? QStringLiteral("Kestrane") : title);
    box.setTextFormat(Qt::RichText);
    box.setText(text);
    box.setIcon(QMessageBox::Information);
    box.addButton(QMessageBox::Ok);
    box.exec();
}

int MainWindow::question(const QString &title, const QString &text, const QStringList &buttons,
                         int goingOnAnswer, int defaultAnswer)
{
    QMessageBox box(boxParent(this, progressDialog));
    box.setWindowTitle(title.isEmpty() ? QStringLiteral("Kestrane") : title);
    box.setTextFormat(Qt::RichText);
    box.setText(text);
    box.setIcon(QMessageBox::Question);
    QList<QPushButton *> added;
    for (const QString &button : buttons)
        added << box.addButton(button, QMessageBox::ActionRole);
    if (added.isEmpty())
        return goingOnAnswer;
    const int last = added.size() - 1;
    // Escape must never be the answer that goes on, if there is any other.
    int escape = defaultAnswer;
    if (escape == goingOnAnswer || escape < 0 || escape > last)
        escape = goingOnAnswer == last ? 0 : last;
    box.setDefaultButton(added.value(defaultAnswer, added.constFirst()));
    box.setEscapeButton(added.at(escape));
    box.exec();
    const int answer = added.indexOf(static_cast<QPushButton *>(box.clickedButton()));
    return answer < 0 ? escape : answer;
}

bool MainWindow::askQuality(int *quality, bool forPng)
{
    if (!quality)
        return false;
    return SetQuality::ask(boxParent(this, progressDialog), quality, forPng);
}

void MainWindow::progress(const QString &text, int64_t done, int64_t total)
{
    if (scripts && scripts->takeProgress(text, done, total))
        return;
    if (text.isEmpty() || total <= 0) {
        delete progressDialog;
        cancelled = false;
        return;
    }
    if (!progressDialog) {
        progressDialog = new QProgressDialog(text, tr("Cancel"), 0, kProgressSteps, this);
        progressDialog->setObjectName(QStringLiteral("loadBar"));
        progressDialog->setWindowModality(Qt::ApplicationModal);
        progressDialog->setMinimumDuration(kProgressDelayMs);
        progressDialog->setAutoClose(false);
        progressDialog->setAutoReset(false);
        cancelled = false;
    }
    progressDialog->setLabelText(text);
    const double part = double(done) / double(total);
    progressDialog->setValue(int(std::clamp(part, 0.0, 1.0) * kProgressSteps));
    if (progressDialog)
        cancelled = cancelled || progressDialog->wasCanceled();
}

bool MainWindow::cancelRequested()
{
    return cancelled || (scripts && scripts->stopWanted());
}

void MainWindow::showImage(image *img, const FileRecord &record)
{
    if (!validImage(img))
        return;
    giveSerial(img);
    if (!images.contains(img))
        images.append(img);
    if (img->kind == 1 && !img->layers.isEmpty()) {
        showStack(img, record);
    } else {
        addWindow(img, record, true);
        img->viewCount = 1;
    }
    if (layersDialog)
        layersDialog->stackChanged(nullptr);
}

void MainWindow::openView(image *img)
{
    if (!ownsImage(img) || !validImage(img))
        return;
    const imgWindow *first = findWindow(img);
    addWindow(img, first ? first->bag : FileRecord(), true);
    ++img->viewCount;
}

imgWindow *MainWindow::addWindow(image *img, const FileRecord &record, bool current)
{
    auto *window = new imgWindow(img);
    if (!windows.contains(window))
        windows.append(window);
    window->bag = record;
    window->setWindowTitle(img->title);
    window->setWindowIcon(windowIcon());
    window->fit(true);
    placeWindow(window);
    if (!current) {
        window->setAttribute(Qt::WA_ShowWithoutActivating);
        window->show();
        window->setAttribute(Qt::WA_ShowWithoutActivating, false);
        return window;
    }
    window->show();
    window->raise();
    window->activateWindow();
    // A picture may need the whole desktop: the controls stay within reach above it.
    if (isVisible() && !isMinimized()) {
        raise();
        operators->raise();
        if (layersDialog)
            layersDialog->raise();
    }
    makeCurrent(window);
    updateMenus();
    return window;
}

/// Beside the main window and the operator dialog, each a step below the one before; a
/// window that is alone goes where the last one that was alone stood.
void MainWindow::placeWindow(imgWindow *window)
{
    const QRect desk = QGuiApplication::primaryScreen()->availableGeometry();
    QPoint wanted(desk.left(), desk.top() + kWindowGap);
    if (!isMinimized())
        wanted.rx() = std::max(wanted.x(), frameGeometry().right());
    if (operators && operators->isVisible())
        wanted.rx() = std::max(wanted.x(), operators->frameGeometry().right());
    const int shift = placed++ % kCascadeLength * kCascadeStep;
    wanted += QPoint(kWindowGap + shift, shift);
    const QVariant remembered = store->value(kLonePlaceKey);
    if (rememberPosition && windows.size() == 1 && remembered.type() == QVariant::Point)
        wanted = remembered.toPoint();
    const QMargins frame = frameMargins.isNull() ? marginsOf(*this) : frameMargins;
    const QSize size = window->size().grownBy(frame);
    const int mostX = std::max(desk.left(), desk.right() - size.width());
    const int mostY = std::max(desk.top(), desk.bottom() - size.height());
    window->move(std::clamp(wanted.x(), desk.left(), mostX),
                 std::clamp(wanted.y(), desk.top(), mostY));
}

void MainWindow::rememberPlace(imgWindow *window)
{
    if (window)
        store->setValue(kLonePlaceKey, window->pos());
}

void MainWindow::closeWindowsOf(image *img)
{
    const QList<imgWindow *> open = windowsOf(img);
    for (imgWindow *window : open) {
        // The window may be the one whose event is being handled: it goes later.
        windows.removeAll(window);
        window->img = nullptr;
        window->hide();
        window->deleteLater();
        windowClosed(window);
    }
    if (validImage(img))
        img->viewCount = 0;
}

void MainWindow::windowClosed(imgWindow *window)
{
    windows.removeAll(window);
    if (notationsDialog)
        notationsDialog->follow(validCurrent());
    if (currentWindow == window) {
        currentWindow = nullptr;
        makeCurrent(windows.isEmpty() ? nullptr : windows.constLast());
    }
    updateMenus();
}

void MainWindow::makeCurrent(imgWindow *window)
{
    if (window && !isWindow(window))
        return;
    const bool other = currentWindow != window;
    currentWindow = window;
    if (layersDialog && window && window->isActiveWindow())
        layersDialog->raise(); // above the picture that it is to be seen with
    if (!other && window)
        return;
    areaStale = true;
    if (layersDialog && window && window->validImage())
        layersDialog->follow(window->img);
    if (notationsDialog)
        notationsDialog->follow(window);
    updateTitle();
    updateMenus();
    refreshOperatorSource();
}

void MainWindow::undoStateChanged(image *img)
{
    if (notationsDialog) // undo and redo bring notes back
        notationsDialog->notationsChanged(img, -1);
    updateEnabledStates();
}

void MainWindow::previewOutdated()
{
    // A run would be asked for another one, of the preview, at each of its statements.
    if (operators && !table->inPreview && !(scripts && scripts->isRunning()))
        operators->timetopreview(); // the split view with it
}

void MainWindow::refreshOperatorSource()
{
    previewOutdated();
}

void MainWindow::clearAreaSelection(image *img)
{
    if (validImage(img) && img->gmask) {
        img->fillGmask(0);
        img->maskBackupValid = false;
    }
    refreshViews(img);
}

OperatorTable *MainWindow::operatorTable()
{
    return table.get();
}

void MainWindow::commandRunning(bool running, QPointF)
{
    if (running)
        return;
    areaStale = true;
    updateEnabledStates();
}

void MainWindow::recordFrameMargins(imgWindow *window)
{
    if (!window)
        return;
    frameMargins = marginsOf(*window);
}

void MainWindow::showNewImageDialog()
{
    NewImage dialog(boxParent(this, progressDialog));
    dialog.exec();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    openUrls(event->mimeData()->urls());
    event->acceptProposedAction();
}
