// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class OperatorTable;

/// Adds every operator of the program to the table, in id order. It stands above the
/// operator groups because it has to name each class; the table itself does not.
void addAllOperators(OperatorTable *table);
