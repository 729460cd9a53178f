// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "entries.h"

#include <QCoreApplication>

/// Defines the two functions that libFuzzer calls, for the entry of that name.
#define FUZZ_TARGET(entry)                                                                         \
    extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)                                   \
    {                                                                                              \
        static QCoreApplication app(*argc, *argv);                                                 \
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});     \
        return 0;                                                                                  \
    }                                                                                              \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)                        \
    {                                                                                              \
        runFuzzEntry(entry, data, size);                                                           \
        return 0;                                                                                  \
    }
