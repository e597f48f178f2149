-- The one reader of documents: every block once, the frames among them, and what they come to.

local extensions = require "gif.extensions"

local blocks = {}

---@class Block
---@field index integer from 0 on, as in the file
---@field introducer integer
---@field place integer where it stood in the document that it was read from
---@field block GifBlockZKV the host's own
---@field image GifPictureZKV? the host's own
---@field extension table? what gif.extensions reads
---@field frame Frame? of an image
---@field control_of Frame? of a graphic control: the frame that it is about

-- Goes through every block in order; in damaged files one may be neither image nor extension. Works on opened documents
-- and on free-standing ones, whose empty entries are left out. There may be hundreds of thousands: what is seldom asked
-- for is fetched then.
---@return fun(): Block?
function blocks.each(gif)
  local next_block, state, index = pairs(gif)
  local fetching = { __index = function(self, name) return name == "block" and gif:Block(self.place) or nil end }
  return function()
    local block
    index, block = next_block(state, index)
    if not index then return nil end
    local extension, image = block.Extension, block.Picture
    local read = {
      index = index, place = index, introducer = block.Intro, extension = extension and extensions.read(extension) }
    if image then read.image = image end
    return setmetatable(read, fetching)
  end
end

-- All of them.
---@return Block[]
function blocks.read(gif)
  local all = {}
  for block in blocks.each(gif) do all[#all + 1] = block end
  return all
end

---@class Frame
---@field number integer from 0 on
---@field block integer the index of its image's block
---@field image GifPictureZKV the host's own
---@field left integer
---@field top integer
---@field width integer
---@field height integer
---@field interlaced boolean
---@field delay_cs integer hundredths of a second
---@field disposal integer 0 nothing said, 1 keep, 2 restore background, 3 restore previous
---@field transparent integer? an index
---@field waits_for_input boolean
---@field colours integer[]? its own table, 0xRRGGBB from index 0 at [1] on; set {} to take it away
---@field pixels string a byte for each, row by row from the top; read anew each time
local Frame = {}

-- The colours of a table, from index 0 at [1] on; none for nil.
function blocks.colours_of(palette)
  local colours, value = {}, palette and palette.Value
  for i = 0, palette and palette.Count - 1 or -1 do colours[i + 1] = value(i) end
  return colours
end

-- What is large is read when it is asked for.
function Frame:__index(name)
  local image = rawget(self, "image")
  if name == "pixels" and image then
    local count = math.max(0, self.width) * math.max(0, self.height)
    local pixels = tostring(image.Data or ""):sub(1, count)
    return #pixels < count and pixels .. ("\0"):rep(count - #pixels) or pixels
  elseif name == "colours" and image and image.HasPalette then
    rawset(self, "colours", blocks.colours_of(image.Palette))
    return rawget(self, "colours")
  end
  return nil
end

-- A frame of plain values; what is left out is 0, false or nil.
---@return Frame
function blocks.frame(of)
  for name, value in pairs { left = 0, top = 0, disposal = 0, delay_cs = 0, interlaced = false, waits_for_input = false } do
    if of[name] == nil then of[name] = value end
  end
  return setmetatable(of, Frame)
end

-- The images in order, each with its place and what the graphic control before it says (GIF89a, section 23).
---@return Frame[]
function blocks.frames(all)
  local frames, control = {}, nil
  for _, block in ipairs(all) do
    local extension, image = block.extension, block.image
    if extension and extension.disposal then control = block end
    if image then
      local said = control and control.extension or { disposal = 0, delay_cs = 0 }
      local frame = blocks.frame {
        number = #frames, block = block.index, image = image,
        left = image.Left, top = image.Top, width = image.Width, height = image.Height, interlaced = image.Interlace,
        disposal = said.disposal, delay_cs = said.delay_cs, transparent = said.transparent,
        waits_for_input = said.waits_for_input }
      block.frame, frames[#frames + 1] = frame, frame
      if control then control.control_of = frame end
      control = nil
    end
  end
  return frames
end

-- Counts over a whole document; loops is nil for one that says nothing about them, 0 for ever.
function blocks.sums(all)
  local sums = { images = 0, extensions = 0, pixels = 0, delay_cs = 0 }
  for _, block in ipairs(all) do blocks.add(sums, block) end
  return sums
end

-- Adds a block to the counts, which are at first those of no blocks.
function blocks.add(sums, block)
  local image, extension = block.image, block.extension
  if image then
    sums.images, sums.pixels = sums.images + 1, sums.pixels + image.Width * image.Height
  elseif extension then
    sums.extensions = sums.extensions + 1
    sums.delay_cs = sums.delay_cs + (extension.delay_cs or 0)
    sums.loops = extension.loops or sums.loops
  end
end

-- The logical screen's width and height; files that give none get the room that their images take.
function blocks.screen_size(gif, frames)
  local width, height = gif.Screen and gif.Screen.Width or 0, gif.Screen and gif.Screen.Height or 0
  if width > 0 and height > 0 then return width, height end
  for _, frame in ipairs(frames) do
    width, height = math.max(width, frame.left + frame.width), math.max(height, frame.top + frame.height)
  end
  return width, height
end

return blocks
