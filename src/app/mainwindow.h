// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/filebag.h"
#include "app/menustates.h"
#include "app/recentlist.h"
#include "area/areastate.h"
#include "core/workspace.h"
#include "formats/gif.h"
#include "operators/pipeline/colorblending.h"
#include "views/viewhost.h"

#include <QMainWindow>
#include <QMargins>
#include <QPointer>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <vector>

class DownloadManager;
class Layers;
class Notations;
class MacroRecorder;
class OpFavorites;
class Operators;
struct PreferencesExtras;
class Recovery;
class ScriptDesk;
class QActionGroup;
class QProgressDialog;
class QSettings;
class QToolButton;
namespace Ui
{
class MainWindow;
}

/// The control centre, one instance: owns the lists of images and windows, the operator
/// dialog, the blend state, settings and tables. What the user does ends in one of its
/// slots or in a key event sent to the current image window.
class MainWindow : public QMainWindow, public Workspace, public ViewHost
{
    Q_OBJECT
public:
    using QMainWindow::isWindow;
    using ViewHost::isWindow;

    MainWindow();
    ~MainWindow() override;

    /// Loads a file through the load dispatch and opens a window on it; null if that
    /// failed, which the dispatch has told.
    image *loadFile(const QString &path);
    /// Opens these files one after another, from the timer.
    void openLater(const QStringList &paths);
    /// Runs the lines of a start-up sequence; a missing file is no error.
    void runStartupSequence(const QString &fileName);
    /// Whether the run before this one ended in order.
    bool lastRunEndedInOrder() const { return appWasOkay; }
    Operators *operatorDialog() const { return operators; }
    /// The script language as the person sees it.
    ScriptDesk *scriptDesk() const { return scripts.get(); }
    /// The Script operator has another text: the preview follows when the typing pauses.
    void scriptTextChanged();
    /// What a key does beside the window commands, empty if nothing. The key is in the plain
    /// form of the key table.
    QString useOfKey(int key) const;
    /// The same for the key of a saved script: a window command is a use, a saved script none.
    QString useOfScriptKey(int key) const;
    /// The layer dialog while it is open.
    Layers *layersDialog = nullptr;
    /// Depth of work that must not be re-entered: see BusyGuard.
    int &busyDepth() { return busy; }
    /// Where a ray tracer was told to leave its picture; empty if none was started.
    QString traceResultFile;
    /// Brings a window of this image forward, or opens one.
    void showPart(image *img);
    /// Asks how the layers of a master become an animation, and writes it.
    void exportAnimation(image *master, QWidget *parent);
    /// Where an animation of this name is to be written; empty if the person gave it up.
    QString askAnimationFile(const QString &name);
    /// The name of a picture as that of a file, without extension.
    static QString fileNameFor(const QString &name);

    // --- Workspace ------------------------------------------------------------------
    void refreshViews(image *img) override;
    void statusText(const QString &text) override;
    void messageBox(const QString &title, const QString &text) override;
    int question(const QString &title, const QString &text, const QStringList &buttons,
                 int goingOnAnswer, int defaultAnswer) override;
    bool askQuality(int *quality, bool forPng) override;
    bool askText(const QString &title, const QString &prompt, QString *text) override;
    bool askSlider(const QString &title, const QString &label, int low, int high,
                   int *value) override;
    void progress(const QString &text, int64_t done, int64_t total) override;
    bool cancelRequested() override;
    void brushCleared() override;
    void originCleared() override;
    void showImage(image *img, const FileRecord &record) override;
    void closeWindowsOf(image *img) override;
    void layersChanged(image *master) override;
    void undoStateChanged(image *img) override;
    void previewOutdated() override;
    void clearAreaSelection(image *img) override;

