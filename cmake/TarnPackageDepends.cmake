# cpack reads this. What the library's package depends on is found here: where cpack finds it by itself,
# it also adds scripts that call ldconfig, in place of which the package has a trigger.

set(work ${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps)
file(WRITE ${work}/debian/control "")
execute_process(COMMAND dpkg-shlibdeps --warnings=0 -O ${CPACK_TARN_LIBRARY}
    WORKING_DIRECTORY ${work} OUTPUT_VARIABLE depends COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "^.*Depends=|\n" "" CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "${depends}")
