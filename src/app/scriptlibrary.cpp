// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/scriptlibrary.h"

#include "app/appsettings.h"
#include "views/keytable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeySequence>
#include <QSettings>

#include <algorithm>
#include <utility>

namespace
{
const QString kSettingsKey = QStringLiteral("savedScripts");
constexpr char kForm[] = "kestrane-scripts";

QJsonObject toObject(const SavedScript &script)
{
    QJsonObject object{{QStringLiteral("name"), script.name},
                       {QStringLiteral("script"), script.text}};
    if (!script.presets.isEmpty())
        object.insert(QStringLiteral("presets"), script.presets);
    if (script.key)
        object.insert(QStringLiteral("key"),
                      QKeySequence(script.key).toString(QKeySequence::PortableText));
    return object;
}

SavedScript fromObject(const QJsonObject &object)
{
    SavedScript script;
    script.name = object.value(QLatin1String("name")).toString().simplified();
    script.text = object.value(QLatin1String("script")).toString();
    script.presets = object.value(QLatin1String("presets")).toString();
    const QKeySequence keys = QKeySequence::fromString(
        object.value(QLatin1String("key")).toString(), QKeySequence::PortableText);
    if (keys.count() == 1 && KeyTable::isBindable(KeyTable::plainKey(keys[0])))
        script.key = KeyTable::plainKey(keys[0]);
    return script;
}

/// Why a script cannot be kept; empty if it can.
QString faultOf(const SavedScript &script)
{
    if (script.name.isEmpty())
        return ScriptLibrary::tr("A saved script needs a name.");
    if (script.name.size() > ScriptLibrary::kLongestName)
        return ScriptLibrary::tr("The name is longer than %1 letters.")
            .arg(ScriptLibrary::kLongestName);
    if (script.text.size() + script.presets.size() > ScriptLibrary::kMostLetters ||
        script.text.contains(QChar(0)) || script.presets.contains(QChar(0)))
        return ScriptLibrary::tr("The script \"%1\" is too long. Save it as a file.")
            .arg(script.name);
    return QString();
}
} // namespace

ScriptLibrary::ScriptLibrary(QObject *parent) : QObject(parent) {}

int ScriptLibrary::indexOf(const QString &name) const
{
    for (int i = 0; i < list.size(); ++i)
        if (list.at(i).name.compare(name, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

const SavedScript *ScriptLibrary::find(const QString &name) const
{
    const int index = indexOf(name);
    return index < 0 ? nullptr : &list.at(index);
}

const SavedScript *ScriptLibrary::findKey(int key) const
{
    for (const SavedScript &script : list)
        if (key && script.key == key)
            return &script;
    return nullptr;
}

void ScriptLibrary::insert(const SavedScript &script)
{
    const auto place = std::lower_bound(list.begin(), list.end(), script,
                                        [](const SavedScript &a, const SavedScript &b) {
                                            return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
                                        });
    list.insert(place, script);
}

bool ScriptLibrary::store(SavedScript script, QString *error)
{
    script.name = script.name.simplified();
    *error = faultOf(script);
    const int old = indexOf(script.name);
    if (error->isEmpty() && old < 0 && list.size() >= kMostScripts)
        *error = tr("There are %1 saved scripts already. Delete one first.").arg(kMostScripts);
    if (!error->isEmpty())
        return false;
    if (old >= 0) {
        script.key = script.key ? script.key : list.at(old).key;
        list.removeAt(old);
    }
    if (findKey(script.key))
        script.key = 0;
    insert(script);
    emit changed();
    return true;
}

bool ScriptLibrary::rename(const QString &from, const QString &to, QString *error)
{
    const int index = indexOf(from);
    if (index < 0)
        return false;
    SavedScript script = list.at(index);
    script.name = to.simplified();
    *error = faultOf(script);
    const int taken = indexOf(script.name);
    if (error->isEmpty() && taken >= 0 && taken != index)
        *error = tr("There is a script \"%1\" already.").arg(script.name);
    if (!error->isEmpty())
        return false;
    list.removeAt(index);
    insert(script);
    emit changed();
    return true;
}

void ScriptLibrary::remove(const QString &name)
{
    const int index = indexOf(name);
    if (index < 0)
        return;
    list.removeAt(index);
    emit changed();
}

void ScriptLibrary::setKey(const QString &name, int key)
{
    const int index = indexOf(name);
    if (index < 0)
        return;
    for (SavedScript &script : list)
        if (key && script.key == key)
            script.key = 0;
    list[index].key = key;
    emit changed();
}

void ScriptLibrary::load(const QSettings &settings)
{
    list.clear();
    const QStringList texts = storedTexts(settings, kSettingsKey);
    for (const QString &text : texts) {
        SavedScript script = fromObject(QJsonDocument::fromJson(text.toUtf8()).object());
        if (!faultOf(script).isEmpty() || indexOf(script.name) >= 0 || list.size() >= kMostScripts)
            continue;
        if (findKey(script.key))
            script.key = 0;
        insert(script);
    }
    emit changed();
}

void ScriptLibrary::save(QSettings &settings) const
{
    QStringList texts;
    for (const SavedScript &script : list)
        texts << QString::fromUtf8(QJsonDocument(toObject(script)).toJson(QJsonDocument::Compact));
    settings.setValue(kSettingsKey, texts);
}

QByteArray ScriptLibrary::toJson() const
{
    QJsonArray scripts;
    for (const SavedScript &script : list)
        scripts.append(toObject(script));
    return QJsonDocument(QJsonObject{{QStringLiteral("format"), QLatin1String(kForm)},
                                     {QStringLiteral("scripts"), scripts}})
        .toJson();
}

int ScriptLibrary::addJson(const QByteArray &json, QString *error)
{
    QJsonParseError parse;
    const QJsonObject object = QJsonDocument::fromJson(json, &parse).object();
    if (object.value(QLatin1String("format")).toString() != QLatin1String(kForm)) {
        *error = parse.error == QJsonParseError::NoError
                     ? tr("This is no file of saved scripts.")
                     : tr("This is no file of saved scripts: %1").arg(parse.errorString());
        return -1;
    }
    QList<SavedScript> added;
    const QJsonArray scripts = object.value(QLatin1String("scripts")).toArray();
    for (const QJsonValue &value : scripts) {
        added << fromObject(value.toObject());
        *error = faultOf(added.constLast());
        if (!error->isEmpty())
            return -1;
    }
    if (list.size() + added.size() > kMostScripts) {
        *error = tr("More than %1 saved scripts cannot be kept.").arg(kMostScripts);
        return -1;
    }
    for (SavedScript &script : added) {
        const QString name = script.name.left(kLongestName - 8);
        for (int n = 2; indexOf(script.name) >= 0; ++n)
            script.name = QStringLiteral("%1 (%2)").arg(name).arg(n);
        if (findKey(script.key))
            script.key = 0;
        insert(script);
    }
    emit changed();
    return int(added.size());
}
