# SPDX-License-Identifier: GPL-3.0-or-later
# kestrane_kernels(TARGET FILE...)
# Compiles each hot kernel file three times, for the baseline, AVX2 and AVX-512
# (on 256-bit registers, which are faster here than 512-bit ones), with
# KERNEL_NAMESPACE set to another name each time. core/cpu.h picks one at run time.
# A kernel file keeps everything but its entry points in an anonymous namespace and
# includes no header with shared inline functions that are not always inlined:
# otherwise the linker could keep an AVX copy of a function for the baseline.
function(kestrane_kernels target)
    set(variants baseline)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
        list(APPEND variants avx2 avx512)
        target_compile_definitions(${target} PUBLIC KESTRANE_X86_KERNELS=1)
    endif()
    set(avx2_flags -mavx2)
    set(avx512_flags -mavx2 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mprefer-vector-width=256)
    foreach(file ${ARGN})
        foreach(variant ${variants})
            get_filename_component(stem ${file} NAME_WE)
            set(object ${target}_${stem}_${variant})
            add_library(${object} OBJECT ${file})
            target_link_libraries(${object} PRIVATE kestrane_flags)
            target_compile_definitions(${object} PRIVATE KERNEL_NAMESPACE=kernels_${variant})
            target_compile_options(${object} PRIVATE -O3 -fno-exceptions ${${variant}_flags})
            target_sources(${target} PRIVATE $<TARGET_OBJECTS:${object}>)
        endforeach()
    endforeach()
endfunction()
