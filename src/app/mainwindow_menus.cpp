// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/assigns.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/operators.h"
#include "ui_mainwindow.h"
#include "views/clipboardacts.h"
#include "views/imgwindow.h"
#include "views/keytable.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>

#include <array>
#include <iterator>

namespace
{
constexpr const char *kGroupNames[] = {
    QT_TRANSLATE_NOOP("MainWindow", "Adjustment"), QT_TRANSLATE_NOOP("MainWindow", "Alpha"),
    QT_TRANSLATE_NOOP("MainWindow", "Compose"),    QT_TRANSLATE_NOOP("MainWindow", "Filter"),
    QT_TRANSLATE_NOOP("MainWindow", "Geometry"),   QT_TRANSLATE_NOOP("MainWindow", "Meta"),
    QT_TRANSLATE_NOOP("MainWindow", "PCB"),        QT_TRANSLATE_NOOP("MainWindow", "Render")};

void setCheckedIfOther(QAction *action, bool on)
{
    if (action->isChecked() != on)
        action->setChecked(on);
}
} // namespace

void MainWindow::buildMenus()
{
    ui->actionRetrieve_Ray_Trace->setVisible(false);
    ui->menuOpen_Images->menuAction()->setProperty("needs", "windows");
    ui->menuShow_At->menuAction()->setProperty("needs", "image");
    connect(ui->menuOpen_Images, &QMenu::aboutToShow, this, &MainWindow::fillImageMenu);
    connect(ui->foreWell, &ColorWell::clicked, this, &MainWindow::wellClick);
    connect(ui->backWell, &ColorWell::clicked, this, &MainWindow::wellClick);
    blendGroup = new QActionGroup(this);
    blendGroup->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    for (QAction *action : ui->menuBlend_Mode->actions())
        blendGroup->addAction(action);
    setBlendMode(0);
    connect(ui->menuRecent_Files, &QMenu::aboutToShow, this, &MainWindow::fillRecentMenu);
    connectCommands();
    buildOperatorMenu();
    showKeysInMenus();
    collectToggles();
    collectTools();
    collectAreaTools();
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, [this]() {
        clipboardFull = clipboardHasPicture();
        updateEnabledStates();
    });
    clipboardFull = clipboardHasPicture();
    menuStates.collect(this);
}

/// Checkable entries follow the setting that their property names.
void MainWindow::collectToggles()
{
    const auto actions = findChildren<QAction *>();
    for (QAction *action : actions) {
        if (action->isCheckable())
            action->setIconVisibleInMenu(false); // it would stand in the place of the mark
        const QByteArray key = action->property("setting").toByteArray();
        for (const Setting &setting : settings())
            if (!key.isEmpty() && setting.type == Setting::Type::Bool && key == setting.key)
                toggles.append({action, static_cast<const bool *>(setting.field)});
    }
}

void MainWindow::connectCommands()
{
    const auto actions = findChildren<QAction *>();
    for (QAction *action : actions) {
        // An action with a slot of its own is connected by its name already.
        const QByteArray ownSlot = "on_" + action->objectName().toLatin1() + "_triggered";
        const bool connected = metaObject()->indexOfSlot((ownSlot + "()").constData()) >= 0 ||
                               metaObject()->indexOfSlot((ownSlot + "(bool)").constData()) >= 0;
        const int number = action->property("command").toInt();
        if (number > 0 && !connected)
            connect(action, &QAction::triggered, this, [this, number]() { sendCommand(number); });
    }
}

void MainWindow::buildOperatorMenu()
{
    operatorGroup = new QActionGroup(this);
    std::array<QMenu *, std::size(kGroupNames)> menus = {};
    for (OpWrapper *op : table->operators()) {
        const int group = op->group;
        if (group < 0 || group >= int(menus.size()))
            continue;
        if (!menus[group])
            menus[group] = new QMenu(tr(kGroupNames[group]), ui->menuOperators);
        QAction *action = menus[group]->addAction(op->menuName);
        action->setCheckable(true);
        action->setData(op->id);
        action->setEnabled(op->self != nullptr);
        operatorGroup->addAction(action);
    }
    for (QMenu *menu : menus)
        if (menu)
            ui->menuOperators->addMenu(menu);
    connect(operatorGroup, &QActionGroup::triggered, this, [this](const QAction *action) {
        operators->selectOperator(action->data().toInt());
        on_actionShow_Operators_triggered();
    });
}

