// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/script.h"

Script::Script(OperatorTable *table) : OpWrapper(table) {}

Script::~Script() = default;

void Script::reset() {}

void Script::apply(image *, image *) {}

void Script::settings(bool) {}

int Script::editor(int, QObject *)
{
    return 0;
}

int Script::codeedit(QObject *)
{
    return 0;
}

void Script::build(OpPage *) {}
