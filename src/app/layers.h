// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/layerlist.h"
#include "layers/effects.h"
#include "text/textimage.h"

#include <QDialog>
#include <QTimer>

#include <memory>

class MainWindow;
class QSettings;
class image;
namespace Ui
{
class Layers;
}

/// The layers of one layered picture, and what can be done with them. A tool window of the
/// main window, there while it is open. It works on one master at a time and follows the
/// current image window to another.
///
/// Each control writes a field of the selected layer and marks the master for composing,
/// which happens at its next paint, however many changes came before that.
class Layers : public QDialog
{
    Q_OBJECT
public:
    explicit Layers(MainWindow *mainWindow);
    ~Layers() override;

    /// The master that the dialog works on; null if there is none, or it has gone.
    image *master() const;
    /// The layer that the controls work on, or null.
    image *selected() const;

    /// Makes an atomic image a master and works on it; false for anything else.
    bool makeMaster(image *img);
    /// Works on this master; false, with nothing changed, for anything but a master.
    bool setMaster(image *img);
    /// Puts an atomic image on top of a master's stack; false for other kinds.
    bool addLayer(image *master, image *layer);
    /// As addLayer, below the layer `target`.
    bool insertBefore(image *target, image *newlayer);
    /// Place of a layer in the stack, from the bottom from 0; -1 if it is not in it.
    int getLayerIndex(const image *lay) const;
    void selectLayer(image *lay);
    /// Shows the stack as it is now, with the same layer selected if it is still there.
    void setLayerList();
    /// Selects the mode of the layer in the combo box.
    void setLayerMode(const image *layer);
    /// Shows flags, opacity, factor and placement of the selected layer.
    void setWorkingLayerModes();
    /// Enables what makes sense for the selected layer.
    void enabledWidgets();
    /// Fills the combo box of modes, in the order that is chosen.
    void populateLayerModes();

    /// The person went to a window of this image: its stack is shown, its layer selected.
    void follow(image *img);
    /// A stack changed, or all of them if it is null.
    void stackChanged(const image *changedMaster);
    /// Samples changed: the small pictures follow a little later.
    void picturesChanged();
    /// Draws the small pictures that are out of date; the timer's work.
    void drawPictures();
    void settings(QSettings &store, bool save);
    /// Whether the dialog is being filled by program, so that its controls write nothing.
    bool isFilling() const { return filling; }

    /// Logs the name of every call; set from the start by KESTRANE_DEBUG_LAYERS.
    bool debugFlag = false;

public slots:
    void on_masterCombo_activated(int index);
    void on_addLayer_clicked();
    void on_layerList_currentRowChanged(int row);
    void on_higher_clicked();
    void on_lower_clicked();
    void on_detach_clicked();
    void on_layerMode_currentIndexChanged(int index);
    void on_byName_clicked();
    void on_visible_clicked();
    void on_localstack_clicked();
    void on_lockstep_clicked();
    void on_globalmask_clicked();
    void on_opacity_valueChanged(double percent);
    void on_factor_valueChanged(double percent);
    void on_opacitySlider_valueChanged(int tenths);
    void on_factorSlider_valueChanged(int percent);
    void on_xOffset_valueChanged(int value);
    void on_yOffset_valueChanged(int value);
    void on_xFraction_valueChanged(double value);
    void on_yFraction_valueChanged(double value);
    void on_xCenter_valueChanged(int value);
    void on_yCenter_valueChanged(int value);
    void on_rotation_valueChanged(double degrees);
    void on_createWarp_clicked();
    void on_resetWarp_clicked();
    void on_scaleWarp_clicked();
    void on_rotateWarp_clicked();
    void on_shadowEffect_clicked();
    void on_glowEffect_clicked();
    void on_embossEffect_clicked();
    void on_punchEffect_clicked();
    void on_renameLayer_clicked();
    void on_renameMaster_clicked();
    void on_saveAll_clicked();
    void on_rgbToCMY_clicked();
    void on_rgbToCMYK_clicked();
    void on_clone_clicked();
    void on_create_clicked();
    void on_destroy_clicked();
    void on_help_clicked();
    void on_rgbToHSV_clicked();
    void on_toChans_clicked();
    void on_gentext_clicked();
    void on_gifAnim_clicked();
    void on_hflip_clicked();
    void on_vflip_clicked();
    void on_assignTarget_clicked();
    void on_clearTarget_clicked();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void log(const char *call) const;
    image *layerAt(int row) const;
    int rowOf(const image *layer) const;

    // layers.cpp: showing
    void connectList();
    void fillMasters(const image *shownMaster);
    void fillRows(const image *shownMaster);
    void showTarget(const image *shownMaster);
    void enablePlacement(const image *layer);

    // layers_settings.cpp: fields of the selected layer
    void settingChanged(image *layer);
    template <class Value>
    void change(Value image::*field, Value value);
    void toggleVisible(int row);
    bool mayBecomeWarp(const image *layer);

    // layers_acts.cpp: the stack
    void moveTo(image *layer, int place);
    void flip(bool horizontally);
    void rename(image *img);
    void tellNoMemory();

    // layers_make.cpp: new layers out of old ones
    image *sourceLayer(bool normalOnly) const;
    void insertMade(image *beside, image *made, bool above);
    static void arrangeParts(const image &source, const QList<image *> &parts);
    void split(QList<image *> (*make)(const image &));
    void askRelief(const QString &title, const QString &explanation,
                   image *(*make)(const image &, const ReliefSettings &),
                   ReliefSettings *reliefSettings);

    std::unique_ptr<Ui::Layers> ui;
    MainWindow *main;
    image *shown = nullptr;   ///< only trusted through master()
    int shownSerial = 0;      ///< an address may come back with another image
    image *current = nullptr; ///< only trusted through selected()
    bool filling = false;
    QTimer drawing;

    // What was chosen last, for the next time.
    ShadowSettings shadow;
    GlowSettings glow;
    ReliefSettings emboss, punch;
    TextStyle textStyle;
};
