# Read by cpack once for each kind of package: archives hold the plugin alone, and no folder of a system.
if(CPACK_GENERATOR STREQUAL TGZ)
  set(CPACK_COMPONENTS_ALL plugin)
  set(CPACK_PACKAGING_INSTALL_PREFIX /${CPACK_ARCHIVE_PLUGIN_FILE_NAME})
else()
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
endif()
