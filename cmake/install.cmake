# What `cmake --install` puts where, and the packages that `cpack` makes of it: the plugin alone, with what embedders need,
# and the script host with its examples.

set(header_folder ${CMAKE_INSTALL_INCLUDEDIR}/${GIF_PACKAGE})
install(TARGETS gif_plugin gif_plugin_tolerant COMPONENT plugin
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${GIF_PACKAGE} RUNTIME DESTINATION ${CMAKE_INSTALL_LIBDIR}/${GIF_PACKAGE})
install(FILES bridge/gif_plugin_host.h DESTINATION ${header_folder} COMPONENT plugin)
install(FILES platform/host_platform.h platform/frameworks.h DESTINATION ${header_folder}/platform COMPONENT plugin)
install(PROGRAMS examples/host/host.py DESTINATION ${CMAKE_INSTALL_DATADIR}/${GIF_PACKAGE}/host COMPONENT plugin)
install(FILES examples/host/host.c DESTINATION ${CMAKE_INSTALL_DATADIR}/${GIF_PACKAGE}/host COMPONENT plugin)

# Links of pages to what is not installed become plain words.
function(install_pages folder component)
  install(CODE "execute_process(
    COMMAND ${PROJECT_SOURCE_DIR}/tools/unlink-pages \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}
            \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/${GIF_PACKAGE}
    COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${component})
endfunction()

install(FILES docs/install.md docs/host-interface.md docs/scripting.md docs/platforms.md
  DESTINATION share/doc/${GIF_PACKAGE} COMPONENT plugin)
install_pages(share/doc/${GIF_PACKAGE} plugin)

if(GIF_HOST)
  install(TARGETS gifscan LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${GIF_PACKAGE} COMPONENT gifhost)
  install(TARGETS gifhost RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT gifhost)
  install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/${GIF_PACKAGE} COMPONENT gifhost PATTERN host EXCLUDE)
  install(FILES README.md DESTINATION share/doc/gifhost COMPONENT gifhost)
  install(DIRECTORY docs DESTINATION share/doc/gifhost COMPONENT gifhost PATTERN *.1 EXCLUDE)
  install_pages(share/doc/gifhost gifhost)
endif()

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
foreach(package plugin gifhost)
  set(name ${GIF_PACKAGE})
  if(package STREQUAL gifhost)
    set(name gifhost)
  endif()
  if(package STREQUAL plugin OR GIF_HOST)
    install(FILES ${folder}/changelog.gz cmake/copyright DESTINATION share/doc/${name} COMPONENT ${package})
  endif()
endforeach()
if(GIF_HOST)
  install(FILES ${folder}/gifhost.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT gifhost)
endif()

# For the platform that the compiler makes code for: a Debian package each where there are such, and an archive of the plugin.
set(CPACK_PACKAGE_NAME ${GIF_PACKAGE})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${contact})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "GIF plugin for script hosts")
string(TOLOWER "${CMAKE_SYSTEM_PROCESSOR}-${CMAKE_SYSTEM_NAME}" platform)
string(REPLACE darwin macos platform "${platform}")
set(CPACK_ARCHIVE_PLUGIN_FILE_NAME ${GIF_PACKAGE}-${PROJECT_VERSION}-${platform})
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/package.cmake)
set(CPACK_COMPONENTS_ALL plugin)
if(GIF_HOST)
  list(APPEND CPACK_COMPONENTS_ALL gifhost)
endif()
set(CPACK_STRIP_FILES ON)
if(APPLE)
  set(CPACK_STRIP_FILES OFF)  # it would spoil the signature
endif()
set(CPACK_GENERATOR TGZ)
if(CMAKE_SYSTEM_NAME STREQUAL Linux)
  list(APPEND CPACK_GENERATOR DEB)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME ${GIF_PACKAGE})
set(CPACK_DEBIAN_GIFHOST_PACKAGE_NAME gifhost)
# libgd is loaded when it is needed, which the linked libraries do not show.
set(CPACK_DEBIAN_GIFHOST_PACKAGE_DEPENDS "${GIF_PACKAGE} (= ${PROJECT_VERSION}), libgd3")
set(CPACK_COMPONENT_PLUGIN_DESCRIPTION
  "GIF plugin for script hosts\n Opens GIF files into a tree that scripts read, change, build and save, and turns their\n images into pictures. With the header and two examples for those who make hosts.\n No licence has been granted to anyone yet: all rights are reserved.")
set(CPACK_COMPONENT_GIFHOST_DESCRIPTION
  "script host for the GIF plugin\n Runs Lua scripts that open, change, build and save GIF files, and has commands for them.\n No licence has been granted to anyone yet: all rights are reserved.")
if(CMAKE_CROSSCOMPILING)
  # The libraries of the other architecture are not here to be looked at.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_PLUGIN_PACKAGE_DEPENDS "libc6 (>= 2.36), libgcc-s1 (>= 3.0), libstdc++6 (>= 12)")
  string(REPLACE aarch64 arm64 CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
endif()
include(CPack)
