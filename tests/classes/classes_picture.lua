-- GifPictureZKV.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))
local opened = t.open()
local kBytes = "\0\1\2\3\4\5\6\7"

t.check_fields(opened:Block(1).Picture,
  { Left = 1, Top = 2, Width = 3, Height = 2, Interlace = true, Sorted = true, HasPalette = true, PaletteDepth = 1 },
  GifPictureZKV(),
  { Left = -7, Top = 1 << 40, Width = -(1 << 40), Height = math.maxinteger, Interlace = false, Sorted = false,
    HasPalette = false, PaletteDepth = -1 })
t.check_fields(opened:Block(2).Picture, { Interlace = false, Sorted = false, HasPalette = false, PaletteDepth = 0 },
  GifPictureZKV(), { Interlace = true, Sorted = true, HasPalette = true })
t.expect("table without colours", opened:Block(2).Picture.Palette.Count, 0)

-- An opened image
local view = opened:Block(1).Picture
t.expect_bytes("Data", view.Data, t.pixels)
t.expect_bytes("CopyData", view:CopyData(), t.pixels)
view.Data[0] = 77
t.expect_bytes("Data after changing a copy", view.Data, t.pixels)
for row, bytes in pairs { [0] = t.pixels:sub(1, 3), t.pixels:sub(4, 6), [-1] = false, [2] = false, [1 << 32] = false } do
  t.expect_bytes("PixelData " .. row, view:PixelData(row), bytes or nil)
end
local copy = view:Clone()
t.expect("cloned table", copy.Palette:Value(1), 0x212223)
copy.Data[0] = 77
t.expect_bytes("Data after changing a clone", view.Data, t.pixels)

-- A stored block wins over the record's rows, in the size of the view's own fields; PixelData keeps to the record.
local block = MemoryBlock(kBytes)
view.Data = block
t.expect("stored Data", view.Data, block)
t.expect_bytes("CopyData without a size", view:CopyData(), "")
view.Width, view.Height = 2, 3
t.expect_bytes("CopyData", view:CopyData(), kBytes:sub(1, 6))
t.expect_bytes("cloned Data", view:Clone().Data, kBytes:sub(1, 6))
t.expect("cloned Width", view:Clone().Width, 3)
t.expect_bytes("PixelData", view:PixelData(1), t.pixels:sub(4, 6))
view.Data = nil
t.expect_bytes("Data", view.Data, t.pixels)

-- A free-standing image: every size, also where the block is too short (zeros follow it) or sizes make no sense
local kNone = {}
for _, case in ipairs {
  -- width, height, PixelData rows from 0 on, CopyData
  { 4, 2, { "\0\1\2\3", "\4\5\6\7", kNone }, kBytes },
  { 3, 3, { "\0\1\2", "\3\4\5", "\6\7\0", kNone }, kBytes .. "\0" },
  { 12, 2, { kBytes .. "\0\0\0\0", ("\0"):rep(12), kNone }, kBytes .. ("\0"):rep(16) },
  { 0, 2, { kNone, kNone }, "" },
  { 4, 0, { kNone }, "" },
  { -1, 2, { kNone, kNone }, kNone },
  { -2, -3, { kNone }, kBytes:sub(1, 6) },
  { 1, 1 << 31, { "\0", "\1" }, kNone },
  { 1, math.maxinteger, { "\0", "\1" }, kNone },
  { 1 << 32, 1 << 32, {}, kNone },
  { math.mininteger, -1, { kNone }, kNone },
} do
  local width, height, rows, all = table.unpack(case)
  local picture, what = GifPictureZKV(), (" of %d x %d"):format(width, height)
  picture.Width, picture.Height, picture.Data = width, height, block
  for i, row in ipairs(rows) do
    t.expect_bytes("PixelData" .. what, picture:PixelData(i - 1), row ~= kNone and row or nil)
  end
  t.expect_bytes("CopyData" .. what, picture:CopyData(), all ~= kNone and all or nil)
  t.expect_bytes("cloned Data" .. what, picture:Clone().Data, all ~= kNone and all or nil)
  t.expect("Data" .. what, picture.Data, block)
end

-- Rows that lie behind the end of any block, and rows that are too large to be made
local picture = GifPictureZKV()
picture.Height, picture.Data = math.maxinteger, block
picture.Width = 3
t.expect_bytes("row at an offset above 2^63", picture:PixelData(1 << 62), "\0\0\0")
picture.Width = math.maxinteger
t.expect_error("OutOfMemoryException", "Failed to allocate a memoryblock with 9223372036854775807 bytes in size.",
  picture.PixelData, 1)

-- The block is shared
picture.Width, picture.Height = 4, 2
block[5] = 99
t.expect_bytes("changed block", picture:PixelData(1), "\4\x63\6\7")
assert(picture:CopyData() ~= block and picture:Clone().Data ~= block, "shared copy")
picture.Data = nil
for _, empty in ipairs { picture, GifPictureZKV(), picture:Clone() } do
  t.expect("nothing", empty.Data or empty:CopyData() or empty:PixelData(0) or empty.Palette, nil)
end

-- The table is shared, its clone is not
local palette = GifPaletteZKV()
picture.Palette = palette
t.expect("Palette", picture.Palette, palette)
assert(picture:Clone().Palette ~= palette, "shared table")
