-- What a viewer shows after each image: the images drawn over one another, disposed of as each asks (GIF89a, section 23).

local animation = {}

local kMostPixels, kLongestSide = 1 << 26, 32767 -- of what is drawn
local kPixelsBetweenSweeps = 1 << 21
local kBlack, kWhite = 0x000000, 0xFFFFFF -- in a mask: opaque, transparent
local kRestoreBackground, kRestorePrevious = 2, 3

-- Whether something of this size, a logical screen or an image, is drawn: it is not empty, nor too large.
function animation.can_draw(width, height)
  return width > 0 and height > 0 and math.max(width, height) <= kLongestSide and width * height <= kMostPixels
end

local function new_canvas(width, height)
  local canvas = Picture(width, height)
  canvas.Mask = Picture(width, height)
  canvas.Mask:FillRect(0, 0, width, height, kWhite)
  return canvas
end

local function copy_of(canvas)
  local copy = new_canvas(canvas.Width, canvas.Height)
  copy:DrawPicture(canvas, 0, 0)
  copy.Mask:DrawPicture(canvas.Mask, 0, 0)
  return copy
end

-- The picture of a frame with its transparent pixels as mask; nil for an image without colours, or not drawn.
function animation.picture_of(frame)
  local picture = animation.can_draw(frame.width, frame.height) and frame.image:MakePicture() or nil
  if picture and frame.transparent then picture.Mask = frame.image:MakeMask(frame.transparent) end
  return picture
end

-- The opaque pixels cover what was there, and make the canvas opaque where they lie.
local function draw_frame(canvas, frame, picture)
  if not picture then return end
  canvas:DrawPicture(picture, frame.left, frame.top)
  if not frame.transparent then
    canvas.Mask:FillRect(frame.left, frame.top, frame.width, frame.height, kBlack)
  elseif picture.Mask then
    local black = Picture(frame.width, frame.height)
    black.Mask = picture.Mask
    canvas.Mask:DrawPicture(black, frame.left, frame.top)
  end
end

-- Gives back the memory of pictures no longer in use: they are large, and Lua sees only their handles. Not after each
-- small one, because every sweep goes through all that a script holds.
local unswept = 0 -- pixels
function animation.sweep(pixels)
  unswept = unswept + pixels
  if unswept < kPixelsBetweenSweeps then return end
  collectgarbage()
  unswept = 0
end

-- Calls show(frame, canvas, picture) for each frame, with what is seen then and the frame's own picture (nil when it
-- has none). The disposal of an image takes effect just before the next one is drawn.
function animation.play(frames, width, height, show)
  local canvas = new_canvas(width, height)
  for _, frame in ipairs(frames) do
    local before = frame.disposal == kRestorePrevious and copy_of(canvas)
    local picture = animation.picture_of(frame)
    draw_frame(canvas, frame, picture)
    show(frame, canvas, picture)
    if frame.disposal == kRestoreBackground then
      canvas.Mask:FillRect(frame.left, frame.top, frame.width, frame.height, kWhite)
    elseif before then
      canvas = before
    end
    picture, before = nil, nil
    animation.sweep(width * height)
  end
end

return animation
