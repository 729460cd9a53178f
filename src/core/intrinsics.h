// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The processor's vector instructions, for kernels that a compiler makes too little of.
/// Nothing on processors without SSE2.
#ifdef __SSE2__
#ifndef __clang__
// GCC 12 takes the undefined lanes inside its own wide conversions for a mistake of ours.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#ifndef __clang__
#pragma GCC diagnostic pop
#endif
#endif
