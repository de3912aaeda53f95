# Makes `cpack` build the Debian packages: each library, the development files of each, and json2xml with
# xml2json.
# scripts/package configures the build tree for them.

# The changelog names the version, the packaging's revision and the maintainer.
file(READ ${PROJECT_SOURCE_DIR}/cmake/debian/changelog changelog)
if(NOT changelog MATCHES "^tarn \\(([0-9.]+)-([0-9]+)\\).*\n -- ([^\n]+>)  " OR
   NOT CMAKE_MATCH_1 VERSION_EQUAL PROJECT_VERSION)
    message(FATAL_ERROR "cmake/debian/changelog does not begin with tarn (${PROJECT_VERSION}-...)")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})
set(CPACK_PACKAGE_CONTACT ${CMAKE_MATCH_3})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarn)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE tarn)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/TarnPackageDepends.cmake)
set(CPACK_TARN_LIBRARY_DIRECTORY ${PROJECT_BINARY_DIR}/tarn)

set(debian_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(debian_files ${PROJECT_BINARY_DIR}/debian)
file(MAKE_DIRECTORY ${debian_files})
tarn_gzip(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${debian_files}/changelog.gz)
tarn_gzip(${PROJECT_SOURCE_DIR}/cmake/debian/changelog ${debian_files}/changelog.Debian.gz)

# tarn_package(<component> <name> <section> <synopsis> <description>)
macro(tarn_package component name section synopsis description)
    string(TOUPPER ${component} COMPONENT)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION "${synopsis}\n${description}")
    install(FILES ${debian_files}/changelog.gz ${debian_files}/changelog.Debian.gz
            ${PROJECT_SOURCE_DIR}/cmake/debian/copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endmacro()

# tarn_library_packages(<library> <component> <development component> <development depends> <synopsis>
#   <description>)
macro(tarn_library_packages library component development depends synopsis description)
    string(TOUPPER ${component} COMPONENT)
    string(TOUPPER ${development} DEVELOPMENT)
    set(package ${library}${PROJECT_VERSION_MAJOR})
    set(CPACK_TARN_${COMPONENT}_FILE ${library}.so)
    set(CPACK_TARN_${COMPONENT}_SHLIBS ${debian_files}/${component}/shlibs)
    file(WRITE ${CPACK_TARN_${COMPONENT}_SHLIBS}
        "${library} ${PROJECT_VERSION_MAJOR} ${package} (>= ${PROJECT_VERSION})\n")
    tarn_package(${component} ${package} libs "${synopsis}" "${description}")
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_CONTROL_EXTRA
        "${CPACK_TARN_${COMPONENT}_SHLIBS};${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
    tarn_package(${development} ${library}-dev libdevel "${synopsis} - development files" "${description}

This package has what programs that use the library are built with.")
    set(CPACK_DEBIAN_${DEVELOPMENT}_PACKAGE_DEPENDS "${package} (= ${debian_version})${depends}")
endmacro()

set(CPACK_COMPONENTS_ALL "")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
tarn_library_packages(libtarn-utils library development "" "streaming, namespace-aware XML writer"
    "The library writes XML from calls: start an element, add an attribute,
write a value, end the element. It takes UTF-16 strings, chooses and
declares namespace prefixes by itself, escapes, indents, and writes UTF-16
to a string or UTF-8 to a byte string or a stream.")
# The guide and the examples are about both libraries.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libtarn-document-dev)
tarn_library_packages(libtarn-document document document-development
    ", libtarn-utils-dev (= ${debian_version})" "checked, namespace-aware XML writer for UTF-8"
    "The library writes XML from calls on a document and its elements. It takes
UTF-8 and UTF-16 strings, numbers and points in time, and refuses every call
that would make the document ill-formed.")
if(TARN_BUILD_TOOLS)
    tarn_package(json2xml tarn-json2xml utils "converters from JSON to XML and back"
        "json2xml turns any JSON document into XML while it reads it, in the
representation of JSON that XPath and XQuery Functions and Operators 3.1
defines. xml2json turns that representation back into JSON.")
    set(CPACK_DEBIAN_JSON2XML_PACKAGE_DEPENDS
        "libtarn-utils${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_JSON2XML_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CPACK_TARN_LIBRARY_DIRECTORY})
endif()
include(CPack)
