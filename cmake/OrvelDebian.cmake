# The Debian packages, one of each component: `cmake --preset debian`, a build, and cpack in its
# folder make them. docs/packages.md says what is in them; `./dev package` builds and proves them.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr" OR NOT BUILD_SHARED_LIBS)
  message(FATAL_ERROR "Debian packages have shared libraries, below /usr.")
endif()

set(ORVEL_DEBIAN_REVISION 1 CACHE STRING "The packaging's own part of the packages' version")
# No address is known at which a maintainer could be reached: who publishes packages gives one.
set(ORVEL_DEBIAN_MAINTAINER "Orvel Analytics <packages@orvel.invalid>"
    CACHE STRING "Who answers for the packages")
set(debian_version ${PROJECT_VERSION}-${ORVEL_DEBIAN_REVISION})
set(debian_files ${PROJECT_SOURCE_DIR}/packaging/debian)
set(debian_build ${PROJECT_BINARY_DIR}/debian)

# A library's package has the number of its SONAME in its name, so that programs that need another
# number can be installed beside.
get_target_property(library_abi orvel-analytics SOVERSION)
get_target_property(rpc_client_abi orvel-rpc-client SOVERSION)
get_target_property(testing_abi orvel-analytics-testing SOVERSION)
set(library_package liborvel-analytics${library_abi})
set(rpc_client_package liborvel-rpc-client${rpc_client_abi})
set(testing_package liborvel-analytics-testing${testing_abi})
set(development_package liborvel-analytics-dev)
set(service_package orvel-analytics)

# orvel_debian_library(COMPONENT NAME ABI) says which package a program gets that needs the library,
# and lets the system find the library by a trigger.
function(orvel_debian_library component name abi)
  set(package ${${component}_package})
  configure_file(${debian_files}/shlibs.in ${debian_build}/${component}/shlibs @ONLY)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA
      ${debian_build}/${component}/shlibs ${debian_files}/triggers PARENT_SCOPE)
endfunction()

orvel_debian_library(library liborvel-analytics ${library_abi})
orvel_debian_library(rpc_client liborvel-rpc-client ${rpc_client_abi})
orvel_debian_library(testing liborvel-analytics-testing ${testing_abi})
set(CPACK_DEBIAN_SERVICE_PACKAGE_CONTROL_EXTRA conffiles postinst prerm postrm)
list(TRANSFORM CPACK_DEBIAN_SERVICE_PACKAGE_CONTROL_EXTRA PREPEND ${debian_files}/service/)

# What every package has to say of itself.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${debian_files}/changelog.in ${debian_build}/changelog.Debian @ONLY)
orvel_compressed(${debian_build}/changelog.Debian ${debian_build}/changelog.Debian.gz)
orvel_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${debian_build}/changelog.gz)
foreach(component IN LISTS ORVEL_COMPONENTS)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${${component}_package})
  install(
    FILES ${debian_files}/copyright ${debian_build}/changelog.Debian.gz ${debian_build}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${component}_package}
    COMPONENT ${component})
endforeach()

set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RPC_CLIENT_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_TESTING_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_SERVICE_PACKAGE_SECTION utils)

# What the packages need of each other; what their programs need of the system is found in them.
set(libraries_of_this_version "${library_package} (= ${debian_version}), \
${rpc_client_package} (= ${debian_version})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${libraries_of_this_version}, ${testing_package} (= ${debian_version})")
set(CPACK_DEBIAN_SERVICE_PACKAGE_DEPENDS "${libraries_of_this_version}, adduser")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "${service_package}, libgmock-dev")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src
                                                ${PROJECT_BINARY_DIR}/relay)

set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "client library of the local analytics service
Applications report their events through this library to the analytics service
of the machine that they run on. Events are described by data classes and
checked on the spot. The library starts no thread, writes no file and has no
network transport of its own.
.
This package contains the shared library.")
set(CPACK_COMPONENT_RPC_CLIENT_DESCRIPTION
    "RPC client library of the local analytics service
Through this library an application that uses the analytics library reaches the
analytics service. It is a library of its own, so that a program may bring
another.
.
This package contains the shared library.")
set(CPACK_COMPONENT_TESTING_DESCRIPTION
    "scripted analytics service for the tests of applications
The tests of an application link this library in place of the RPC client
library: it is an analytics service inside the test, which records what the
application reports and answers as the test says.
.
This package contains the shared library.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "client library of the local analytics service (development files)
Applications report their events through this library to the analytics service
of the machine that they run on.
.
This package contains the headers, and what CMake and pkg-config need to know,
of the analytics library, of the RPC client library and of the testing library.")
set(CPACK_COMPONENT_SERVICE_DESCRIPTION
    "local analytics service and its command-line tool
The service receives what the applications of one machine report, checks it and
keeps it, in a database that never leaves the machine.
.
This package contains the service, orvel-analyticsd, and the command-line tool,
orvel-analytics, which reports events and shows and changes the user's consent.")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvel-analytics)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# Each component's description begins with its own summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENTS_ALL ${ORVEL_COMPONENTS})
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
# The settings stand outside the prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE orvel-analytics)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${ORVEL_DEBIAN_REVISION})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${ORVEL_DEBIAN_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/without_ldconfig_scripts.cmake)
include(CPack)
