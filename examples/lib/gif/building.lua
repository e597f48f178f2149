-- New parts of a document, from plain values. Sections are those of GIF89a.

local building = {}

-- Sections 19 and 21: the table with at least these colours, which come from 0xRRGGBB, and its depth; it has
-- 2 ^ depth entries.
function building.palette(colours)
  local depth = 1
  while 1 << depth < #colours do depth = depth + 1 end
  local palette = GifPaletteZKV()
  palette.Count = 1 << depth
  for i, colour in ipairs(colours) do palette.Value[i - 1] = colour end
  return palette, depth
end

-- Sections 18 and 19.
function building.screen(width, height, colours)
  local screen = GifScreenZKV()
  screen.Width, screen.Height, screen.ColorResolution = width, height, 8
  if colours then
    screen.Palette, screen.PaletteDepth = building.palette(colours)
    screen.HasPalette = true
  end
  return screen
end

-- Sections 23 to 26: a label and sub-blocks of 1 to 255 bytes.
function building.extension(label, ...)
  local block, extension = GifBlockZKV(), GifExtensionZKV()
  extension.Marker = label
  for _, bytes in ipairs { ... } do
    local data = GifDataZKV()
    data.DataString = bytes
    extension:Add(data)
  end
  block.Intro, block.Extension = 0x21, extension
  return block
end

-- Section 23: about the image that follows.
function building.control(of)
  local packed = of.disposal << 2 | (of.waits_for_input and 2 or 0) | (of.transparent and 1 or 0)
  return building.extension(0xF9, ("<BI2B"):pack(packed, of.delay_cs, of.transparent or 0))
end

-- Section 24, in sub-blocks of at most 255 bytes.
function building.comment(text)
  local parts = {}
  for at = 1, #text, 255 do parts[#parts + 1] = text:sub(at, at + 254) end
  return building.extension(0xFE, table.unpack(parts))
end

-- Section 26: how often players repeat the animation; 0 is for ever.
function building.loops(count) return building.extension(0xFF, "NETSCAPE2.0", ("<BI2"):pack(1, count)) end

-- Sections 20 and 22: an image with its pixels, a byte for each, and, if it has any, colours of its own.
function building.image(of)
  local block, image = GifBlockZKV(), GifPictureZKV()
  image.Left, image.Top, image.Width, image.Height, image.Data = of.left, of.top, of.width, of.height, of.pixels
  if of.colours then
    image.Palette, image.PaletteDepth = building.palette(of.colours)
    image.HasPalette = true
  end
  block.Intro, block.Picture = 0x2C, image
  return block
end

return building
