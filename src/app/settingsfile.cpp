// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appsettings.h"
#include "core/workspace.h"
#include "formats/writers.h"
#include "views/keyfile.h"

#include <QCoreApplication>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSettings>

#include <algorithm>

// The file is read here and not by QSettings: that one would build any kind of object that
// a stranger's file asks for.

namespace
{
constexpr const char *kHead = "[Kestrane settings 1]";
constexpr const char *kListMark = "[]"; ///< behind the key, on each line of a list
constexpr qint64 kMostBytes = 4 << 20;
constexpr int kMostLines = 20000;
constexpr int kMostProblems = 200;
constexpr int kShownOfKey = 60;

/// A file from elsewhere must not tell this program whom to call, nor where it stood.
constexpr const char *kOfThisMachine[] = {
    "appWasOkay", "successOnAsk",     "versionHost",      "opsX",
    "opsY",       "scriptEditorFile", "scriptPresetsFile"};
constexpr const char *kMachineEndings[] = {"position", "place", "geometry", "/folder"};
constexpr const char *kMachineGroups[] = {"recentFiles", "recentFolders", "recentScripts"};

QString translated(const char *text)
{
    return QCoreApplication::translate("SettingsFile", text);
}

bool isOfThisMachine(const QString &key)
{
    const auto is = [&key](const char *name) { return key == QLatin1String(name); };
    const auto endsWith = [&key](const char *ending) {
        return key.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
    };
    const auto inGroup = [&key](const char *group) {
        return key.section(QLatin1Char('/'), 0, 0) == QLatin1String(group);
    };
    return std::any_of(std::begin(kOfThisMachine), std::end(kOfThisMachine), is) ||
           std::any_of(std::begin(kMachineEndings), std::end(kMachineEndings), endsWith) ||
           std::any_of(std::begin(kMachineGroups), std::end(kMachineGroups), inGroup);
}

/// A key that a line can begin with.
bool isPlainKey(const QString &key)
{
    static const QRegularExpression plain(
        QStringLiteral("\\A[^\\s\\p{C};#/=\\[\\]\\\\][^\\p{C}=\\[\\]\\\\]{0,149}\\z"));
    return plain.match(key).hasMatch();
}

QString escaped(QString text)
{
    return text.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('\n'), QLatin1String("\\n"))
        .replace(QLatin1Char('\r'), QLatin1String("\\r"));
}

QString unescaped(const QString &text)
{
    QString plain;
    plain.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const bool escape = text.at(i) == QLatin1Char('\\') && i + 1 < text.size();
        const QChar sign = escape ? text.at(++i) : text.at(i);
        plain += !escape                    ? sign
                 : sign == QLatin1Char('n') ? QLatin1Char('\n')
                 : sign == QLatin1Char('r') ? QLatin1Char('\r')
                                            : sign;
    }
    return plain;
}

QByteArray lineOf(const QString &key, const char *mark, const QString &value)
{
    return (key + QLatin1String(mark) + QLatin1Char('=') + escaped(value) + QLatin1Char('\n'))
        .toUtf8();
}

/// The lines of one key; none for what is no text, such as the place of a window.
QByteArray linesOf(const QSettings &store, const QString &key)
{
    QByteArray lines;
    if (store.value(key).type() == QVariant::StringList) {
        const QStringList texts = storedTexts(store, key);
        for (const QString &text : texts)
            lines += lineOf(key, kListMark, text);
        return lines;
    }
    const QString text = storedText(store, key);
    return text.isNull() ? lines : lineOf(key, "", text);
}

/// Reads the lines of a file of settings.
class SettingsReader
{
public:
    /// False with a reason if these bytes are no file of settings.
    bool read(const QByteArray &bytes, QString *error);

    QMap<QString, QString> texts;
    QMap<QString, QStringList> lists;
    QStringList problems;

private:
    void readLine(const QString &line);
    void refuse(const QString &key, const QString &why);
    static bool isSensible(const QString &key, const QString &text, bool isList);

    int lineNumber = 1;
};

