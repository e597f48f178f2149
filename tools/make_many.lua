-- Makes many GIF files of different kinds in folders of a hundred: tools/make_many.lua COUNT FOLDER
--
-- Each is one of 240 animations, of 8 to 160 pixels a side and 1 to 10 frames, with a comment of its own. Every hundredth is
-- cut short, every thousandth is empty. The same files every time.

local gif = require "gif"

local kAnimations, kMostColours = 240, 64
math.randomseed(1)

local function random_colours()
  local colours = {}
  for i = 1, 1 << math.random(1, 6) do colours[i] = math.random(0, 0xFFFFFF) end
  return colours
end

-- Stripes with noise: 0 is flat, 1 is noise alone.
local function random_pixels(width, height, colours, noise)
  local rows, first = {}, math.random(0, kMostColours)
  for y = 1, height do
    local row = {}
    for x = 1, width do
      local index = math.random() < noise and math.random(0, colours - 1) or (first + (x + y) // 8) % colours
      row[x] = string.char(index)
    end
    rows[y] = table.concat(row)
  end
  return table.concat(rows)
end

local function random_animation()
  local width, height = math.random(8, 160), math.random(8, 120)
  local document = gif.new(width, height, random_colours())
  local frames, noise = {}, math.random() ^ 3
  for i = 1, math.random(1, 10) do
    local wide, high = math.random(1, width), math.random(1, height)
    if i == 1 then wide, high = width, height end
    frames[i] = document:frame {
      left = math.random(0, width - wide), top = math.random(0, height - high), width = wide, height = high,
      pixels = random_pixels(wide, high, #document.colours, noise), delay_cs = math.random(2, 50),
      disposal = math.random(0, 3), interlaced = math.random() < 0.2 }
  end
  document:set_frames(frames)
  document:set_loops(0)
  return document
end

local function bytes_of(document)
  local path <const> = OutputFile()
  assert(document:save(path.Path))
  local file <close> = io.open(path.Path, "rb")
  return file:read("a")
end

local count, folder = math.tointeger(arg[1]), arg[2]
local animations = {}
for i = 1, math.min(count, kAnimations) do animations[i] = bytes_of(random_animation()) end

for i = 0, count - 1 do
  local place = ("%s/%05d"):format(folder, i // 100)
  if i % 100 == 0 then assert(os.execute("mkdir -p '" .. place .. "'")) end
  local comment = ("file %d"):format(i)
  local bytes = animations[i % #animations + 1]:sub(1, -2) .. "\x21\xFE" .. string.char(#comment) .. comment .. "\0;"
  if i % 100 == 99 then bytes = bytes:sub(1, #bytes * 2 // 3) end
  if i % 1000 == 999 then bytes = "" end
  local file <close> = assert(io.open(("%s/%02d.gif"):format(place, i % 100), "wb"))
  file:write(bytes)
end
