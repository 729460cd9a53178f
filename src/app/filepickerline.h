// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

class QStringListModel;

/// A line for a path or a name, completed from what lies in the folder that it leads to.
class PathLine : public QLineEdit
{
    Q_OBJECT
public:
    enum class Completes { Folders, FoldersAndFiles };

    PathLine(Completes what, QWidget *parent = nullptr);

    /// What relative paths are relative to.
    void setFolder(const QString &path);
    /// Only these files are offered.
    void setPatterns(const QStringList &wildcards);

signals:
    /// Enter was pressed. Nobody else sees that key.
    void entered();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void offer(const QString &typed);

    const Completes what;
    QString folder, offeredStem;
    QStringList patterns;
    QStringListModel *offered;
};
