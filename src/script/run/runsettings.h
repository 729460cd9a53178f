// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include <cstdint>

class OperatorTable;

/// Acts whose outcome a setting has a part in, beside the area tools, which are bits of their
/// own numbers.
constexpr uint32_t kShapingActs = 1u << 16;  ///< what Apply does to the selection
constexpr uint32_t kBlendingActs = 1u << 17; ///< an operator

/// Keys of the settings that scripts may change for the length of a run: those that decide how
/// the acts of one of these kinds come out. Besides the workspace's own there is
/// "sampleStatistics", nine whole numbers.
QStringList runSettingKeys(uint32_t acts);
/// The present value; null for any other key. Of the current operator only those count that
/// area tools look at.
QString runSettingText(const QString &key);
/// The value that a fresh workspace has.
QString runSettingDefault(const QString &key);

/// The settings and parameters of operators that one run has changed, which come back when it
/// ends.
class RunSettings
{
public:
    /// Sets one by its key, of a parameter the whole one; false, with nothing changed, if
    /// there is none or the value is none of it. `table` may be null.
    bool use(OperatorTable *table, const QString &key, const QString &value);
    /// Gives all settings, but no parameters, the values of a fresh workspace.
    void useDefaults();
    void restore(OperatorTable *table);

private:
    void remember(const QString &key, const QString &value);

    QList<QPair<QString, QString>> before; ///< each key once
};
