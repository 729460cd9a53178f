// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/appsettings.h"
#include "app/assignsdialog.h"
#include "app/downloadmanager.h"
#include "app/filepicker.h"
#include "app/keyeditor.h"
#include "app/preferences.h"
#include "app/problemlist.h"
#include "app/recovery.h"
#include "app/scriptdesk.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/operators.h"
#include "ui_mainwindow.h"
#include "views/imgwindow.h"
#include "views/keyfile.h"
#include "views/keytable.h"

#include <QApplication>
#include <QDebug>
#include <QSettings>
#include <QToolButton>

#include <algorithm>

namespace
{
/// Settings whose change shows in every image window.
const QStringList kSeenInWindows = {
    QStringLiteral("checkerOn"),       QStringLiteral("checkerDark"),
    QStringLiteral("checkerLight"),    QStringLiteral("gridState"),
    QStringLiteral("gridColorToggle"), QStringLiteral("showRulers"),
    QStringLiteral("rulerUnit"),       QStringLiteral("snapGridX"),
    QStringLiteral("snapGridY"),       QStringLiteral("snapOffsetX"),
    QStringLiteral("snapOffsetY"),     QStringLiteral("snapGridShown"),
    QStringLiteral("guidesShown"),     QStringLiteral("showNotations"),
    QStringLiteral("dashLength"),      QStringLiteral("aSelectColor"),
    QStringLiteral("marchingOutline"), QStringLiteral("splitView")};
} // namespace

void MainWindow::loadKeys()
{
    const QByteArray text = storedText(*store, QStringLiteral("keyBindings")).toUtf8();
    QStringList problems;
    keyTable() = KeyTable::defaults();
    if (!text.isEmpty())
        keysFromText(text, &keyTable(), &problems);
    for (const QString &problem : qAsConst(problems))
        qDebug().noquote() << "key table:" << problem;
    showKeysInMenus();
}

PreferencesExtras MainWindow::preferencesExtras() const
{
    PreferencesExtras extras;
    extras.versionHost = versionHost;
    extras.serialNumber = serialNumber;
    extras.customIcons = customIcons;
    extras.toolIcons = toolIcons;
    for (const QToolButton *button : toolButtons)
        extras.iconNames << button->defaultAction()->iconText();
    return extras;
}

void MainWindow::on_actionPreferences_triggered()
{
    if (busy > 0)
        return;
    Preferences dialog(
        preferencesExtras(),
        [this]() {
            return filePicker::pick(QApplication::activeModalWidget(), &customIconsFileBag,
                                    filePicker::PickFor::Open, tr("Icon of a Tool Button"))
                .value(0);
        },
        this);
    connect(&dialog, &Preferences::applied, this, [this, &dialog](const QStringList &keys) {
        versionHost = dialog.extras().versionHost;
        serialNumber = dialog.extras().serialNumber;
        customIcons = dialog.extras().customIcons;
        applySettings(keys);
    });
    connect(&dialog, &Preferences::assignsRequested, this,
            &MainWindow::on_actionAssigned_Paths_triggered);
    connect(&dialog, &Preferences::keysRequested, this, &MainWindow::on_actionKeys_triggered);
    connect(&dialog, &Preferences::exportRequested, this, [this, &dialog]() {
        const QString path = filePicker::pick(&dialog, &settingsFileBag, filePicker::PickFor::Save,
                                              tr("Export Settings"), QStringLiteral("kestrane"))
                                 .value(0);
        if (!path.isEmpty())
            exportSettingsTo(path);
    });
    connect(&dialog, &Preferences::importRequested, this, [this, &dialog]() {
        const QString path = filePicker::pick(&dialog, &settingsFileBag, filePicker::PickFor::Open,
                                              tr("Import Settings"))
                                 .value(0);
        if (!path.isEmpty() && importSettingsFrom(path))
            dialog.reload(preferencesExtras());
    });
    dialog.exec();
}

void MainWindow::exportSettingsTo(const QString &path)
{
    saveSettings();
    markRunInProgress(); // which saveSettings wrote as it stands in memory
    QString error;
    if (exportSettings(*store, path, &error))
        statusText(tr("Settings exported to %1").arg(path));
    else
        messageBox(tr("Export Settings"), error.toHtmlEscaped());
}

