// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QList>

#include <functional>
#include <memory>

class image;
class imgWindow;
struct Notation;
namespace Ui
{
class Notations;
}

/// The notes of the current window's picture: a list, and the look of the chosen one. While
/// it is open, mouse and keys in image windows work on the notes.
class Notations : public QDialog
{
    Q_OBJECT
public:
    explicit Notations(QWidget *parent = nullptr);
    ~Notations() override;

    /// Shows the notes of another window, or none for null.
    void follow(imgWindow *window);
    /// The notes of an image changed, or another one was chosen; also after an undo.
    void notationsChanged(const image *img, int chosen);
    /// Puts the keyboard on the text of a note.
    void editNotation(imgWindow *window, int index);

private slots:
    void on_list_currentItemChanged();
    void on_list_itemActivated();
    void on_newNote_clicked();
    void on_editText_clicked();
    void on_deleteNote_clicked();
    void on_moveUp_clicked();
    void on_moveDown_clicked();
    void on_noteText_textChanged();
    void on_mode_activated(int mode);
    void on_opacity_valueChanged(int percent);
    void on_opacitySlider_valueChanged(int percent);
    void on_opacitySlider_sliderReleased();
    void on_pointing_clicked(bool on);
    void on_ownFont_clicked(bool on);
    void on_fontFamily_activated(int index);
    void on_showAll_clicked(bool on);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    image *picture() const;
    const Notation *chosenNote() const;
    int row() const;
    void fillList();
    void fillRow(int index, const Notation &note);
    void fillFields();
    void showChosen(int index);
    void change(const std::function<void(Notation *)> &set);
    void changeList(int chosen, const std::function<void(QList<Notation> *)> &set);
    void moveNote(int step);

    std::unique_ptr<Ui::Notations> ui;
    imgWindow *shown = nullptr; ///< only trusted through picture()
    bool filling = false;       ///< by program: the controls write nothing
};
