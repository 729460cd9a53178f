// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QListWidget>

/// The list of places at the left of the file dialog: the person's own folders, mounted
/// volumes, assigns and the folders used lately. Whether one still exists is found out by
/// whoever goes there.
class PlacesList : public QListWidget
{
    Q_OBJECT
public:
    explicit PlacesList(QWidget *parent = nullptr);

    /// Marks the place that is shown, if it is one of the list.
    void showPlace(const QString &folder);
    QSize sizeHint() const override;

signals:
    void chosen(const QString &folder);

private:
    void addHeading(const QString &text);
    void addPlace(const QString &caption, const QString &folder, const QIcon &icon);
    void addOwnFolders();
    void addAssigns();
    void addRecent();
    void addVolumesLater();
};

/// A house in the colour of the texts of a widget.
QIcon homeIcon(const QWidget &near);
