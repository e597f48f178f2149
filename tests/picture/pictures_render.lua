-- Pictures and masks of images, pixel by pixel, on whatever kind of host this runs.

local make_gif = dofile(arg[0]:gsub("[^/]*$", "") .. "../support/make_gif.lua")

local function palette(count, seed)
  local colours = {}
  for i = 1, count do colours[i] = i * seed * 7919 & 0xFFFFFF end
  return colours
end

local function image(width, height, indexes, fields)
  local bytes = {}
  for i = 1, width * height do bytes[i] = string.char((i * i // 3 + i) % indexes) end
  local made = { width = width, height = height, pixels = table.concat(bytes) }
  for name, value in pairs(fields or {}) do made[name] = value end
  return made
end

-- The bytes that picture:RGB() must have for the image's indexes.
local function rgb(made, colour_of)
  return (made.pixels:gsub(".", function(index) return (">I3"):pack(colour_of(index:byte())) end))
end

local function same(picture, made, colour_of, what)
  assert(picture, what .. ": no picture")
  assert(picture.Width == made.width and picture.Height == made.height, what .. ": size")
  assert(picture:RGB() == rgb(made, colour_of), what .. ": pixels")
  assert(picture:Pixel(made.width - 1, made.height - 1) == colour_of(made.pixels:byte(-1)), what .. ": last pixel")
end

-- Opens it and gives the last block's image; the document lives as long as that view.
local function open(...)
  local gif = GifStringToGifZKV(make_gif(...))
  return gif:Block(gif.Count - 1).Picture
end

-- --- Colours --------------------------------------------------------------------------------------------------------

local global, own = palette(256, 3), palette(4, 5)
local cases = {
  -- what, global table, image, the table that counts
  { "global", global, image(40, 30, 256), global },
  { "own", global, image(7, 5, 4, { palette = own }), own },
  { "own without global", nil, image(7, 5, 4, { palette = own }), own },
  { "beyond the table is black", nil, image(70, 9, 256, { palette = own }), own },
  { "16 colours in long rows", palette(16, 11), image(517, 3, 16), palette(16, 11) },
  { "256 colours in long rows", global, image(517, 3, 256), global },
  { "one pixel", global, image(1, 1, 256), global },
  { "one column", global, image(1, 300, 256), global },
  { "interlaced", global, image(31, 37, 256, { interlaced = true }), global },
}
for _, case in ipairs(cases) do
  local what, screen_palette, made, colours = table.unpack(case, 1, 4)
  local view = open(600, 300, screen_palette, made)
  collectgarbage()
  same(view:MakePicture(), made, function(index) return colours[index + 1] or 0 end, what)
  same(view:MakeMask(), made, function() return 0 end, what .. ", mask")
end

local unpainted = image(6, 4, 4)
local view = open(6, 4, nil, unpainted)
assert(view:MakePicture() == nil, "no table at all")
same(view:MakeMask(3), unpainted, function(i) return i == 3 and 0xFFFFFF or 0 end, "mask without a table")
for _, size in ipairs { { 0, 4 }, { 4, 0 } } do
  local flat = open(6, 4, global, image(size[1], size[2], 1))
  assert(flat:MakePicture() == nil and flat:MakeMask() == nil and flat:MakeMask(0) == nil, "no pixels")
end
-- The host is asked for sides of 1 to 32767 pixels only, and told twice that the pixels of what it made have changed.
for _, size in ipairs { { 32767, 1, 1 }, { 1, 32767, 1 }, { 32768, 1, 0 }, { 1, 32768, 0 } } do
  local width, height, made = table.unpack(size)
  local bytes = "GIF89a\1\0\1\0\x80\0\0" .. ("\0"):rep(6) .. ("<BI2I2I2I2B"):pack(0x2C, 0, 0, width, height, 0) .. "\2\0"
  local image, before = GifStringToGifZKV(bytes).FirstBlock.Picture, {}
  local expected = { newPicture = made, unlockPictureDescription = made, REALPictureClearCache = 2 * made }
  for name in pairs(expected) do before[name] = host.calls(name) end
  assert((image:MakePicture() ~= nil) == (made == 1))
  for name, calls in pairs(expected) do assert(host.calls(name) - before[name] == calls, name) end
end
local free = view:Clone()
assert(free:MakePicture() == nil and free:MakeMask() == nil and free:MakeMask(1) == nil, "free-standing")

-- --- Transparency ---------------------------------------------------------------------------------------------------

local made = image(64, 9, 256)
local function mask_is(mask, transparent, what)
  same(mask, made, function(index) return index == transparent and 0xFFFFFF or 0 end, what)
end
for _, case in ipairs {
  { "flag set", 5, { 0xF9, "\1\0\0\5" } },
  { "flag clear", -1, { 0xF9, "\0\0\0\5" } },
  { "second sub-block", 9, { 0xF9, "\0\0\0\3", "\1\0\0\9" } },
  { "any extension", 0x21, { 0xFE, "one!" } },
  { "short sub-block", 200, { 0xF9, "\1\0\0", "\1\0\0\200" } },
  { "no sub-block", -1, { 0xF9 } },
  { "not just before", -1, { 0xF9, "\1\0\0\5" }, { 0xFE, "no" } },
  { "before another image", -1, { 0xF9, "\1\0\0\5" }, image(2, 2, 2) },
} do
  local blocks = { table.unpack(case, 3) }
  blocks[#blocks + 1] = made
  mask_is(open(64, 9, global, table.unpack(blocks)):MakeMask(), case[2], case[1])
end
local plain = open(64, 9, global, made)
for _, index in ipairs { -1, 0, 7, 255, 256, (1 << 32) + 7 } do
  mask_is(plain:MakeMask(index), index > 1 << 32 and 7 or index, "index " .. index)
end
