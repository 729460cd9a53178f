// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filepickerline.h"

#include "app/assigns.h"
#include "app/filepickerrules.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QDir>
#include <QDirIterator>
#include <QKeyEvent>
#include <QStringListModel>

#include <algorithm>

namespace
{
constexpr int kMostOffered = 2000;
} // namespace

PathLine::PathLine(Completes completes, QWidget *parent)
    : QLineEdit(parent), what(completes), offered(new QStringListModel(this))
{
    auto *completer = new QCompleter(offered, this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setMaxVisibleItems(12);
    setCompleter(completer);
    connect(this, &QLineEdit::textEdited, this, &PathLine::offer);
}

void PathLine::setFolder(const QString &path)
{
    folder = path;
    offeredStem = QString();
}

void PathLine::setPatterns(const QStringList &wildcards)
{
    patterns = wildcards;
    offeredStem = QString();
}

/// The offers change with the folder that the text leads to, not with every letter.
void PathLine::offer(const QString &typed)
{
    const int end = std::max(typed.lastIndexOf(QLatin1Char('/')), typed.indexOf(QLatin1Char(':')));
    const QString stem = typed.left(end + 1);
    if (!offeredStem.isNull() && stem == offeredStem)
        return;
    offeredStem = stem.isNull() ? QLatin1String("") : stem;
    const QString place = stem.isEmpty() ? folder : absolutePathOf(stem, folder);
    QStringList paths;
    QDir::Filters filters = QDir::AllDirs | QDir::NoDotAndDotDot;
    if (what == Completes::FoldersAndFiles)
        filters |= QDir::Files;
    QDirIterator files(place, patterns, filters);
    while (files.hasNext() && paths.size() < kMostOffered) {
        files.next();
        paths << stem + files.fileName();
    }
    if (stem.isEmpty())
        for (const QString &name : assigns().names())
            paths << name + QLatin1Char(':');
    paths.sort(Qt::CaseInsensitive);
    offered->setStringList(paths);
}

void PathLine::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    completer()->popup()->hide();
    event->accept();
    emit entered();
}
