// SPDX-License-Identifier: GPL-3.0-or-later
// How the file dialog is built; what it does stands in the files beside this one.
#include "app/filepicker.h"

#include "app/filebag.h"
#include "app/filepickerline.h"
#include "app/filepickermodel.h"
#include "app/filepickerplaces.h"
#include "app/filepickerrules.h"
#include "app/filepreviewpane.h"

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace
{
constexpr int kWidthInLetters = 170, kHeightInLines = 38;
constexpr int kNameLetters = 26;   ///< that the list of details shows at least
constexpr int kGap = 6;            ///< points between the files and the preview
constexpr int kLongestFilter = 48; ///< letters of a filter that are shown

/// A filter with many patterns is shown by its words alone.
QString captionOf(const QString &filter)
{
    const int open = filter.lastIndexOf(QLatin1Char('('));
    return filter.size() <= kLongestFilter || open <= 0 ? filter : filter.left(open).trimmed();
}

/// Texts below pictures take the width of the cell, not that of the picture alone.
class CellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        const QSize cell = option->decorationSize;
        QStyledItemDelegate::initStyleOption(option, index);
        if (option->decorationPosition == QStyleOptionViewItem::Top)
            option->decorationSize = cell;
    }
};

QString goOnText(filePicker::PickFor mode)
{
    switch (mode) {
    case filePicker::PickFor::Save:
        return filePicker::tr("&Save");
    case filePicker::PickFor::Folder:
        return filePicker::tr("&Choose");
    default:
        return filePicker::tr("&Open");
    }
}
} // namespace

filePicker::filePicker(PickFor pickFor, FileBag *fileBag, const QString &title, QWidget *parent)
    : QDialog(parent), mode(pickFor), bag(fileBag), previews(new FilePreviews(this)),
      model(new FolderModel(previews, this))
{
    setObjectName(QStringLiteral("filePicker"));
    setWindowTitle(title);
    auto *column = new QVBoxLayout(this);
    auto *middle = new QSplitter;
    places = new PlacesList;
    pane = new FilePreviewPane;
    middle->addWidget(places);
    middle->addWidget(makeViews());
    middle->addWidget(pane);
    pane->setContentsMargins(kGap, 0, 0, 0);
    middle->setStretchFactor(1, 1);
    middle->setChildrenCollapsible(false);
    column->addWidget(makeBar());
    column->addWidget(middle, 1);
    column->addWidget(makeNameRows());
    makeMenu();
    addKeys();
    setTabs();

    connect(places, &PlacesList::chosen, this, &filePicker::goTo);
    connect(previews, &FilePreviews::ready, this, &filePicker::updatePreview);
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, &filePicker::keepSelection);
    connect(model, &QAbstractItemModel::modelReset, this, &filePicker::restoreSelection);
    connect(model, &FolderModel::folderRead, this, &filePicker::tellState);

    const FileRecord &record = bag->record;
    model->setFoldersOnly(mode == PickFor::Folder);
    setHiddenShown(record.showHidden);
    setPreviewShown(record.showPreview);
    setViewStyle(record.viewStyle);
    sortBy(record.sortByDate ? FolderModel::DateColumn : FolderModel::NameColumn,
           record.reverseSort);
    const int filter = filterCombo->findData(record.filter);
    filterCombo->setCurrentIndex(filter < 0 ? 0 : filter);
    chooseFilter(filterCombo->currentIndex());
    const QSize usual(fontMetrics().averageCharWidth() * kWidthInLetters,
                      fontMetrics().lineSpacing() * kHeightInLines);
    resize(
        (bag->dialogSize.isValid() ? bag->dialogSize : usual).boundedTo(screen()->availableSize()));
    goTo(bag->startFolder());
    (mode == PickFor::Save ? static_cast<QWidget *>(nameLine) : view())->setFocus();
}

filePicker::~filePicker()
{
    // The model and the previews still speak while they go.
    model->disconnect(this);
    previews->disconnect(this);
}

