// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "entries.h"

#include <QCoreApplication>

/// Defines the two functions that libFuzzer calls, for the entry of that name in a list.
#define FUZZ_TARGET_OF(Application, entries, entry)                                                \
    extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)                                   \
    {                                                                                              \
        static Application app(*argc, *argv);                                                      \
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});     \
        return 0;                                                                                  \
    }                                                                                              \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)                        \
    {                                                                                              \
        runFuzzEntry(entries, entry, data, size);                                                  \
        return 0;                                                                                  \
    }

/// The same for a reader of files.
#define FUZZ_TARGET(entry) FUZZ_TARGET_OF(QCoreApplication, fuzzEntries(), entry)
