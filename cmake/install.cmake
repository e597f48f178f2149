# What `cmake --install` puts where, and the Debian package that `cpack` makes of it.

install(TARGETS gif_plugin LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${GIF_PACKAGE})
install(TARGETS gifhost RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/${GIF_PACKAGE})
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${GIF_PACKAGE})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The GIF plugin's developers <gif-plugin@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "GIF plugin for script hosts, and a script host to run it in")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "Opens GIF files into a tree that Lua scripts read, change, build and save,\n and turns their images into pictures. The program gifhost runs such scripts.")
include(CPack)
