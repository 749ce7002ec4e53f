# An overlay port: its sources are the checkout that it lies in.
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)

vcpkg_check_features(OUT_FEATURE_OPTIONS features
  FEATURES
    agent QUILLON_BUILD_EXAMPLES
    testkit QUILLON_BUILD_TESTKIT
    tests QUILLON_BUILD_TESTS)

vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}" OPTIONS ${features})
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME quillon CONFIG_PATH lib/cmake/quillon)
vcpkg_fixup_pkgconfig()
vcpkg_copy_pdbs()
if("agent" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES quillon-agent AUTO_CLEAN)
endif()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
# The project has no licence of its own yet; NOTICE has those of the software that it contains.
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/NOTICE")
