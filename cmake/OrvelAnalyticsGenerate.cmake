# orvel_analytics_generate(TARGET target DATA_CLASSES file... [NAMESPACE name])
#
# Has orvel-analytics write the C++ classes of data classes and their events, and makes them part of
# the target: for NAME.json, its sources, and those of targets that link it, include NAME.h. What is
# generated follows a changed file at the next build. To be called in the target's own folder.
#
# The program is the one that was installed with the library, or ORVEL_ANALYTICS_TOOL. Where programs
# are built for another system than this one, that names a program that runs here.

cmake_policy(PUSH)
cmake_policy(VERSION 3.25)

function(orvel_analytics_generate)
  cmake_parse_arguments(PARSE_ARGV 0 ARG "" "TARGET;NAMESPACE" "DATA_CLASSES")
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "orvel_analytics_generate does not know: ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT TARGET "${ARG_TARGET}" OR NOT ARG_DATA_CLASSES)
    message(FATAL_ERROR "orvel_analytics_generate needs a TARGET that exists, and DATA_CLASSES.")
  endif()
  if(TARGET orvel-tool)
    set(tool orvel-tool)
  elseif(ORVEL_ANALYTICS_TOOL)
    set(tool ${ORVEL_ANALYTICS_TOOL})
  else()
    message(FATAL_ERROR "orvel_analytics_generate needs the program orvel-analytics, which was not \
found; ORVEL_ANALYTICS_TOOL may name it.")
  endif()

  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${ARG_TARGET}.data-classes)
  foreach(file IN LISTS ARG_DATA_CLASSES)
    cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
    cmake_path(GET file STEM LAST_ONLY stem)
    list(APPEND files ${file})
    list(APPEND generated ${folder}/${stem}.h ${folder}/${stem}.cpp)
  endforeach()
  if(ARG_NAMESPACE)
    set(namespace --namespace ${ARG_NAMESPACE})
  endif()

  # The program does not touch what it would not change, and so a change that makes no difference to
  # the generated files compiles nothing anew. That it has run is what the stamp says.
  set(stamp ${folder}/${stem}.stamp)
  add_custom_command(
    OUTPUT ${stamp}
    BYPRODUCTS ${generated}
    COMMAND ${tool} generate --data-class ${files} --output ${folder} ${namespace}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${files} ${tool}
    COMMENT "Generating the typed events of ${ARG_TARGET}"
    VERBATIM)
  target_sources(${ARG_TARGET} PRIVATE ${stamp} ${generated})
  target_include_directories(${ARG_TARGET} PUBLIC $<BUILD_INTERFACE:${folder}>)
endfunction()

cmake_policy(POP)
