// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/opwrapper.h"

#include <QString>

#include <functional>

class ScriptRunner;

/// The operator whose parameter is a program.
class Script : public OpWrapper
{
    Q_OBJECT
public:
    explicit Script(OperatorTable *table);
    ~Script() override;

    /// Keeps the program and its presets: they are work, not a setting.
    void reset() override;
    void apply(image *target, image *brush) override;
    void settings(bool save) override;
    int button(int index) override;
    int checkbox(int index, bool state) override;
    int editor(int index, QObject *sender) override;
    int codeedit(QObject *sender) override;
    void build(OpPage *page) override;

    /// Sets the program and shows it on the page.
    void setText(const QString &newText);
    void setPresetsOn(bool on);

    QString text;                     ///< the program
    QString presets;                  ///< run before it
    bool presetsOn = true;            ///< whether they are
    ScriptRunner *runner = nullptr;   ///< borrowed; without one nothing runs
    std::function<void()> openEditor; ///< opens the script editor window; may be empty

private:
    void takeText(const QObject *editorWidget);
    OpPage *ownPage() const;

    int codeEditor = -1, presetsCheck = -1; ///< their indices on the page
};
