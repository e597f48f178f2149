# What `cmake --install` puts where, and the Debian package that `cpack` makes of it.

install(TARGETS gif_plugin gif_plugin_tolerant gifscan LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${GIF_PACKAGE})
install(TARGETS gifhost RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/${GIF_PACKAGE})
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN *.1 EXCLUDE)
# Links to what is not installed become plain words.
install(CODE "execute_process(
  COMMAND ${PROJECT_SOURCE_DIR}/tools/unlink-pages \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DOCDIR}
          \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/${GIF_PACKAGE}
  COMMAND_ERROR_IS_FATAL ANY)")

# The page of `man gifhost`, and the changes in the form and under the names that Debian wants; both compressed.
file(READ CHANGELOG.md changes)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md docs/gifhost.1)
set(contact "The GIF plugin's developers <gif-plugin@localhost>")
string(REGEX REPLACE "^.*\n## ${PROJECT_VERSION} \\(([0-9-]+)\\)\n" "\\1\n" changes "${changes}")
string(SUBSTRING "${changes}" 0 10 day)
execute_process(COMMAND date -ud ${day} "+%a, %d %b %Y %H:%M:%S +0000" OUTPUT_VARIABLE date
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(SUBSTRING "${changes}" 10 -1 changes)
string(REGEX REPLACE "\n## .*" "" changes "${changes}")
string(REGEX REPLACE "\n  " "\n    " changes "${changes}")
string(REGEX REPLACE "\n- " "\n  * " changes "${changes}")
string(STRIP "${changes}" changes)
set(folder ${PROJECT_BINARY_DIR}/compressed)
file(WRITE ${folder}/changelog "${GIF_PACKAGE} (${PROJECT_VERSION}) unstable; urgency=low\n\n  ${changes}\n\n -- ${contact}  ${date}\n")
configure_file(docs/gifhost.1 ${folder}/gifhost.1 COPYONLY)
execute_process(COMMAND gzip -9nkf changelog gifhost.1 WORKING_DIRECTORY ${folder} COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${folder}/changelog.gz cmake/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${folder}/gifhost.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${GIF_PACKAGE})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${contact})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "GIF plugin for script hosts, and a script host to run it in")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "Opens GIF files into a tree that Lua scripts read, change, build and save,\n and turns their images into pictures. The program gifhost runs such scripts.")
include(CPack)
