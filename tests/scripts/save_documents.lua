-- Saving what scripts have opened or built, byte for byte. Leaks and references given up too often stop the host.

local t = dofile((arg[0]:gsub("[^/]*$", "support.lua")))

local function hex(bytes)
  return bytes and (bytes:gsub(".", function(c) return ("%02X"):format(c:byte()) end))
end

local kScreen = "00000000000000" -- as long as nothing is set

-- The expectation is what stands after the six bytes of the header, in hex.
local function expect_saved(what, gif, expected)
  t.expect(what, hex(t.saved(gif):sub(7)), (expected .. "3B"):gsub(" ", ""))
end

local function fill(object, fields)
  for name, value in pairs(fields) do object[name] = value end
  return object
end

local function document(...)
  local gif = GIFZKV()
  for i = 1, select("#", ...) do gif:Add((select(i, ...))) end
  return gif
end

local function data(bytes)
  return fill(GifDataZKV(), { DataString = bytes })
end

local function extension(marker, ...)
  local result = fill(GifExtensionZKV(), { Marker = marker })
  for i = 1, select("#", ...) do result:Add((select(i, ...))) end
  return fill(GifBlockZKV(), { Intro = 0x21, Extension = result })
end

local function image(fields)
  return fill(GifBlockZKV(), { Intro = 0x2C, Picture = fill(GifPictureZKV(), fields) })
end

local function palette(...)
  local result = fill(GifPaletteZKV(), { Count = select("#", ...) })
  for i, colour in ipairs { ... } do result.Value[i - 1] = colour end
  return result
end

-- --- Headers --------------------------------------------------------------------------------------------------------

for header, saved in pairs { ["XY"] = "XYF87a", ["GIF89a and more"] = "GIF89a", ["AB\0DEFG"] = "AB", ["\0"] = "" } do
  t.expect("header", t.saved(fill(GIFZKV(), { Header = header })):sub(1, -9), saved)
end

-- --- Screens and tables ---------------------------------------------------------------------------------------------

expect_saved("nothing", GIFZKV(), kScreen)
local shared = palette(0x010203, 0xFFFEFD)
local screen = { Width = 0x1234, Height = 0x15678, BackgroundColor = 0x1FF, Aspect = -1, HasPalette = true,
  ColorResolution = 8, PaletteDepth = 1, Palette = shared }
expect_saved("screen", fill(GIFZKV(), { Screen = fill(GifScreenZKV(), screen) }), "3412 7856 F0 FF FF 010203 FFFEFD")

-- --- Blocks ---------------------------------------------------------------------------------------------------------

local comment = extension(0xFE, data "abc", data "", nil, GifDataZKV())
expect_saved("empty data is dropped", document(comment), kScreen .. "21 FE 03 616263 00")
expect_saved("nil entries", document(nil, comment, nil, nil, fill(GifBlockZKV(), { Intro = 0x141 }), nil),
  kScreen .. "21 FE 03 616263 00 41")
expect_saved("shared children", document(comment, comment, fill(GifBlockZKV(), { Intro = 1, Extension = comment.Extension })),
  kScreen .. ("21 FE 03 616263 00"):rep(2) .. "01 FE 03 616263 00")

-- Rows of a MemoryBlock: as codes of 3 bits (4 from the second on), no two neighbours alike.
local bytes = MemoryBlock("\0\1\2\3\1\0\3\2")
for _, case in ipairs {
  { { Width = 4, Height = 1, Data = bytes }, "0400 0100 00", "02 03 44 34 05" },
  { { Width = 2, Height = 2, Data = bytes, Interlace = true }, "0200 0200 40", "02 03 44 34 05" },
  { { Width = 3, Height = 3 }, "0300 0300 00", "02 03 84 7F 05" }, -- no MemoryBlock: nine zeros
  { { Width = 2, Height = 2, Data = MemoryBlock("\0\1") }, "0200 0200 00", "02 03 44 00 05" }, -- too short: zeros
  -- More than there can be memory for: the image has no pixels, what follows is whole.
  { { Width = 0x7FFFFFFF, Height = 0x7FFFFFFF, Data = bytes }, "FFFF FFFF 00", "02 01 2C" },
  { { HasPalette = true, PaletteDepth = 3, Palette = shared }, "0000 0000 82 010203 FFFEFD", "03 01 98" },
} do
  local fields, descriptor, codes = table.unpack(case)
  expect_saved("image " .. descriptor, document(image(fields), comment),
    kScreen .. "2C 0000 0000" .. descriptor .. codes .. "00" .. "21 FE 03 616263 00")
end

-- Views in a free-standing tree count with their own fields.
local opened = t.open()
local view = opened:Block(1)
expect_saved("a block view", document(view, fill(opened:Block(0), { Intro = 0x33 })), kScreen .. "00 33")
local holder = fill(GifBlockZKV(), { Intro = 0x2C, Picture = fill(view.Picture, { Top = 3 }) })
expect_saved("a picture view", document(holder), kScreen .. "2C 0000 0300 0000 0000 00 02 01 2C 00")
holder = extension(0xFE, opened:Block(0).Extension:Data(0))
expect_saved("a data view", document(holder), kScreen .. "21 FE 00")
expect_saved("screen and palette views",
  fill(GIFZKV(), { Screen = fill(GifScreenZKV(), { HasPalette = true, Palette = opened.Screen.Palette }) }),
  "0000 0000 80 00 00")

-- --- Opened documents -----------------------------------------------------------------------------------------------

-- Saved as they are, whatever was set on them; saving changes nothing.
local original = t.saved(opened)
t.expect("tree kept", hex(t.saved(GifStringToGifZKV(original))), hex(original))
t.expect("header and descriptors kept", original:sub(1, 25), t.sample:sub(1, 25))
fill(opened, { Header = "XYZ", Screen = GifScreenZKV() }):Add(comment)
t.expect("setters of an opened document", hex(t.saved(opened)), hex(original))
t.expect("clone", hex(t.saved(t.open():Clone())), hex(original))

-- Onto the very file it came from, several times.
local path = t.new_path()
t.expect("saved", FolderItem(path):SaveAsGIFZKV(opened), true)
for _ = 1, 2 do
  local again = FolderItem(path):OpenAsGIFZKV()
  t.expect("saved onto itself", FolderItem(path):SaveAsGIFZKV(again), true)
end
-- A longer file is replaced, not written over.
local file = io.open(path, "ab")
file:write(("x"):rep(1000))
file:close()
t.expect("saved over a longer file", FolderItem(path):SaveAsGIFZKV(opened), true)
t.expect("file", hex(t.take_file(path)), hex(original))

-- --- Failures -------------------------------------------------------------------------------------------------------

t.expect("no document", FolderItem(path):SaveAsGIFZKV(nil), false)
for _, impossible in ipairs { path .. "/no/such/folder.gif", "/", "/dev/null/x.gif" } do
  t.expect("saved to " .. impossible, FolderItem(impossible):SaveAsGIFZKV(opened), false)
  t.expect("built, saved to " .. impossible, FolderItem(impossible):SaveAsGIFZKV(document(comment)), false)
  t.expect("opened", FolderItem(impossible):OpenAsGIFZKV(), nil)
end
t.expect("nothing left behind", host.exists(path), false)

return "OK"
