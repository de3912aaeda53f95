# What `cmake --install` puts where, and how others find it.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tarn)

install(TARGETS tarn-utils EXPORT tarn-targets FILE_SET HEADERS)
if(NOT BUILD_SHARED_LIBS)
    # A static library leaves its base layer to the consumer's linker.
    install(TARGETS tarn-objects ${TARN_PLATFORM_TARGET} EXPORT tarn-targets)
endif()
install(EXPORT tarn-targets NAMESPACE tarn:: DESTINATION ${package_dir})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tarnConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tarnConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tarnConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tarnConfig.cmake ${PROJECT_BINARY_DIR}/tarnConfigVersion.cmake
    DESTINATION ${package_dir})

if(BUILD_SHARED_LIBS)
    set(pkg_config_libs "-ltarn-utils")
else()
    set(pkg_config_libs "-ltarn-utils -ltarn-platform -lstdc++")
endif()
# From the directory of the .pc file up to the prefix, so that an installed tree can be moved.
file(RELATIVE_PATH pc_prefix_from_here /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/tarn-utils.pc.in ${PROJECT_BINARY_DIR}/tarn-utils.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarn-utils.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