/// The key belongs to an action: a button would be animated first, and act later.
QToolButton *filePicker::addTool(const char *name, const QString &caption, const QIcon &icon,
                                 const QString &key, void (filePicker::*act)())
{
    auto *action = new QAction(icon, caption, this);
    const QKeySequence sequence(key);
    action->setShortcut(sequence);
    action->setToolTip(
        QStringLiteral("%1 (%2)").arg(caption, sequence.toString(QKeySequence::NativeText)));
    connect(action, &QAction::triggered, this, act);
    addAction(action);
    auto *tool = new QToolButton;
    tool->setDefaultAction(action);
    tool->setObjectName(QLatin1String(name));
    tool->setAccessibleName(caption);
    tool->setAutoRaise(true);
    tool->setFocusPolicy(Qt::TabFocus);
    return tool;
}

QWidget *filePicker::makeBar()
{
    auto *bar = new QWidget;
    auto *line = new QHBoxLayout(bar);
    line->setContentsMargins(0, 0, 0, 0);
    const auto icon = [this](QStyle::StandardPixmap which) {
        return style()->standardIcon(which, nullptr, this);
    };
    backTool = addTool("back", tr("Back"), icon(QStyle::SP_ArrowBack), QStringLiteral("Alt+Left"),
                       &filePicker::goBack);
    forwardTool = addTool("forward", tr("Forward"), icon(QStyle::SP_ArrowForward),
                          QStringLiteral("Alt+Right"), &filePicker::goForward);
    upTool = addTool("up", tr("Up"), icon(QStyle::SP_FileDialogToParent), QStringLiteral("Alt+Up"),
                     &filePicker::goUp);
    QToolButton *homeTool = addTool("home", tr("Home"), homeIcon(*this), QStringLiteral("Alt+Home"),
                                    &filePicker::goHome);
    folderTool = addTool("newFolder", tr("New Folder"), icon(QStyle::SP_FileDialogNewFolder),
                         QStringLiteral("Ctrl+Shift+N"), &filePicker::makeFolder);
    folderTool->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    const bool makesFolders = mode == PickFor::Save || mode == PickFor::Folder;
    folderTool->setVisible(makesFolders);
    folderTool->defaultAction()->setEnabled(makesFolders);
    viewTool = new QToolButton;
    viewTool->setObjectName(QStringLiteral("viewTool"));
    viewTool->setText(tr("View"));
    viewTool->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    viewTool->setIcon(icon(QStyle::SP_FileDialogDetailedView));
    viewTool->setPopupMode(QToolButton::InstantPopup);
    viewTool->setAutoRaise(true);
    viewTool->setFocusPolicy(Qt::TabFocus);
    pathLine = new PathLine(PathLine::Completes::Folders);
    pathLine->setObjectName(QStringLiteral("pathLine"));
    pathLine->setAccessibleName(tr("Folder"));
    pathLine->setToolTip(tr("The folder that is shown. “~” is home; assigns are known here."));
    connect(pathLine, &PathLine::entered, this, &filePicker::enterTypedPath);
    for (QWidget *part : {static_cast<QWidget *>(backTool), static_cast<QWidget *>(forwardTool),
                          static_cast<QWidget *>(upTool), static_cast<QWidget *>(homeTool),
                          static_cast<QWidget *>(pathLine), static_cast<QWidget *>(folderTool),
                          static_cast<QWidget *>(viewTool)})
        line->addWidget(part);
    return bar;
}

void filePicker::makeListView()
{
    listView = new QListView;
    listView->setObjectName(QStringLiteral("listView"));
    listView->setModel(model);
    listView->setItemDelegate(new CellDelegate(listView));
    listView->setUniformItemSizes(true);
    listView->setTextElideMode(Qt::ElideMiddle);
    listView->setSelectionBehavior(QAbstractItemView::SelectRows);
}

