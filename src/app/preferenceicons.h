// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/preferencepage.h"

#include <QIcon>
#include <QStringList>

#include <functional>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

/// The key of the files of the tool buttons' icons; its value has one line for each button.
constexpr const char *kCustomIconsKey = "customIcons";

/// The page on which a person gives tool buttons icons of their own.
class ToolIconPage : public PreferencePage
{
    Q_OBJECT
public:
    /// The names and the own icons of the buttons, in their order.
    ToolIconPage(const QStringList &names, const QList<QIcon> &icons,
                 std::function<QString()> pick);

    void show(const PreferenceValues &values) override;
    void read(PreferenceValues *values) const override;
    void showDefaults() override;

private:
    void addButtons();
    void setFile(QTreeWidgetItem *item, const QString &path);
    void change();
    void useOwn();
    void updateButtons();

    QList<QIcon> ownIcons;
    std::function<QString()> pickIcon;
    QTreeWidget *list;
    QPushButton *changeButton = nullptr, *ownButton = nullptr;
};
