// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"
#include "views/scripthighlighter.h"

#include <QDialog>
#include <QTimer>

#include <memory>

class OperatorTable;
class OpWrapper;
class PageBuilder;
class Script;
class imgWindow;
namespace Ui
{
class Operators;
}

/// The operator dialog: the current operator's controls, its preview and the buttons
/// that act on it. It shows one table of operators and forwards to it.
class Operators : public QDialog
{
    Q_OBJECT
public:
    explicit Operators(OperatorTable *shownTable, QWidget *parent = nullptr);
    ~Operators() override;

    /// Makes the operator with this id current and rebuilds the page. Without such an operator
    /// (0, or a row that has none yet) no operator is current then.
    void selectOperator(int id);
    /// Id of the first operator of the list that can be chosen, 0 if there is none.
    int firstOperator() const;
    /// Runs the current operator on the small preview image and shows it, at once.
    void refreshPreview();
    /// Refreshes the preview when all events at hand are dealt with: however many changes a
    /// drag makes until then, they cost one refresh, of the last state.
    void schedulePreview();
    /// Whether such a refresh is still to come.
    bool previewPending() const { return refreshTimer.isActive(); }
    /// The text of the Script operator is another: which buttons can do something follows.
    void updateScriptButtons();
    /// A key was typed that nothing else wanted: chooses the operator whose hotkey it is.
    bool hotkeyPressed(const QString &text);
    /// Dialog settings (opsX2Preview, opsX, opsY, the custom colours) in the table's store.
    void settings(bool save);
    /// Shows the preview type that the workspace's flags stand for.
    void showPreviewType();

    OperatorTable *table;
    QString helpPageName;
    ScriptWords scriptWords;  ///< of script editors on the page
    int scriptCursorLine = 1; ///< of the one that is there, from 1
    bool beforeShown = false;
    bool thumbnailUsed = false; ///< the last preview showed the whole image
    bool modShift = false, modMeta = false, modAlt = false, modControl = false;

public slots:
    /// The picture, or what the preview follows beside it, changed: refreshes the preview soon.
    /// Without a current image no operator runs and it is cleared.
    void timetopreview();
    /// Moves the origin of the preview's crop.
    void prod(int dx, int dy);
    /// Asks for the colour of a well that shows `value`, and hands it to the operator.
    void colorwellhit(int index, int value);
    /// The curve of the page was changed, or another of its knots was chosen.
    void curveedited();
    void knotchosen();

