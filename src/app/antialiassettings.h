// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

/// Radius, amount and per-tool switches of the smoothing of selections. Not modal, goes when
/// it is closed; changes hold at once.
class AntialiasSettings : public QDialog
{
    Q_OBJECT
public:
    explicit AntialiasSettings(QWidget *parent);

public slots:
    /// A switch was changed elsewhere, by a key for instance.
    void settingsChanged();
};
