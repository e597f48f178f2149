-- Random free-standing trees, in and out of range, are saved as the slow writer says.

local t = dofile((arg[0]:gsub("[^/]*$", "support.lua")))
local oracle = dofile((arg[0]:gsub("[^/]*$", "../oracle/slow_writer.lua")))
local kTrees = tonumber(arg[1]) or 1000
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

for i = 1, kTrees do
  local tree = a_tree()
  local gif = build(GIFZKV, tree)
  local saved, expected = t.saved(gif), oracle.write(tree)
  if saved ~= expected then error(("tree %d: %d bytes, expected %d"):format(i, #saved, #expected)) end
end

return "OK"
