// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QStringList>
#include <QVector>

#include <cstdint>

class FileBag;
class FilePreviewPane;
class FilePreviews;
class FolderModel;
class PathLine;
class PlacesList;
class QAbstractItemView;
class QActionGroup;
class QComboBox;
class QItemSelectionModel;
class QLabel;
class QListView;
class QPushButton;
class QStackedWidget;
class QToolButton;
class QTreeView;
struct FolderEntry;

/// The program's file dialog: places at the left, the files of one folder as a list, in
/// detail or as small pictures, and a preview at the right. It begins as its bag was left,
/// and writes there what the person chose; the bag outlives the dialog.
class filePicker : public QDialog
{
    Q_OBJECT
public:
    /// Folders that are offered as recently used ones.
    static constexpr int kRecentFolders = 8;
    enum class PickFor { Open, OpenMany, Save, Folder };

    filePicker(PickFor mode, FileBag *bag, const QString &title, QWidget *parent);
    ~filePicker() override;

    /// The name that a new file is offered; the part before its extension is selected.
    void setSuggestedName(const QString &name);
    /// What was picked: clean absolute paths, empty if the person gave up.
    QStringList paths() const { return picked; }

    /// Shows a dialog and returns what was picked, or nothing if the person gave up. Takes
    /// the desktop's own dialog where the person prefers that one.
    static QStringList pick(QWidget *parent, FileBag *bag, PickFor mode, const QString &title,
                            const QString &suggestedName = {});

public slots:
    /// Goes on with what is named or selected: enters a folder, or takes the files.
    void accept() override;
    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum ViewStyle : uint32_t { ListStyle, DetailStyle, PictureStyle };

    // --- Building -----------------------------------------------------------------------
    QWidget *makeBar();
    QWidget *makeViews();
    QWidget *makeNameRows();
    void makeListView();
    void makeDetailView();
    void fitNameColumn();
    void makeMenu();
    static QAction *addChoice(QActionGroup *group, const QString &text, int value);
    void addKeys();
    void setTabs();
    QToolButton *addTool(const char *name, const QString &caption, const QIcon &icon,
                         const QString &key, void (filePicker::*act)());

    // --- Where it is --------------------------------------------------------------------
    /// Shows a folder and remembers it for Back. False, after saying so, if there is none.
    bool goTo(const QString &folder);
    void showFolder(const QString &folder);
    void goBack();
    void goForward();
    void goUp();
    void goHome();
    void enterTypedPath();
    void makeFolder();

    // --- What is seen -------------------------------------------------------------------
    void setViewStyle(uint32_t style);
    void sortBy(int column, bool reversed);
    void setHiddenShown(bool shown);
    void setPreviewShown(bool shown);
    void chooseFilter(int index);
    void keepSelection();
    void restoreSelection();
    void tellState();
    void updateGoOn();
    void followSelection();
    void followTyping();
    void updatePreview();

    // --- What is picked -----------------------------------------------------------------
    void activate(const QModelIndex &index);
    QStringList typedPaths() const;
    QString existing(const QString &path) const;
    QVector<int> selectedRows() const;
    void acceptFolder();
    void acceptExisting();
    void acceptNew();
    void finish(const QStringList &chosen);
    void refuse(const QString &text);
    QAbstractItemView *view() const;
    QString currentFilter() const;

    const PickFor mode;
    FileBag *const bag;
    QStringList picked;
    QStringList history;
    int historyAt = -1;
    QStringList keptNames; ///< selected before the list was made anew
    QString keptCurrent;
    QString suggested;
    uint32_t viewStyle = 0;
    bool nameTyped = false; ///< the name line says what the person typed, not the selection

    FilePreviews *previews;
    FolderModel *model;
    QItemSelectionModel *selection = nullptr;
    QStackedWidget *views = nullptr;
    QListView *listView = nullptr;
    QTreeView *detailView = nullptr;
    PlacesList *places = nullptr;
    FilePreviewPane *pane = nullptr;
    PathLine *pathLine = nullptr, *nameLine = nullptr;
    QComboBox *filterCombo = nullptr;
    QLabel *stateLabel = nullptr;
    QToolButton *backTool = nullptr, *forwardTool = nullptr, *upTool = nullptr,
                *folderTool = nullptr, *viewTool = nullptr;
    QActionGroup *styleGroup = nullptr, *sortGroup = nullptr;
    QAction *reverseAction = nullptr, *hiddenAction = nullptr, *previewAction = nullptr;
    QPushButton *goOn = nullptr;
};
