# The Debian packages: vornupdater with the programs, libvornserial-dev with the serial library.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vornupdater)
set(CPACK_PACKAGE_CONTACT ${VORN_MAINTAINER})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL updater serial)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/cpack-options.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/finish-tree.cmake)

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_UPDATER_PACKAGE_NAME vornupdater)
set(CPACK_DEBIAN_UPDATER_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_UPDATER_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_UPDATER_PACKAGE_RECOMMENDS "ca-certificates, qt6-translations-l10n, qt6-wayland")
set(CPACK_DEBIAN_UPDATER_PACKAGE_SUGGESTS openssl)
set(CPACK_COMPONENT_UPDATER_DESCRIPTION
    "Firmware updater for devices with a USB-serial link
Updates the firmware of Vorn devices through their boot loader, over a
USB-serial adapter, and fetches firmware packages from a server.
.
The package contains the program with its window, the command line for
scripts, and a simulator of the device and of the package server.")

set(CPACK_DEBIAN_SERIAL_PACKAGE_NAME libvornserial-dev)
set(CPACK_DEBIAN_SERIAL_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_SERIAL_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_SERIAL_PACKAGE_DEPENDS "qt6-base-dev (>= 6.4), libudev-dev, pkg-config")
set(CPACK_COMPONENT_SERIAL_DESCRIPTION
    "Serial ports, packets and requests for Qt programs
Static library, headers, CMake package and pkg-config file of the serial
library that the Vorn firmware updater is built on: ports by name, modem
lines, packets found in the stream of bytes, requests with time-outs, and
devices that come and go.")

include(CPack)

# cpack itself would build the tests, too.
add_custom_target(packages
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${CPACK_PACKAGE_DIRECTORY}
    COMMAND ${CMAKE_CPACK_COMMAND} --config ${CMAKE_BINARY_DIR}/CPackConfig.cmake
    DEPENDS vorn_serial vorn_platform ${programs} WORKING_DIRECTORY ${CMAKE_BINARY_DIR} VERBATIM)
