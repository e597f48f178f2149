-- Files that readers differ about, opened and saved by either library: the designed one, or "tolerant".

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))
local tolerant = arg[1] == "tolerant"

local function expect(what, actual, designed, tolerated)
  if actual ~= ({ [false] = designed, [true] = tolerated })[tolerant] then error(what .. ": " .. tostring(actual), 2) end
end

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
local screen = "GIF89a\100\0\42\0\0\0\0"
local gif = GifStringToGifZKV(screen .. ",\0\0\0\0\100\0\42\0\0\8" .. without_clear_codes(pixels) .. ";")
local read = tostring(gif:Block(0).Picture.Data)
local same = 0
while same < #pixels and read:byte(same + 1) == pixels:byte(same + 1) do same = same + 1 end
expect("pixels read", same, 3840, 4200) -- with that of the code which finds no room

-- Four colours, and an index beyond them.
local function read_back(data)
  local picture, block, document = GifPictureZKV(), GifBlockZKV(), GIFZKV()
  picture.Width, picture.Height, picture.HasPalette, picture.PaletteDepth = 2, 2, true, 2
  picture.Palette, picture.Data = GifPaletteZKV(), MemoryBlock(data)
  picture.Palette.Count = 4
  block.Intro, block.Picture = 0x2C, picture
  document:Add(block)
  return tostring(GifStringToGifZKV(t.saved(document)):Block(0).Picture.Data)
end
t.expect("indexes of colours", read_back("\0\3\2\1"), "\0\3\2\1")
for _, data in ipairs { "\4\1\2\3", "\1\2\3\255", "\255\4\0\0" } do
  expect(("indexes %q kept"):format(data), read_back(data) == data, false, true)
end
