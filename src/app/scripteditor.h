// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>

#include <array>
#include <memory>

class CodeEdit;
class QLabel;
class QMenu;
class QProgressBar;
class QSettings;
class RecentList;
class ScriptReference;
class ScriptWords;
struct FileBag;
namespace Ui
{
class ScriptEditor;
}

/// Reads a script of any line ends, in UTF-8 or, failing that, Latin-1. False with the reason.
bool readScriptFile(const QString &path, QString *text, QString *error);

/// The window in which scripts are written: the script and the presets that run before it,
/// each in an editor of its own, and the reference of the language beside them. The texts are
/// those of the Script operator: nothing is lost when the window closes, and a file is a copy.
class ScriptEditor : public QMainWindow
{
    Q_OBJECT
public:
    /// `bag` and `recent` are borrowed.
    ScriptEditor(FileBag *bag, RecentList *recent, QWidget *parent);
    ~ScriptEditor() override;

    void setWords(const ScriptWords &words);
    ScriptReference *reference() const;
    CodeEdit *scriptEdit() const;
    CodeEdit *presetsEdit() const;

    /// Shows these texts, if they are others than those shown; undo brings the old ones back.
    void setTexts(const QString &script, const QString &presets, bool presetsOn);
    QString script() const;
    QString presets() const;
    bool presetsOn() const;
    /// The name of the script's file, empty if it has none.
    QString fileName() const;

    /// Opens a file in the tab of the script. False if that failed, which was told, or the
    /// person kept what is there.
    bool openFile(const QString &path);
    /// Puts another text into the tab of the script, which then belongs to no file. False if
    /// the person kept what is there.
    bool openText(const QString &text);
    void goTo(bool inPresets, int line);
    void markError(bool inPresets, int line, const QString &message);
    void clearErrors();

    /// While a script runs only the Stop button and what looks on stay usable.
    void setRunning(bool on);
    /// How far a run is; total 0 hides the bar.
    void showProgress(const QString &text, int64_t done, int64_t total);
    void tell(const QString &text);
    /// Shows the reference, with the filter ready for typing.
    void showReference();

    void load(const QSettings &settings);
    void save(QSettings &settings) const;
    /// Fills a menu with the files used last.
    void fillRecent(QMenu *menu);

signals:
    /// A text, or whether the presets run, was changed by the person.
    void edited();
    void runRequested();
    void stopRequested();
    void storeRequested();
    void savedScriptsRequested();
    void debugRequested();

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void on_actionRun_triggered();
    void on_actionStop_triggered();
    void on_actionNew_triggered();
    void on_actionOpen_triggered();
    void on_actionSave_triggered();
    void on_actionSave_As_triggered();
    void on_actionStore_triggered();
    void on_actionClose_triggered();
    void on_actionUndo_triggered();
    void on_actionRedo_triggered();
    void on_actionCut_triggered();
    void on_actionCopy_triggered();
    void on_actionPaste_triggered();
    void on_actionSelect_All_triggered();
    void on_actionFind_triggered();
    void on_actionFind_Next_triggered();
    void on_actionFind_Previous_triggered();
    void on_actionGo_to_Line_triggered();
    void on_actionNext_Error_triggered();
    void on_actionComment_triggered();
    void on_actionComplete_triggered();
    void on_actionSaved_Scripts_triggered();
    void on_actionDebug_triggered();
    void on_actionLook_Up_triggered();
    void on_tabs_currentChanged();
    void on_presetsOn_clicked();
    void on_findText_textChanged();
    void on_findText_returnPressed();
    void on_findNext_clicked();
    void on_findPrevious_clicked();
    void on_findClose_clicked();

private:
    /// One of the two tabs.
    struct Page {
        CodeEdit *edit = nullptr;
        QString file;
    };

    Page &page();
    CodeEdit *edit() const;
    void connectPage(Page *page);
    bool mayReplace(const Page &page);
    bool loadInto(Page *page, const QString &path);
    bool saveAs(Page *page, const QString &path);
    void showPlace();
    void showTitle();
    void updateActions();
    void find(bool backward, bool fromStart);
    void insertReference(const QString &text);

    std::unique_ptr<Ui::ScriptEditor> ui;
    FileBag *fileBag;
    RecentList *recentFiles;
    std::array<Page, 2> pages;
    QLabel *message, *place;
    QProgressBar *bar;
    bool filling = false; ///< by program: nobody edited anything
    bool running = false;
};
