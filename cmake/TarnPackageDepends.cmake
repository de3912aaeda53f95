# cpack runs this to find what the packages of the libraries depend on. If cpack did that itself, it would
# also add maintainer scripts that call ldconfig; the packages have a trigger instead.

set(work ${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps)
file(WRITE ${work}/debian/control "")
# The libraries depend on one another, and are not installed.
file(READ ${CPACK_TARN_LIBRARY_SHLIBS} shlibs)
file(WRITE ${work}/debian/shlibs.local "${shlibs}")
foreach(component LIBRARY DOCUMENT)
    execute_process(COMMAND dpkg-shlibdeps --warnings=0 -l${CPACK_TARN_LIBRARY_DIRECTORY} -O
            ${CPACK_TARN_LIBRARY_DIRECTORY}/${CPACK_TARN_${component}_FILE}
        WORKING_DIRECTORY ${work} OUTPUT_VARIABLE depends COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE "^.*Depends=|\n" "" CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${depends}")
endforeach()
