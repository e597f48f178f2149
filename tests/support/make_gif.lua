-- Makes the bytes of a GIF without the plugin's help: make_gif(width, height, palette or nil, block...).
--
-- A palette is a list of 0xRRGGBB whose length is a power of two. A block is an extension { marker, sub-block... } or
-- an image { width =, height =, pixels = indexes in display order, palette =, interlaced = }, coded so that it can have
-- any index.

local writer = dofile(debug.getinfo(1, "S").source:match("@(.*/)") .. "../oracle/slow_writer.lua")

local function with_table(fields, palette)
  if palette then
    fields.HasPalette, fields.PaletteDepth = true, math.tointeger(math.log(#palette, 2))
    fields.Palette = { Count = #palette, Colours = palette }
  end
  return fields
end

local function tree_of(block)
  if block.pixels then
    local fields = { Left = block.left or 0, Top = block.top or 0, Width = block.width, Height = block.height, Interlace = block.interlaced, Data = block.pixels }
    fields.CodeSize = 8
    return { Intro = 0x2C, Picture = with_table(fields, block.palette) }
  end
  local items = { n = #block - 1 }
  for i = 1, items.n do items[i] = { DataString = block[i + 1] } end
  return { Intro = 0x21, Extension = { Marker = block[1], Items = items } }
end

return function(width, height, palette, ...)
  local blocks = { n = 0 }
  for i, block in ipairs { ... } do blocks[i], blocks.n = tree_of(block), i end
  local screen = with_table({ Width = width, Height = height }, palette)
  return writer.write { Header = "GIF89a", Screen = screen, Blocks = blocks }
end
