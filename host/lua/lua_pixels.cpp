#include "host/lua/lua_pixels.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/lua/lua_error.h"
#include "host/lua/lua_text.h"

namespace host {
namespace {

std::string_view CheckBytes(lua_State* lua, int index) {
  size_t size = 0;
  const char* bytes = luaL_checklstring(lua, index, &size);
  return {bytes, size};
}

// host.turned(bytes, width, quarters [, mirrored]): pixels of a byte each, turned clockwise.
int Turned(lua_State* lua) {
  const std::string_view from = CheckBytes(lua, 1);
  const auto width = static_cast<size_t>(luaL_checkinteger(lua, 2));
  const lua_Integer quarters = luaL_checkinteger(lua, 3) & 3;
  const bool mirrored = lua_toboolean(lua, 4) != 0;
  if (width == 0 || from.size() % width != 0) return luaL_argerror(lua, 2, "no whole rows");
  const size_t height = from.size() / width;
  std::string to(from.size(), '\0');
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const size_t column = mirrored ? width - 1 - x : x;
      const size_t places[] = {y * width + column, column * height + height - 1 - y,
                               (height - 1 - y) * width + width - 1 - column, (width - 1 - column) * height + y};
      to[places[quarters]] = from[y * width + x];
    }
  }
  PushString(lua, to);
  return 1;
}

// host.counts(bytes): how often each value from 0 to 255 stands there.
int Counts(lua_State* lua) {
  std::array<lua_Integer, 256> counts{};
  for (const char c : CheckBytes(lua, 1)) ++counts[static_cast<unsigned char>(c)];
  lua_createtable(lua, 255, 1);
  for (lua_Integer i = 0; i < 256; ++i) {
    lua_pushinteger(lua, counts[static_cast<size_t>(i)]);
    lua_rawseti(lua, -2, i);
  }
  return 1;
}

constexpr std::array<uint32_t, 256> kCrcs = [] {
  std::array<uint32_t, 256> crcs{};
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t crc = i;
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320u : 0u);
    crcs[i] = crc;
  }
  return crcs;
}();

// host.crc32(bytes): the checksum of gzip, PNG and zip.
int Crc32(lua_State* lua) {
  uint32_t crc = 0xFFFFFFFF;
  for (const char c : CheckBytes(lua, 1)) crc = kCrcs[(crc ^ static_cast<unsigned char>(c)) & 0xFF] ^ crc >> 8;
  lua_pushinteger(lua, crc ^ 0xFFFFFFFF);
  return 1;
}

}  // namespace

void AddPixelFunctions(lua_State* lua) {
  const luaL_Reg functions[] = {
      {"turned", Guarded<Turned>}, {"counts", Guarded<Counts>}, {"crc32", Guarded<Crc32>}, {nullptr, nullptr}};
  luaL_setfuncs(lua, functions, 0);
}

}  // namespace host
