-- What viewers show after each frame: the images drawn over one another, disposed of as each asks (GIF89a, section 23);
-- frames made whole by it, and parted again.

local areas = require "gif.areas"

local composing = {}

local kKeep, kRestoreBackground, kRestorePrevious = 1, 2, 3 -- disposals
local kMostPixels, kLongestSide = 1 << 26, 32767 -- of what is drawn
local kBytesBetweenSweeps = 1 << 25
local kBytesOfPixel = 8 -- of a picture with its mask

-- A list of colours, or of other numbers for indexes, in the form that the host takes.
function composing.list(numbers)
  local parts = {}
  for i = 1, #numbers, 128 do
    local last = math.min(i + 127, #numbers)
    parts[#parts + 1] = ("<" .. ("I4"):rep(last - i + 1)):pack(table.unpack(numbers, i, last))
  end
  return table.concat(parts)
end

local indexes = {}
for i = 0, 255 do indexes[i + 1] = i end
local kIndexes = composing.list(indexes)

-- Gives back the memory of pixels no longer in use: they are large, and Lua sees only their handles. Not after each small
-- one, because every sweep goes through all that a script holds.
local unswept = 0
function composing.sweep(bytes)
  unswept = unswept + bytes
  if unswept < kBytesBetweenSweeps then return end
  collectgarbage()
  unswept = 0
end
local sweep = composing.sweep

-- Whether something of this size, a logical screen or an image, is drawn: it is not empty, nor too large.
function composing.can_draw(width, height)
  return width > 0 and height > 0 and math.max(width, height) <= kLongestSide and width * height <= kMostPixels
end

-- Draws a frame with its left top corner there, on a canvas of a screen of that height. Only the rows that a smaller
-- canvas shows are read.
local function draw(canvas, height, frame, left, top, values)
  local pixels, transparent, shown = rawget(frame, "pixels"), frame.transparent or -1, canvas.Height
  if pixels or height == shown then
    local data = pixels and MemoryBlock(pixels) or frame.image.Data
    if data then canvas:Draw(data, left, top, frame.width, frame.height, values, transparent) end
    return sweep(frame.width * frame.height)
  end
  for row = math.max(0, -(-top * shown // height)), shown - 1 do
    local y = row * height // shown - top
    if y >= frame.height then break end
    local data = y >= 0 and frame.image:PixelData(y)
    if data then canvas:Draw(data, left, top + y, frame.width, 1, values, transparent) end
    sweep(frame.width)
  end
end

-- What a canvas shows, as a picture.
function composing.seen(canvas)
  sweep(canvas.Width * canvas.Height * kBytesOfPixel)
  return canvas:Picture()
end

-- The picture of a frame alone, its transparent pixels as mask, at a scale of at most 1; nil when it has no pixels or no
-- colours.
---@param frame Frame
function composing.picture_of(frame, colours, scale)
  if not composing.can_draw(frame.width, frame.height) or #colours == 0 then return nil end
  local function shown(size) return math.max(1, math.min(size, math.floor(size * (scale or 1)))) end
  local canvas = Canvas(frame.width, frame.height, shown(frame.width), shown(frame.height))
  draw(canvas, frame.height, frame, 0, 0, composing.list(colours))
  return composing.seen(canvas)
end

-- Calls show(frame, canvas) for each frame; the disposal of a frame takes effect just before the next one is drawn.
-- how: indexes, when pixels are to stay indexes, not colours; width and height of a smaller canvas; needed(frame), which
-- stops it where it gives false.
---@param document Document
function composing.play(document, how, show)
  local width, height = document.width, document.height
  local canvas = Canvas(width, height, how.width or width, how.height or height)
  local lists = {} -- by table of colours
  for _, frame in ipairs(document.frames) do
    if how.needed and not how.needed(frame) then return end
    local colours = how.indexes and kIndexes or document:colours_of(frame)
    local values = how.indexes and kIndexes or lists[colours] or composing.list(colours)
    if colours == document.colours then lists[colours] = values end
    if frame.disposal == kRestorePrevious then canvas:Save() end
    if #values > 0 then draw(canvas, height, frame, frame.left, frame.top, values) end
    show(frame, canvas)
    if frame.disposal == kRestoreBackground then
      canvas:Fill(frame.left, frame.top, frame.width, frame.height)
    elseif frame.disposal == kRestorePrevious then
      canvas:Restore()
    end
  end
end

-- --- Whole frames ------------------------------------------------------------------------------------------------------

-- An index that no opaque pixel of a document with one table has; its table grows for it, if need be. Nil for none.
local function free_index(document)
  local used = {}
  for _, frame in ipairs(document.frames) do
    for index, count in pairs(host.counts(frame.pixels)) do
      if count > 0 and index ~= frame.transparent then used[index] = true end
    end
  end
  for index = 0, 255 do
    if not used[index] then
      for i = #document.colours + 1, index + 1 do document.colours[i] = 0 end
      return index
    end
  end
  return nil
end

-- At most so many colours that come near those of a film's frames.
function composing.reduced(film, most)
  film:Plan(most, false)
  local bytes, colours = film.Table, {}
  if bytes == "" and film:Next() then bytes = film.Colors end
  for at = 1, #bytes, 3 do colours[#colours + 1] = (">I3"):unpack(bytes, at) end
  return colours
end

-- A picture as pixels with a table of their own, and the transparent index if it has one; false as a fourth result when
-- its colours had to be reduced.
function composing.indexed(picture)
  local has_mask = picture.Mask ~= nil
  local list = picture:Colours(256)
  local colours, most = {}, has_mask and 255 or 256
  local exact = #list // 4 <= most
  if not exact then
    local film <const> = Film(picture.Width, picture.Height)
    film:Show(picture)
    film:Keep()
    list = composing.list(composing.reduced(film, most))
  end
  for i = 1, #list // 4 do colours[i] = ("<I4"):unpack(list, i * 4 - 3) end
  local transparent = has_mask and #colours or nil
  if has_mask then colours[#colours + 1] = 0 end
  return tostring(picture:Indexes(composing.list(colours), transparent or -1)), colours, transparent, exact
end

local function set_whole(frame, document, pixels, transparent)
  frame.left, frame.top, frame.width, frame.height = 0, 0, document.width, document.height
  frame.pixels, frame.transparent = pixels, transparent
  frame.disposal = transparent and kRestoreBackground or kKeep
end

-- Makes each frame show the whole screen, as viewers show it by then, so that it can be taken out or moved. With one
-- table the indexes stay; otherwise each frame gets a table of its own. Gives how many frames had more colours than a
-- table holds.
---@param document Document
function composing.make_whole(document)
  local reduced, transparent = 0, nil
  local has_holes = false
  composing.play(document, { indexes = true }, function(_, canvas) has_holes = has_holes or not canvas.IsFull end)
  local by_index = document:has_one_table()
  if by_index and has_holes then
    transparent = free_index(document)
    by_index = transparent ~= nil
  end
  local made = {}
  composing.play(document, { indexes = by_index }, function(frame, canvas)
    local whole = { transparent = transparent }
    if by_index then
      whole.pixels = canvas:Indexes(transparent or 0):String()
    else
      local exact
      whole.pixels, whole.colours, whole.transparent, exact = composing.indexed(composing.seen(canvas))
      reduced = reduced + (exact and 0 or 1)
    end
    made[#made + 1] = whole
  end)
  for i, frame in ipairs(document.frames) do
    set_whole(frame, document, made[i].pixels, made[i].transparent)
    if made[i].colours then frame.colours = made[i].colours end
  end
  return reduced
end

-- Leaves in each whole frame what the one before does not show already: the way back. Frames with transparency or with
-- tables of their own stay whole.
---@param document Document
function composing.make_deltas(document)
  local before
  for _, frame in ipairs(document.frames) do
    local is_whole = frame.left == 0 and frame.top == 0 and frame.width == document.width and
      frame.height == document.height and not frame.transparent and not frame.colours
    local after = is_whole and frame.pixels or nil
    if before and after and frame.disposal <= kKeep then
      local new = areas.difference(before, after, frame.width) or { left = 0, top = 0, width = 1, height = 1 }
      local pixels = areas.part(after, frame.width, new)
      frame.left, frame.top, frame.width, frame.height = new.left, new.top, new.width, new.height
      frame.pixels = pixels
    end
    before = frame.disposal <= kKeep and after or nil
  end
end

return composing
