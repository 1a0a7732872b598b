# Included by the cmake -P scripts that build programs against the staged install.

# Runs a command (in RUN_DIR when that is set) and stops the script when it fails; its standard
# output is left in LAST_OUTPUT.
function(run)
    set(where "")
    if(DEFINED RUN_DIR)
        set(where WORKING_DIRECTORY ${RUN_DIR})
    endif()
    execute_process(COMMAND ${ARGV} ${where} RESULT_VARIABLE result OUTPUT_VARIABLE out
                    ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Failed (${result}): ${ARGV}\n${out}\n${err}")
    endif()
    set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

# Sets `flags` (the sanitizer of this build, if any), and `pc_flags` and `libdir` as pkg-config
# gives them for the install staged in STAGE_DIR.
macro(staged_pkg_config)
    set(flags "")
    if(SANITIZE)
        set(flags "-fsanitize=${SANITIZE}")
    endif()
    file(GLOB_RECURSE pc_files ${STAGE_DIR}/*/tqsvg.pc)
    list(GET pc_files 0 pc_file)
    get_filename_component(pc_dir ${pc_file} DIRECTORY)
    set(ENV{PKG_CONFIG_PATH} ${pc_dir})
    run(pkg-config --cflags --libs tqsvg)
    string(STRIP "${LAST_OUTPUT}" pc_flags)
    separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
    run(pkg-config --variable=libdir tqsvg)
    string(STRIP "${LAST_OUTPUT}" libdir)
endmacro()
