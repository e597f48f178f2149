-- Edits an animation: plays it backwards and slower, in the colours of a sunset, and says what changed.
--
--   gifhost examples/edit.lua IN.gif OUT.gif
--
-- An opened document is read-only; its clone is free-standing and can be changed. Frames that hold only what differs
-- from the frame before make sense in their order alone, so each is made whole first. Sections are those of GIF89a.

package.path = arg[0]:gsub("[^/]*$", "") .. "lib/?.lua;" .. package.path
local command, files = require "command", require "files"

local kSlower = 2         -- delays become so many times as long,
local kLeastDelayCs = 4   -- and no shorter than this, in hundredths of a second
local kKeep, kRestoreBackground, kRestorePrevious = 1, 2, 3 -- disposals, section 23

local _, operands = command.parse {
  about = "Edits an animation: plays it backwards and slower, in the colours of a sunset, and says what changed.",
  operands = "IN.gif OUT.gif",
}
local input, output = table.unpack(operands)

-- --- Colours --------------------------------------------------------------------------------------------------------

local kSunset = { { 24, 8, 44 }, { 122, 28, 84 }, { 226, 84, 72 }, { 252, 176, 88 }, { 255, 246, 214 } }

-- The colour of the sunset that is as bright as the given one.
local function recolour(colour)
  local red, green, blue = colour >> 16, colour >> 8 & 255, colour & 255
  local place = (0.299 * red + 0.587 * green + 0.114 * blue) / 256 * (#kSunset - 1)
  local from, to, share = kSunset[math.floor(place) + 1], kSunset[math.floor(place) + 2], place % 1
  local result = 0
  for i = 1, 3 do result = result << 8 | math.floor(from[i] + (to[i] - from[i]) * share + 0.5) end
  return result
end

local function recolour_table(palette)
  for i = 0, palette and palette.Count - 1 or -1 do palette.Value[i] = recolour(palette:Value(i)) end
end

-- --- Frames ---------------------------------------------------------------------------------------------------------

-- Section 23. An image without this extension is shown as if it held zeros.
local function read_control(block)
  local bytes = block and block.Extension.Count > 0 and block.Extension.FirstData.DataString or ""
  if #bytes < 4 then bytes = "\0\0\0\0" end
  local packed, delay_cs, transparent = ("<BI2B"):unpack(bytes)
  return { delay_cs = delay_cs, disposal = packed >> 2 & 7, transparent = packed & 1 ~= 0 and transparent or nil }
end

local function build_control(control)
  local block, extension, data = GifBlockZKV(), GifExtensionZKV(), GifDataZKV()
  local packed = control.disposal << 2 | (control.transparent and 1 or 0)
  data.DataString = ("<BI2B"):pack(packed, control.delay_cs, control.transparent or 0)
  extension.Marker = 0xF9
  extension:Add(data)
  block.Intro, block.Extension = 0x21, extension
  return block
end

-- The blocks of a document: frames, each an image with what its control extension says, and all others.
local function take_apart(gif)
  local frames, others, control = {}, {}, nil
  for _, block in pairs(gif) do
    if block.Extension and block.Extension.Marker == 0xF9 then
      control = block
    elseif block.Picture then
      frames[#frames + 1] = { block = block, image = block.Picture, control = read_control(control) }
      control = nil
    elseif block.Extension then
      others[#others + 1] = block
    end
  end
  return frames, others
end

-- Runs a function for each pixel of an image that lies on a screen of that size: its place in the image's data and on
-- the screen, counted along the rows.
local function each_pixel(image, screen, work)
  local left, top, width = image.Left, image.Top, image.Width
  for y = 0, math.min(image.Height, screen.Height - top) - 1 do
    for x = 0, math.min(width, screen.Width - left) - 1 do
      work(y * width + x, (top + y) * screen.Width + left + x)
    end
  end
end

-- Makes every image show the whole screen as an animation shows it by then. Images with tables of their own stay as
-- they are: their pixels cannot stand beside those of others.
local function make_whole(frames, screen)
  for _, frame in ipairs(frames) do
    if frame.image.HasPalette then return false end
  end
  local first = frames[1].control
  local nothing = first.transparent or screen.BackgroundColor
  local canvas = MemoryBlock(string.char(nothing):rep(screen.Width * screen.Height))
  for _, frame in ipairs(frames) do
    local image, control = frame.image, frame.control
    local before = control.disposal == kRestorePrevious and MemoryBlock(tostring(canvas))
    local pixels = image.Data
    each_pixel(image, screen, function(from, to)
      if pixels[from] ~= control.transparent then canvas[to] = pixels[from] end
    end)
    local whole = MemoryBlock(tostring(canvas))
    if control.disposal == kRestoreBackground then each_pixel(image, screen, function(_, to) canvas[to] = nothing end) end
    canvas = before or canvas
    image.Left, image.Top, image.Width, image.Height, image.Data = 0, 0, screen.Width, screen.Height, whole
    frame.control.disposal, frame.control.transparent = first.transparent and kRestoreBackground or kKeep, first.transparent
  end
  return true
end

-- --- The work -------------------------------------------------------------------------------------------------------

-- A new document with the others' blocks first and the frames in reverse, slower.
local function put_together(gif, frames, others)
  local result = GIFZKV()
  result.Header, result.Screen = "GIF89a", gif.Screen
  for _, block in ipairs(others) do result:Add(block) end
  for i = #frames, 1, -1 do
    local control = frames[i].control
    control.delay_cs = math.min(math.max(control.delay_cs * kSlower, kLeastDelayCs), 65535)
    result:Add(build_control(control))
    result:Add(frames[i].block)
  end
  return result
end

local function summary(gif)
  local frames, others = take_apart(gif)
  local delay_cs, pixels, hash = 0, 0, {}
  for i, frame in ipairs(frames) do
    delay_cs = delay_cs + frame.control.delay_cs
    pixels = pixels + frame.image.Width * frame.image.Height
    hash[i] = frame.image.Data and tostring(frame.image.Data) or ""
  end
  local palette = gif.Screen.HasPalette and gif.Screen.Palette
  return { frames = #frames, others = #others, seconds = delay_cs / 100, pixels = pixels, data = hash, palette = palette }
end

local function print_change(what, form, before, after)
  print(("  %-16s " .. form .. " -> " .. form):format(what, before, after))
end

-- How many frames hold the same pixels as the one at the other end.
local function count_mirrored(made, read)
  local same = 0
  for i, pixels in ipairs(made) do
    if pixels == read[#read + 1 - i] then same = same + 1 end
  end
  return same
end

local opened, why = files.open_gif(input)
if not opened then command.fail(why) end
local before = summary(opened)
if before.frames == 0 then command.fail(input .. ": holds no image") end

local gif = opened:Clone()
local frames, others = take_apart(gif)
local whole = make_whole(frames, gif.Screen)
recolour_table(gif.Screen.Palette)
local made = {}
for i, frame in ipairs(frames) do
  recolour_table(frame.image.Palette)
  made[i] = tostring(frame.image.Data)
end
if not FolderItem(output):SaveAsGIFZKV(put_together(gif, frames, others)) then
  command.fail(output .. ": cannot be written")
end

local after = summary(FolderItem(output):OpenAsGIFZKV())
print(("%s -> %s"):format(input, output))
print_change("frames", "%d", before.frames, after.frames)
print_change("playing time", "%.2f s", before.seconds, after.seconds)
print_change("pixels stored", "%d", before.pixels, after.pixels)
print_change("other blocks", "%d", before.others, after.others)
for i = 0, before.palette and math.min(before.palette.Count, 4) - 1 or -1 do
  print_change("colour " .. i, "#%06X", before.palette:Value(i), after.palette:Value(i))
end
print(("  %d of %d frames read back as they were made, in reverse%s"):format(count_mirrored(made, after.data), #made,
  whole and "" or "; images with tables of their own were not made whole"))
