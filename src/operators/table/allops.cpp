// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/table/allops.h"

#include "operators/adjustment/negative.h"
#include "operators/base/operatortable.h"
#include "operators/filter/exposure.h"
#include "script/run/script.h"

#include <new>

namespace
{
/// One row. Without memory the table gets a null operator, and says so.
template <class Operator>
void addRow(OperatorTable *table, int id, OperatorGroup group, const char *scriptName,
            const char *menuName, const char *helpPage)
{
    table->add(id, group, scriptName, menuName, helpPage,
               std::unique_ptr<OpWrapper>(new (std::nothrow) Operator(table)));
}
} // namespace

void addAllOperators(OperatorTable *table)
{
    addRow<Exposure>(table, 29, kGroupFilter, "exposure", "Exposure", "opexposure.html");
    addRow<Negative>(table, 62, kGroupAdjustment, "negative", "Negative", "opnegative.html");
    addRow<Script>(table, 82, kGroupMacros, "script", "Script", "opscript.html");
}