bool MainWindow::importSettingsFrom(const QString &path)
{
    QStringList problems;
    QString error;
    if (!importSettings(path, store.get(), &problems, &error)) {
        messageBox(tr("Import Settings"), error.toHtmlEscaped());
        return false;
    }
    for (FileBag *bag : fileBags())
        bag->load(*store);
    loadSettings();
    operators->settings(false);
    loadKeys();
    customIcons = storedTexts(*store, QStringLiteral("customIcons"));
    QStringList keys;
    for (const Setting &setting : settings())
        keys << QString::fromLatin1(setting.key);
    applySettings(keys << QStringLiteral("customIcons") << QStringLiteral("versionHost"));
    showWells();
    if (!problems.isEmpty())
        showProblems(QApplication::activeModalWidget(), tr("Import Settings"),
                     tr("Some settings were not taken:"), problems);
    statusText(tr("Settings imported"));
    return true;
}

/// What has to follow when settings have got other values.
void MainWindow::applySettings(const QStringList &keys)
{
    const auto any = [&keys](const QStringList &of) {
        return std::any_of(of.begin(), of.end(),
                           [&keys](const QString &key) { return keys.contains(key); });
    };
    const bool zoomChanged = keys.contains(QLatin1String("zoomSteps"));
    for (imgWindow *window : qAsConst(windows)) {
        if (zoomChanged)
            window->buildZooms();
        if (zoomChanged || any(kSeenInWindows)) {
            window->ongridchangetriggered();
            window->refresh();
        }
    }
    if (any({QStringLiteral("toolIconSize"), QStringLiteral("customIcons")}))
        applyToolIcons();
    if (keys.contains(QLatin1String("recoveryMinutes")))
        recovery->setMinutes(recoveryMinutes);
    if (keys.contains(QLatin1String("opFavOn")))
        on_actionOperator_Favorites_triggered(favoritesShown);
    if (keys.contains(QLatin1String("recentLimit")))
        recentFiles.setLimit(recentLimit);
    if (keys.contains(QLatin1String("versionHost")))
        downloadManager->host = versionHost;
    refreshOperatorSource();
    updateMenus();
}

void MainWindow::on_actionAssigned_Paths_triggered()
{
    QWidget *parent = QApplication::activeModalWidget();
    AssignsDialog dialog(parent ? parent : this);
    dialog.exec();
}

QString MainWindow::useOfKey(int key) const
{
    if (const SavedScript *script = scripts->library.findKey(key))
        return tr("the key of the saved script %1").arg(script->name);
    return otherUseOfKey(key);
}

QString MainWindow::useOfScriptKey(int key) const
{
    const WindowCommand *command = windowCommand(keyTable().commandAt(key));
    return command ? tr("the key of the command %1").arg(command->title()) : otherUseOfKey(key);
}

/// What a key does beside window commands and saved scripts.
QString MainWindow::otherUseOfKey(int key) const
{
    const int letter = key & ~int(Qt::SHIFT);
    if (letter < Qt::Key_A || letter > Qt::Key_Z)
        return QString();
    const QChar shown(letter);
    const QString typed = key & int(Qt::SHIFT) ? QString(shown) : QString(shown.toLower());
    if (typed == QLatin1String("h"))
        return tr("kept for the program");
    for (const OpWrapper *op : table->operators())
        if (op->hotkey == typed)
            return tr("the hotkey of the operator %1").arg(op->menuName);
    return QString();
}

void MainWindow::on_actionKeys_triggered()
{
    if (busy > 0)
        return;
    QWidget *parent = QApplication::activeModalWidget();
    const auto otherUse = [this](int key) { return useOfKey(key); };
    const auto pick = [this](bool save) {
        return filePicker::pick(QApplication::activeModalWidget(), &kbdConfigFileBag,
                                save ? filePicker::PickFor::Save : filePicker::PickFor::Open,
                                save ? tr("Save Key Table") : tr("Load Key Table"),
                                save ? QStringLiteral("keys") : QString())
            .value(0);
    };
    KeyEditor dialog(otherUse, pick, parent ? parent : this);
    connect(&dialog, &KeyEditor::keysChanged, this, &MainWindow::showKeysInMenus);
    dialog.exec();
}
