# Installs the serial library with what a program needs to use it: headers, CMake package, pkg-config
# file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(vorn_serial PROPERTIES EXPORT_NAME Serial)
set_target_properties(vorn_platform PROPERTIES EXPORT_NAME Platform)
install(TARGETS vorn_serial vorn_platform EXPORT VornSerialTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT serial)
install(FILES
    ORSSerialBuffer.h
    ORSSerialPacketDescriptor.h
    ORSSerialPort.h
    ORSSerialPortDelegate.h
    ORSSerialPortManager.h
    ORSSerialRequest.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vorn/serial COMPONENT serial)
install(FILES
    ../platform/CombinedDeviceRegistry.h
    ../platform/DeviceEvents.h
    ../platform/DirectoryDeviceRegistry.h
    ../platform/FileDescriptor.h
    ../platform/Lifetime.h
    ../platform/NotificationCenter.h
    ../platform/SerialDeviceRegistry.h
    ../platform/WeakDelegate.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vorn/platform COMPONENT serial)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VornSerial)
install(EXPORT VornSerialTargets NAMESPACE Vorn:: DESTINATION ${package_dir} COMPONENT serial)
configure_package_config_file(VornSerialConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/VornSerialConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/VornSerialConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
# From the file's own place, so that the installed tree can be moved.
file(RELATIVE_PATH include_from_pkgconfig
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR}/vorn)
configure_file(vorn-serial.pc.in ${CMAKE_CURRENT_BINARY_DIR}/vorn-serial.pc @ONLY)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/VornSerialConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/VornSerialConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT serial)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorn-serial.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT serial)
