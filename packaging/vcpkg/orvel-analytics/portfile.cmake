# An overlay port: it builds the sources among which it stands.
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../.." ABSOLUTE)

vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS
        -DORVEL_BUILD_SERVICE=OFF
        -DORVEL_BUILD_TOOL=OFF
        -DORVEL_BUILD_EXAMPLES=OFF
        -DORVEL_BUILD_TESTS=OFF
)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME OrvelAnalytics CONFIG_PATH lib/cmake/OrvelAnalytics)
if(NOT VCPKG_TARGET_IS_WINDOWS)
    vcpkg_fixup_pkgconfig()
endif()
vcpkg_copy_pdbs()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include")
file(INSTALL "${CURRENT_PORT_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
# The sources come without a licence.
set(VCPKG_POLICY_SKIP_COPYRIGHT_CHECK enabled)
