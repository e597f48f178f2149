-- Files that readers differ about, as strings: full_table, whose image has the string pixels and goes on using a full code
-- table; beyond, whose image of four colours has an index beyond them, the transparent one.

-- The pixels, a code for each of them and no clear code, in sub-blocks.
local function without_clear_codes(pixels)
  local bits, held, count, width, parts = 0, 0, 258, 9, {}
  for i = 1, #pixels do
    bits, held = bits | pixels:byte(i) << held, held + width
    while held >= 8 do parts[#parts + 1], bits, held = string.char(bits & 0xFF), bits >> 8, held - 8 end
    if count >= 1 << width and width < 12 then width = width + 1 end
    count = count + 1
  end
  local data, blocks = table.concat(parts) .. string.char(bits), {}
  for i = 1, #data, 255 do blocks[#blocks + 1] = ("s1"):pack(data:sub(i, i + 254)) end
  return table.concat(blocks) .. "\0"
end

-- The table is full when 3,838 codes after the first have each defined an entry.
local pixels = {}
for i = 1, 4200 do pixels[i] = string.char(i % 255) end
pixels = table.concat(pixels)
local grey = {}
for i = 0, 255 do grey[i + 1] = string.char(i):rep(3) end

return {
  pixels = pixels,
  full_table = "GIF89a\100\0\42\0\xF7\0\0" .. table.concat(grey) ..
    ",\0\0\0\0\100\0\42\0\0\8" .. without_clear_codes(pixels) .. ";",
  -- Clear, 4, 1, 2, 3 and end, with a minimum code size of 3
  beyond = "GIF89a\2\0\2\0\x91\0\0" .. "red" .. "GRN" .. "blu" .. "gry" .. "!\xF9\4\1\0\0\4\0" ..
    ",\0\0\0\0\2\0\2\0\0\3" .. "\3\x48\x21\x93\0" .. ";",
}
