# SPDX-License-Identifier: GPL-3.0-or-later
# The Debian package, made by `tools/package`: what `cmake --install` puts in place, and the
# texts that every package of Debian has.
set(debian ${CMAKE_SOURCE_DIR}/packaging/debian)
kestrane_pack(${debian}/changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz)
install(FILES ${debian}/copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz
        DESTINATION share/doc/kestrane COMPONENT debian EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kestrane)
set(CPACK_PACKAGE_VENDOR Zolvine)
set(CPACK_PACKAGE_CONTACT "Kestrane maintainers <kestrane@zolvine.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "image editor for 16 bits a channel")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Kestrane edits photographs and other pictures at 16 bits a channel.
Operators with a live preview act through a soft selection mask, and every
change can be undone. Pictures can have layers with 62 modes, texts,
shadows, glows, reliefs and warps.
.
It reads JPEG, PNG, GIF, portable maps, XBM, XPM, IFF ILBM and camera RAW
files, and has lossless forms of its own that keep everything. Changed
pictures are saved in the background and offered again after a crash.
.
The package also holds kestrane-batch, which does the same work without
windows, and a thumbnailer for the program's own forms.")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# Its plugins draw the icons; no library of it is linked.
set(CPACK_DEBIAN_PACKAGE_DEPENDS libqt5svg5)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS hicolor-icon-theme)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_CMAKE_PROJECTS
    "${CMAKE_BINARY_DIR};${PROJECT_NAME};ALL;/;${CMAKE_BINARY_DIR};${PROJECT_NAME};debian;/")
include(CPack)
