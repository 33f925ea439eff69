# What `cmake --install` lays down: the libraries with their headers, and the package that
# find_package(OrvelAnalytics) finds. Each program says in its own folder where it goes.
if(WIN32 AND ORVEL_RPC_CLIENT STREQUAL "vendor")
  # The vendor's library comes with the vendor's package.
  return()
endif()
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrvelAnalytics)

install(TARGETS orvel-analytics orvel-rpc-client EXPORT OrvelAnalyticsTargets)
if(WIN32)
  install(TARGETS orvel-chosen-rpc-client EXPORT OrvelAnalyticsTargets)
endif()
if(TARGET orvel-analytics-testing)
  install(TARGETS orvel-analytics-testing EXPORT OrvelAnalyticsTargets)
  install(DIRECTORY testing/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()
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
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvelAnalyticsConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrvelAnalyticsConfig.cmake
              ${PROJECT_BINARY_DIR}/OrvelAnalyticsConfigVersion.cmake DESTINATION ${package_dir})
