// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/script.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/oppage.h"
#include "script/run/scriptrunner.h"

#include <QSettings>
#include <QVariant>

Script::Script(OperatorTable *table) : OpWrapper(table) {}

Script::~Script() = default;

void Script::reset()
{
    setPresetsOn(true);
}

void Script::apply(image *target, image *)
{
    if (!runner)
        return;
    const ScriptEnd end = runner->run(target, presetsOn ? presets : QString(), text);
    if (end == ScriptEnd::Refused && workspace() && !ops->isInternal(target))
        workspace()->statusText(tr("Another script is running: this one was not started"));
}

void Script::settings(bool save)
{
    if (!ops || !ops->store)
        return;
    QSettings &store = *ops->store;
    const auto key = [this](const char *name) { return ops->prefix + QLatin1String(name); };
    if (save) {
        store.setValue(key("Script"), text);
        store.setValue(key("ScriptPresets"), presets);
        store.setValue(key("ScriptPresetsOn"), presetsOn);
        store.setValue(key("ScriptHotkey"), hotkey);
        return;
    }
    text = store.value(key("Script"), text).toString();
    presets = store.value(key("ScriptPresets"), presets).toString();
    presetsOn = store.value(key("ScriptPresetsOn"), presetsOn).toBool();
    hotkey = store.value(key("ScriptHotkey"), hotkey).toString();
}

int Script::button(int index)
{
    if (index == 0 && openEditor)
        openEditor();
    return 1;
}

int Script::checkbox(int index, bool state)
{
    if (index == presetsCheck)
        presetsOn = state;
    return 1;
}

int Script::editor(int, QObject *sender)
{
    takeText(sender);
    return 1;
}

int Script::codeedit(QObject *sender)
{
    takeText(sender);
    return 1;
}

/// Text editors of all kinds have their text as this property.
void Script::takeText(const QObject *editorWidget)
{
    const QVariant written = editorWidget ? editorWidget->property("plainText") : QVariant();
    if (written.isValid())
        text = written.toString();
}

void Script::build(OpPage *page)
{
    codeEditor = page->addCodeEditor(text);
    presetsCheck = page->addCheck(tr("Run the presets first"), presetsOn, true);
    page->addButton(tr("Open Editor"), true);
}

void Script::setText(const QString &newText)
{
    text = newText;
    if (OpPage *page = ownPage())
        page->setCodeEditor(codeEditor, text);
}

void Script::setPresetsOn(bool on)
{
    presetsOn = on;
    if (OpPage *page = ownPage())
        page->setCheck(presetsCheck, on);
}

OpPage *Script::ownPage() const
{
    return ops && ops->current() == this ? ops->page : nullptr;
}
