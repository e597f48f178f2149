-- What a tree of plain tables is as a GIF file, step by step: the judge of saving. The tables have the script classes'
-- property names; `Blocks`, `Items` and `Colours` are { n = count, ... } and may hold false for nil. An image's
-- `CodeSize` wins over the depth of its table. A tolerant writer takes one that holds the largest pixel.

local writer = { tolerant = false }

local function low32(value)
  value = (value or 0) & 0xFFFFFFFF
  return value >= 0x80000000 and value - 0x100000000 or value
end

local function byte(value) return string.char((value or 0) & 0xFF) end
local function word(value) return byte(value) .. byte((value or 0) >> 8) end
local function flag(value, bit) return value and 1 << bit or 0 end
local function confined(value, low, high) return math.max(low, math.min(high, low32(value))) end
local function depth_bits(depth) return confined(depth, 1, 8) - 1 end

local function colours(owner)
  local text = ""
  for i = 1, owner.HasPalette and owner.Palette and owner.Palette.Count or 0 do
    local colour = owner.Palette.Colours[i] or 0
    text = text .. byte(colour >> 16) .. byte(colour >> 8) .. byte(colour)
  end
  return text
end

-- Codes as bits, each merged whole at its place: what exceeds its width falls onto the codes after it.
local function pack(codes)
  local packed, bits, held = {}, 0, 0
  for _, item in ipairs(codes) do
    bits, held = bits | item[1] << held, held + item[2]
    while held >= 8 do
      packed[#packed + 1], bits, held = string.char(bits & 0xFF), bits >> 8, held - 8
    end
  end
  return table.concat(packed) .. (held > 0 and string.char(bits & 0xFF) or "")
end

-- The image data, and which pixel was in hand when all strings were cleared first.
function writer.image_data(code_size, pixels)
  local clear, cleared_at = 1 << code_size, nil
  local codes, strings, next_code, width, prefix = {}, {}, clear + 2, code_size + 1, nil
  local function put(code)
    codes[#codes + 1] = { code, width }
    if next_code >= 1 << width then width = width + 1 end
  end
  put(clear)
  for i = 1, #pixels do
    local pixel = pixels:byte(i)
    local key = prefix and prefix * 256 + pixel
    if not prefix then
      prefix = pixel
    elseif strings[key] then
      prefix = strings[key]
    else
      put(prefix)
      if next_code < 4095 then
        strings[key], next_code = next_code, next_code + 1
      else
        put(clear)
        strings, next_code, width = {}, clear + 2, code_size + 1
        cleared_at = cleared_at or i
      end
      prefix = pixel
    end
  end
  if prefix then put(prefix) end
  put(clear + 1)
  return pack(codes), cleared_at
end

local function in_sub_blocks(bytes)
  local text = ""
  for start = 1, #bytes, 255 do
    local part = bytes:sub(start, start + 254)
    text = text .. byte(#part) .. part
  end
  return text
end

-- The rows as they stand in the file.
local function file_pixels(picture)
  local width, height = low32(picture.Width), low32(picture.Height)
  if width < 1 or height < 1 then return "" end
  local bytes = (picture.Data or "") .. ("\0"):rep(width * height)
  local rows = {}
  local function add(first, step)
    for row = first, height - 1, step do rows[#rows + 1] = bytes:sub(row * width + 1, row * width + width) end
  end
  if picture.Interlace then
    add(0, 8) add(4, 8) add(2, 4) add(1, 2)
  else
    add(0, 1)
  end
  return table.concat(rows)
end

local function image(picture, screen)
  local own = picture.HasPalette
  local packed = flag(own, 7) | flag(picture.Interlace, 6) | flag(picture.Sorted, 5)
      | (own and depth_bits(picture.PaletteDepth) or 0)
  local code_size = picture.CodeSize or low32((own and picture or screen).PaletteDepth)
  code_size = code_size > 11 and 8 or math.max(code_size, 2)
  local pixels = file_pixels(picture)
  while writer.tolerant and code_size < 8 and pixels:find(("[%c-\255]"):format(1 << code_size)) do code_size = code_size + 1 end
  return word(picture.Left) .. word(picture.Top) .. word(picture.Width) .. word(picture.Height) .. byte(packed)
      .. colours(picture) .. byte(code_size) .. in_sub_blocks((writer.image_data(code_size, pixels))) .. "\0"
end

local function extension(from)
  local text = byte(from.Marker)
  for i = 1, from.Items and from.Items.n or 0 do
    local data = from.Items[i]
    text = text .. in_sub_blocks(data and data.DataString or "")
  end
  return text .. "\0"
end

-- Null for what is not saved: an image of negative size.
function writer.write(gif)
  local header = "GIF87a"
  if gif.Header then
    local first = gif.Header:sub(1, 6)
    local ends = first:find("\0", 1, true)
    header = ends and first:sub(1, ends - 1) or first .. header:sub(#first + 1)
  end
  local screen = gif.Screen or {}
  local packed = flag(screen.HasPalette, 7) | (confined(screen.ColorResolution, 1, 8) - 1) << 4
      | flag(screen.Sorted, 3) | depth_bits(screen.PaletteDepth)
  local text = header .. word(screen.Width) .. word(screen.Height) .. byte(packed) .. byte(screen.BackgroundColor)
      .. byte(screen.Aspect) .. colours(screen)
  for i = 1, gif.Blocks and gif.Blocks.n or 0 do
    local block = gif.Blocks[i]
    local picture = block and block.Picture
    if picture and (low32(picture.Width) < 0 or low32(picture.Height) < 0) then return nil end
    if block then
      text = text .. byte(block.Intro) .. (block.Picture and image(block.Picture, screen) or "")
          .. (block.Extension and extension(block.Extension) or "")
    end
  end
  return text .. "\x3B"
end

return writer
