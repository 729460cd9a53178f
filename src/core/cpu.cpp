// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/cpu.h"

#include <algorithm>
#include <atomic>

namespace
{
std::atomic<KernelLevel> cap{KernelLevel::Avx512};

KernelLevel detect()
{
#if KESTRANE_X86_KERNELS
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("avx2"))
        return KernelLevel::Baseline;
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl"))
        return KernelLevel::Avx512;
    return KernelLevel::Avx2;
#else
    return KernelLevel::Baseline;
#endif
}
} // namespace

KernelLevel supportedKernels()
{
    static const KernelLevel level = detect();
    return level;
}

KernelLevel kernelLevel()
{
    return std::min(supportedKernels(), cap.load(std::memory_order_relaxed));
}

void limitKernels(KernelLevel highest)
{
    cap.store(highest, std::memory_order_relaxed);
}
