// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "ui_mainwindow.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"

#include <QResizeEvent>
#include <QStatusBar>

namespace
{
constexpr int kNamePixels = 130; ///< of an image's name in the small labels

QString shortName(const QLabel *label, const image *img)
{
    return label->fontMetrics().elidedText(img->name, Qt::ElideMiddle, kNamePixels).toHtmlEscaped();
}
} // namespace

/// The status line knows one weight only: a part of a message that is to stand out does not.
void MainWindow::statusText(const QString &text)
{
    status = text;
    status.remove(QLatin1String("<b>")).remove(QLatin1String("</b>"));
    ++messagesSaid;
    statusTicks = 1;
    showStatus();
}

/// A new message stands out in bold until the timer drops the mark. What does not fit
/// is in the tool tip.
void MainWindow::showStatus()
{
    QFont font = statusBar()->font();
    font.setBold(statusTicks > 0);
    statusBar()->setFont(font);
    const int room = statusBar()->width() - 16;
    statusBar()->showMessage(QFontMetrics(font).elidedText(status, Qt::ElideRight, room));
    statusBar()->setToolTip(status.toHtmlEscaped());
}

bool MainWindow::event(QEvent *event)
{
    // Walking through the menus sends empty tips, which would wipe the message away.
    if (event->type() == QEvent::StatusTip)
        return true;
    return QMainWindow::event(event);
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    showStatus();
}

void MainWindow::brushCleared()
{
    updateAssignmentLabels();
}

void MainWindow::originCleared()
{
    originWasSet = true;
    updateAssignmentLabels();
}

void MainWindow::updateAssignmentLabels()
{
    if (validImage(brushImage))
        ui->brushLabel->setText(
            QStringLiteral("B: %1 ").arg(shortName(ui->brushLabel, brushImage)));
    else
        ui->brushLabel->setText(QStringLiteral("B: (<i>unset</i>)"));
    if (validImage(originImage))
        ui->originLabel->setText(
            QStringLiteral("O: %1 ").arg(shortName(ui->originLabel, originImage)));
    else if (originWasSet)
        ui->originLabel->setText(QStringLiteral("O:<i>No origin</i>"));
}

void MainWindow::updateTitle()
{
    const imgWindow *window = validCurrent();
    const QString product = QStringLiteral("Kestrane");
    setWindowTitle(window ? window->img->title + QStringLiteral(" - ") + product : product);
}

void MainWindow::updateImageList()
{
    const imgWindow *window = validCurrent();
    const image *shown = window ? window->img : nullptr;
    if (shown && shown->master)
        shown = shown->master;
    ui->imageList->sync(images, shown);
}

void MainWindow::updateAreaLabel()
{
    areaStale = false;
    imgWindow *window = validCurrent();
    Bounds area = {0, 0, 0, 0, 0, 0};
    if (window) // of the image that selections made in it go to
        area = selectionTaker(window)->img->maskBounds();
    // With nothing selected the rectangle comes back turned inside out.
    const bool none = !window || area.right < area.left || area.bottom < area.top;
    if (none)
        area = {0, 0, 0, 0, 0, 0};
    ui->areaLabel->setText(QStringLiteral("A: %1 %2").arg(area.width).arg(area.height));
    ui->areaLabel->setToolTip(none ? QString()
                                   : QStringLiteral("%1 : %2\n%3 : %4\n%5 : %6")
                                         .arg(area.left)
                                         .arg(area.top)
                                         .arg(area.right)
                                         .arg(area.bottom)
                                         .arg(area.width)
                                         .arg(area.height));
}

void MainWindow::pointerOver(imgWindow *window, int x, int y)
{
    const bool inside = isWindow(window) && window->validImage() && x >= 0 && y >= 0 &&
                        x < window->img->width && y < window->img->height && window->img->red;
    if (!inside) {
        ui->positionLabel->clear();
        return;
    }
    const image *img = window->img;
    const int64_t at = int64_t(y) * img->width + x;
    ui->positionLabel->setText(QStringLiteral("%1 %2 [%3 %4 %5 %6]")
                                   .arg(x)
                                   .arg(y)
                                   .arg(img->red[at])
                                   .arg(img->green[at])
                                   .arg(img->blue[at])
                                   .arg(img->alpha[at]));
}

void MainWindow::showWells()
{
    ui->foreWell->setColor16(foreRed, foreGreen, foreBlue);
    ui->backWell->setColor16(backRed, backGreen, backBlue);
}
