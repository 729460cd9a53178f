// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/menustates.h"

#include <QHash>
#include <QVariant>

namespace
{
unsigned needOf(const QObject *object)
{
    static const QHash<QString, unsigned> needs = {{QStringLiteral("image"), kNeedsImage},
                                                   {QStringLiteral("undo"), kNeedsUndo},
                                                   {QStringLiteral("redo"), kNeedsRedo},
                                                   {QStringLiteral("revert"), kNeedsRevert},
                                                   {QStringLiteral("brush"), kNeedsBrush},
                                                   {QStringLiteral("origin"), kNeedsOrigin},
                                                   {QStringLiteral("windows"), kNeedsWindows},
                                                   {QStringLiteral("several"), kNeedsSeveral},
                                                   {QStringLiteral("operator"), kNeedsOperator},
                                                   {QStringLiteral("again"), kNeedsAgain},
                                                   {QStringLiteral("atomic"), kNeedsAtomic},
                                                   {QStringLiteral("stack"), kNeedsStack},
                                                   {QStringLiteral("clipboard"), kNeedsClipboard},
                                                   {QStringLiteral("paste"), kNeedsPaste},
                                                   {QStringLiteral("crop"), kNeedsCrop},
                                                   {QStringLiteral("sameorigin"), kNeedsSameOrigin},
                                                   {QStringLiteral("trace"), kNeedsTrace}};
    return needs.value(object->property("needs").toString(), 0U);
}
} // namespace

void MenuStates::collect(QWidget *root)
{
    const auto foundActions = root->findChildren<QAction *>();
    for (QAction *action : foundActions)
        if (const unsigned need = needOf(action))
            actions.append({action, need});
    const auto foundWidgets = root->findChildren<QWidget *>();
    for (QWidget *widget : foundWidgets)
        if (const unsigned need = needOf(widget))
            widgets.append({widget, need});
}

void MenuStates::update(unsigned satisfied)
{
    const unsigned changed = satisfied ^ last;
    if (!changed)
        return;
    last = satisfied;
    for (const auto &[action, need] : qAsConst(actions))
        if (need & changed)
            action->setEnabled(satisfied & need);
    for (const auto &[widget, need] : qAsConst(widgets))
        if (need & changed)
            widget->setEnabled(satisfied & need);
}
