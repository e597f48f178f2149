-- Edits that draw: each frame becomes a picture of what is seen then, is drawn on or scaled, and becomes indexes again.

local composing = require "gif.composing"

local drawing = {}

local kKeep, kRestoreBackground = 1, 2 -- disposals: GIF89a, section 23
local kMostColours = 256

-- --- From pictures to indexes ------------------------------------------------------------------------------------------

-- How many of its indexes a document with one table uses, and which.
local function used_indexes(document)
  local used = {}
  for _, frame in ipairs(document.frames) do
    for index, count in pairs(host.counts(frame.pixels)) do used[index] = used[index] or count > 0 end
  end
  return used
end

local function distinct_of(list, into, most)
  for i = 1, #list, 4 do
    local colour = ("<I4"):unpack(list, i)
    if not into[colour] and #into <= most then
      into[#into + 1] = colour
      into[colour] = true
    end
  end
end

-- The table of the document with what the pictures have besides, in the places of colours that it does not use, and
-- the transparent index if there are holes; nil when there is no room.
local function extended_table(document, met, has_holes)
  if not document:has_one_table() or #met > kMostColours then return nil end
  local colours, used = table.move(document.colours, 1, #document.colours, 1, {}), used_indexes(document)
  local known, free, missing = {}, {}, {}
  for index = 0, kMostColours - 1 do
    if used[index] and colours[index + 1] then known[colours[index + 1]] = true else free[#free + 1] = index end
  end
  for _, colour in ipairs(met) do
    if not known[colour] then missing[#missing + 1] = colour end
  end
  local transparent = has_holes and free[#missing + 1] or nil
  if #missing > #free or has_holes and not transparent then return nil end
  local last = transparent and transparent + 1 or 0
  for i, colour in ipairs(missing) do colours[free[i] + 1], last = colour, math.max(last, free[i] + 1) end
  for i = 1, last do colours[i] = colours[i] or 0 end
  return colours, transparent
end

-- Draws every frame anew: edit(picture, frame) gives the picture that takes the place of what is seen. Where the colours
-- fit beside those of the document's table its indexes stay; otherwise new ones are chosen for all frames. Gives
-- whether all colours were kept.
---@param document Document
function drawing.redraw(document, width, height, edit)
  local met, has_holes, exact = {}, false, true
  local function pictures(show)
    composing.play(document, {}, function(frame, canvas) show(frame, edit(composing.seen(canvas), frame)) end)
  end
  pictures(function(_, picture)
    if #met <= kMostColours then distinct_of(picture:Colours(kMostColours), met, kMostColours) end
    has_holes = has_holes or picture.Mask ~= nil
  end)
  local colours, transparent = extended_table(document, met, has_holes)
  if not colours then
    local film <const>, most = Film(width, height), kMostColours - (has_holes and 1 or 0)
    pictures(function(_, picture)
      film:Show(picture)
      film:Keep()
    end)
    colours, exact = composing.reduced(film, most), #met <= most
    transparent = has_holes and #colours or nil
    if has_holes then colours[#colours + 1] = 0 end
  end
  local list, made = composing.list(colours), {}
  pictures(function(_, picture) made[#made + 1] = picture:Indexes(list, transparent or -1):String() end)
  for i, frame in ipairs(document.frames) do
    frame.left, frame.top, frame.width, frame.height, frame.pixels = 0, 0, width, height, made[i]
    frame.image, frame.colours, frame.transparent, frame.interlaced = nil, nil, transparent, false
    frame.disposal = transparent and kRestoreBackground or kKeep
  end
  document.colours, document.width, document.height, document.resized = colours, width, height, true
  composing.make_deltas(document)
  return exact
end

-- --- What is drawn -----------------------------------------------------------------------------------------------------

---@param document Document
function drawing.resize(document, width, height)
  return drawing.redraw(document, width, height, function(picture) return picture:Scaled(width, height) end)
end

-- The left top corner of something on a screen: at "top", "bottom left", "center", ... or at "X,Y"; nil for another
-- place. It keeps away from the border by that many pixels.
function drawing.place(at, width, height, screen_width, screen_height, border)
  local x, y = at:match("^(%-?%d+),(%-?%d+)$")
  if x then return math.tointeger(x), math.tointeger(y) end
  x, y = (screen_width - width) // 2, (screen_height - height) // 2
  for word in at:gmatch("[^%s-]+") do
    if word == "left" then x = border
    elseif word == "right" then x = screen_width - width - border
    elseif word == "top" then y = border
    elseif word == "bottom" then y = screen_height - height - border
    elseif word ~= "center" and word ~= "middle" then return nil end
  end
  return x, y
end

-- Draws a picture on another, whose mask then lets nothing through there.
local function stamp(picture, over, x, y)
  picture:DrawPicture(over, x, y)
  if picture.Mask and over.Mask then
    local black = Picture(over.Width, over.Height)
    black.Mask = over.Mask
    picture.Mask:DrawPicture(black, x, y)
  elseif picture.Mask then
    picture.Mask:FillRect(x, y, over.Width, over.Height, 0)
  end
  return picture
end

-- Draws a picture on every frame.
---@param document Document
function drawing.overlay(document, over, at)
  local x, y = drawing.place(at, over.Width, over.Height, document.width, document.height, 0)
  return drawing.redraw(document, document.width, document.height, function(picture) return stamp(picture, over, x, y) end)
end

-- A text with an outline, as large as wished or as fits: of: text, font, size, colour, outline.
local function lettering(of, most_width)
  local size = of.size
  local letters = Picture(of.text, of.font, size, of.colour)
  while letters.Width > most_width and size > 6 do
    size = math.max(6, math.min(size - 1, size * most_width // letters.Width))
    letters = Picture(of.text, of.font, size, of.colour)
  end
  return letters, Picture(of.text, of.font, size, of.outline), math.max(1, size // 16)
end

-- Writes a text on every frame. of: text, at, font, size in pixels, colour and outline, 0xRRGGBB.
---@param document Document
function drawing.caption(document, of)
  local letters, outline, thick = lettering(of, math.max(1, document.width - 4))
  local border = math.max(2, letters.Height // 4)
  local x, y = drawing.place(of.at, letters.Width, letters.Height, document.width, document.height, border)
  return drawing.redraw(document, document.width, document.height, function(picture)
    for dy = -thick, thick, thick do
      for dx = -thick, thick, thick do stamp(picture, outline, x + dx, y + dy) end
    end
    return stamp(picture, letters, x, y)
  end)
end

return drawing
