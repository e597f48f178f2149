-- Animations backwards.

local building, controls, progress = require "gif.building", require "gif.controls", require "gif.progress"

local reversing = {}

local kKeep, kRestoreBackground, kRestorePrevious = 1, 2, 3 -- disposals: GIF89a, section 23

-- A row of pixels with others drawn over it after that many; those of the transparent index let it show through.
local function draw_row(below, above, left, transparent)
  if not transparent then return below:sub(1, left) .. above .. below:sub(left + #above + 1) end
  local parts, at = {}, 1
  local opaque = "()([^" .. string.char(transparent):gsub("%p", "%%%0") .. "]+)()"
  for from, run, to in above:gmatch(opaque) do
    parts[#parts + 1] = below:sub(at, left + from - 1)
    parts[#parts + 1] = run
    at = left + to
  end
  parts[#parts + 1] = below:sub(at)
  return table.concat(parts)
end

-- Draws what pixels_of_row(y, width) gives into the rows of a screen of that width, where an image lies on it.
local function draw(rows, screen_width, image, transparent, pixels_of_row)
  local left, top = image.Left, image.Top
  local width = math.max(0, math.min(image.Width, screen_width - left))
  for y = 0, math.min(image.Height, #rows - top) - 1 do
    rows[top + y + 1] = draw_row(rows[top + y + 1], pixels_of_row(y, width), left, transparent)
  end
end

-- Makes every image show the whole screen as an animation shows it by then. Images with tables of their own stay as
-- they are: their pixels cannot stand beside those of others.
local function make_whole(frames, screen)
  for _, frame in ipairs(frames) do
    if frame.image.HasPalette then return false end
  end
  local transparent = frames[1].control.transparent
  local nothing = string.char(transparent or screen.BackgroundColor)
  local canvas, screen_width = {}, screen.Width
  for y = 1, screen.Height do canvas[y] = nothing:rep(screen_width) end
  local step = progress.start(#frames, "frames")
  for _, frame in ipairs(frames) do
    local image, control = frame.image, frame.control
    local before = control.disposal == kRestorePrevious and table.move(canvas, 1, #canvas, 1, {})
    local pixels, own_width = tostring(image.Data or ""), image.Width
    draw(canvas, screen_width, image, control.transparent, function(y, width)
      return pixels:sub(y * own_width + 1, y * own_width + width)
    end)
    local whole = MemoryBlock(table.concat(canvas))
    if control.disposal == kRestoreBackground then
      draw(canvas, screen_width, image, nil, function(_, width) return nothing:rep(width) end)
    end
    canvas = before or canvas
    image.Left, image.Top, image.Width, image.Height, image.Data = 0, 0, screen_width, screen.Height, whole
    control.disposal, control.transparent = transparent and kRestoreBackground or kKeep, transparent
    step()
  end
  return true
end

-- A list of blocks with the images last to first, after all others. Images that hold only what differs from the one
-- before make sense in their order alone, so each is made whole first; false as a second result when that cannot be.
function reversing.reversed(blocks, screen)
  local frames, others = controls.take_apart(blocks)
  if #frames == 0 then return blocks, true end
  local whole = make_whole(frames, screen)
  local result = others
  for i = #frames, 1, -1 do
    result[#result + 1] = building.control(frames[i].control)
    result[#result + 1] = frames[i].block
  end
  return result, whole
end

return reversing
