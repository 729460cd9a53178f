// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/assigns.h"

#include "app/filepickerrules.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>

#include <algorithm>

namespace
{
constexpr int kDeepest = 8; ///< assigns that stand for assigns
constexpr int kMost = 256;
constexpr int kLongestName = 64;
const QString kGroup = QStringLiteral("assigns");

QString say(const char *text)
{
    return QCoreApplication::translate("Assigns", text);
}

bool isBefore(const QString &one, const QString &other)
{
    return one.compare(other, Qt::CaseInsensitive) < 0;
}

/// Why a text cannot be the name of an assign; empty if it can.
QString nameRefusal(const QString &name)
{
    const auto isAllowed = [](QChar c) {
        return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('-');
    };
    if (name.size() < 2 || name.size() > kLongestName)
        return say("A name has 2 to 64 characters.");
    if (!std::all_of(name.begin(), name.end(), isAllowed))
        return say("A name is made of letters, digits, “_” and “-”.");
    for (const char *scheme : {"file", "ftp", "http", "https", "qrc"})
        if (!name.compare(QLatin1String(scheme), Qt::CaseInsensitive))
            return say("“%1:” begins an address already. Choose another name.").arg(name);
    return {};
}

/// The name before the first ":", if what stands there is no part of a path.
QString nameOf(const QString &typed)
{
    const int colon = typed.indexOf(QLatin1Char(':'));
    const int slash = typed.indexOf(QLatin1Char('/'));
    return colon > 0 && (slash < 0 || colon < slash) ? typed.left(colon) : QString();
}

/// Whether a folder is told in one of the three ways that resolve() understands.
bool hasFolderForm(const QString &folder)
{
    return isPlausiblePath(expandHome(folder)) ||
           (folder.size() <= kLongestPath && nameRefusal(nameOf(folder)).isEmpty());
}
} // namespace

const Assigns::Entry *Assigns::find(const QString &name) const
{
    const auto found = std::find_if(entries.begin(), entries.end(), [&name](const Entry &entry) {
        return !entry.name.compare(name, Qt::CaseInsensitive);
    });
    return found == entries.end() ? nullptr : &*found;
}

void Assigns::insert(const Entry &entry)
{
    remove(entry.name);
    const auto at = std::find_if(entries.begin(), entries.end(), [&entry](const Entry &other) {
        return isBefore(entry.name, other.name);
    });
    entries.insert(at, entry);
}

bool Assigns::set(const QString &name, const QString &folder, QString *error)
{
    const QString target = folder.trimmed();
    const QString other = nameOf(target);
    *error = nameRefusal(name);
    if (!error->isEmpty())
        return false;
    if (target.isEmpty())
        *error = say("Name the folder that “%1:” stands for.").arg(name);
    else if (!hasFolderForm(target))
        *error = say("The folder has to begin with “/”, with “~/” or with another assign.");
    else if (!other.isEmpty() && !contains(other) && other.compare(name, Qt::CaseInsensitive))
        *error = say("There is no assign “%1:”.").arg(other);
    else if (int(entries.size()) >= kMost && !contains(name))
        *error = say("There are too many assigns. Remove one that is not needed.");
    if (!error->isEmpty())
        return false;
    Assigns changed = *this;
    changed.insert({name, target});
    if (changed.absoluteFolder({name, target}, 0).isEmpty()) {
        *error = say("“%1:” would stand for itself by way of other assigns, or by too many "
                     "of them.")
                     .arg(name);
        return false;
    }
    *this = changed;
    return true;
}

void Assigns::remove(const QString &name)
{
    const auto isIt = [&name](const Entry &entry) {
        return !entry.name.compare(name, Qt::CaseInsensitive);
    };
    entries.erase(std::remove_if(entries.begin(), entries.end(), isIt), entries.end());
}

QStringList Assigns::names() const
{
    QStringList all;
    for (const Entry &entry : entries)
        all << entry.name;
    return all;
}

bool Assigns::contains(const QString &name) const
{
    return find(name) != nullptr;
}

QString Assigns::folder(const QString &name) const
{
    const Entry *entry = find(name);
    return entry ? entry->folder : QString();
}

QString Assigns::absoluteFolder(const Entry &entry, int depth) const
{
    if (depth == kDeepest)
        return {};
    const QString direct = expandHome(entry.folder);
    if (QDir::isAbsolutePath(direct))
        return QDir::cleanPath(direct);
    const QString name = nameOf(entry.folder);
    const Entry *base = find(name);
    const QString under = base ? absoluteFolder(*base, depth + 1) : QString();
    if (under.isEmpty())
        return {};
    return QDir::cleanPath(under + QLatin1Char('/') + entry.folder.mid(name.size() + 1));
}

QString Assigns::resolve(const QString &typed) const
{
    const QString name = nameOf(typed);
    const QString path = name.isEmpty() ? QString() : absoluteFolder({{}, typed}, -1);
    return path.isEmpty() ? typed : path;
}

QString Assigns::shorten(const QString &path) const
{
    QString best = path;
    int longest = 0;
    for (const Entry &entry : entries) {
        const QString folder = absoluteFolder(entry, 0);
        const bool root = folder == QLatin1String("/");
        const bool inside =
            path == folder || path.startsWith(root ? folder : folder + QLatin1Char('/'));
        if (folder.size() <= longest || !inside)
            continue;
        longest = folder.size();
        best = entry.name + QLatin1Char(':') + path.mid(folder.size() + (root ? 0 : 1));
    }
    return best;
}

void Assigns::load(QSettings &store)
{
    entries.clear();
    store.beginGroup(kGroup);
    const QStringList stored = store.childKeys();
    for (const QString &name : stored) {
        const QString folder = store.value(name).toString();
        if (int(entries.size()) < kMost && nameRefusal(name).isEmpty() && hasFolderForm(folder) &&
            !contains(name))
            insert({name, folder});
    }
    store.endGroup();
}

void Assigns::save(QSettings &store) const
{
    store.remove(kGroup);
    store.beginGroup(kGroup);
    for (const Entry &entry : entries)
        store.setValue(entry.name, entry.folder);
    store.endGroup();
}

Assigns &assigns()
{
    static Assigns all;
    return all;
}
