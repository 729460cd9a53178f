// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QList>

class QListWidget;
class image;

/// Lets the person pick some of these images by their small pictures and titles.
class ImagePicker : public QDialog
{
    Q_OBJECT
public:
    ImagePicker(const QString &title, const QString &goOn, const QList<image *> &offered,
                QWidget *parent);

    /// What is selected, in the order of the list.
    QList<image *> picked() const;

private:
    QList<image *> images;
    QListWidget *list;
};
