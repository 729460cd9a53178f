// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/linearmix_kernels.h"

/// The colour models' conversions on whole planes, truncated on store; the mask plays no part.
DECLARE_KERNEL(void, toYrbSpan, (const MixSpan &span))
DECLARE_KERNEL(void, fromYrbSpan, (const MixSpan &span))
