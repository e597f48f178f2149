#include "host/lua/lua_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "host/core/text.h"
#include "host/host/path.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_text.h"

namespace host {
namespace {

const char* KindOf(mode_t mode) {
  if (S_ISREG(mode)) return "file";
  if (S_ISDIR(mode)) return "folder";
  if (S_ISFIFO(mode)) return "pipe";
  return S_ISSOCK(mode) ? "socket" : "device";
}

// host.stat(path): a table about what is there, by its links; nil and the reason.
int Stat(lua_State* lua) {
  size_t length = 0;
  const char* path = luaL_checklstring(lua, 1, &length);
  RequirePath({path, length});
  struct stat found = {};
  if (stat(path, &found) != 0) {
    const int error = errno;
    lua_pushnil(lua);
    PushString(lua, Text(path, ": ", std::strerror(error)));
    return 2;
  }
  lua_createtable(lua, 0, 5);
  PushString(lua, KindOf(found.st_mode));
  lua_setfield(lua, -2, "kind");
  const std::pair<const char*, lua_Integer> numbers[] = {
      {"size", static_cast<lua_Integer>(found.st_size)},
      {"device", static_cast<lua_Integer>(found.st_dev)},
      {"inode", static_cast<lua_Integer>(found.st_ino)},
      {"modified", static_cast<lua_Integer>(found.st_mtime)},
  };
  for (const auto& [name, number] : numbers) {
    lua_pushinteger(lua, number);
    lua_setfield(lua, -2, name);
  }
  return 1;
}

// host.alarm(seconds): so many seconds from now a signal ends the program; none for 0.
int Alarm(lua_State* lua) {
  alarm(static_cast<unsigned>(luaL_checkinteger(lua, 1)));
  return 0;
}

}  // namespace

void AddFileFunctions(lua_State* lua) {
  const luaL_Reg functions[] = {{"stat", Guarded<Stat>}, {"alarm", Guarded<Alarm>}, {nullptr, nullptr}};
  luaL_setfuncs(lua, functions, 0);
}

}  // namespace host