void filePicker::makeDetailView()
{
    detailView = new QTreeView;
    detailView->setObjectName(QStringLiteral("detailView"));
    detailView->setModel(model);
    detailView->setRootIsDecorated(false);
    detailView->setItemsExpandable(false);
    detailView->setUniformRowHeights(true);
    detailView->setAllColumnsShowFocus(true);
    detailView->setTextElideMode(Qt::ElideMiddle);
    QHeaderView *header = detailView->header();
    header->setStretchLastSection(false);
    header->setSectionsMovable(false);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    const int letter = fontMetrics().averageCharWidth();
    header->resizeSection(FolderModel::SizeColumn, letter * 13);
    header->resizeSection(FolderModel::KindColumn, letter * 26);
    header->resizeSection(FolderModel::DateColumn, letter * 25);
    connect(header, &QHeaderView::sortIndicatorChanged, this,
            [this](int column, Qt::SortOrder order) {
                sortBy(column, order != FolderModel::naturalOrder(column));
            });
}

/// Names take the room that the other columns leave, but never too little to be read.
void filePicker::fitNameColumn()
{
    QHeaderView *header = detailView->header();
    int room = detailView->viewport()->width();
    for (int column = FolderModel::SizeColumn; column < FolderModel::ColumnCount; ++column)
        room -= header->sectionSize(column);
    header->resizeSection(FolderModel::NameColumn,
                          std::max(room, fontMetrics().averageCharWidth() * kNameLetters));
}

QWidget *filePicker::makeViews()
{
    auto *box = new QWidget;
    auto *column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    makeListView();
    makeDetailView();
    detailView->viewport()->installEventFilter(this);
    selection = listView->selectionModel();
    delete detailView->selectionModel();
    detailView->setSelectionModel(selection);
    views = new QStackedWidget;
    for (QAbstractItemView *each : {static_cast<QAbstractItemView *>(listView),
                                    static_cast<QAbstractItemView *>(detailView)}) {
        each->setAccessibleName(tr("Files"));
        each->setEditTriggers(QAbstractItemView::NoEditTriggers);
        each->setSelectionMode(mode == PickFor::OpenMany ? QAbstractItemView::ExtendedSelection
                                                         : QAbstractItemView::SingleSelection);
        each->setTabKeyNavigation(false);
        each->installEventFilter(this);
        connect(each, &QAbstractItemView::activated, this, &filePicker::activate);
        views->addWidget(each);
    }
    connect(selection, &QItemSelectionModel::selectionChanged, this, &filePicker::followSelection);
    connect(selection, &QItemSelectionModel::currentChanged, this, &filePicker::updatePreview);
    stateLabel = new QLabel;
    stateLabel->setObjectName(QStringLiteral("stateLabel"));
    stateLabel->setTextFormat(Qt::PlainText);
    column->addWidget(views, 1);
    column->addWidget(stateLabel);
    return box;
}

QWidget *filePicker::makeNameRows()
{
    auto *box = new QWidget;
    auto *grid = new QGridLayout(box);
    grid->setContentsMargins(0, 0, 0, 0);
    nameLine = new PathLine(mode == PickFor::Folder ? PathLine::Completes::Folders
                                                    : PathLine::Completes::FoldersAndFiles);
    nameLine->setObjectName(QStringLiteral("nameLine"));
    auto *nameLabel = new QLabel(mode == PickFor::Folder ? tr("&Folder:") : tr("&Name:"));
    nameLabel->setBuddy(nameLine);
    connect(nameLine, &PathLine::entered, this, &filePicker::accept);
    connect(nameLine, &QLineEdit::textEdited, this, &filePicker::followTyping);
    filterCombo = new QComboBox;
    filterCombo->setObjectName(QStringLiteral("filterCombo"));
    filterCombo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    const QStringList filters = bag->filterList();
    for (const QString &filter : filters.isEmpty() ? QStringList(tr("All files (*)")) : filters) {
        filterCombo->addItem(captionOf(filter), filter);
        filterCombo->setItemData(filterCombo->count() - 1, filter, Qt::ToolTipRole);
    }
    connect(filterCombo, QOverload<int>::of(&QComboBox::activated), this,
            &filePicker::chooseFilter);
    auto *filterLabel = new QLabel(tr("File &type:"));
    filterLabel->setBuddy(filterCombo);
    filterLabel->setVisible(mode != PickFor::Folder);
    filterCombo->setVisible(mode != PickFor::Folder);
    auto *buttons = new QDialogButtonBox;
    buttons->setObjectName(QStringLiteral("buttonBox"));
    goOn = buttons->addButton(goOnText(mode), QDialogButtonBox::AcceptRole);
    goOn->setObjectName(QStringLiteral("goOn"));
    goOn->setDefault(true);
    buttons->addButton(QDialogButtonBox::Cancel)->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &filePicker::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    grid->addWidget(nameLabel, 0, 0);
    grid->addWidget(nameLine, 0, 1, 1, mode == PickFor::Folder ? 1 : 2);
    grid->addWidget(filterLabel, 1, 0);
    grid->addWidget(filterCombo, 1, 1);
    grid->addWidget(buttons, mode == PickFor::Folder ? 0 : 1, 2);
    grid->setColumnStretch(1, 1);
    return box;
}

