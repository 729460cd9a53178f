// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/batch.h"

#include <QStringList>

#include <sstream>
#include <string>

/// What one run of the tool in this process gave.
struct ToolRun {
    int status;
    std::string out, messages;
};

inline ToolRun runInProcess(const QStringList &arguments, const std::string &input = {},
                            bool terminal = false)
{
    std::istringstream in(input);
    std::ostringstream out, messages;
    const int status = runTool(arguments, {in, out, messages, terminal, terminal});
    return {status, out.str(), messages.str()};
}