    // One slot for each place in the page's pools; the page connects them by name.
    void button0() { pressed(0); }
    void button1() { pressed(1); }
    void button2() { pressed(2); }
    void button3() { pressed(3); }
    void button4() { pressed(4); }
    void button5() { pressed(5); }
    void button6() { pressed(6); }
    void button7() { pressed(7); }
    void checkbox0(bool state) { checked(0, state); }
    void checkbox1(bool state) { checked(1, state); }
    void checkbox2(bool state) { checked(2, state); }
    void checkbox3(bool state) { checked(3, state); }
    void checkbox4(bool state) { checked(4, state); }
    void checkbox5(bool state) { checked(5, state); }
    void checkbox6(bool state) { checked(6, state); }
    void checkbox7(bool state) { checked(7, state); }
    void checkbox8(bool state) { checked(8, state); }
    void combo0(int value) { chosen(0, value); }
    void combo1(int value) { chosen(1, value); }
    void combo2(int value) { chosen(2, value); }
    void combo3(int value) { chosen(3, value); }
    void combo4(int value) { chosen(4, value); }
    void combo5(int value) { chosen(5, value); }
    void combo6(int value) { chosen(6, value); }
    void combo7(int value) { chosen(7, value); }
    void combo8(int value) { chosen(8, value); }
    void combo9(int value) { chosen(9, value); }
    void combo10(int value) { chosen(10, value); }
    void combo11(int value) { chosen(11, value); }
    void combo12(int value) { chosen(12, value); }
    void intspin0(int value) { spun(0, value); }
    void intspin1(int value) { spun(1, value); }
    void intspin2(int value) { spun(2, value); }
    void intspin3(int value) { spun(3, value); }
    void intspin4(int value) { spun(4, value); }
    void intspin5(int value) { spun(5, value); }
    void intspin6(int value) { spun(6, value); }
    void intspin7(int value) { spun(7, value); }
    void intspin8(int value) { spun(8, value); }
    void dubspin0(double value) { spunDouble(0, value); }
    void dubspin1(double value) { spunDouble(1, value); }
    void dubspin2(double value) { spunDouble(2, value); }
    void dubspin3(double value) { spunDouble(3, value); }
    void dubspin4(double value) { spunDouble(4, value); }
    void dubspin5(double value) { spunDouble(5, value); }
    void dubspin6(double value) { spunDouble(6, value); }
    void dubspin7(double value) { spunDouble(7, value); }
    void dubspin8(double value) { spunDouble(8, value); }
    void slider0(int value) { slid(0, value); }
    void slider1(int value) { slid(1, value); }
    void slider2(int value) { slid(2, value); }
    void slider3(int value) { slid(3, value); }
    void slider4(int value) { slid(4, value); }
    void slider5(int value) { slid(5, value); }
    void lineeditor0(const QString &text) { typed(0, text); }
    void lineeditor1(const QString &text) { typed(1, text); }
    void editor0();
    void ceditor0();
    void ccursor0();

signals:
    /// The Apply button was pressed.
    void operateRequested();
    /// The page of a script, or its text, was changed by the person's hand.
    void scriptEdited();
    /// Another operator became the current one.
    void operatorChanged(int id);
    /// The manual page of this operator is wanted.
    void helpRequested(int id);
    /// Alt and a digit were pressed: entry 0 to 8 for 1 to 9, entry 9 for 0.
    void digitAction(int entry);
    /// The preview was refreshed: a parameter, the operator or the picture is another.
    void previewRefreshed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private slots:
    void on_opCombo_currentIndexChanged(int row);
    void on_comboBox_currentIndexChanged(int row);
    void on_reset_clicked();
    void on_before_pressed();
    void on_before_released();
    void on_setHotkey_clicked();
    void on_operate_clicked();
    void on_gethelp_clicked();
    void on_buildscript_clicked();
    void on_reset_2_clicked();

private:
    OpWrapper *currentOperator() const;
    /// The current window if it and its image are live, else null.
    imgWindow *currentView() const;
    void fillOperatorCombo();
    void updateButtons();
    void savePlace();
    void restorePlace();

    // What the page's slots do: the operator's handler, then the preview.
    void pressed(int index);
    void checked(int index, bool state);
    void chosen(int index, int value);
    void spun(int index, int value);
    void spunDouble(int index, double value);
    void slid(int index, int value);
    void typed(int index, const QString &text);
    void tellScript();
    void rowChosen(int row);
    bool isChoosable(int row) const;
    Script *scriptOperator() const;
    void fitScriptButtons();

    /// The crop or thumbnail that a preview starts from, and where it goes.
    struct PreviewPlan {
        const image *source;
        image *target;
        int x, y;
        bool x2;
    };
    /// As schedulePreview, after a change that leaves the picture's samples alone: what was
    /// made of them for the last preview may serve again.
    void scheduleKeepingSource();
    /// After the operator's handler: the preview and the split views follow.
    void parameterChanged();
    void refreshWhenFree();
    void showPreview();
    bool isWorkGoingOn() const;
    void makeInternalImages();
    bool planPreview(imgWindow *window, PreviewPlan *plan);
    bool fillThumbnail(const image *img);
    void runPreview(const PreviewPlan &plan);
    void clearPreview();

    void recordModifiers(Qt::KeyboardModifiers modifiers);
    bool handleKey(QKeyEvent *event);
    const OpWrapper *operatorOfHotkey(const QString &text) const;
    bool passToMainWindow(QKeyEvent *event);
    bool viewKey(int key);
    bool moveByArrow(int key);
    void setOrigin(int x, int y);
    void stepOperator(int step);
    void refuseKey(const QString &title, const QString &text);
    void assignHotkey(OpWrapper *op, const QString &key, int command);

    std::unique_ptr<Ui::Operators> ui;
    PageBuilder *builder = nullptr;
    std::unique_ptr<image> preview, previewHalf, previewThumb;
    QTimer refreshTimer;
    /// What the thumbnail was made of.
    struct ThumbnailSource {
        const image *img = nullptr;
        const uint16_t *plane = nullptr;
        int serial = 0, width = 0, height = 0, layerMode = 0, acts = 0;
        QString changedAt;
        bool operator==(const ThumbnailSource &other) const = default;
    } thumbnailSource;
    bool sourceStale = true; ///< the samples may be others than at the last preview
    int shownRow = 0;        ///< of the list of operators
};
