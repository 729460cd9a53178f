# SPDX-License-Identifier: GPL-3.0-or-later
# One INTERFACE target carries the flags that every target of ours uses.
add_library(kestrane_flags INTERFACE)
target_compile_options(kestrane_flags INTERFACE
    # Results are defined to the bit: no fused multiply-add, no reordering.
    -ffp-contract=off -fno-math-errno -fno-trapping-math
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wnull-dereference -Wformat=2 -Wimplicit-fallthrough
    $<$<BOOL:${KESTRANE_WERROR}>:-Werror>)
target_compile_definitions(kestrane_flags INTERFACE
    QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_STRICT_ITERATORS
    QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050F00
    KESTRANE_VERSION="${PROJECT_VERSION}"
    KESTRANE_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
    KESTRANE_VERSION_MINOR=${PROJECT_VERSION_MINOR})
target_include_directories(kestrane_flags INTERFACE ${CMAKE_SOURCE_DIR}/src)

if(KESTRANE_SANITIZE)
    target_compile_options(kestrane_flags INTERFACE
        -fsanitize=${KESTRANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(kestrane_flags INTERFACE -fsanitize=${KESTRANE_SANITIZE})
endif()
if(KESTRANE_FUZZ)
    target_compile_options(kestrane_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# kestrane_library(NAME SOURCES ... LINKS ... [WIDGETS])
# A floor of the house: a static library that links only what it may see.
function(kestrane_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON)
    target_link_libraries(${name} PUBLIC kestrane_flags ${ARG_LINKS})
endfunction()
