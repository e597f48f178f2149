-- Files that readers differ about, opened and saved by either library: the designed one, or "tolerant".

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))
local files = dofile((arg[0]:gsub("[^/]*$", "../support/disputed.lua")))
local tolerant = arg[1] == "tolerant"

local function expect(what, actual, designed, tolerated)
  if actual ~= ({ [false] = designed, [true] = tolerated })[tolerant] then error(what .. ": " .. tostring(actual), 2) end
end

local gif = GifStringToGifZKV(files.full_table)
local read = tostring(gif:Block(0).Picture.Data)
local same = 0
while same < #files.pixels and read:byte(same + 1) == files.pixels:byte(same + 1) do same = same + 1 end
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
