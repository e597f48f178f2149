-- Random free-standing trees, in and out of range, are saved as the slow writer says. Arguments: how many trees, how many
-- images, "tolerant" for the plugin that is so.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))
local oracle = dofile((arg[0]:gsub("[^/]*$", "../oracle/slow_writer.lua")))
local kTrees, kImages = tonumber(arg[1]) or 1000, tonumber(arg[2]) or 10000
oracle.tolerant = arg[3] == "tolerant"
math.randomseed(20, 26)

local random = math.random
local function chance(percent) return random(100) <= percent end
local function truth() return chance(50) end

-- Mostly what a GIF can hold, sometimes anything.
local function number(high)
  if chance(90) then return random(0, high) end
  return ({ -1, high + 1, 1 << 32 | random(0, high), random(0), -random(1, 70000) })[random(5)]
end

local function depth()
  return chance(90) and random(1, 8) or ({ 0, -1, 9, 11, 12, 40, 1 << 32 | 3 })[random(7)]
end

local function bytes(length, colours)
  local parts, run = {}, chance(50) and 1 or 9
  while #parts < length do
    local one = string.char(random(0, colours - 1))
    for _ = 1, random(run) do parts[#parts + 1] = one end
  end
  return table.concat(parts, "", 1, length)
end

local function list(most, make)
  local entries = { n = random(0, most) }
  for i = 1, entries.n do entries[i] = chance(90) and make() end
  return entries
end

local function maybe(percent, make, ...)
  if chance(percent) then return make(...) end
end

local function a_palette()
  local colours = {}
  for i = 1, 256 do colours[i] = random(0, 0xFFFFFF) end
  return { Count = chance(50) and 1 << random(8) or random(0, 256), Colours = colours }
end

local function a_picture()
  local width = chance(95) and random(0, 40) or ({ 600, -3, 1 << 32 | 5 })[random(3)]
  local height = chance(95) and random(0, 30) or ({ -1, 1 << 33 })[random(2)]
  return {
    Left = number(65535), Top = number(65535), Width = width, Height = height, Interlace = truth(), Sorted = truth(),
    HasPalette = truth(), PaletteDepth = depth(), Palette = maybe(70, a_palette),
    Data = maybe(90, bytes, random(0, 1500), chance(80) and 4 or 256),
  }
end

local function a_data()
  return { DataString = maybe(90, bytes, random(0, chance(90) and 20 or 800), 256) }
end

local function an_extension()
  return { Marker = number(255), Items = maybe(90, list, 4, a_data) }
end

local function a_block()
  return { Intro = number(255), Picture = maybe(60, a_picture), Extension = maybe(50, an_extension) }
end

local function a_screen()
  return {
    Width = number(65535), Height = number(65535), HasPalette = truth(), ColorResolution = number(8),
    Sorted = truth(), PaletteDepth = depth(), BackgroundColor = number(255), Aspect = number(255),
    Palette = maybe(80, a_palette),
  }
end

local function a_tree()
  return { Header = maybe(70, bytes, random(0, 8), 256), Screen = maybe(80, a_screen), Blocks = maybe(90, list, 6, a_block) }
end

-- --- The same as script objects -------------------------------------------------------------------------------------

local kClasses = { Screen = GifScreenZKV, Palette = GifPaletteZKV, Picture = GifPictureZKV,
  Extension = GifExtensionZKV, Blocks = GifBlockZKV, Items = GifDataZKV }

local function build(class, values)
  local object = class()
  for name, value in pairs(values) do
    if name == "Blocks" or name == "Items" then
      for i = 1, value.n do object:Add(value[i] and build(kClasses[name], value[i]) or nil) end
    elseif name == "Colours" then
      for i, colour in ipairs(value) do object.Value[i - 1] = colour end
    elseif name == "Data" then
      object.Data = MemoryBlock(value)
    else
      object[name] = kClasses[name] and build(kClasses[name], value) or value
    end
  end
  return object
end

local function expect_saved(what, tree)
  local expected = oracle.write(tree)
  if not expected then return t.expect_not_saved(what, build(GIFZKV, tree)) end
  local saved = t.saved(build(GIFZKV, tree))
  if saved ~= expected then error(("%s: %d bytes, expected %d"):format(what, #saved, #expected)) end
end

for i = 1, kTrees do expect_saved("tree " .. i, a_tree()) end

-- --- The encoder ----------------------------------------------------------------------------------------------------

-- Noise, runs or bands with errors, in so many colours.
local function painted(size, colours)
  local kind, step, parts, length = random(4), random(9), {}, 0
  local longest = ({ 1, 24, 400, 9 })[kind]
  while length < size do
    local colour = kind == 4 and length // step + random(0, 8) // 8 or random(0, colours - 1)
    parts[#parts + 1] = string.char(colour % colours):rep(random(longest))
    length = length + #parts[#parts]
  end
  return table.concat(parts):sub(1, size)
end

-- Now and then a pixel that the code size cannot hold, so that it looks like a string's code.
local function spoiled(pixels, depth)
  local at = chance(50) and 1 or random(#pixels)
  return pixels:sub(1, at - 1) .. string.char((1 << depth) + 2 + random(0, 3)) .. pixels:sub(at + 1)
end

local function expect_coded(what, depth, width, height, pixels)
  local palette = { HasPalette = true, PaletteDepth = depth, Width = width, Height = height, Data = pixels }
  expect_saved(what, { Blocks = { n = 1, { Intro = 0x2C, Picture = palette } } })
end

-- Pieces of all kinds in long images: the encoder changes its ways within them, and clears its strings often.
local function mixture(size, colours)
  local parts, length = {}, 0
  while length < size do
    local some = chance(30) and math.min(2, colours) or colours
    parts[#parts + 1] = chance(20) and ("\0\1"):rep(random(4000)) or painted(random(30000), some)
    length = length + #parts[#parts]
  end
  return table.concat(parts):sub(1, size)
end

for i = 1, 3 + kImages // 1000 do
  local depth = random(8)
  local pixels = mixture(90000, 1 << depth)
  if chance(30) and depth < 8 then pixels = spoiled(pixels, math.max(depth, 2)) end
  expect_coded("long image " .. i, depth, 300, 300, pixels)
end

for i = 1, kImages do
  local depth, width = random(chance(90) and 8 or 11), random(250)
  local height = random(chance(5) and 200 or 12)
  local pixels = painted(width * height, chance(10) and 256 or 1 << math.min(depth, 8))
  if chance(20) and depth < 8 then pixels = spoiled(pixels, math.max(depth, 2)) end
  expect_coded("image " .. i, depth, width, height, pixels)
end

-- The pixel in hand when all strings are cleared looks like the code of the first string after that.
local runs = {}
for i = 1, 8000 do runs[i] = string.char(random(0, 3)):rep(random(20)) end
local pixels = table.concat(runs)
local _, at = oracle.image_data(2, pixels)
expect_coded("a pixel like a code", 2, at + 100, 1, pixels:sub(1, at - 1) .. "\7" .. ("\0"):rep(100))
