// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/cpu.h"

#include <cstddef>
#include <cstdint>

/// out = old x (1 - m) + shifted x m, truncated, for a run of one plane.
DECLARE_KERNEL(void, mixShifted,
               (const uint16_t *old, const uint16_t *shifted, const uint16_t *mask, uint16_t *out,
                ptrdiff_t count))
