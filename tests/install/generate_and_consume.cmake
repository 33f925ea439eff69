# Installs a build into an empty prefix and builds the project of docs/typed-events.md against it,
# word for word; then changes its data class.
#
# cmake -DBUILD_DIR=… -DSOURCE_DIR=… -DWORK_DIR=… -DCXX_COMPILER=… -P generate_and_consume.cmake

include(${SOURCE_DIR}/tests/typed_events/code_block.cmake)

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

# Builds, and holds that the build's output has or has not what is named.
function(build expectation text)
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
  string(FIND "${out}" "${text}" found)
  if((expectation STREQUAL "has" AND found EQUAL -1) OR (expectation STREQUAL "hasNot"
                                                         AND NOT found EQUAL -1))
    message(FATAL_ERROR "The build ${expectation} \"${text}\" unexpectedly:\n${out}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
set(project ${WORK_DIR}/project)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
if(NOT EXISTS ${prefix}/share/orvel-analytics/data_class.schema.json)
  message(FATAL_ERROR "The schema of data class files was not installed.")
endif()
foreach(name app_usage.json CMakeLists.txt main.cpp)
  orvel_code_block(content ${SOURCE_DIR}/docs/typed-events.md ${name})
  file(WRITE ${project}/${name} "${content}")
endforeach()

run(${CMAKE_COMMAND} -S ${project} -B ${WORK_DIR}/build -G Ninja -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_CXX_FLAGS=-Wall\ -Wextra\ -Wpedantic\ -Werror)
build(has "app_usage.cpp")
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env ORVEL_RPC_DIRECTORY=${WORK_DIR} ${WORK_DIR}/build/editor
  RESULT_VARIABLE status
  ERROR_VARIABLE err)
if(NOT status EQUAL 1 OR NOT err STREQUAL "The service did not take the data class.\n")
  message(FATAL_ERROR "The program ended with ${status}, without a service:\n${err}")
endif()
build(has "no work to do")

# A change that makes no difference to the classes runs the tool and compiles nothing.
set(schema ${project}/app_usage.json)
file(READ ${schema} content)
file(WRITE ${schema} "${content}\n")
build(has "Generating")
file(WRITE ${schema} "${content}\n\n")
build(hasNot "Building")

# One that does is followed: the program no longer fits it.
string(REPLACE "\"document\"" "\"file_name\"" content "${content}")
file(WRITE ${schema} "${content}")
execute_process(
  COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build
  OUTPUT_VARIABLE out
  ERROR_VARIABLE err
  RESULT_VARIABLE status)
if(status EQUAL 0 OR NOT "${out}" MATCHES "setDocument")
  message(FATAL_ERROR "A changed data class changed nothing:\n${out}${err}")
endif()
file(READ ${project}/main.cpp content)
string(REPLACE "setDocument" "setFileName" content "${content}")
file(WRITE ${project}/main.cpp "${content}")
build(has "main.cpp")
