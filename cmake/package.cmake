# What `cmake --install` adds beside the libraries: a CMake package (tern::common) and a pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tern_common)
install(EXPORT tern_commonTargets NAMESPACE tern:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/tern_commonConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tern_commonConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tern_commonConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
# The prefix is told from where the file stands: it is often chosen only when the build is installed.
file(RELATIVE_PATH TERN_COMMON_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" TERN_COMMON_PC_TO_PREFIX "${TERN_COMMON_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/tern_common.pc.in ${PROJECT_BINARY_DIR}/tern_common.pc @ONLY)
install(FILES
    ${PROJECT_BINARY_DIR}/tern_commonConfig.cmake
    ${PROJECT_BINARY_DIR}/tern_commonConfigVersion.cmake
    DESTINATION ${package_dir})
install(FILES ${PROJECT_BINARY_DIR}/tern_common.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
