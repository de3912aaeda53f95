# The installation rules, and the files by which CMake and pkg-config find what is installed.

include(CMakePackageConfigHelpers)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tarn)

install(TARGETS tarn-utils EXPORT tarn-targets FILE_SET HEADERS
    LIBRARY COMPONENT library NAMELINK_COMPONENT development)
if(NOT BUILD_SHARED_LIBS)
    # A program that links the static library also links its base layer.
    install(TARGETS tarn-objects ${TARN_PLATFORM_TARGET} tarn-text EXPORT tarn-targets)
endif()
if(TARGET tarn-framework)
    # In its own directory, so that it does not conflict with an installed CppMicroServices.
    set(framework_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/tarn/framework)
    install(TARGETS tarn-framework EXPORT tarn-targets FILE_SET HEADERS
        DESTINATION ${framework_include_dir})
endif()
install(EXPORT tarn-targets NAMESPACE tarn:: DESTINATION ${package_dir})

# The checked layer is in packages of its own, so its targets are in a file of their own.
install(TARGETS tarn-document EXPORT tarn-document-targets
    FILE_SET HEADERS COMPONENT document-development
    ARCHIVE COMPONENT document-development
    LIBRARY COMPONENT document NAMELINK_COMPONENT document-development)
install(EXPORT tarn-document-targets NAMESPACE tarn:: DESTINATION ${package_dir}
    COMPONENT document-development)

# The guide, and beside it the examples and the page that it links to.
set(guide ${PROJECT_SOURCE_DIR}/docs/guide.md)
set(doc_dir ${CMAKE_INSTALL_DATADIR}/doc/libtarn-utils-dev)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${guide})
file(READ ${guide} text)
string(REPLACE "](../examples" "](examples" text "${text}")
file(WRITE ${PROJECT_BINARY_DIR}/guide.md "${text}")
install(FILES ${PROJECT_BINARY_DIR}/guide.md ${PROJECT_SOURCE_DIR}/docs/comparison.md
    DESTINATION ${doc_dir})
file(GLOB examples CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/*.cpp)
install(FILES ${examples} DESTINATION ${doc_dir}/examples)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tarnConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tarnConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tarnConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tarnConfig.cmake ${PROJECT_BINARY_DIR}/tarnConfigVersion.cmake
    DESTINATION ${package_dir})

# The .pc files name the prefix relative to their own directory, so that an installed tree can be moved.
file(RELATIVE_PATH pc_prefix_from_here /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
# install_pc(<library> <component> DESCRIPTION <text> [CFLAGS <flags>] [LIBS <flags>]
#   [REQUIRES <packages>] [REQUIRES_PRIVATE <packages>])
function(install_pc library component)
    cmake_parse_arguments(PARSE_ARGV 2 pc "" "DESCRIPTION;CFLAGS;LIBS;REQUIRES;REQUIRES_PRIVATE" "")
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
    file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/pkgconfig/${library}.pc
        INPUT ${PROJECT_BINARY_DIR}/${library}.pc)
    install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${library}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endfunction()

set(pkg_config_cflags "")
set(pkg_config_libs "")
set(pkg_config_requires "")
if(NOT BUILD_SHARED_LIBS)
    string(APPEND pkg_config_libs "-ltarn-platform -ltarn-text -lstdc++")
    if(TARN_SERVICES)
        set(pkg_config_requires "minizip, zlib")
    endif()
endif()
if(TARN_FRAMEWORK_TARGET STREQUAL "CppMicroServices")
    get_target_property(framework_include_dir CppMicroServices INTERFACE_INCLUDE_DIRECTORIES)
    set(pkg_config_cflags "-I${framework_include_dir}")
    string(APPEND pkg_config_libs
        " -L$<TARGET_FILE_DIR:CppMicroServices> -Wl,-rpath,$<TARGET_FILE_DIR:CppMicroServices>"
        " -l$<TARGET_LINKER_FILE_BASE_NAME:CppMicroServices>")
elseif(TARGET tarn-framework)
    set(pkg_config_cflags "-I\${includedir}/tarn/framework")
endif()
install_pc(tarn-utils development DESCRIPTION "${PROJECT_DESCRIPTION}" CFLAGS "${pkg_config_cflags}"
    LIBS "${pkg_config_libs}" REQUIRES "${pkg_config_requires}")
if(BUILD_SHARED_LIBS)
    install_pc(tarn-document document-development DESCRIPTION "Checked XML writer for UTF-8"
        REQUIRES_PRIVATE "tarn-utils >= ${PROJECT_VERSION}")
else()
    install_pc(tarn-document document-development DESCRIPTION "Checked XML writer for UTF-8"
        LIBS "-ltarn-text -lstdc++" REQUIRES "tarn-utils >= ${PROJECT_VERSION}")
endif()
