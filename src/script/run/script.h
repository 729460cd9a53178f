// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/opwrapper.h"

#include <QString>

class ScriptRunner;
class exParser;

/// The operator whose parameter is a program.
class Script : public OpWrapper
{
    Q_OBJECT
public:
    explicit Script(OperatorTable *table);
    ~Script() override;

    void reset() override;
    void apply(image *target, image *brush) override;
    void settings(bool save) override;
    int editor(int index, QObject *sender) override;
    int codeedit(QObject *sender) override;
    void build(OpPage *page) override;

    QString text;             ///< the program
    QString presets;          ///< run before it
    bool presetsOn = true;    ///< whether they are
    ScriptRunner *runner = nullptr; ///< borrowed; without one nothing runs
};
