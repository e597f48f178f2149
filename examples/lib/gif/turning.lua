-- Cropping and turning documents: every pixel keeps its index, every frame its part of the screen.

local areas = require "gif.areas"

local turning = {}

local kKeep = 1 -- disposal: GIF89a, section 23

-- Cuts the screen down to a rectangle. Frames outside it become one pixel that shows nothing: their time stays.
---@param document Document
---@param to { left: integer, top: integer, width: integer, height: integer }
function turning.crop(document, to)
  for _, frame in ipairs(document.frames) do
    local left, top = math.max(frame.left, to.left), math.max(frame.top, to.top)
    local right = math.min(frame.left + frame.width, to.left + to.width)
    local bottom = math.min(frame.top + frame.height, to.top + to.height)
    if left < right and top < bottom then
      frame.pixels = areas.part(frame.pixels, frame.width,
        { left = left - frame.left, top = top - frame.top, width = right - left, height = bottom - top })
      frame.left, frame.top, frame.width, frame.height = left - to.left, top - to.top, right - left, bottom - top
    else
      frame.left, frame.top, frame.width, frame.height, frame.pixels = 0, 0, 1, 1, "\0"
      frame.transparent, frame.disposal = 0, kKeep
    end
  end
  document.width, document.height, document.resized = to.width, to.height, true
end

-- Turns it clockwise by quarters; mirrored before, left and right exchanged.
---@param document Document
function turning.turn(document, quarters, mirrored)
  local width, height = document.width, document.height
  for _, frame in ipairs(document.frames) do
    if frame.width > 0 and frame.height > 0 then
      frame.pixels = host.turned(frame.pixels, frame.width, quarters, mirrored)
    end
    local left = mirrored and width - frame.left - frame.width or frame.left
    local right, bottom = width - left - frame.width, height - frame.top - frame.height
    local places = { [0] = { left, frame.top }, { bottom, left }, { right, bottom }, { frame.top, right } }
    frame.left, frame.top = table.unpack(places[quarters & 3])
    if quarters & 1 == 1 then frame.width, frame.height = frame.height, frame.width end
  end
  if quarters & 1 == 1 then document.width, document.height = height, width end
  document.resized = true
end

return turning
