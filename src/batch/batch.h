// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <iosfwd>

/// Where a run of the tool reads and writes.
struct Streams {
    std::istream &in;
    std::ostream &out;
    std::ostream &messages;
    bool inIsTerminal = false;
    bool messagesAreTerminal = false;
};

/// The whole of kestrane-batch: runs the tool with the arguments after its name, and
/// returns its exit status.
int runTool(const QStringList &arguments, const Streams &streams);
