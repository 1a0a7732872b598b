# cmake -P script: stage an install, build the example against it and run it with CONSUMER_ARGS.
include(${CMAKE_CURRENT_LIST_DIR}/StagedInstall.cmake)

file(REMOVE_RECURSE ${STAGE_DIR} ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${STAGE_DIR})

staged_pkg_config()

# Through the CMake package.
run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${WORK_DIR}/cmake
    -DCMAKE_PREFIX_PATH=${STAGE_DIR} -DCMAKE_CXX_COMPILER=${CXX}
    "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
run(${WORK_DIR}/cmake/segment ${CONSUMER_ARGS})
message(STATUS "CMake package consumer: ${LAST_OUTPUT}")

# Through pkg-config.
file(MAKE_DIRECTORY ${WORK_DIR}/pkgconfig)
run(${CXX} -std=c++17 ${flags} ${CONSUMER_SOURCE}/main.cpp ${pc_flags} -Wl,-rpath,${libdir}
    -o ${WORK_DIR}/pkgconfig/segment)
run(${WORK_DIR}/pkgconfig/segment ${CONSUMER_ARGS})
message(STATUS "pkg-config consumer: ${LAST_OUTPUT}")