/// The keys stand behind a tab, which shows them without making them shortcuts: a key
/// takes one way only, through the current image window and its key table.
void MainWindow::showKeysInMenus()
{
    const auto actions = findChildren<QAction *>();
    for (QAction *action : actions) {
        const int number = action->property("command").toInt();
        if (number <= 0)
            continue;
        const QString text = action->text().section(QLatin1Char('\t'), 0, 0);
        const QString keys = keyTable().sequenceOf(number).toString(QKeySequence::NativeText);
        QString plain = text;
        action->setIconText(plain.remove(QLatin1Char('&')));
        action->setText(keys.isEmpty() ? text : text + QLatin1Char('\t') + keys);
    }
}

void MainWindow::sendKey(int key, Qt::KeyboardModifiers modifiers)
{
    imgWindow *window = validCurrent();
    if (!window)
        return;
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QCoreApplication::sendEvent(window, &event);
}

void MainWindow::sendCommand(int number)
{
    imgWindow *window = validCurrent();
    if (!window) {
        hostCommand(nullptr, number);
        return;
    }
    const int bound = keyTable().keyOf(number);
    if (bound == 0) // a command that lost its key stays in reach of the menu
        window->command(number);
    else
        sendKey(bound & ~int(Qt::KeyboardModifierMask),
                Qt::KeyboardModifiers(bound & int(Qt::KeyboardModifierMask)));
}

void MainWindow::on_actionUndo_triggered()
{
    sendKey(Qt::Key_U, Qt::NoModifier);
}

void MainWindow::on_actionRedo_triggered()
{
    sendKey(Qt::Key_R, Qt::NoModifier);
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    if (imgWindow *window = validCurrent()) {
        QKeyEvent handed(QEvent::KeyPress, event->key(), event->modifiers(), event->text(),
                         event->isAutoRepeat());
        QCoreApplication::sendEvent(window, &handed);
        event->setAccepted(handed.isAccepted());
        return;
    }
    if (!hostCommand(nullptr, keyTable().command(event->key(), event->modifiers())) &&
        !globalKey(event))
        QMainWindow::keyPressEvent(event);
}

/// Whether an action is one of this window and not of a window that belongs to it.
bool MainWindow::isOwn(const QAction *action) const
{
    const QWidget *at = action->parentWidget();
    while (at && at != this && at->windowType() != Qt::Window && at->windowType() != Qt::Dialog)
        at = at->parentWidget();
    return at == this;
}

