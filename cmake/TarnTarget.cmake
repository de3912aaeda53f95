# The settings that all targets of this project share.

# The toolchain's protections, in Release builds. They are off with sanitizers: fortified functions hide
# errors from a sanitizer, and -z defs rejects its run-time library, which only the program links.
option(TARN_HARDENING "Turn on the compiler's and the linker's protections in Release" ON)
if(TARN_HARDENING AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set(hardening_compile_options
        "$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
    set(hardening_link_options "$<$<CONFIG:Release>:-Wl,-z,relro,-z,now,-z,defs>")
endif()

function(tarn_target target)
    target_compile_features(${target} PRIVATE cxx_std_23)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic
        $<$<BOOL:${TARN_WERROR}>:-Werror> "${hardening_compile_options}")
    target_link_options(${target} PRIVATE "${hardening_link_options}")
endfunction()

# tarn_gzip(<input> <output>) compresses a file that is installed, while CMake configures.
function(tarn_gzip input output)
    execute_process(COMMAND gzip -9nc ${input} OUTPUT_FILE ${output} COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${input})
endfunction()
