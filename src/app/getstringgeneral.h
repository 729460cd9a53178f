// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QLineEdit;

/// A modal question for one line of text.
class GetStringGeneral : public QDialog
{
    Q_OBJECT
public:
    GetStringGeneral(const QString &title, const QString &prompt, const QString &preset,
                     QWidget *parent = nullptr);

    QString text() const;

private:
    QLineEdit *line;
};
