// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/opfavorites.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QVariant>

#include <algorithm>

namespace
{
constexpr int kNarrowColumns = 1, kWideColumns = 3;
constexpr int kNarrowLetters = 28; ///< wide enough for the operators' names and the title
constexpr int kGap = 12;           ///< from the window below which it first appears

QString slotKey(int number)
{
    return QStringLiteral("opfav%1").arg(number, 2, 10, QLatin1Char('0'));
}

/// The text of a menu entry as one reads it.
QString plainText(const QAction *action)
{
    QString text = action->text().section(QLatin1Char('\t'), 0, 0);
    return text.remove(QLatin1Char('&'));
}
} // namespace

OpFavorites::OpFavorites(OperatorTable *operators, const QList<QAction *> &menuActions,
                         QWidget *parent)
    : QDialog(parent, Qt::Tool), table(operators), grid(new QGridLayout(this))
{
    setObjectName(QStringLiteral("opFavorites"));
    setWindowTitle(tr("Operator Favorites"));
    for (QAction *action : menuActions)
        entries.append(action);
    grid->setSpacing(2);
    grid->setContentsMargins(4, 4, 4, 4);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    for (int number = 1; number <= kSlots; ++number) {
        auto *button = new QPushButton(this);
        button->setObjectName(QStringLiteral("favorite%1").arg(number));
        button->setAutoDefault(false);
        button->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(button, &QPushButton::clicked, this, [this, number] { press(number); });
        connect(button, &QWidget::customContextMenuRequested, this,
                [this, number](const QPoint &place) { showMenu(number, place); });
        buttons[size_t(number - 1)] = button;
    }
    load();
    arrange();
    restorePlace();
}

QString OpFavorites::favorite(int number) const
{
    return number >= 1 && number <= kSlots ? names[size_t(number - 1)] : QString();
}

void OpFavorites::setFavorite(int number, const QString &name)
{
    if (number < 1 || number > kSlots)
        return;
    names[size_t(number - 1)] = name;
    arrange();
}

QAction *OpFavorites::resolve(const QString &name) const
{
    for (const QPointer<QAction> &entry : entries)
        if (entry && !name.isEmpty() && plainText(entry) == name)
            return entry;
    return nullptr;
}

void OpFavorites::press(int number)
{
    QAction *action = resolve(favorite(number));
    if (action && action->isEnabled())
        action->trigger();
    else
        showMenu(number, buttons[size_t(number - 1)]->rect().bottomLeft());
}

/// The current operator's name if it stands in the menu.
QString OpFavorites::currentName() const
{
    const OpWrapper *op = table->current();
    return op && op->self && resolve(op->menuName) ? op->menuName : QString();
}

void OpFavorites::showMenu(int number, const QPoint &place)
{
    QMenu menu(this);
    const QString current = currentName();
    QString shown = current;
    shown.replace(QLatin1Char('&'), QLatin1String("&&"));
    QAction *put = menu.addAction(current.isEmpty() ? tr("&Put the Current Operator Here")
                                                    : tr("&Put \"%1\" Here").arg(shown));
    put->setEnabled(!current.isEmpty());
    QAction *clear = menu.addAction(tr("&Clear"));
    clear->setEnabled(!favorite(number).isEmpty());
    menu.addSeparator();
    QAction *inColumns = menu.addAction(tr("&Wide Panel"));
    inColumns->setCheckable(true);
    inColumns->setChecked(wide);
    const QAction *chosen = menu.exec(buttons[size_t(number - 1)]->mapToGlobal(place));
    if (chosen == put)
        setFavorite(number, current);
    else if (chosen == clear)
        setFavorite(number, QString());
    else if (chosen == inColumns)
        setWide(!wide);
}

void OpFavorites::setWide(bool on)
{
    wide = on;
    arrange();
}

void OpFavorites::arrange()
{
    const int columns = wide ? kWideColumns : kNarrowColumns;
    const int rows = kSlots / columns;
    const QFontMetrics metrics = fontMetrics();
    int room = kNarrowLetters * metrics.averageCharWidth();
    for (const QString &name : names)
        if (wide)
            room = std::max(room, metrics.horizontalAdvance(name));
    for (int i = 0; i < kSlots; ++i) {
        QPushButton *button = buttons[size_t(i)];
        const QString &name = names[size_t(i)];
        const QAction *action = resolve(name);
        const bool usable = action && action->isEnabled();
        QString text =
            metrics.elidedText(name.isEmpty() ? tr("(empty)") : name, Qt::ElideRight, room);
        button->setText(text.replace(QLatin1Char('&'), QLatin1String("&&")));
        button->setFlat(!usable);
        button->setAccessibleName(name.isEmpty() ? tr("Favorite %1, empty").arg(i + 1) : name);
        button->setToolTip(name.isEmpty() ? tr("Click to put the current operator here")
                           : usable       ? tr("%1\nRight click to change").arg(name)
                                          : tr("%1 is not there").arg(name));
        button->setMinimumWidth(room + 2 * metrics.averageCharWidth() + 8);
        grid->removeWidget(button);
        grid->addWidget(button, i % rows, i / rows);
    }
}

void OpFavorites::load()
{
    const QSettings *store = table->store;
    if (!store)
        return;
    for (int number = 1; number <= kSlots; ++number)
        names[size_t(number - 1)] = store->value(slotKey(number)).toString();
    wide = store->value(QStringLiteral("opwide"), wide).toBool();
}

void OpFavorites::save() const
{
    QSettings *store = table->store;
    if (!store)
        return;
    for (int number = 1; number <= kSlots; ++number)
        store->setValue(slotKey(number), favorite(number));
    store->setValue(QStringLiteral("opwide"), wide);
    if (!placed) // where it never was says nothing
        return;
    store->setValue(QStringLiteral("opfavx"), x());
    store->setValue(QStringLiteral("opfavy"), y());
}

void OpFavorites::restorePlace()
{
    if (!table->store || !workspace()->rememberPosition)
        return;
    bool isX = false, isY = false;
    const QPoint place(table->store->value(QStringLiteral("opfavx")).toInt(&isX),
                       table->store->value(QStringLiteral("opfavy")).toInt(&isY));
    // A place on a screen that is gone would hide the panel for good.
    if (!isX || !isY || !QGuiApplication::screenAt(place + QPoint(20, 20)))
        return;
    move(place);
    placed = true;
}

/// Below the window that it belongs to, or as low as the screen lets it.
void OpFavorites::placeFirst()
{
    const QWidget *owner = parentWidget() ? parentWidget()->window() : nullptr;
    const QScreen *shownOn = owner ? owner->screen() : nullptr;
    if (!shownOn)
        return;
    const QRect desk = shownOn->availableGeometry();
    const QMargins frame(0, owner->geometry().top() - owner->frameGeometry().top(), 0, kGap);
    const int lowest = desk.bottom() - sizeHint().height() - frame.top() - frame.bottom();
    const int below = owner->frameGeometry().bottom() + kGap;
    move(owner->x(), std::max(desk.top(), std::min(below, lowest)));
}

void OpFavorites::showEvent(QShowEvent *event)
{
    if (!placed)
        placeFirst();
    placed = true;
    QDialog::showEvent(event);
    workspace()->favoritesShown = true;
    emit shownChanged(true);
}

void OpFavorites::closeEvent(QCloseEvent *event)
{
    QDialog::closeEvent(event);
    workspace()->favoritesShown = false;
    emit shownChanged(false);
}

void OpFavorites::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::FontChange && buttons.back())
        arrange();
}
