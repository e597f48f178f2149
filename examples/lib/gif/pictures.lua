-- An animation of PNG files: their colours reduced, and of each picture no more stored than what is new in it.

local composing, command, files, progress = require "gif.composing", require "gif.command", require "gif.files", require "gif.progress"

local pictures = {}

local kKeep, kRestoreBackground = 1, 2 -- disposals: GIF89a, section 23

local function load(path)
  local picture, why = files.load_png(path)
  if not picture then command.fail(why) end
  composing.sweep(8 * picture.Width * picture.Height)
  return picture
end

local function colours_of(tables)
  local colours = {}
  for i = 0, tables.Count - 1 do colours[i + 1] = tables:Value(i) end
  return colours
end

-- How many bytes two strings of one length have in common from the start.
local function same_start(a, b)
  local least, most = 0, #a
  while least < most do
    local middle = (least + most + 1) // 2
    if a:sub(least + 1, middle) == b:sub(least + 1, middle) then least = middle else most = middle - 1 end
  end
  return least
end

-- The smallest rectangle that holds all in which two pictures of that width differ; nil when they are the same.
local function difference(before, after, width)
  if before == after then return nil end
  local top = same_start(before, after) // width
  local bottom = (#after - 1 - same_start(before:reverse(), after:reverse())) // width
  local left, right = width, 0 -- bytes alike at the start of every row; bytes up to the last that differs
  for y = top, bottom do
    local a, b = before:sub(y * width + 1, (y + 1) * width), after:sub(y * width + 1, (y + 1) * width)
    if a:sub(1, left) ~= b:sub(1, left) then left = same_start(a, b) end
    if a:sub(right + 1) ~= b:sub(right + 1) then right = width - same_start(a:reverse(), b:reverse()) end
  end
  return { left = left, top = top, width = right - left, height = bottom - top + 1 }
end

local function part(bytes, width, of)
  local rows = {}
  for y = of.top, of.top + of.height - 1 do
    rows[#rows + 1] = bytes:sub(y * width + of.left + 1, y * width + of.left + of.width)
  end
  return MemoryBlock(table.concat(rows))
end

-- Leaves in each frame what the one before does not show already. One that shows nothing new is left out, and the one
-- before stays for as much longer.
local function without_repeats(frames)
  local result, before = {}, nil
  for _, frame in ipairs(frames) do
    local after = tostring(frame.pixels)
    local new = not before and frame or difference(before, after, frame.width)
    if new or result[#result].delay_cs + frame.delay_cs > 65535 then
      new = new or { left = 0, top = 0, width = 1, height = 1 }
      result[#result + 1] = {
        left = new.left, top = new.top, width = new.width, height = new.height,
        pixels = part(after, frame.width, new), disposal = frame.disposal, delay_cs = frame.delay_cs }
    else
      result[#result].delay_cs = result[#result].delay_cs + frame.delay_cs
    end
    before = after
  end
  return result
end

-- The files' animation as build.lua puts it together. Pictures stand in the middle of the largest one's screen.
-- wanted: colours, at most, of all pictures together or, with own_tables, of each; delay_cs.
function pictures.animation(paths, wanted)
  local step = progress.start(2 * #paths, "steps")
  local shared, width, height = ColorTable(wanted.colours), 0, 0
  local same_size = true
  for i, path in ipairs(paths) do
    local picture = load(path)
    same_size = same_size and (i == 1 or picture.Width == width and picture.Height == height)
    width, height = math.max(width, picture.Width), math.max(height, picture.Height)
    shared:Add(picture)
    step()
  end
  local covers = same_size and shared.Transparent < 0 -- whether each picture hides those before it

  local frames = {}
  for i, path in ipairs(paths) do
    local picture, colours = load(path), shared
    if wanted.own_tables then
      collectgarbage() -- the table before: they take tens of megabytes
      colours = ColorTable(wanted.colours)
      colours:Add(picture)
    end
    frames[i] = {
      left = (width - picture.Width) // 2, top = (height - picture.Height) // 2,
      width = picture.Width, height = picture.Height, pixels = colours:Indexes(picture),
      colours = wanted.own_tables and colours_of(colours),
      transparent = colours.Transparent >= 0 and colours.Transparent or nil,
      disposal = covers and kKeep or kRestoreBackground, delay_cs = wanted.delay_cs }
    step()
  end
  return {
    width = width, height = height, colours = not wanted.own_tables and colours_of(shared),
    frames = covers and not wanted.own_tables and without_repeats(frames) or frames }
end

return pictures
