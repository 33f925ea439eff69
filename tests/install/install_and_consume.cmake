# Installs the build into an empty prefix and builds and runs a consumer against it.
#
# cmake -DBUILD_DIR=… -DSOURCE_DIR=… -DWORK_DIR=… -DCXX_COMPILER=… -P install_and_consume.cmake

function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nended with ${status}\n${out}${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

file(GLOB_RECURSE server_headers ${prefix}/include/*/server.h)
if(server_headers)
  message(FATAL_ERROR "The server side's header was installed: ${server_headers}")
endif()

run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/consumer -B ${WORK_DIR}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    -DCMAKE_CXX_FLAGS=-Wall\ -Wextra\ -Wpedantic\ -Werror)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${CMAKE_COMMAND} -E env ORVEL_RPC_DIRECTORY=${WORK_DIR} ${WORK_DIR}/build/consumer)
if(NOT out STREQUAL "22 0 1\nApp name cannot be null or empty\n")
  message(FATAL_ERROR "The consumer printed:\n${out}")
endif()
