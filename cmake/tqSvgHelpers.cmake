# Warnings for the project's own targets; third-party headers are included as system headers.
function(tqsvg_set_warnings target)
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
        if(TQSVG_WERROR)
            target_compile_options(${target} PRIVATE -Werror)
        endif()
    endif()
endfunction()

# A compiled library of the project: hidden symbols, an export header named
# <dir>/<name>Export.h with the macro <NAME>_EXPORT, sources and headers taken from `dir`.
function(tqsvg_add_library target)
    cmake_parse_arguments(ARG "" "EXPORT_DIR;EXPORT_NAME;BASE_DIR" "SOURCES;HEADERS" ${ARGN})
    add_library(${target} ${ARG_SOURCES})
    add_library(tqSvg::${target} ALIAS ${target})
    string(TOUPPER ${target} upper)
    set(export_header ${TQSVG_GENERATED_INCLUDE_DIR}/${ARG_EXPORT_DIR}/${ARG_EXPORT_NAME}Export.h)
    generate_export_header(${target}
        BASE_NAME ${upper}
        EXPORT_MACRO_NAME ${upper}_EXPORT
        EXPORT_FILE_NAME ${export_header})
    # The generated header lives in the build tree, which may sit inside the source tree: it
    # gets a file set of its own.
    target_sources(${target} PUBLIC
        FILE_SET HEADERS BASE_DIRS ${ARG_BASE_DIR} FILES ${ARG_HEADERS}
        FILE_SET export_header TYPE HEADERS BASE_DIRS ${TQSVG_GENERATED_INCLUDE_DIR}
            FILES ${export_header})
    if(NOT BUILD_SHARED_LIBS)
        target_compile_definitions(${target} PUBLIC ${upper}_STATIC_DEFINE)
    endif()
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        # Installed libraries find their siblings wherever the prefix is moved to.
        INSTALL_RPATH "$ORIGIN")
    tqsvg_set_warnings(${target})
    # Calls between the library's own exported functions need not go through the PLT.
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    endif()
endfunction()
