-- Makes the bytes of a GIF without the plugin's help: make_gif(width, height, palette or nil, block...).
--
-- A palette is a list of 0xRRGGBB whose length is a power of two. A block is an extension { marker, sub-block... } or
-- an image { width =, height =, pixels = indexes in display order, palette =, interlaced = }. Codes are never combined:
-- each pixel is a code of its own, cleared often enough to stay 9 bits wide.

local function table_bits(palette)
  return palette and 0x80 | math.tointeger(math.log(#palette, 2)) - 1 or 0
end

local function table_bytes(palette)
  local bytes = {}
  for i, rgb in ipairs(palette or {}) do bytes[i] = (">I3"):pack(rgb) end
  return table.concat(bytes)
end

local function file_order(image)
  local rows = {}
  for _, pass in ipairs(image.interlaced and { { 0, 8 }, { 4, 8 }, { 2, 4 }, { 1, 2 } } or { { 0, 1 } }) do
    for y = pass[1], image.height - 1, pass[2] do
      rows[#rows + 1] = image.pixels:sub(y * image.width + 1, (y + 1) * image.width)
    end
  end
  return table.concat(rows)
end

local function compressed(pixels)
  local bytes, held, bits = {}, 0, 0
  local function put(code)
    held, bits = held | code << bits, bits + 9
    while bits >= 8 do
      bytes[#bytes + 1], held, bits = string.char(held & 255), held >> 8, bits - 8
    end
  end
  for i = 1, #pixels do
    if i % 200 == 1 then put(256) end
    put(pixels:byte(i))
  end
  put(257)
  bytes[#bytes + 1] = string.char(held & 255)
  local all, blocks = table.concat(bytes), { "\8" }
  for i = 1, #all, 255 do blocks[#blocks + 1] = ("s1"):pack(all:sub(i, i + 254)) end
  return table.concat(blocks) .. "\0"
end

local function block_bytes(block)
  if not block.pixels then
    local bytes = { ("BB"):pack(0x21, block[1]) }
    for i = 2, #block do bytes[i] = ("s1"):pack(block[i]) end
    return table.concat(bytes) .. "\0"
  end
  local flags = table_bits(block.palette) | (block.interlaced and 0x40 or 0)
  return ("<BI2I2I2I2B"):pack(0x2C, 0, 0, block.width, block.height, flags) .. table_bytes(block.palette)
    .. compressed(file_order(block))
end

return function(width, height, palette, ...)
  local bytes = { "GIF89a", ("<I2I2BBB"):pack(width, height, table_bits(palette), 0, 0), table_bytes(palette) }
  for _, block in ipairs { ... } do bytes[#bytes + 1] = block_bytes(block) end
  return table.concat(bytes) .. "\x3B"
end
