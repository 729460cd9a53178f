// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/preferencepage.h"

#include <QDialog>
#include <QIcon>
#include <QStringList>

#include <functional>
#include <vector>

class QDialogButtonBox;
class QListWidget;
class QStackedWidget;

/// What a person can set that is no setting of the workspace.
struct PreferencesExtras {
    QString versionHost;
    QString serialNumber;
    QStringList customIcons; ///< files for the tool buttons, in their order; empty: the own icon
    QStringList iconNames;   ///< what the buttons are called
    QList<QIcon> toolIcons;  ///< the buttons' own icons, to be shown in the list
};

/// The icon in a person's PNG file, for a tool button; null with the reason if the file is
/// none or larger than a button can make use of.
QIcon readToolIcon(const QString &path, QString *error);

/// The settings in pages. OK and Apply write them to the workspace; Cancel leaves what was
/// not applied.
class Preferences : public QDialog
{
    Q_OBJECT
public:
    /// `pick` asks for a PNG file; empty if the person gave up.
    Preferences(const PreferencesExtras &extras, std::function<QString()> pick, QWidget *parent);
    ~Preferences() override;

    /// As they were last applied.
    const PreferencesExtras &extras() const { return given; }
    /// Shows the workspace's settings and these anew, for instance after an import.
    void reload(const PreferencesExtras &extras);
    void showPage(int page);
    void accept() override;

signals:
    /// These settings have other values now. Of the extras, the keys are "versionHost",
    /// "serialNumber" and "customIcons".
    void applied(const QStringList &changedKeys);
    void assignsRequested();
    void keysRequested();
    void importRequested();
    void exportRequested();

private:
    void addPages();
    void addPage(PreferencePage *page);
    void addButtons();
    void fitPages();
    PreferencePage *generalPage();
    PreferencePage *displayPage();
    PreferencePage *snappingPage();
    PreferencePage *filesPage();
    PreferencePage *metadataPage();
    PreferencePage *operatorsPage();
    /// The values of all pages, as they stand in the fields.
    PreferenceValues fieldValues() const;
    PreferenceValues presentValues() const;
    void updateApply();
    void apply();
    void store(const QString &key, const QString &value);

    PreferencesExtras given;
    std::function<QString()> pickIcon;
    QListWidget *pageList;
    QStackedWidget *stack;
    QDialogButtonBox *buttons;
    std::vector<PreferencePage *> pages;
};
