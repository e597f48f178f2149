-- Pictures drawn on pictures pixel by pixel as they should be: scaled, cut off on every side of either, through masks. And
-- the edges of a MemoryBlock.

local random = math.random
math.randomseed(3)

-- Greys of a mask are transparencies; these have mixtures that end just below, at and above a half.
local kGreys = { 0, 255, 1, 127, 128, 254, 85 }

local function painted(width, height)
  local picture = Picture(width, height)
  for y = 0, height - 1 do
    for x = 0, width - 1 do picture:SetPixel(x, y, random(0, 0xFFFFFF)) end
  end
  return picture
end

local function masked(picture, width, height)
  picture.Mask = Picture(width, height)
  for y = 0, height - 1 do
    for x = 0, width - 1 do picture.Mask:SetPixel(x, y, kGreys[random(#kGreys)] * 0x010101) end
  end
  return picture
end

local function mixed(below, above, opacity)
  local result = 0
  for shift = 0, 16, 8 do
    local a, b = above >> shift & 0xFF, below >> shift & 0xFF
    result = result | math.floor((a * opacity + b * (255 - opacity)) / 255 + 0.5) << shift
  end
  return result
end

-- The pixel that a drawing leaves at a place.
local function expected(below, px, py, source, x, y, w, h, sx, sy, sw, sh)
  local column, row = px - x, py - y
  if column < 0 or column >= w or row < 0 or row >= h then return below end
  local fx, fy = sx + column * sw // w, sy + row * sh // h
  if fx < 0 or fx >= source.Width or fy < 0 or fy >= source.Height then return below end
  local mask, opacity = source.Mask, 255
  if mask and fx < mask.Width and fy < mask.Height then opacity = 255 - (mask:Pixel(fx, fy) & 0xFF) end
  return mixed(below, source:Pixel(fx, fy), opacity)
end

for n = 1, 400 do
  local source = painted(random(3, 9), random(3, 9))
  if n % 2 == 0 then masked(source, random(1, source.Width), random(1, source.Height)) end
  local target = painted(11, 8)
  local before = {}
  for i = 0, 87 do before[i] = target:Pixel(i % 11, i // 11) end
  local area = {}
  for i, range in ipairs { { -4, 8 }, { -4, 6 }, { 0, 16 }, { 0, 12 }, { -3, 4 }, { -3, 4 }, { 0, 12 }, { 0, 12 } } do
    area[i] = random(table.unpack(range))
  end
  target:DrawPicture(source, table.unpack(area))
  for i = 0, 87 do
    local x, y = i % 11, i // 11
    local got, wanted = target:Pixel(x, y), expected(before[i], x, y, source, table.unpack(area))
    if got ~= wanted then
      error(("drawing %d (%s): pixel %d, %d is %06x, expected %06x"):format(n, table.concat(area, " "), x, y, got, wanted))
    end
  end
end

local block = MemoryBlock("abcd")
for _, row in ipairs {
  { 0, 4, "abcd" }, { 3, 1, "d" }, { 4, 0, "" }, { 4, -1, "" }, { 2, -1, "cd" },
  { 4, 1 }, { 3, 2 }, { 5, 0 }, { 5, -1 }, { -1, 1 }, { 0, 5 }, { 1, math.maxinteger },
} do
  local succeeded, text = pcall(block.String, block, row[1], row[2])
  assert((succeeded and text or nil) == row[3], row[1] .. ", " .. row[2])
end
for _, offset in ipairs { -1, 4 } do assert(not pcall(block.Byte, block, offset), offset) end
assert(block:Byte(3) == ("d"):byte())
