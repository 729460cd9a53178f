// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// A table of the statistics that Sample keeps, in mark-up for a label: minimum, average and
/// maximum of each channel, as a byte with the 16-bit sample below, with a swatch of each colour.
QString statisticsText();
