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
  local exchange, wanted = {}, {}
  for pair in (text .. ","):gmatch("(.-),") do
    local from, to = pair:match("^#?(%x%x%x%x%x%x)=#?(%x%x%x%x%x%x)$")
    if not from then return nil end
    exchange[tonumber(from, 16)] = tonumber(to, 16)
    wanted[#wanted + 1] = tonumber(from, 16)
  end
  return { change = function(colour) return exchange[colour] or colour end, wanted = wanted }
end

-- A kind of value for options: change, a function from colour to colour, and wanted, the colours that must be there.
recolouring.kind = {
  name = "sunset or FROM=TO,... in hex digits, such as FF0000=0000FF",
  read = function(text) return text == "sunset" and { change = sunset, wanted = {} } or read_exchange(text) end }

-- Changes the colours of all tables of a document. Gives what changed, rows of { whose table, index, before, after },
-- and the wanted colours that are in none.
---@param document Document
function recolouring.apply(document, how)
  local changes, met, missing = {}, {}, {}
  local function recolour(colours, whose)
    local result = {}
    for i, colour in ipairs(colours) do
      result[i], met[colour] = how.change(colour), true
      if result[i] ~= colour then changes[#changes + 1] = { whose, i - 1, colour, result[i] } end
    end
    return result
  end
  if document.colours then document.colours = recolour(document.colours, "global") end
  for _, frame in ipairs(document.frames) do
    if frame.colours then frame.colours = recolour(frame.colours, "image " .. frame.number) end
  end
  for _, colour in ipairs(how.wanted) do
    if not met[colour] then missing[#missing + 1] = colour end
  end
  return changes, missing
end

return recolouring
