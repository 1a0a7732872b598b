# cmake -P script: stage an install, build the example against it and run it with CONSUMER_ARGS.
function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Failed (${result}): ${ARGV}\n${out}\n${err}")
    endif()
    set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${STAGE_DIR} ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${STAGE_DIR})

set(flags "")
if(SANITIZE)
    set(flags "-fsanitize=${SANITIZE}")
endif()

# Through the CMake package.
run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${WORK_DIR}/cmake
    -DCMAKE_PREFIX_PATH=${STAGE_DIR} -DCMAKE_CXX_COMPILER=${CXX}
    "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
run(${WORK_DIR}/cmake/segment ${CONSUMER_ARGS})
message(STATUS "CMake package consumer: ${LAST_OUTPUT}")

# Through pkg-config.
file(GLOB_RECURSE pc_files ${STAGE_DIR}/*/tqsvg.pc)
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
run(pkg-config --cflags --libs tqsvg)
string(STRIP "${LAST_OUTPUT}" pc_flags)
separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
run(pkg-config --variable=libdir tqsvg)
string(STRIP "${LAST_OUTPUT}" libdir)
file(MAKE_DIRECTORY ${WORK_DIR}/pkgconfig)
run(${CXX} -std=c++17 ${flags} ${CONSUMER_SOURCE}/main.cpp ${pc_flags} -Wl,-rpath,${libdir}
    -o ${WORK_DIR}/pkgconfig/segment)
run(${WORK_DIR}/pkgconfig/segment ${CONSUMER_ARGS})
message(STATUS "pkg-config consumer: ${LAST_OUTPUT}")
