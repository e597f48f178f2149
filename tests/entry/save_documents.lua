-- Saving what scripts have opened or built, byte for byte. Leaks and references given up too often stop the host.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))

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

local kPlain, kFull, kTable = "GIF87a\3\0\2\1\0\7\x31", "GIF87a\3\0\2\1\xFF\7\x31", ("\9"):rep(768)
local kComment = "\x21\xFE\1c\0"
local kPixels, kCoded = "\2\2\x41\x60\1\x0A\0", "\2\3\x0C\x3C\5\0" -- 1, 0, 1, 0, 3 as they come and as we code them
local kImage = "\x2C\4\1\5\0" -- at 260, 5
for what, row in pairs {
  ["another version"] = { kFull:gsub("87", "90") .. kTable .. kComment, "GIF90a" .. ("\0"):rep(7) },
  ["bytes after the trailer"] = { kPlain .. kComment .. "\x3B" .. kComment, kPlain .. kComment },
  ["an unknown introducer"] = { kPlain .. kComment .. "\0" .. kComment, kPlain .. kComment },
  ["a global table, all bits"] = { kFull .. kTable .. kComment, kFull .. kTable .. kComment },
  ["a local table, all bits"] = { kPlain .. kImage .. "\5\0\1\0\xF8" .. "rgbRGB" .. kPixels .. kComment,
    kPlain .. kImage .. "\5\0\1\0\xF8" .. "rgbRGB" .. kCoded .. kComment },
  ["no rows"] = { kPlain .. kImage .. "\3\0\0\0\0" .. kPixels .. kComment,
    kPlain .. kImage .. "\3\0\0\0\0" .. "\2\1\x2C\0" .. kComment },
  ["a code size too large"] = { kPlain .. kImage .. "\2\0\2\0\0" .. "\12\2\xFF\xFF\0" .. kComment,
    kPlain .. kImage .. "\2\0\2\0\0" .. "\2\2\x84\x51\0" .. kComment },
} do t.expect(what, hex(t.saved(GifStringToGifZKV(row[1]))), hex(row[2] .. "\x3B")) end
local large = GifStringToGifZKV(kPlain .. kImage .. "\3\0\xB8\x0B\0" .. "\2\1\x41") -- in a few bytes
t.expect_bytes("large image", large.FirstBlock.Picture.Data, "\1\0\1" .. ("\0"):rep(8997))

-- Files read as strings do, wherever they end.
local cut = t.new_path()
for size = 0, #t.sample do
  local file <close> = assert(io.open(cut, "wb"))
  file:write(t.sample:sub(1, size)):flush()
  local from_file, from_string = FolderItem(cut):OpenAsGIFZKV(), GifStringToGifZKV(t.sample:sub(1, size))
  t.expect(size .. " bytes", from_file and t.saved(from_file), from_string and t.saved(from_string))
end
os.remove(cut)

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
