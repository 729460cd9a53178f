// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filepickerrules.h"

#include "app/assigns.h"
#include "formats/load.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>

#include <algorithm>

namespace
{
constexpr int kLongestNameBytes = 255;

QString say(const char *text)
{
    return QCoreApplication::translate("filePicker", text);
}

/// Extensions of pictures that are not among the filters of a dialog that saves.
QStringList pictureExtensions()
{
    const QStringList known = {QStringLiteral(".mcai"), QStringLiteral(".pix"),
                               QStringLiteral(".iff"),  QStringLiteral(".bmp"),
                               QStringLiteral(".tif"),  QStringLiteral(".tiff"),
                               QStringLiteral(".webp")};
    return known + nativeExtensions() + qtExtensions() + rawExtensions();
}
} // namespace

bool isPlausiblePath(const QString &path)
{
    return QDir::isAbsolutePath(path) && path.size() <= kLongestPath &&
           path.startsWith(QLatin1Char('/')) && !path.contains(QChar(0));
}

QString expandHome(const QString &typed)
{
    if (typed == QLatin1String("~") || typed.startsWith(QLatin1String("~/")))
        return QDir::homePath() + typed.mid(1);
    return typed;
}

QString absolutePathOf(const QString &typed, const QString &folder)
{
    if (typed.isEmpty())
        return {};
    // A file of the folder may have a ":" in its name; what is there goes first.
    const QString here = QDir(folder).absoluteFilePath(typed);
    if (QFileInfo::exists(here))
        return QDir::cleanPath(here);
    return QDir::cleanPath(QDir(folder).absoluteFilePath(expandHome(assigns().resolve(typed))));
}

QString nearestFolder(const QString &folder)
{
    QString path = QDir::cleanPath(folder);
    while (isPlausiblePath(path) && path != QLatin1String("/")) {
        if (QFileInfo(path).isDir())
            return path;
        path = path.left(std::max(1, int(path.lastIndexOf(QLatin1Char('/')))));
    }
    // Everything lies under "/": to land there helps nobody who did not ask for it.
    return folder == QLatin1String("/") ? folder : QDir::homePath();
}

QStringList patternsOfFilter(const QString &filter)
{
    const int open = filter.lastIndexOf(QLatin1Char('('));
    const int close = filter.lastIndexOf(QLatin1Char(')'));
    const QString patterns =
        open >= 0 && close > open ? filter.mid(open + 1, close - open - 1) : filter;
    return patterns.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QStringList extensionsOfFilter(const QString &filter)
{
    QStringList extensions;
    static const QRegularExpression plain(QStringLiteral("^\\*(\\.[\\w.+-]+)$"));
    for (const QString &pattern : patternsOfFilter(filter))
        if (const QRegularExpressionMatch match = plain.match(pattern); match.hasMatch())
            extensions << match.captured(1);
    return extensions;
}

QString knownExtension(const QString &name, const QStringList &filters)
{
    QStringList known = pictureExtensions();
    for (const QString &filter : filters)
        known += extensionsOfFilter(filter);
    QString longest;
    for (const QString &extension : qAsConst(known))
        if (extension.size() > longest.size() && name.size() > extension.size() &&
            name.endsWith(extension, Qt::CaseInsensitive))
            longest = name.right(extension.size());
    return longest;
}

QString withoutLeftover(const QString &name, const QStringList &filters)
{
    QStringList offered;
    for (const QString &filter : filters)
        offered += extensionsOfFilter(filter);
    const QString last = knownExtension(name, filters);
    const QString stem = name.left(name.size() - last.size());
    const QString inner = knownExtension(stem, filters);
    const bool both =
        offered.contains(last, Qt::CaseInsensitive) && offered.contains(inner, Qt::CaseInsensitive);
    return both ? stem : name;
}

QString withExtension(const QString &name, const QString &filter, const QStringList &filters)
{
    const QStringList wanted = extensionsOfFilter(filter);
    const QString present = knownExtension(name, filters);
    if (wanted.isEmpty() || name.isEmpty() || wanted.contains(present, Qt::CaseInsensitive))
        return name;
    return name.left(name.size() - present.size()) + wanted.constFirst();
}

QString saveRefusal(const QString &path)
{
    const QFileInfo file(path), folder(file.path());
    const QString shown = QDir::toNativeSeparators(path);
    if (QFile::encodeName(file.fileName()).size() > kLongestNameBytes)
        return say("This name is too long. Choose a shorter one.");
    if (!folder.isDir())
        return say("There is no folder “%1”.\nMake it with “New Folder”, or choose another one.")
            .arg(file.path());
    if (file.isDir())
        return say("“%1” is a folder. Choose another name.").arg(shown);
    if (file.exists() && !file.isFile())
        return say("“%1” is no ordinary file and cannot be replaced. Choose another name.")
            .arg(shown);
    if (file.exists() && !file.isWritable())
        return say("“%1” is write-protected. Choose another name.").arg(shown);
    if (!folder.isWritable())
        return say("Nothing can be written in the folder “%1”.\nChoose another folder.")
            .arg(file.path());
    return {};
}

bool askReplace(QWidget *parent, const QString &path)
{
    const QFileInfo file(path);
    QMessageBox box(QMessageBox::Warning, say("Replace File"),
                    say("%1 exists already. Replace it?").arg(file.fileName()),
                    QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(
        say("It lies in the folder “%1”. Its content would be lost.").arg(file.path()));
    QPushButton *replace = box.addButton(say("&Replace"), QMessageBox::DestructiveRole);
    QPushButton *cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    box.exec();
    return box.clickedButton() == replace;
}