void SettingsReader::refuse(const QString &key, const QString &why)
{
    if (problems.size() < kMostProblems)
        problems << translated("Line %1: %2: %3")
                        .arg(QString::number(lineNumber), key.left(kShownOfKey), why);
    else if (problems.size() == kMostProblems)
        problems << translated("There are more lines like these.");
}

bool SettingsReader::isSensible(const QString &key, const QString &text, bool isList)
{
    if (text.contains(QChar(0)))
        return false;
    if (key == QLatin1String("keyBindings")) {
        KeyTable ignored;
        return !isList && keysFromText(text.toUtf8(), &ignored, nullptr);
    }
    Workspace *space = workspace();
    const QString present = space ? space->settingText(key) : QString();
    if (present.isNull())
        return true;
    // The workspace itself knows best what it takes; it is left as it was.
    const bool taken = !isList && space->setSetting(key, text, nullptr);
    space->setSetting(key, present, nullptr);
    return taken;
}

void SettingsReader::readLine(const QString &line)
{
    if (line.trimmed().isEmpty() || line.startsWith(QLatin1Char(';')) ||
        line.startsWith(QLatin1Char('#')))
        return;
    const int equals = line.indexOf(QLatin1Char('='));
    QString key = line.left(equals).trimmed();
    const bool isList = key.endsWith(QLatin1String(kListMark));
    if (isList)
        key.chop(int(qstrlen(kListMark)));
    const QString text = unescaped(line.mid(equals + 1));
    if (equals < 0 || !isPlainKey(key))
        refuse(key, translated("this is no setting"));
    else if (isOfThisMachine(key))
        refuse(key, translated("this is not taken over from another machine"));
    else if (!isSensible(key, text, isList))
        refuse(key, translated("\"%1\" is no value of it").arg(text.left(kShownOfKey)));
    else if (isList)
        lists[key] << text;
    else
        texts[key] = text;
}

bool SettingsReader::read(const QByteArray &bytes, QString *error)
{
    const QString text = QString::fromUtf8(bytes);
    const QVector<QStringRef> lines = text.splitRef(QLatin1Char('\n'));
    if (lines.constFirst().trimmed() != QLatin1String(kHead)) {
        *error = translated("This is no file of settings: it does not begin with \"%1\".")
                     .arg(QLatin1String(kHead));
        return false;
    }
    if (lines.size() > kMostLines) {
        *error = translated("This file has too many lines for one of settings.");
        return false;
    }
    for (lineNumber = 2; lineNumber <= lines.size(); ++lineNumber) {
        QString line = lines.at(lineNumber - 1).toString();
        if (line.endsWith(QLatin1Char('\r'))) // an editor of another system was here
            line.chop(1);
        readLine(line);
    }
    return true;
}

bool readWhole(const QString &path, QByteArray *bytes, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = translated("\"%1\" could not be read: %2").arg(path, file.errorString());
        return false;
    }
    *bytes = file.read(kMostBytes + 1);
    if (bytes->size() > kMostBytes) {
        *error = translated("\"%1\" is too long for a file of settings.").arg(path);
        return false;
    }
    return true;
}
} // namespace

bool exportSettings(const QSettings &store, const QString &path, QString *error)
{
    QByteArray bytes = QByteArray(kHead) + '\n';
    QStringList keys = store.allKeys();
    keys.sort();
    for (const QString &key : qAsConst(keys))
        if (isPlainKey(key) && !isOfThisMachine(key))
            bytes += linesOf(store, key);
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && commitWhole(file))
        return true;
    if (error)
        *error = translated("\"%1\" could not be written: %2").arg(path, file.errorString());
    return false;
}

bool importSettings(const QString &path, QSettings *store, QStringList *problems, QString *error)
{
    QByteArray bytes;
    SettingsReader reader;
    QString reason;
    if (!readWhole(path, &bytes, &reason) || !reader.read(bytes, &reason)) {
        if (error)
            *error = reason;
        return false;
    }
    for (auto text = reader.texts.cbegin(); text != reader.texts.cend(); ++text)
        store->setValue(text.key(), text.value());
    for (auto list = reader.lists.cbegin(); list != reader.lists.cend(); ++list)
        store->setValue(list.key(), list.value());
    store->sync();
    if (problems)
        *problems = reader.problems;
    return true;
}
