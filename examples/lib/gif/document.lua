-- A document as a list of frames among other blocks. What is not changed stays: colour indexes, tables, the order of the
-- blocks, unknown ones, plain text.

local blocks, building, files = require "gif.blocks", require "gif.building", require "gif.files"

---@class Document
---@field version string "GIF87a" or "GIF89a"
---@field width integer of the logical screen
---@field height integer
---@field colours integer[]? the global table, 0xRRGGBB from index 0 at [1] on
---@field background integer an index
---@field aspect integer
---@field blocks Block[] all blocks in order
---@field frames Frame[] the images among them; set_frames() exchanges them
---@field bytes integer? of the file that it was opened from
local Document = {}
Document.__index = Document

local document = {}

local kLongestDelayCs = 65535

-- The document that the host's object holds, opened or free-standing.
---@return Document
function document.read(gif)
  local screen, all = gif.Screen, blocks.read(gif)
  local frames = blocks.frames(all)
  local width, height = blocks.screen_size(gif, frames)
  return setmetatable({
    gif = gif, version = gif.Header, width = width, height = height, background = screen and screen.BackgroundColor or 0,
    aspect = screen and screen.Aspect or 0, blocks = all, frames = frames,
    colours = screen and screen.HasPalette and blocks.colours_of(screen.Palette) or nil }, Document)
end

-- Opens a file; nil and the reason.
---@return Document?
---@return string? why
function document.open(path)
  local gif, bytes = files.open_gif(path)
  if not gif then return nil, bytes end
  local opened = document.read(gif)
  opened.bytes, opened.is_opened = bytes, true
  return opened
end

-- A new document without frames.
---@return Document
function document.new(width, height, colours)
  local gif = GIFZKV()
  gif.Header, gif.Screen = "GIF89a", building.screen(width, height, colours)
  return document.read(gif)
end

-- --- Frames ------------------------------------------------------------------------------------------------------------

-- A new frame of plain values.
---@return Frame
function Document:frame(values) return blocks.frame(values) end

