# Runs the vcpkg port with stand-ins for vcpkg's own functions, and holds what it asks of them against
# the project: the sources are there, every option is one of the project's, and so is every file.
#
# cmake -DSOURCE_DIR=… -DWORK_DIR=… -P port.cmake
cmake_minimum_required(VERSION 3.25)

function(vcpkg_cmake_configure)
  cmake_parse_arguments(PARSE_ARGV 0 ARG "" "SOURCE_PATH" "OPTIONS")
  if(NOT ARG_SOURCE_PATH STREQUAL SOURCE_DIR)
    message(SEND_ERROR "The port builds ${ARG_SOURCE_PATH}.")
  endif()
  file(READ ${SOURCE_DIR}/CMakeLists.txt project)
  list(LENGTH ARG_OPTIONS count)
  if(count EQUAL 0)
    message(SEND_ERROR "The port gives no options.")
  endif()
  foreach(option IN LISTS ARG_OPTIONS)
    string(REGEX MATCH "^-D([A-Z_]+)=(ON|OFF)$" is_option "${option}")
    if(NOT is_option OR NOT project MATCHES "\noption\\(${CMAKE_MATCH_1} ")
      message(SEND_ERROR "The project has no option ${option}.")
    endif()
  endforeach()
  set_property(GLOBAL APPEND PROPERTY asked configure)
endfunction()

function(vcpkg_cmake_install)
  set_property(GLOBAL APPEND PROPERTY asked install)
endfunction()

function(vcpkg_cmake_config_fixup)
  cmake_parse_arguments(PARSE_ARGV 0 ARG "" "PACKAGE_NAME;CONFIG_PATH" "")
  file(STRINGS ${SOURCE_DIR}/cmake/OrvelInstall.cmake folder REGEX "/cmake/${ARG_PACKAGE_NAME}\\)$")
  if(NOT folder OR NOT ARG_CONFIG_PATH STREQUAL "lib/cmake/${ARG_PACKAGE_NAME}")
    message(SEND_ERROR "The project installs no package ${ARG_PACKAGE_NAME} in ${ARG_CONFIG_PATH}.")
  endif()
endfunction()

function(vcpkg_fixup_pkgconfig)
endfunction()

function(vcpkg_copy_pdbs)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(PORT orvel-analytics)
set(CURRENT_PORT_DIR ${SOURCE_DIR}/packaging/vcpkg/${PORT})
set(CURRENT_PACKAGES_DIR ${WORK_DIR})
include(${CURRENT_PORT_DIR}/portfile.cmake)
get_property(asked GLOBAL PROPERTY asked)
if(NOT asked STREQUAL "configure;install" OR NOT EXISTS ${WORK_DIR}/share/${PORT}/usage)
  message(SEND_ERROR "The port asked for: ${asked}")
endif()
