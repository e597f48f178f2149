-- Other colours for colour tables.

local recolouring = {}

local kSunset = { { 24, 8, 44 }, { 122, 28, 84 }, { 226, 84, 72 }, { 252, 176, 88 }, { 255, 246, 214 } }

-- The colour of the sunset that is as bright as the given one.
local function sunset(colour)
  local red, green, blue = colour >> 16, colour >> 8 & 255, colour & 255
  local place = (0.299 * red + 0.587 * green + 0.114 * blue) / 256 * (#kSunset - 1)
  local from, to, share = kSunset[math.floor(place) + 1], kSunset[math.floor(place) + 2], place % 1
  local result = 0
  for i = 1, 3 do result = result << 8 | math.floor(from[i] + (to[i] - from[i]) * share + 0.5) end
  return result
end

-- "FF0000=0000FF,FFFFFF=EEEEEE"
local function read_exchange(text)
  local exchange = {}
  for pair in (text .. ","):gmatch("(.-),") do
    local from, to = pair:match("^#?(%x%x%x%x%x%x)=#?(%x%x%x%x%x%x)$")
    if not from then return nil end
    exchange[tonumber(from, 16)] = tonumber(to, 16)
  end
  return function(colour) return exchange[colour] or colour end
end

-- A kind of value for options: gives a function from colour to colour.
recolouring.kind = {
  name = "sunset or FROM=TO,... in hex digits, such as FF0000=0000FF",
  read = function(text) return text == "sunset" and sunset or read_exchange(text) end }

-- Changes the colours of the screen's table and of those of the images among the blocks.
function recolouring.apply(screen, blocks, change)
  local function recolour(palette)
    for i = 0, palette and palette.Count - 1 or -1 do palette.Value[i] = change(palette:Value(i)) end
  end
  recolour(screen.Palette)
  for _, block in ipairs(blocks) do recolour(block.Picture and block.Picture.Palette) end
end

return recolouring
