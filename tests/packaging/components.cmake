# Holds the components of an installation, of which each becomes a package, against the whole of it:
# every file is in exactly one.
#
# cmake -DBUILD_DIR=… -DWORK_DIR=… -DCOMPONENTS=… -P components.cmake
cmake_minimum_required(VERSION 3.25)

# Sets the result to the files that an installation with the arguments lays down.
function(installed result name)
  execute_process(
    COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/${name} ${ARGN}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE files RELATIVE ${WORK_DIR}/${name} ${WORK_DIR}/${name}/*)
  set(${result} ${files} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
installed(whole whole)
list(LENGTH whole count)
if(count LESS 40)
  message(FATAL_ERROR "Only ${count} files were installed.")
endif()
foreach(component IN LISTS COMPONENTS)
  installed(files ${component} --component ${component})
  if(NOT files)
    message(SEND_ERROR "The component ${component} has no files.")
  endif()
  foreach(file IN LISTS files)
    if(NOT file IN_LIST whole)
      message(SEND_ERROR "${file} is in ${component} and in no component that comes before, or in two.")
    endif()
  endforeach()
  list(REMOVE_ITEM whole ${files})
  set(files_of_${component} ${files})
endforeach()
if(whole)
  message(SEND_ERROR "In no component: ${whole}")
endif()

# held(COMPONENT REGEX...) says that the component has a file of each form.
function(held component)
  foreach(form IN LISTS ARGN)
    set(found ${files_of_${component}})
    list(FILTER found INCLUDE REGEX "${form}")
    if(NOT found)
      message(SEND_ERROR "${component} has no file of the form ${form}")
    endif()
  endforeach()
endfunction()

# What a program needs to run is in a library's component, what it takes to link is not.
held(library "/liborvel-analytics\\.so\\.[0-9]+$" "/liborvel-analytics\\.so\\.[0-9.]+$")
held(rpc_client "/liborvel-rpc-client\\.so\\.[0-9]+$")
held(testing "/liborvel-analytics-testing\\.so\\.[0-9]+$")
held(development "/liborvel-analytics\\.so$" "/liborvel-rpc-client\\.so$" "/orvel-analytics\\.pc$"
     "/orvel-rpc-client\\.pc$" "/OrvelAnalyticsConfig\\.cmake$" "/orvel/analytics\\.h$"
     "/orvel/relay/rpc_client\\.h$" "/orvel/analytics/testing\\.h$"
     "/liborvel-analytics-testing\\.so$")
held(service "bin/orvel-analytics$" "bin/orvel-analyticsd$" "/orvel-analyticsd\\.socket$"
     "/orvel-analyticsd\\.service$" "/settings\\.toml$" "/man1/orvel-analytics\\.1$"
     "/man8/orvel-analyticsd\\.8$" "/completions/orvel-analytics$"
     "/completions/orvel-analyticsd$")
foreach(component library rpc_client testing)
  list(FILTER files_of_${component} EXCLUDE REGEX "\\.so\\.[0-9.]+$")
  if(files_of_${component})
    message(SEND_ERROR "${component} has more than its library: ${files_of_${component}}")
  endif()
endforeach()
