// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QPoint>

#include <memory>

class image;
class imgWindow;
struct TextStyle;
namespace Ui
{
class TextGenerator;
}

/// Makes a text the selection of the current window's picture, or of the layer that a master
/// hands selections over to. Stays open, for one text after the other.
class TextGenerator : public QDialog
{
    Q_OBJECT
public:
    explicit TextGenerator(QWidget *parent = nullptr);
    ~TextGenerator() override;

private slots:
    void on_text_textChanged();
    void on_family_currentFontChanged(const QFont &font);
    void on_points_valueChanged(int samples);
    void on_leading_valueChanged(int percent);
    void on_bold_clicked(bool on);
    void on_italic_clicked(bool on);
    void on_smooth_clicked(bool on);
    void on_align_activated(int align);
    void on_atPlace_toggled(bool on);
    void on_select_clicked();
    void on_add_clicked();
    void on_subtract_clicked();

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    enum class Joining { Replace, Add, Subtract };

    void showSettings();
    TextStyle style() const;
    void showPreview();
    void showSize();
    QPixmap previewPicture(QSize size) const;
    /// Left top of a text of that size, in samples of the window's image.
    QPoint placeIn(const imgWindow &window, QSize size) const;
    /// Makes the text the selection of the current picture; or says why not.
    void make(Joining joining);
    QString selectIn(imgWindow *window, const image &glyphs, QPoint place, Joining joining);

    std::unique_ptr<Ui::TextGenerator> ui;
};
