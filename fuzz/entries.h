// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <vector>

/// What the fuzz targets run, and what the tests replay their findings through. An entry
/// takes the bytes of a file, and aborts if the reader left anything wrong behind.
struct FuzzEntry {
    const char *name; ///< of the target and of its folder under regressions/
    void (*run)(const uint8_t *data, size_t size);
};

const std::vector<FuzzEntry> &fuzzEntries();

/// Runs the entry of that name.
void runFuzzEntry(const std::vector<FuzzEntry> &entries, const char *name, const uint8_t *data,
                  size_t size);

/// A file in memory with this content; it stands until the next one of this extension.
QString inputFile(const char *extension, const uint8_t *data, size_t size);

/// Extensions that the first byte of a "dispatch" input chooses from.
const std::vector<const char *> &dispatchExtensions();
