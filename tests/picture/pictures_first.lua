-- The first image's picture and mask, by the document's methods and straight from bytes. The argument "lost" says that
-- this host can put no mask in place, "none" that it makes none, "copied" that its rows are copied there.

local make_gif = dofile(arg[0]:gsub("[^/]*$", "") .. "../support/make_gif.lua")
local kMask, kCopied = arg[1] ~= "copied" and arg[1] or nil, arg[1] == "copied"

local palette = { 0x102030, 0x405060, 0x708090, 0xA0B0C0 }
local image = { width = 4, height = 2, pixels = "\0\1\2\3\3\2\1\0" }
local other = { width = 1, height = 1, pixels = "\1", palette = palette }
local transparent = { 0xF9, "\1\0\0\2" }

local function bytes_of(picture) return picture and picture:RGB() end

-- What a mask must be: white at an index, or black throughout; nil stands for no mask.
local function mask(index)
  return (image.pixels:gsub(".", function(i) return (i:byte() == index and "\xFF" or "\0"):rep(3) end))
end
local kPixels = image.pixels:gsub(".", function(index) return (">I3"):pack(palette[index:byte() + 1]) end)

for _, case in ipairs {
  -- what, pixels, mask, global table, blocks
  { "extension and image", kPixels, mask(2), palette, transparent, image },
  { "image only", kPixels, mask(-1), palette, image },
  { "later images play no part", kPixels, mask(-1), palette, image, transparent, other },
  { "no table", nil, mask(2), nil, transparent, image },
  { "no image", nil, nil, palette, transparent },
  { "no block", nil, nil, palette },
} do
  local what, pixels, expected = case[1], case[2], case[3]
  local bytes = make_gif(4, 2, table.unpack(case, 4, 7))
  local gif = GifStringToGifZKV(bytes)
  assert(bytes_of(gif:MakeFirstPicture()) == pixels, what .. ": picture")
  assert(bytes_of(gif:MakeFirstMask()) == expected, what .. ": mask")
  assert(not pixels or gif:MakeFirstPicture().Mask == nil, what .. ": no mask without being asked")
  for way, picture in pairs { methods = gif:MakeFirstPictureWithMask() or false, bytes = GifStringToPictureZKV(bytes) or false } do
    assert(bytes_of(picture or nil) == pixels, what .. ", " .. way .. ": pixels")
    if picture then
      local installed = kMask == nil and expected or kMask == "lost" and mask(-1) or nil
      assert(bytes_of(picture.Mask) == installed, what .. ", " .. way .. ": installed mask")
    end
  end
  local free = gif:Clone()
  assert(not free:MakeFirstPicture() and not free:MakeFirstMask() and not free:MakeFirstPictureWithMask(), what)
end

assert(GifStringToPictureZKV("") == nil)
assert(GifStringToPictureZKV("no GIF at all") == nil)
assert(GIFZKV():MakeFirstPictureWithMask() == nil)

-- What kind of host this is has been found out by now: one question for each picture.
local kinds, descriptions = host.calls("pluginObjectType"), host.calls("REALLockPictureDescription")
GifStringToGifZKV(make_gif(4, 2, palette, image)):MakeFirstPicture()
assert(host.calls("pluginObjectType") == kinds and host.calls("REALLockPictureDescription") == descriptions + 1)

-- The host is told twice of each picture made that its pixels have changed, and of those that rows were copied to.
if kCopied then
  local told = host.calls("REALPictureClearCache")
  GifStringToPictureZKV(make_gif(4, 2, palette, transparent, image))
  assert(host.calls("REALPictureClearCache") - told == 5)
end
