-- Small documents that between them hold everything.

local make_gif = dofile(debug.getinfo(1, "S").source:match("@(.*/)") .. "make_gif.lua")

local control, comment = { 0xF9, "\1\5\0\2" }, { 0xFE, "first", ("second"):rep(8), "x" }
local image = { width = 3, height = 9, pixels = "\0\1\2\3\2\1\1\1\1\3\0\2\2\0\3\1\0\0\2\3\3\1\3\2\1\0\1", interlaced = true }
local own_table = { width = 4, height = 2, pixels = "\1\0\1\0\0\1\1\1", palette = { 0x102030, 0xFFEEDD } }
local colours = { 0x000000, 0xFF0000, 0x00FF00, 0x0000FF }

-- Codes of a few bits each, lowest first, as one sub-block.
local function codes(width, values)
  local bits, held, bytes = 0, 0, {}
  for _, value in ipairs(values) do
    bits, held = bits | value << held, held + width
    while held >= 8 do
      bytes[#bytes + 1], bits, held = string.char(bits & 0xFF), bits >> 8, held - 8
    end
  end
  return ("s1"):pack(table.concat(bytes) .. string.char(bits)) .. "\0"
end

-- Rows that end early, by a code that is not defined, an end code or the end of the data; some are alike.
local function damaged(width, height)
  local values = { 4, 1, 7, 2, 3, 2, 4, 3, 3, 3, 5, 1 }
  for i = 1, 40 do table.move({ 4, 2, 7 }, 1, 3, #values + 1, values) end
  for i = 1, width do table.move({ 4, 1 }, 1, 2, #values + 1, values) end
  return "," .. ("<I2I2I2I2BB"):pack(0, 0, width, height, 0, 2) .. codes(3, values)
end

return {
  "GIF89a" .. ("<I2I2BBB"):pack(9, 60, 0, 0, 0) .. damaged(9, 60) .. damaged(40, 3) .. ";",
  make_gif(5, 9, colours, control, image, comment, own_table),
  make_gif(1, 1, nil, own_table, control, own_table, own_table, own_table, comment),
  make_gif(2, 2, colours),
  "GIF89a" .. ("\xFF"):rep(30),
}