    // --- ViewHost -------------------------------------------------------------------
    OperatorTable *operatorTable() override;
    void makeCurrent(imgWindow *window) override;
    void commandRunning(bool running, QPointF centre) override;
    void showLoadDialog() override;
    void showNewImageDialog() override;
    void saveImage(imgWindow *window) override;
    void showSaveDialog(imgWindow *window, bool flat) override;
    void openUrls(const QList<QUrl> &urls) override;
    QString askFile(QWidget *parent, const QString &title, const QString &filter,
                    bool save) override;
    void updateMenus() override;
    void refreshOperatorSource() override;
    void operate() override;
    QString toggleToolAntialias() override;
    void chooseTool(int tool) override;
    bool askNumericRectangle(imgWindow *window) override;
    void shapeChanged() override;
    bool globalKey(QKeyEvent *event) override;
    bool hostCommand(imgWindow *window, int number) override;
    void openRecentFile(int position) override;
    void notationsChanged(image *img, int chosen) override;
    void editNotation(imgWindow *window, int index) override;
    void pointerOver(imgWindow *window, int x, int y) override;
    void dropperPicked(image *img, const QRect &samples) override;
    void dropperEnded(bool hasRead) override;
    MacroRecorder *recorder() override;
    void openView(image *img) override;
    void windowClosed(imgWindow *window) override;
    void recordFrameMargins(imgWindow *window) override;
    void rememberPlace(imgWindow *window) override;
    void closeHelpers() override;

    // --- Area tools: what their buttons, menu entries and keys do, by command ------------
    void on_rectangle_clicked();
    void on_xyrect_clicked();
    void on_ellipse_clicked();
    void on_entire_clicked();
    void on_magglass_clicked();
    void on_polygon_clicked();
    void on_pencil_clicked();
    void on_redo_clicked();
    void on_wand_clicked();
    void on_polyspline_clicked();
    void on_pshape_clicked();
    void on_textTool_clicked();
    void on_toolButton_clicked();
    void on_malpha_clicked(bool on);
    void toggleInvertSelections();
    void toggleOpenFigure();
    void toggleFilledFigure();
    void toggleOutlineObject();
    void toggleSelectMode();

public slots:
    void OnTimer();
    void OnTimerTwo();

