-- The blocks of a document, each read once, and the frames among them.

local extensions = require "gif.extensions"

local blocks = {}

-- Every block in order: its index, its introducer, and an image or an extension or, in damaged files, neither.
function blocks.read(gif)
  local all = {}
  for i, block in pairs(gif) do
    local extension = block.Extension
    all[#all + 1] = {
      index = i, introducer = block.Intro, image = block.Picture,
      extension = extension and extensions.read(extension) }
  end
  return all
end

-- The images in order, each with its place and what the graphic control before it says (GIF89a, section 23).
function blocks.frames(all)
  local frames, control = {}, nil
  for _, block in ipairs(all) do
    local extension, image = block.extension, block.image
    if extension and extension.disposal then control = extension end
    if image then
      local said = control or { disposal = 0, delay_cs = 0 }
      frames[#frames + 1] = {
        number = #frames, block = block.index, image = image,
        left = image.Left, top = image.Top, width = image.Width, height = image.Height,
        disposal = said.disposal, delay_cs = said.delay_cs, transparent = said.transparent }
      control = nil
    end
  end
  return frames
end

-- Counts over a whole document; loops is nil for one that says nothing about them, 0 for ever.
function blocks.sums(all)
  local sums = { images = 0, extensions = 0, pixels = 0, delay_cs = 0 }
  for _, block in ipairs(all) do
    local image, extension = block.image, block.extension
    if image then
      sums.images, sums.pixels = sums.images + 1, sums.pixels + image.Width * image.Height
    elseif extension then
      sums.extensions = sums.extensions + 1
      sums.delay_cs = sums.delay_cs + (extension.delay_cs or 0)
      sums.loops = extension.loops or sums.loops
    end
  end
  return sums
end

-- The logical screen's width and height; files that give none get the room that their images take.
function blocks.screen_size(gif, frames)
  local width, height = gif.Screen.Width, gif.Screen.Height
  if width > 0 and height > 0 then return width, height end
  for _, frame in ipairs(frames) do
    width, height = math.max(width, frame.left + frame.width), math.max(height, frame.top + frame.height)
  end
  return width, height
end

return blocks
