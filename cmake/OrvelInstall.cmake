# What `cmake --install` lays down: the libraries with their headers, and the package that
# find_package(OrvelAnalytics) finds. Each program says in its own folder where it goes.
if(WIN32 AND ORVEL_RPC_CLIENT STREQUAL "vendor")
  # The vendor's library comes with the vendor's package.
  return()
endif()
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrvelAnalytics)

# orvel_install_library(TARGET COMPONENT) installs a library: what a program needs to run in the
# component, and what it takes to link against it with the development files.
function(orvel_install_library target component)
  install(
    TARGETS ${target}
    EXPORT OrvelAnalyticsTargets
    RUNTIME COMPONENT ${component}
    LIBRARY COMPONENT ${component} NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development)
endfunction()

orvel_install_library(orvel-analytics library)
orvel_install_library(orvel-rpc-client rpc_client)
if(WIN32)
  install(TARGETS orvel-chosen-rpc-client EXPORT OrvelAnalyticsTargets)
endif()
if(TARGET orvel-analytics-testing)
  orvel_install_library(orvel-analytics-testing testing)
  install(DIRECTORY testing/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()
# All that is built to be installed, for who builds no more than that.
add_custom_target(orvel-installed)
foreach(target orvel-analytics orvel-rpc-client orvel-analytics-testing orvel-tool orvel-analyticsd)
  if(TARGET ${target})
    add_dependencies(orvel-installed ${target})
  endif()
endforeach()
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(
  DIRECTORY relay/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  PATTERN server.h EXCLUDE)

install(
  EXPORT OrvelAnalyticsTargets
  NAMESPACE Orvel::
  DESTINATION ${package_dir})
configure_package_config_file(
  cmake/OrvelAnalyticsConfig.cmake.in ${PROJECT_BINARY_DIR}/OrvelAnalyticsConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvelAnalyticsConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES cmake/OrvelAnalyticsGenerate.cmake ${PROJECT_BINARY_DIR}/OrvelAnalyticsConfig.cmake
              ${PROJECT_BINARY_DIR}/OrvelAnalyticsConfigVersion.cmake DESTINATION ${package_dir})

# orvel_install_pkgconfig(NAME DESCRIPTION [STATIC_FLAG REQUIRED...]) installs what pkg-config knows
# of a library. The static one has a definition of its own, and leaves what it needs to the program.
function(orvel_install_pkgconfig name description)
  set(flags)
  set(required)
  if(NOT BUILD_SHARED_LIBS)
    list(POP_FRONT ARGN flags)
    list(JOIN ARGN " " required)
  endif()
  cmake_path(SET here /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  cmake_path(RELATIVE_PATH here BASE_DIRECTORY /prefix OUTPUT_VARIABLE folders)
  string(REGEX REPLACE "[^/]+" ".." prefix_from_here ${folders})
  configure_file(cmake/library.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

if(NOT WIN32)
  orvel_install_pkgconfig(orvel-analytics "${PROJECT_DESCRIPTION}" -DORVEL_ANALYTICS_STATIC yyjson)
  orvel_install_pkgconfig(
    orvel-rpc-client "RPC client library, through which applications reach the analytics service"
    -DORVEL_RELAY_STATIC)
endif()
