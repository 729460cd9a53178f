// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QSpinBox>

#include <memory>

namespace Ui
{
class pShapeController;
}

/// A field for an angle that holds tenths of a degree and shows degrees.
class TenthsBox : public QSpinBox
{
    Q_OBJECT
public:
    explicit TenthsBox(QWidget *parent = nullptr);

protected:
    QString textFromValue(int value) const override;
    int valueFromText(const QString &text) const override;
    QValidator::State validate(QString &text, int &position) const override;

private:
    /// Of the text without the suffix; false if it is no number.
    bool degreesOf(const QString &text, double *degrees) const;
};

/// The current P-Shape as it is turned, in its own proportions.
class ShapePreview : public QWidget
{
    Q_OBJECT
public:
    explicit ShapePreview(QWidget *parent = nullptr);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// Turns the current P-Shape. Not modal, goes when it is closed.
class pShapeController : public QDialog
{
    Q_OBJECT
public:
    explicit pShapeController(QWidget *parent);
    ~pShapeController() override;

public slots:
    /// The shape was turned elsewhere, or another one took its place.
    void shapeChanged();

private slots:
    void on_dial_valueChanged(int value);
    void on_digits_valueChanged(int value);
    void on_r000_clicked();
    void on_r045_clicked();
    void on_r090_clicked();
    void on_r135_clicked();
    void on_r180_clicked();
    void on_r225_clicked();
    void on_r270_clicked();
    void on_r315_clicked();
    void on_lockAspect_clicked(bool on);

private:
    void turnTo(double degrees);
    /// Dial and digits, without turning anything.
    void showDegrees(double degrees);

    std::unique_ptr<Ui::pShapeController> ui;
};
