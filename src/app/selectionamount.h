// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

enum class SelectionChange { Grow, Shrink, Feather };

/// Asks by how many samples the selection is to grow, shrink or be feathered; each remembers
/// its last answer while the program runs. 0 if the person gave up.
int askSelectionAmount(SelectionChange change, QWidget *parent);
