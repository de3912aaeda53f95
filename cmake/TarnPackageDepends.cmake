# cpack runs this to find what the library's package depends on. If cpack did that itself, it would also
# add maintainer scripts that call ldconfig; the package has a trigger instead.

set(work ${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps)
file(WRITE ${work}/debian/control "")
execute_process(COMMAND dpkg-shlibdeps --warnings=0 -O ${CPACK_TARN_LIBRARY}
    WORKING_DIRECTORY ${work} OUTPUT_VARIABLE depends COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "^.*Depends=|\n" "" CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "${depends}")
