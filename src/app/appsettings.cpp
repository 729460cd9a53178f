// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appsettings.h"

#include "core/workspace.h"

#include <QDebug>
#include <QSettings>

namespace
{
constexpr int kMostStoredText = 1 << 20;
constexpr int kMostStoredTexts = 1000;

/// A value of the store as text; null if it is of a kind that no setting has. A person who
/// edits the store by hand makes a list of a text with a comma.
QString textOf(const QVariant &value)
{
    QString text;
    switch (value.type()) {
    case QVariant::String:
    case QVariant::Bool:
    case QVariant::Int:
    case QVariant::UInt:
    case QVariant::LongLong:
    case QVariant::ULongLong:
        text = value.toString();
        break;
    case QVariant::Double:
        text = numberText(value.toDouble());
        break;
    case QVariant::StringList:
        text = value.toStringList().join(QLatin1String(", "));
        break;
    default:
        return {};
    }
    if (text.size() > kMostStoredText || text.contains(QChar(0)))
        return {};
    return text.isNull() ? QStringLiteral("") : text;
}
} // namespace

void loadWorkspaceSettings(QSettings &store, Workspace &into)
{
    for (const Workspace::Setting &setting : into.settings()) {
        const QString key = QString::fromLatin1(setting.key);
        if (!setting.stored || !store.contains(key))
            continue;
        const QString text = textOf(store.value(key));
        QString error = QStringLiteral("%1 is no text").arg(key);
        if (text.isNull() || !into.setSetting(key, text, &error))
            qDebug().noquote() << "setting left at its default:" << error.left(200);
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

QString storedText(const QSettings &store, const QString &key)
{
    return textOf(store.value(key));
}

QStringList storedTexts(const QSettings &store, const QString &key)
{
    const QVariant value = store.value(key);
    // A list of one text is read back as that text.
    const bool isList = value.type() == QVariant::StringList || value.type() == QVariant::String;
    const QStringList texts = isList ? value.toStringList() : QStringList();
    if (texts.size() > kMostStoredTexts)
        return {};
    for (const QString &text : texts)
        if (textOf(text).isNull())
            return {};
    return texts;
}
