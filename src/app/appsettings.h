// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QSettings;
class Workspace;

/// Reads every stored setting of the workspace. A value that makes no sense is left out,
/// so the default stays.
void loadWorkspaceSettings(QSettings &store, Workspace &into);
void saveWorkspaceSettings(QSettings &store, const Workspace &from);
