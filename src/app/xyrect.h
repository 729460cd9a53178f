// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPixmap>

#include <memory>

class QSpinBox;
class image;
namespace Ui
{
class XYRect;
}

/// A label that tells how the mouse is dragged from it.
class DragHandle : public QLabel
{
    Q_OBJECT
public:
    explicit DragHandle(QWidget *parent = nullptr);

signals:
    void pressed();
    void moved(QPoint place); ///< on the screen, with the button down
    void released();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
};

/// The whole image, small, with a rectangle drawn where it lies, as far as it is near.
class RectPicture : public QWidget
{
    Q_OBJECT
public:
    explicit RectPicture(QWidget *parent = nullptr);

    void setImage(const image *newImage) { img = newImage; }
    /// In samples; nothing is drawn for a size that is not positive.
    void setRectangle(const QRect &samples);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void makePicture(int side);

    const image *img = nullptr;
    QRect rectangle;
    QPixmap picture; ///< made when it is first drawn, and anew for another size
    int pictureSide = 0;
};

/// Asks for the numeric rectangle of an image. exec() is Accepted when it is to be selected;
/// the settings nrectX1 and so on then hold it. All coordinates are inclusive.
class XYRect : public QDialog
{
    Q_OBJECT
public:
    XYRect(image *img, QWidget *parent);
    ~XYRect() override;

    void accept() override;

private slots:
    void on_sx1_valueChanged(int value);
    void on_sy1_valueChanged(int value);
    void on_sx2_valueChanged(int value);
    void on_sy2_valueChanged(int value);
    void on_scx_valueChanged(int value);
    void on_scy_valueChanged(int value);
    void on_sw_valueChanged(int value);
    void on_sh_valueChanged(int value);
    void on_stepXY_valueChanged(int value);
    void on_flushLeft_clicked();
    void on_flushRight_clicked();
    void on_flushTop_clicked();
    void on_flushBottom_clicked();
    void on_center_clicked();
    void on_shiftUp_clicked();
    void on_shiftDown_clicked();
    void on_shiftLeft_clicked();
    void on_shiftRight_clicked();
    void on_capture_clicked();
    void on_drag_pressed();
    void on_drag_moved(QPoint place);
    void on_drag_released();

private:
    /// One direction of the rectangle, with the fields that show it.
    struct Axis {
        int start = 0, length = 1; ///< a length below 1 is kept until it is accepted
        int imageSize = 1;
        QSpinBox *firstField, *lastField, *centreField, *lengthField;
        int last() const { return start + length - 1; }
    };
    void initialise(Axis *axis, int first, int last);
    void shiftTo(Axis *axis, int start);
    void setLength(Axis *axis, int length);
    void centreAxis(Axis *axis);
    void showAxis(const Axis &axis);
    void showRectangle();

    std::unique_ptr<Ui::XYRect> ui;
    Axis across, down;
    QPoint dragPlace;
    bool dragging = false, dragPlaceKnown = false;
};
