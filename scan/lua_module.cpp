// The module for Lua: `local gifscan = require "gifscan"`; `gifscan.scan(bytes)` gives a table of what the scanner
// found, `gifscan.meanings` what each kind of finding means. docs/scanning.md tells their fields.
//
// Lua may leave any of its functions by a jump. So nothing here has a destructor but the scan, which Lua collects.

#include <lua.hpp>
#include <new>

#include "scan/scanner.h"

namespace {

constexpr const char* kScanName = "gifscan.scan";

void SetInteger(lua_State* lua, const char* field, int64_t value) {
  lua_pushinteger(lua, value);
  lua_setfield(lua, -2, field);
}

void SetText(lua_State* lua, const char* field, const char* text) {
  lua_pushstring(lua, text);
  lua_setfield(lua, -2, field);
}

void SetBoolean(lua_State* lua, const char* field, bool value) {
  lua_pushboolean(lua, value ? 1 : 0);
  lua_setfield(lua, -2, field);
}

// A field is left out where there is no such piece.
void SetExtent(lua_State* lua, const char* field, const Extent& extent) {
  if (extent.length == 0) return;
  lua_createtable(lua, 0, 2);
  SetInteger(lua, "offset", extent.offset);
  SetInteger(lua, "length", extent.length);
  lua_setfield(lua, -2, field);
}

void PushImage(lua_State* lua, const ImageScan& image) {
  lua_createtable(lua, 0, 10);
  SetInteger(lua, "width", image.width);
  SetInteger(lua, "height", image.height);
  if (image.code_size >= 0) SetInteger(lua, "code_size", image.code_size);
  SetExtent(lua, "table", image.table);
  SetExtent(lua, "data", image.data);
  SetInteger(lua, "sub_blocks", image.sub_blocks);
  SetInteger(lua, "compressed_bytes", image.compressed_bytes);
  SetInteger(lua, "codes", image.codes);
  SetInteger(lua, "clear_codes", image.clear_codes);
  SetInteger(lua, "pixels", image.pixels);
}

void PushBlocks(lua_State* lua, const FileScan& scan) {
  lua_createtable(lua, static_cast<int>(scan.blocks.size()), 0);
  lua_Integer index = 0;
  for (const BlockScan& block : scan.blocks) {
    lua_createtable(lua, 0, 4);
    SetInteger(lua, "index", index);
    SetInteger(lua, "offset", block.offset);
    SetInteger(lua, "length", block.length);
    if (block.image >= 0) {
      PushImage(lua, scan.images[static_cast<size_t>(block.image)]);
      lua_setfield(lua, -2, "image");
    } else {
      SetInteger(lua, "label", block.label);
    }
    lua_rawseti(lua, -2, ++index);
  }
}

void PushFindings(lua_State* lua, const FileScan& scan) {
  lua_createtable(lua, static_cast<int>(scan.findings.size()), 0);
  lua_Integer count = 0;
  for (const Finding& finding : scan.findings) {
    const FindingMeaning& meaning = MeaningOf(finding.kind);
    lua_createtable(lua, 0, 5);
    SetText(lua, "kind", meaning.name);
    SetBoolean(lua, "damage", meaning.damage);
    SetInteger(lua, "offset", finding.offset);
    if (finding.block >= 0) SetInteger(lua, "block", finding.block);
    if (meaning.amount) SetInteger(lua, meaning.amount, finding.amount);
    lua_rawseti(lua, -2, ++count);
  }
}

FileScan* NewScan(lua_State* lua) {
  FileScan* scan = new (lua_newuserdatauv(lua, sizeof(FileScan), 0)) FileScan();
  luaL_setmetatable(lua, kScanName);
  return scan;
}

int CollectScan(lua_State* lua) {
  static_cast<FileScan*>(luaL_checkudata(lua, 1, kScanName))->~FileScan();
  return 0;
}

bool ScanInto(FileScan* scan, const char* bytes, size_t size) {
  try {
    *scan = ScanFile({reinterpret_cast<const uint8_t*>(bytes), size});
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

int Scan(lua_State* lua) {
  size_t size = 0;
  const char* bytes = luaL_checklstring(lua, 1, &size);
  FileScan* scan = NewScan(lua);
  if (!ScanInto(scan, bytes, size)) return luaL_error(lua, "not enough memory");
  lua_createtable(lua, 0, 6);
  SetInteger(lua, "size", scan->size);
  SetExtent(lua, "screen", scan->screen);
  SetExtent(lua, "table", scan->table);
  if (scan->trailer >= 0) SetInteger(lua, "trailer", scan->trailer);
  PushBlocks(lua, *scan);
  lua_setfield(lua, -2, "blocks");
  PushFindings(lua, *scan);
  lua_setfield(lua, -2, "findings");
  return 1;
}

void PushMeanings(lua_State* lua) {
  constexpr auto kKinds = static_cast<int>(FindingKind::kFindingKinds);
  lua_createtable(lua, 0, kKinds);
  for (int kind = 0; kind < kKinds; ++kind) {
    const FindingMeaning& meaning = MeaningOf(static_cast<FindingKind>(kind));
    SetText(lua, meaning.name, meaning.meaning);
  }
}

}  // namespace

// What Lua looks for; the module shows it and nothing else.
extern "C" int luaopen_gifscan(lua_State* lua);

extern "C" int luaopen_gifscan(lua_State* lua) {
  luaL_newmetatable(lua, kScanName);
  lua_pushcfunction(lua, CollectScan);
  lua_setfield(lua, -2, "__gc");
  lua_createtable(lua, 0, 2);
  lua_pushcfunction(lua, Scan);
  lua_setfield(lua, -2, "scan");
  PushMeanings(lua);
  lua_setfield(lua, -2, "meanings");
  return 1;
}
