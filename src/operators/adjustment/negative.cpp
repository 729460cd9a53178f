// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/negative.h"

#include "operators/pipeline/linearmix.h"

Negative::Negative(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("NegativeHotkey");
}

void Negative::apply(image *target, image *)
{
    mixComplement(target);
}
