# Builds an example on its own, against an installed package, and runs its tests and its program.
#
# cmake -DSOURCE_DIR=… -DPREFIX=… -DWORK_DIR=… -DCXX_COMPILER=… -P build_example.cmake

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR} -G Ninja -DCMAKE_PREFIX_PATH=${PREFIX}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER}
    -DCMAKE_CXX_FLAGS=-Wall\ -Wextra\ -Wpedantic\ -Werror)
run(${CMAKE_COMMAND} --build ${WORK_DIR})
run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK_DIR} --no-tests=error --output-on-failure)

# The program talks through the real client, and nobody serves the endpoint that it has here.
file(WRITE ${WORK_DIR}/text.txt "four words of text\n")
run(${CMAKE_COMMAND} -E env ORVEL_RPC_DIRECTORY=${WORK_DIR} ${WORK_DIR}/word_count
    ${WORK_DIR}/text.txt)
if(NOT out STREQUAL "4 ${WORK_DIR}/text.txt\n" OR NOT err STREQUAL "")
  message(FATAL_ERROR "The program printed:\n${out}${err}")
endif()