    void on_actionNew_Image_triggered();
    void on_actionLoad_Image_2_triggered();
    void on_actionLoad_Next_Image_triggered();
    void on_actionSave_Image_triggered();
    void on_actionSave_Image_Atomic_triggered();
    void on_actionPaste_as_New_Image_triggered();
    void on_actionExport_Animation_triggered();
    void on_actionRetrieve_Ray_Trace_triggered();
    void on_actionClose_All_triggered();
    void on_actionQuit_triggered();
    void on_actionUndo_triggered();
    void on_actionRedo_triggered();
    void on_actionChecker_triggered(bool on);
    void on_actionAssign_as_Brush_triggered();
    void on_actionAssign_as_Origin_triggered();
    void on_actionClear_Brush_triggered();
    void on_actionClear_Origin_triggered();
    void on_actionNext_Image_triggered();
    void on_actionPrevious_Image_triggered();
    void on_actionApply_Again_triggered();
    void on_actionShow_Operators_triggered();
    void on_actionOperator_Favorites_triggered(bool on);
    void on_actionSplit_View_triggered(bool on);
    void on_actionRecord_Macro_toggled(bool recording);
    void on_actionRestore_from_Origin_triggered();
    void on_actionInformation_triggered();
    void on_actionNotations_triggered();
    void on_actionPreferences_triggered();
    void on_actionKeys_triggered();
    void on_actionAssigned_Paths_triggered();
    void on_actionSet_Undo_Levels_triggered();
    void on_actionClear_Undos_and_Redos_triggered();
    void on_actionMemory_Report_2_triggered();
    void on_actionSet_Zoom_Sep_Size_triggered();
    void on_actionRemember_Position_triggered(bool on);
    void on_actionAsk_on_Close_triggered(bool on);
    void on_actionScript_Editor_triggered();
    void on_actionRun_Script_triggered();
    void on_actionStop_Script_triggered();
    void on_actionScript_Debug_triggered();
    void on_actionScript_Reference_triggered();
    void on_actionHelp_Area_Tools_triggered();
    void on_actionHelp_Blending_triggered();
    void on_actionAbout_triggered();
    void on_actionSave_Flattened_triggered();
    void on_actionNew_Layer_triggered();
    void on_actionAdd_Layers_triggered();
    void on_actionClone_Layer_triggered();
    void on_actionLayers_triggered();
    void on_actionMatte_triggered();
    void on_actionAdd_triggered();
    void on_actionAdd_Grey_triggered();
    void on_actionSubtract_Grey_triggered();
    void on_actionSubtract_triggered();
    void on_actionMultiply_triggered();
    void on_actionDivide_triggered();
    void on_actionDissolve_triggered();
    void on_actionSoft_Dissolve_triggered();
    void on_actionForeground_Color_triggered();
    void on_actionBackground_Color_triggered();
    void on_actionAntialias_triggered();
    void on_actionGlobal_Pick_triggered(bool on);
    void on_actionMarching_Outline_triggered(bool on);
    void on_actionSelection_Color_triggered();
    void on_actionDash_Length_triggered();
    void on_actionWand_Tolerance_triggered();
    void on_actionGuide_Settings_triggered();
    void on_actionOutline_Settings_triggered();
    void on_actionAntialias_Settings_triggered();
    void on_actionBlend_triggered();
    void on_actionP_Shape_Controller_triggered();
    void on_actionConvert_to_P_Shape_triggered();
    void on_actionSave_P_Shape_triggered();
    void on_actionLoad_P_Shape_triggered();
    void on_actionDelete_Selection_triggered();
    void on_actionSelect_Alpha_triggered();
    void on_actionSelect_Luma_triggered();
    void on_actionGrow_Selection_triggered();
    void on_actionShrink_Selection_triggered();
    void on_actionFeather_Selection_triggered();
    void on_actionSave_Selection_triggered();
    void on_actionLoad_Selection_triggered();
    void on_operate_clicked();
    void on_imageList_imagePicked(image *img);
    /// An entry of the list of open images.
    void onimageMenuItem();
    /// A click on one of the two colour wells.
    void wellClick();

protected:
    bool event(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // mainwindow.cpp: life from construction to quit
    void allocateTables();
    void nameFileBags();
    std::vector<FileBag *> fileBags();
    void loadSettings();
    void saveSettings();
    void createOperators();
    void markRunInProgress();
    void startVersionCheck();
    bool mayQuit();
    void restorePosition();
    void placeOperators();

    bool isWorkedOn(const image *img);

    // mainwindow_operators.cpp: what the operators need around their dialog
    void connectOperators();
    void digitAction(int entry);

    // mainwindow_menus.cpp: menus, labels and the way of a command
    void buildMenus();
    void connectCommands();
    void buildOperatorMenu();
    void showKeysInMenus();
    void collectToggles();
    void fillRecentMenu();
    bool isOwn(const QAction *action) const;

    // mainwindow_record.cpp: what is done by hand becomes a macro
    void createRecorder();

    // mainwindow_script.cpp: the script language
    void createScripts();
    void connectScripts();

    // mainwindow_tools.cpp: the tool buttons
    void collectTools();
    void showToolMenu(int tool, QPoint where);
    void applyToolIcons();

    // mainwindow_area.cpp: the area tools and their settings
    void collectAreaTools();
    void syncAreaTools();
    void takeTool(int tool);
    void showShapeMenu();
    void showWandMenu();
    void flip(bool *flag, const QString &on, const QString &off);

    // mainwindow_select.cpp: acts on the whole selection, shapes
    image *selectedImage() const;
    void changeSelectionBy(const char *word, const QString &title, const QString &explanation,
                           int *samples, int most, bool (*act)(image *, int));

    void sendKey(int key, Qt::KeyboardModifiers modifiers);
    void sendCommand(int number);
    void setBlendMode(int mode);
    void markBlendMenu();
    unsigned satisfiedNeeds() const;
    void updateEnabledStates();
    void syncToggles();
    void fillImageMenu();
    void activate(imgWindow *window);
    void stepWindow(int by);
    void repaintAllWindows();

    // mainwindow_timer.cpp: the numbered duties of the timer
    void openPending();
    void dropTransients();
    void tellRefusedDrop();
    void lookForTrace();
    void offerRecovery();
    void repaintAndDiscard();
    void discardPending();

    // mainwindow_files.cpp
    QString nextFileOfFolder(const QString &path) const;
    bool saveTo(FileRecord record, image *img, bool flat);
    void saveByDialog(imgWindow *window, bool flat, const QString &onlyFilter);
    void noteRecent(const FileRecord &record);

    // mainwindow_settings.cpp: preferences, keys and what follows from a change of them
    void loadKeys();
    void applySettings(const QStringList &keys);
    void exportSettingsTo(const QString &path);
    bool importSettingsFrom(const QString &path);
    PreferencesExtras preferencesExtras() const;
    QString otherUseOfKey(int key) const;

    // mainwindow_layers.cpp
    image *operated(image *img);
    void showLayers();
    void showStack(image *master, const FileRecord &record);
    void leaveMaster(const image *master);

    // mainwindow_host.cpp and mainwindow_status.cpp
    /// With `current` the window comes to the front and is the one that commands go to.
    imgWindow *addWindow(image *img, const FileRecord &record, bool current);
    void placeWindow(imgWindow *window);
    void updateImageList();
    void updateTitle();
    void updateAssignmentLabels();
    void updateAreaLabel();
    void showStatus();
    void showWells();

    std::unique_ptr<Ui::MainWindow> ui;
    std::unique_ptr<QSettings> store;
    std::unique_ptr<OperatorTable> table;
    std::unique_ptr<ScriptDesk> scripts; ///< of the table's operators
    QTimer scriptPreview;
    std::unique_ptr<colorblending> blendState;
    Operators *operators = nullptr;   ///< a child, deleted before the table it shows
    OpFavorites *favorites = nullptr; ///< likewise
    std::unique_ptr<MacroRecorder> macroRecorder;
    DownloadManager *downloadManager = nullptr;
    QPointer<QProgressDialog> progressDialog;
    QActionGroup *blendGroup = nullptr;
    QActionGroup *operatorGroup = nullptr;
    QActionGroup *areaGroup = nullptr;

    QTimer timerOne, timerTwo;
    uint64_t tick = 0;
    int phase = 0;        ///< 0 to 49, advanced by OnTimer
    int statusTicks = 0;  ///< age of the status message while it is marked as new
    int messagesSaid = 0; ///< status texts and boxes so far
    int repaintTicks = 0; ///< runs on until the repaint duty was done
    int busy = 0;         ///< depth of work that must not be re-entered
    bool cancelled = false;
    bool areaStale = true;

    void *inotePolyList = nullptr;

    FileBag scriptPresetsFileBag, imageFileBag, kbdConfigFileBag, animFileBag, scriptFileBag,
        saveFileBag, paletteFileBag, scriptColorsFileBag, convolutionsFileBag, jsonFileBag,
        gerberFileBag, padsFileBag, jsonPalFileBag, jsonPShapeFileBag, curvesFileBag, rangeFileBag,
        customIconsFileBag, settingsFileBag, maskFileBag;
    RecentList recentFiles{QStringLiteral("recentFiles")};
    GifAnimation animation; ///< as it was last exported in this run
    Recovery *recovery = nullptr;
    QPointer<Notations> notationsDialog;
    AreaState areaTools;
    QPointer<QDialog> transSetter, guideSettings, outlineMode, antialiasSettings, shapeController,
        textGenerator;
    int growth = 5, feather = 5; ///< samples, as last given
    int maskDepth = 1;           ///< of a saved selection: 0 is 8 bits, 1 is 16
    bool recoveryOffered = false;
    MenuStates menuStates;
    QList<QPair<QAction *, const bool *>> toggles;
    QList<QToolButton *> toolButtons;
    QList<QIcon> toolIcons;  ///< as the form has them, in the order of the buttons
    QStringList customIcons; ///< files of the person's own icons, empty: the form's
    bool clipboardFull = false;
    bool traceReady = false;
    QStringList openQueue;
    QString refusedUrl;
    QString status;
    QString platform; ///< product type, version and kernel version
    QString serialNumber, versionHost;
    QMargins frameMargins;
    int placed = 0; ///< windows placed so far, for the cascade
    bool originWasSet = false;
    bool appWasOkay = true;
    bool successOnAsk = false;
};
