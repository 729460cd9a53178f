// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/gif.h"

#include <QDialog>
#include <QFutureWatcher>
#include <QImage>
#include <QList>
#include <QTimer>

#include <atomic>
#include <memory>
#include <vector>

class image;
namespace Ui
{
class AnimationExport;
}

/// Asks how the layers of a master become the frames of a GIF, and plays them as they will
/// look. The frames are reduced one after another in the background; the master and its
/// layers must stay while the dialog is open.
class AnimationExport : public QDialog
{
    Q_OBJECT
public:
    /// `animation` gives the first values and takes what was chosen when the person goes on.
    AnimationExport(image *stack, GifAnimation *animation, QWidget *parent = nullptr);
    ~AnimationExport() override;

    /// How many frames are ready to be seen.
    int framesReady() const;

public slots:
    void done(int code) override;

private slots:
    void on_frames_currentCellChanged(int row);
    void on_frames_cellChanged(int row, int column);
    void on_delay_valueChanged(double seconds);
    void on_repeats_valueChanged(int repeats);
    void on_colors_valueChanged(int colors);
    void on_dither_toggled(bool on);
    void on_reversed_toggled(bool on);
    void on_play_clicked();
    void on_frameSlider_valueChanged(int frame);

private:
    int count() const { return layers.size(); }
    /// The number, from the bottom of the stack, of what plays in this place.
    int numberOf(int place) const { return chosen.reversed ? count() - 1 - place : place; }
    bool playing() const { return player.isActive(); }
    void fillTable();
    void startOver();
    void makeNext();
    void frameMade();
    void showFrame(int place);
    void showSummary();
    void setPlaying(bool on);
    void playOn();

    std::unique_ptr<Ui::AnimationExport> ui;
    image *master;
    GifAnimation *result;
    GifAnimation chosen;
    QList<int> layers;                ///< places of the frames' layers, from the bottom
    std::vector<GifPreview> previews; ///< the same, in the size shown; null: not made yet
    std::unique_ptr<image> source;    ///< the frame that is being reduced
    int making = -1;                  ///< its number
    bool outdated = false;            ///< it is reduced in a way that no longer holds
    std::atomic<bool> stop{false};
    QFutureWatcher<GifPreview> watcher;
    QTimer settle, player;
    int current = 0; ///< place of the frame shown
    bool filling = false;
};