bool MainWindow::globalKey(QKeyEvent *event)
{
    // The function keys of the area tools work above the operator dialog too.
    const int number = keyTable().command(event->key(), event->modifiers());
    if (event->key() >= Qt::Key_F1 && event->key() <= Qt::Key_F35 &&
        number >= kCommandToolRectangle && number <= kCommandMagnifyOnce) {
        sendCommand(number);
        return true;
    }
    const int pressed = KeyTable::plainKey(event->key() | int(event->modifiers()));
    const auto actions = findChildren<QAction *>();
    for (QAction *action : actions)
        if (action->isEnabled() && action->shortcut().count() == 1 && isOwn(action) &&
            KeyTable::plainKey(action->shortcut()[0]) == pressed) {
            action->trigger();
            return true;
        }
    // The dialog looks for hotkeys itself, behind the keys that it has of its own.
    const bool plain = !(event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
    return plain && operators && !operators->isActiveWindow() &&
           operators->hotkeyPressed(event->text());
}

unsigned MainWindow::satisfiedNeeds() const
{
    unsigned needs = windows.isEmpty() ? 0U : unsigned(kNeedsWindows);
    if (images.size() > 1)
        needs |= kNeedsSeveral;
    if (brushImage)
        needs |= kNeedsBrush;
    if (originImage)
        needs |= kNeedsOrigin;
    if (clipboardFull)
        needs |= kNeedsClipboard;
    if (traceReady)
        needs |= kNeedsTrace;
    const imgWindow *window = validCurrent();
    if (!window || busy > 0)
        return needs;
    const image *img = window->img;
    needs |= kNeedsImage;
    if (clipboardFull)
        needs |= kNeedsPaste;
    if (img->cropSource && images.contains(img->cropSource))
        needs |= kNeedsCrop;
    if (originImage && originImage != img && validImage(originImage) &&
        originImage->width == img->width && originImage->height == img->height)
        needs |= kNeedsSameOrigin;
    // Undo on a master goes to its target, or tells that there is none.
    const image *acted = img->kind == 1 ? img->target : img;
    if (!acted || !acted->undoList.isEmpty())
        needs |= kNeedsUndo;
    if (!acted || !acted->redoList.isEmpty())
        needs |= kNeedsRedo;
    needs |= img->kind == 0 ? kNeedsAtomic : kNeedsStack;
    if (img->kind == 0 && !img->fullPath.isEmpty())
        needs |= kNeedsRevert;
    if (table->currentOp != 0)
        needs |= kNeedsOperator;
    if (table->currentOp != 0 && table->lastOp != 0)
        needs |= kNeedsAgain;
    return needs;
}

void MainWindow::updateEnabledStates()
{
    menuStates.update(satisfiedNeeds());
}

void MainWindow::syncToggles()
{
    for (const auto &[action, on] : qAsConst(toggles))
        setCheckedIfOther(action, *on);
    syncAreaTools();
    for (QAction *action : operatorGroup->actions())
        setCheckedIfOther(action, action->data().toInt() == table->currentOp);
}

void MainWindow::updateMenus()
{
    areaStale = true; // a change of selection ends here
    updateEnabledStates();
    syncToggles();
    updateImageList();
}

/// The recent files by the keys of their commands; folders that hold them tell them apart.
void MainWindow::fillRecentMenu()
{
    QMenu *menu = ui->menuRecent_Files;
    menu->clear();
    const QStringList files = recentFiles.entries();
    for (int i = 0; i < files.size(); ++i) {
        const FileRecord record = FileRecord::fromPath(files.at(i));
        QString text = record.name + QStringLiteral(" — ") + assigns().shorten(record.folder);
        text.replace(QLatin1Char('&'), QLatin1String("&&"));
        const QString keys =
            keyTable().sequenceOf(kCommandRecentFirst + i).toString(QKeySequence::NativeText);
        QAction *action = menu->addAction(keys.isEmpty() ? text : text + QLatin1Char('\t') + keys);
        action->setToolTip(files.at(i));
        connect(action, &QAction::triggered, this, [this, i]() { openRecentFile(i + 1); });
    }
    menu->addSeparator();
    QAction *clear = menu->addAction(tr("Clear This List"));
    clear->setEnabled(!files.isEmpty());
    connect(clear, &QAction::triggered, this, [this]() { recentFiles.clear(); });
}

void MainWindow::fillImageMenu()
{
    ui->menuOpen_Images->clear();
    const imgWindow *current = validCurrent();
    for (image *img : qAsConst(images)) {
        QString text = img->title;
        QAction *action =
            ui->menuOpen_Images->addAction(text.replace(QLatin1String("&"), QLatin1String("&&")));
        action->setData(QVariant::fromValue<qulonglong>(reinterpret_cast<quintptr>(img)));
        action->setCheckable(true);
        action->setChecked(current && current->img == img);
        connect(action, &QAction::triggered, this, &MainWindow::onimageMenuItem);
    }
}

void MainWindow::onimageMenuItem()
{
    const auto *action = qobject_cast<QAction *>(sender());
    if (!action)
        return;
    // The image may have gone since the menu was filled: only the list is trusted.
    const quintptr wanted = quintptr(action->data().toULongLong());
    for (image *img : qAsConst(images))
        if (reinterpret_cast<quintptr>(img) == wanted)
            activate(findWindow(img));
}

void MainWindow::setBlendMode(int mode)
{
    blendMode = mode;
    blendState->blendMode = mode;
    markBlendMenu();
    previewOutdated();
}

void MainWindow::markBlendMenu()
{
    const QList<QAction *> actions = ui->menuBlend_Mode->actions();
    for (int i = 0; i < actions.size(); ++i)
        actions.at(i)->setChecked(i == blendMode);
}

void MainWindow::on_actionMatte_triggered()
{
    setBlendMode(0);
}

void MainWindow::on_actionAdd_triggered()
{
    setBlendMode(1);
}

void MainWindow::on_actionAdd_Grey_triggered()
{
    setBlendMode(2);
}

void MainWindow::on_actionSubtract_Grey_triggered()
{
    setBlendMode(3);
}

void MainWindow::on_actionSubtract_triggered()
{
    setBlendMode(4);
}

void MainWindow::on_actionMultiply_triggered()
{
    setBlendMode(5);
}

void MainWindow::on_actionDivide_triggered()
{
    setBlendMode(6);
}

void MainWindow::on_actionDissolve_triggered()
{
    setBlendMode(7);
}

void MainWindow::on_actionSoft_Dissolve_triggered()
{
    setBlendMode(8);
}

void MainWindow::on_actionForeground_Color_triggered()
{
    setBlendMode(9);
}

void MainWindow::on_actionBackground_Color_triggered()
{
    setBlendMode(10);
}
