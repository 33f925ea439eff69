# Installs a build into an empty prefix and builds and runs a consumer against it.
#
# cmake -DBUILD_DIR=… -DCONSUMER_DIR=… -DWORK_DIR=… -DCXX_COMPILER=… -P install_and_consume.cmake
#
# With STATIC_SOURCE_DIR instead of BUILD_DIR, the static libraries of that source tree are built
# first and installed.

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
if(STATIC_SOURCE_DIR)
  set(BUILD_DIR ${WORK_DIR}/static)
  run(${CMAKE_COMMAND} -S ${STATIC_SOURCE_DIR} -B ${BUILD_DIR} -G Ninja -DBUILD_SHARED_LIBS=OFF
      -DORVEL_BUILD_SERVICE=OFF -DORVEL_BUILD_TOOL=OFF -DORVEL_BUILD_EXAMPLES=OFF
      -DORVEL_BUILD_TESTS=OFF -DORVEL_WARNINGS_AS_ERRORS=ON -DORVEL_COMPILE_TOGETHER=ON
      -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER})
  run(${CMAKE_COMMAND} --build ${BUILD_DIR})
endif()
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

if(NOT STATIC_SOURCE_DIR)
  foreach(program orvel-analytics orvel-analyticsd)
    run(${prefix}/bin/${program} --version)
  endforeach()
endif()

file(GLOB_RECURSE server_headers ${prefix}/include/*/server.h)
if(server_headers)
  message(FATAL_ERROR "The server side's header was installed: ${server_headers}")
endif()

run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    -DCMAKE_CXX_FLAGS=-Wall\ -Wextra\ -Wpedantic\ -Werror)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${CMAKE_COMMAND} -E env ORVEL_RPC_DIRECTORY=${WORK_DIR} ${WORK_DIR}/build/consumer)
if(NOT out STREQUAL "22 0 1\nApp name cannot be null or empty\n")
  message(FATAL_ERROR "The consumer printed:\n${out}")
endif()

# Once more with what pkg-config says.
file(GLOB_RECURSE pc ${prefix}/*/orvel-analytics.pc)
get_filename_component(pc_folder ${pc} DIRECTORY)
run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pc_folder} pkg-config --cflags --libs orvel-analytics
    orvel-rpc-client)
separate_arguments(flags UNIX_COMMAND "${out}")
get_filename_component(libraries ${pc_folder} DIRECTORY)
run(${CXX_COMPILER} -std=c++20 ${CONSUMER_DIR}/main.cpp ${flags} -Wl,-rpath,${libraries} -o
    ${WORK_DIR}/pkgconfig_consumer)
run(${CMAKE_COMMAND} -E env ORVEL_RPC_DIRECTORY=${WORK_DIR} ${WORK_DIR}/pkgconfig_consumer)
if(NOT out STREQUAL "22 0 1\nApp name cannot be null or empty\n")
  message(FATAL_ERROR "The consumer that pkg-config's flags built printed:\n${out}")
endif()