QAction *filePicker::addChoice(QActionGroup *group, const QString &text, int value)
{
    QAction *action = group->addAction(text);
    action->setCheckable(true);
    action->setData(value);
    return action;
}

void filePicker::makeMenu()
{
    auto *menu = new QMenu(viewTool);
    styleGroup = new QActionGroup(this);
    const struct {
        const char *text, *key;
        uint32_t style;
    } styles[] = {{QT_TR_NOOP("&List"), "Ctrl+1", ListStyle},
                  {QT_TR_NOOP("&Details"), "Ctrl+2", DetailStyle},
                  {QT_TR_NOOP("&Thumbnails"), "Ctrl+3", PictureStyle}};
    for (const auto &each : styles)
        addChoice(styleGroup, tr(each.text), int(each.style))
            ->setShortcut(QKeySequence(QLatin1String(each.key)));
    sortGroup = new QActionGroup(this);
    addChoice(sortGroup, tr("By &Name"), FolderModel::NameColumn);
    addChoice(sortGroup, tr("By D&ate"), FolderModel::DateColumn);
    addChoice(sortGroup, tr("By Si&ze"), FolderModel::SizeColumn);
    addChoice(sortGroup, tr("By &Kind"), FolderModel::KindColumn);
    connect(styleGroup, &QActionGroup::triggered, this,
            [this](const QAction *action) { setViewStyle(action->data().toUInt()); });
    connect(sortGroup, &QActionGroup::triggered, this,
            [this](const QAction *action) { sortBy(action->data().toInt(), false); });
    menu->addActions(styleGroup->actions());
    menu->addSeparator();
    menu->addActions(sortGroup->actions());
    const auto addCheck = [menu](const QString &text, const char *key) {
        QAction *action = menu->addAction(text);
        action->setCheckable(true);
        action->setShortcut(QKeySequence(QLatin1String(key)));
        return action;
    };
    reverseAction = addCheck(tr("&Reverse Order"), "");
    menu->addSeparator();
    hiddenAction = addCheck(tr("Show &Hidden Files"), "Ctrl+H");
    previewAction = addCheck(tr("Show &Preview"), "Ctrl+P");
    connect(reverseAction, &QAction::triggered, this,
            [this](bool on) { sortBy(model->sortColumn(), on); });
    connect(hiddenAction, &QAction::triggered, this, &filePicker::setHiddenShown);
    connect(previewAction, &QAction::triggered, this, &filePicker::setPreviewShown);
    viewTool->setMenu(menu);
    addActions(menu->actions()); // a menu that is closed hears no keys
}

void filePicker::addKeys()
{
    const auto addKey = [this](const char *key, auto act) {
        auto *action = new QAction(this);
        action->setShortcut(QKeySequence(QLatin1String(key)));
        connect(action, &QAction::triggered, this, act);
        addAction(action);
    };
    addKey("Ctrl+L", [this]() {
        pathLine->setFocus();
        pathLine->selectAll();
    });
    addKey("F5", [this]() { model->setFolder(model->folder()); });
}

void filePicker::setTabs()
{
    QWidget *previous = places;
    for (QWidget *next : {static_cast<QWidget *>(listView), static_cast<QWidget *>(detailView),
                          static_cast<QWidget *>(nameLine), static_cast<QWidget *>(filterCombo)}) {
        setTabOrder(previous, next);
        previous = next;
    }
}
