// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/filepreview.h"

#include <QWidget>

class QLabel;
struct FolderEntry;

/// Shows one file at the right of the file dialog: its picture and what is known of it.
class FilePreviewPane : public QWidget
{
    Q_OBJECT
public:
    explicit FilePreviewPane(QWidget *parent = nullptr);

    /// Names the file whose picture is still to come.
    void showFile(const FolderEntry &file);
    void showPreview(const FilePreview &preview);
    /// Shows a text alone.
    void showText(const QString &text);

    /// Device pixels of the side of the square that pictures are made for.
    int side() const;
    QSize sizeHint() const override;
    const QImage &picture() const { return shown; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QRect pictureRect() const;
    void elideName();

    QImage shown;
    QString note, name;
    QLabel *nameLabel, *factsLabel;
    QString kindText, sizeText;
};
