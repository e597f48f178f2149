-- Pictures of what a GIF consists of, drawn on the terminal or written to a file: look() at the prompt.

local blocks, composing, document = require "gif.blocks", require "gif.composing", require "gif.document"
local files, text = require "gif.files", require "gif.text"

local looking = {}

local kMostFrames = 12 -- of an animation
local kLargestSide = 240 -- of a frame in a file
local kMostColumns, kMostRows = 160, 48 -- of the terminal
local kLinesOfPrompt = 3
local kGap = 1 -- between frames
local kScaleInFile = 4 -- of palettes
local kPaletteColumns, kSwatchWidth, kSwatchHeight = 16, 5, 4

-- --- What there is to see ----------------------------------------------------------------------------------------------

-- At most so many of a list, evenly, the first and the last among them.
local function some_of(list, most)
  if #list <= most then return list end
  local chosen = {}
  for i = 0, most - 1 do chosen[i + 1] = list[1 + i * (#list - 1) // (most - 1)] end
  return chosen
end

local function fitted(width, height, most_wide, most_high)
  local scale = math.min(1, most_wide / width, most_high / height)
  return math.max(1, math.floor(width * scale)), math.max(1, math.floor(height * scale))
end

-- What viewers show after each of these frames; each picture fits in that size.
local function seen(of, frames, most_wide, most_high)
  if not composing.can_draw(of.width, of.height) then error("it has no size that can be drawn", 0) end
  local wanted, pictures, left = {}, {}, #frames
  for _, frame in ipairs(frames) do wanted[frame] = true end
  local width, height = fitted(of.width, of.height, most_wide, most_high)
  composing.play(of, { width = width, height = height, needed = function() return left > 0 end }, function(frame, canvas)
    if not wanted[frame] then return end
    pictures[#pictures + 1], left = canvas:Picture(), left - 1
  end)
  return pictures
end

local function palette_picture(colours, scale)
  local wide, high = kSwatchWidth * scale, kSwatchHeight * scale
  local picture = Picture(kPaletteColumns * wide, math.max(1, -(-#colours // kPaletteColumns)) * high)
  for i, colour in ipairs(colours) do
    picture:FillRect((i - 1) % kPaletteColumns * wide, (i - 1) // kPaletteColumns * high, wide, high, colour)
  end
  return picture
end

local function picture_of_image(image)
  local picture = image:MakePicture() or error("the image has no pixels or no colours", 0)
  picture.Mask = image:MakeMask()
  return picture
end

-- Pictures of a value, of a document's frames each fitting in a place of that size, and what they are.
local function pictures_of(value, most_wide, most_high, palette_scale)
  local class = host.class(value)
  if type(value) == "string" then
    value = document.open(value) or error(value .. ": no GIF file", 0)
  elseif class == "GIFZKV" then
    value = document.read(value)
  elseif class == "FolderItem" then
    value = document.open(value.NativePath) or error(value.NativePath .. ": no GIF file", 0)
  end
  class = host.class(value)
  if class == "GifBlockZKV" then
    value = value.Picture or error("the block is no image", 0)
    class = "GifPictureZKV"
  end
  if class == "GifPictureZKV" then return { picture_of_image(value) }, text.size(value) end
  if class == "Picture" then return { value }, text.size(value) end
  if class == "GifScreenZKV" then value, class = value.Palette or error("the screen has no palette", 0), "GifPaletteZKV" end
  if class == "GifPaletteZKV" then
    return { palette_picture(blocks.colours_of(value), palette_scale) }, text.count(value.Count, "colour")
  end
  if type(value) == "table" and rawget(value, "frames") and rawget(value, "blocks") then
    if #value.frames == 0 then error("it has no images", 0) end
    local frames = some_of(value.frames, kMostFrames)
    local said = ("%d x %d"):format(value.width, value.height)
    if #value.frames > 1 then said = ("%s, %d of %s"):format(said, #frames, text.count(#value.frames, "frame")) end
    return seen(value, frames, most_wide, most_high), said
  end
  error("there is nothing to see of " .. (class or "a " .. type(value)), 0)
end

-- --- On a terminal -----------------------------------------------------------------------------------------------------

local function terminal_size()
  if not os.execute("test -t 1") then return nil end
  local pipe <close> = io.popen("stty size </dev/tty 2>&-")
  local rows, columns = pipe:read("n", "n")
  return columns and columns > 0 and math.min(columns, kMostColumns), rows and math.min(rows - kLinesOfPrompt, kMostRows)
end

local kLevels = { [0] = 0, 95, 135, 175, 215, 255 } -- of the cube of 6 x 6 x 6 colours from number 16 on
local kFirstGrey, kGreys = 232, 24 -- from 8 on in steps of 10

-- The number of the nearest among a terminal's 256 colours; the first 16 may be anything.
local function nearest_number(red, green, blue)
  local function level(value) return value < 48 and 0 or value < 115 and 1 or (value - 35) // 40 end
  local function distance(r, g, b) return (r - red) ^ 2 + (g - green) ^ 2 + (b - blue) ^ 2 end
  local r, g, b = level(red), level(green), level(blue)
  local grey = math.max(0, math.min(kGreys - 1, ((red + green + blue) // 3 - 3) // 10))
  local shade = 8 + 10 * grey
  if distance(shade, shade, shade) < distance(kLevels[r], kLevels[g], kLevels[b]) then return kFirstGrey + grey end
  return 16 + 36 * r + 6 * g + b
end

local has_all_colours = ((os.getenv("COLORTERM") or ""):find("truecolor") or (os.getenv("COLORTERM") or ""):find("24bit")) ~= nil

local function colour_code(layer, rgb, at)
  local red, green, blue = rgb:byte(at, at + 2)
  if has_all_colours then return ("%d;2;%d;%d;%d"):format(layer, red, green, blue) end
  return ("%d;5;%d"):format(layer, nearest_number(red, green, blue))
end

-- Lines of half blocks, each character one pixel above another; masked ones are left out.
local function lines_of(picture)
  local width, height = picture.Width, picture.Height
  local rgb, mask = picture:RGB(), picture.Mask and picture.Mask:RGB()
  local function place(x, y)
    local at = (y * width + x) * 3 + 1
    local is_there = y < height and not (mask and mask:byte(at) >= 128)
    return is_there and at or nil
  end
  local lines = {}
  for y = 0, height - 1, 2 do
    local line, current = {}, ""
    for x = 0, width - 1 do
      local above, below = place(x, y), place(x, y + 1)
      local code, mark = "0", " "
      if above and below then
        code, mark = colour_code(38, rgb, above) .. ";" .. colour_code(48, rgb, below), "▀"
      elseif above or below then
        code, mark = "0;" .. colour_code(38, rgb, above or below), above and "▀" or "▄"
      end
      line[#line + 1] = (code == current and "" or "\27[" .. code .. "m") .. mark
      current = code
    end
    lines[#lines + 1] = table.concat(line) .. "\27[0m"
  end
  return lines
end

-- Pictures of one size, side by side.
local function print_pictures(pictures, columns)
  local width = pictures[1].Width
  local in_row = math.max(1, (columns + kGap) // (width + kGap))
  for first = 1, #pictures, in_row do
    local rows = {}
    for i = first, math.min(first + in_row - 1, #pictures) do
      for number, line in ipairs(lines_of(pictures[i])) do
        rows[number] = (rows[number] and rows[number] .. (" "):rep(kGap) or "") .. line
      end
    end
    print((first > 1 and "\n" or "") .. table.concat(rows, "\n"))
  end
end

-- The largest width that lets so many pictures of a shape stand on the terminal.
local function width_for(count, columns, rows, shape)
  for width = columns, 1, -1 do
    local in_row = (columns + kGap) // (width + kGap)
    if -(-count // in_row) * (math.ceil(width * shape / 2) + kGap) - kGap <= rows then return width end
  end
  return 1
end

local function show(value)
  local columns, rows = terminal_size()
  if not columns then error("this is no terminal; look(g, \"out.png\") writes a file", 0) end
  local pictures, said = pictures_of(value, columns, rows * 2, 1)
  local shape = pictures[1].Height / pictures[1].Width
  local width = math.min(pictures[1].Width, width_for(#pictures, columns, rows, shape))
  for i, picture in ipairs(pictures) do
    if picture.Width ~= width then pictures[i] = picture:Scaled(width, math.max(1, math.floor(width * shape + 0.5))) end
  end
  print_pictures(pictures, columns)
  print(said)
end

-- --- In a file ---------------------------------------------------------------------------------------------------------

-- The pictures in rows, transparent between them.
local function sheet(pictures)
  local width, height = pictures[1].Width, pictures[1].Height
  local in_row = math.ceil(math.sqrt(#pictures))
  local whole_width, whole_height = in_row * (width + kGap) - kGap, -(-#pictures // in_row) * (height + kGap) - kGap
  local whole, mask = Picture(whole_width, whole_height), Picture(whole_width, whole_height)
  mask:FillRect(0, 0, whole_width, whole_height, 0xFFFFFF)
  for i, picture in ipairs(pictures) do
    local x, y = (i - 1) % in_row * (width + kGap), (i - 1) // in_row * (height + kGap)
    whole:DrawPicture(picture, x, y)
    mask:FillRect(x, y, width, height, 0)
    if picture.Mask then mask:DrawPicture(picture.Mask, x, y) end
  end
  whole.Mask = mask
  return whole
end

-- Draws a value on the terminal, or into a PNG file.
function looking.look(value, path)
  if not path then return show(value) end
  local pictures, said = pictures_of(value, kLargestSide, kLargestSide, kScaleInFile)
  local saved, why = files.save_png(#pictures > 1 and sheet(pictures) or pictures[1], path)
  if not saved then error(why, 0) end
  print(("%s: %s"):format(text.shown(path), said))
end

return looking
