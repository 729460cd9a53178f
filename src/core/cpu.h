// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Instruction sets for which the hot kernels are compiled. All give the same bits.
enum class KernelLevel { Baseline, Avx2, Avx512 };

/// The best level that this processor has and that limitKernels allows.
KernelLevel kernelLevel();

/// Caps the level from now on; tests run every kernel at every level.
void limitKernels(KernelLevel highest);

/// The level that this processor has, whatever the cap.
KernelLevel supportedKernels();

/// KERNEL_DISPATCH(function, args...) calls the variant of a kernel that suits this
/// processor. Declare each kernel with DECLARE_KERNEL(result, name, (parameters)).
#if KESTRANE_X86_KERNELS
#define DECLARE_KERNEL(result, name, parameters)                                                   \
    namespace kernels_baseline                                                                     \
    {                                                                                              \
    result name parameters;                                                                        \
    }                                                                                              \
    namespace kernels_avx2                                                                         \
    {                                                                                              \
    result name parameters;                                                                        \
    }                                                                                              \
    namespace kernels_avx512                                                                       \
    {                                                                                              \
    result name parameters;                                                                        \
    }
#define KERNEL_DISPATCH(name, ...)                                                                 \
    (kernelLevel() == KernelLevel::Avx512 ? kernels_avx512::name(__VA_ARGS__)                      \
     : kernelLevel() == KernelLevel::Avx2 ? kernels_avx2::name(__VA_ARGS__)                        \
                                          : kernels_baseline::name(__VA_ARGS__))
#else
#define DECLARE_KERNEL(result, name, parameters)                                                   \
    namespace kernels_baseline                                                                     \
    {                                                                                              \
    result name parameters;                                                                        \
    }
#define KERNEL_DISPATCH(name, ...) kernels_baseline::name(__VA_ARGS__)
#endif