-- Puts other frames in the places of those that are there: what stands between them stays there. A frame may be listed
-- more than once.
---@param frames Frame[]
function Document:set_frames(frames)
  local result, place = {}, 0
  for _, block in ipairs(self.blocks) do
    if block.control_of then
      if frames[place + 1] then result[#result + 1] = { control_of = frames[place + 1], extension = block.extension } end
    elseif block.frame then
      place = place + 1
      if frames[place] then result[#result + 1] = { frame = frames[place], image = frames[place].image } end
    else
      result[#result + 1] = block
    end
  end
  for i = place + 1, #frames do result[#result + 1] = { frame = frames[i], image = frames[i].image } end
  for i, block in ipairs(result) do block.index = i - 1 end
  for i, frame in ipairs(frames) do frame.number = i - 1 end
  self.blocks, self.frames = result, frames
end

-- The colours that a frame is drawn with: its own, or the global table's, or none.
---@param frame Frame
---@return integer[]
function Document:colours_of(frame)
  local own = frame.colours
  return own and #own > 0 and own or self.colours or {}
end

-- Whether no frame has a table of its own.
function Document:has_one_table()
  for _, frame in ipairs(self.frames) do
    local own = rawget(frame, "colours")
    if own and #own > 0 or not own and frame.image and frame.image.HasPalette then return false end
  end
  return self.colours ~= nil
end

-- Sets the delay of each frame that has(frame) holds for to change(delay), in hundredths of a second.
function Document:set_delays(change, has)
  for _, frame in ipairs(self.frames) do
    if not has or has(frame) then frame.delay_cs = math.min(change(frame.delay_cs), kLongestDelayCs) end
  end
end

-- The time that it plays once.
function Document:duration_cs()
  local sum = 0
  for _, frame in ipairs(self.frames) do sum = sum + frame.delay_cs end
  return sum
end

-- --- Other blocks ------------------------------------------------------------------------------------------------------

-- How often players repeat it: 0 for ever, nil when nothing is said.
---@return integer?
function Document:loops()
  local loops
  for _, block in ipairs(self.blocks) do loops = block.extension and block.extension.loops or loops end
  return loops
end

-- Adds the host's own block at a place in the list, at the end without one.
---@param block GifBlockZKV
function Document:add(block, place)
  local holder = GIFZKV()
  holder:Add(block)
  local read = blocks.read(holder)[1]
  table.insert(self.blocks, place or #self.blocks + 1, read)
  for i, each in ipairs(self.blocks) do each.index = i - 1 end
end

-- Takes out the blocks for which is_unwanted(block) holds. Gives how many there were.
function Document:remove(is_unwanted)
  local kept = {}
  for _, block in ipairs(self.blocks) do
    if not is_unwanted(block) then kept[#kept + 1] = block end
  end
  local removed = #self.blocks - #kept
  for i, block in ipairs(kept) do block.index = i - 1 end
  self.blocks = kept
  return removed
end

-- Sets the count where one stands; else it comes first, where players look for it. Nil takes it away.
---@param count integer?
function Document:set_loops(count)
  for _, block in ipairs(self.blocks) do
    if count and block.extension and block.extension.loops then
      local copy = block.block:Clone()
      copy.Extension:Data(1).DataString = ("<BI2"):pack(1, count)
      block.block, block.extension.loops = copy, count
      return
    end
  end
  self:remove(function(block) return block.extension and block.extension.loops end)
  if count then self:add(building.loops(count), 1) end
end

-- Adds a comment at the end.
function Document:add_comment(text) self:add(building.comment(text)) end

-- --- Writing -----------------------------------------------------------------------------------------------------------

-- The control of a frame; of one that stood before it only those bits change that say something else.
local function control_block(frame, extension)
  local bytes = extension and extension.sub_blocks[1] or "\0\0\0\0"
  local packed, _, index, rest = ("<BI2B"):unpack(bytes)
  packed = packed & 0xE0 | (frame.disposal & 7) << 2 | (frame.waits_for_input and 2 or 0) | (frame.transparent and 1 or 0)
  return building.extension(0xF9,
    ("<BI2B"):pack(packed, frame.delay_cs, frame.transparent or index) .. bytes:sub(rest),
    table.unpack(extension and extension.sub_blocks or {}, 2))
end

local function needs_control(frame)
  return frame.delay_cs > 0 or frame.disposal > 0 or frame.transparent or frame.waits_for_input
end

local function image_block(frame)
  local block = GifBlockZKV()
  local image = frame.image and frame.image:Clone() or GifPictureZKV()
  image.Left, image.Top, image.Width, image.Height = frame.left, frame.top, frame.width, frame.height
  image.Interlace = frame.interlaced
  local pixels, colours = rawget(frame, "pixels"), rawget(frame, "colours")
  if pixels then image.Data = MemoryBlock(pixels) end
  if colours and #colours > 0 then
    image.Palette, image.PaletteDepth = building.palette(colours)
    image.HasPalette = true
  elseif colours then
    image.HasPalette = false
  end
  block.Intro, block.Picture = 0x2C, image
  return block
end

local function screen_of(self)
  local screen = self.gif.Screen and self.gif.Screen:Clone() or GifScreenZKV()
  -- A file that gives no size gets none.
  local had_size = self.gif.Screen and self.gif.Screen.Width > 0 and self.gif.Screen.Height > 0
  if had_size or #self.frames == 0 or self.resized then screen.Width, screen.Height = self.width, self.height end
  screen.BackgroundColor, screen.Aspect = self.background, self.aspect
  if self.colours and #self.colours > 0 then
    screen.Palette, screen.PaletteDepth = building.palette(self.colours)
    screen.HasPalette = true
  else
    screen.HasPalette = false
  end
  return screen
end

-- The host's object: what SaveAsGIFZKV takes.
---@return GIFZKV
function Document:build()
  local gif, has_extension, controlled = GIFZKV(), false, {}
  gif.Screen = screen_of(self)
  for _, block in ipairs(self.blocks) do
    if block.control_of then
      gif:Add(control_block(block.control_of, block.extension))
      controlled[block.control_of], has_extension = true, true
    elseif block.frame then
      if not controlled[block.frame] and needs_control(block.frame) then
        gif:Add(control_block(block.frame))
        has_extension = true
      end
      controlled[block.frame] = nil
      gif:Add(image_block(block.frame))
    else
      gif:Add(block.block:Clone())
      has_extension = has_extension or block.extension ~= nil
    end
  end
  gif.Header = has_extension and self.version:sub(1, 6) == "GIF87a" and "GIF89a" or self.version
  return gif
end

-- Saves it, and reads back what was saved; nil and the reason.
---@param path string
---@return true?
---@return string? why
function Document:save(path) return files.save_gif(self:build(), path) end

return document
