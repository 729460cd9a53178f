// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appsettings.h"

#include "core/workspace.h"

#include <QDebug>
#include <QSettings>

void loadWorkspaceSettings(QSettings &store, Workspace &into)
{
    for (const Workspace::Setting &setting : into.settings()) {
        const QString key = QString::fromLatin1(setting.key);
        if (!setting.stored || !store.contains(key))
            continue;
        QString error;
        if (!into.setSetting(key, store.value(key).toString(), &error))
            qDebug().noquote() << "setting left at its default:" << error;
    }
}

void saveWorkspaceSettings(QSettings &store, const Workspace &from)
{
    for (const Workspace::Setting &setting : from.settings()) {
        const QString key = QString::fromLatin1(setting.key);
        if (setting.stored)
            store.setValue(key, from.settingText(key));
    }
}
