# Holds all that has a version against the project's own, and the changelog against its form.
#
# cmake -DSOURCE_DIR=… -DVERSION=… -P version.cmake
cmake_minimum_required(VERSION 3.25)

file(READ ${SOURCE_DIR}/packaging/vcpkg/orvel-analytics/vcpkg.json port)
string(JSON port_version GET "${port}" version)
if(NOT port_version STREQUAL VERSION)
  message(SEND_ERROR "vcpkg.json has the version ${port_version}, the project ${VERSION}.")
endif()

# What takes the version from the project may not have one of its own.
foreach(file packaging/conan/conanfile.py packaging/vcpkg/orvel-analytics/portfile.cmake
             packaging/debian/changelog.in cli/orvel-analytics.1.in service/orvel-analyticsd.8.in
             service/orvel-analytics-settings.5.in)
  file(STRINGS ${SOURCE_DIR}/${file} own REGEX "[^0-9.][0-9]+\\.[0-9]+\\.[0-9]+([^0-9.]|$)")
  if(own)
    message(SEND_ERROR "${file} has a version of its own: ${own}")
  endif()
endforeach()

# [Unreleased] first, then the releases, the newest first.
file(STRINGS ${SOURCE_DIR}/CHANGELOG.md headings REGEX "^## ")
list(POP_FRONT headings first)
if(NOT first STREQUAL "## [Unreleased]")
  message(SEND_ERROR "CHANGELOG.md begins with ${first}")
endif()
set(newer ${VERSION})
foreach(heading IN LISTS headings)
  if(NOT heading MATCHES "^## \\[([0-9]+\\.[0-9]+\\.[0-9]+)\\] - 20[0-9][0-9]-[01][0-9]-[0-3][0-9]$")
    message(SEND_ERROR "CHANGELOG.md: no form of a release: ${heading}")
  elseif(CMAKE_MATCH_1 VERSION_GREATER newer)
    message(SEND_ERROR "CHANGELOG.md: ${CMAKE_MATCH_1} stands below, or is newer than, ${newer}")
  else()
    set(newer ${CMAKE_MATCH_1})
  endif()
endforeach()
file(STRINGS ${SOURCE_DIR}/CHANGELOG.md kinds REGEX "^### ")
list(REMOVE_ITEM kinds "### Added" "### Changed" "### Deprecated" "### Removed" "### Fixed"
     "### Security")
if(kinds)
  message(SEND_ERROR "CHANGELOG.md has kinds of changes that are not usual: ${kinds}")
endif()
