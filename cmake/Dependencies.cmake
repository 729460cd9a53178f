# SPDX-License-Identifier: GPL-3.0-or-later
# Every library that Kestrane stands on, in one place. tools/install-dependencies
# installs the Debian packages that provide them.
find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets Concurrent Network PrintSupport Svg Test)
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBRAW REQUIRED IMPORTED_TARGET libraw_r)
pkg_check_modules(EXIV2 REQUIRED IMPORTED_TARGET exiv2)
find_package(GIF 5.1 REQUIRED)
pkg_check_modules(ZLIB REQUIRED IMPORTED_TARGET zlib)
pkg_check_modules(LIBDEFLATE REQUIRED IMPORTED_TARGET libdeflate)
if(KESTRANE_TESTS)
    find_package(GTest REQUIRED)
endif()
if(KESTRANE_BENCH)
    find_package(benchmark REQUIRED)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
