# Where tools/install-toolchains puts what Debian has no package for: one folder for all clones.
set(toolchains "$ENV{GIF_TOOLCHAINS}")
if(NOT toolchains)
  set(toolchains "$ENV{HOME}/.cache/gif-toolchains")
endif()
