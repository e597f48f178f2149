-- Whether a document that was written and read back holds all that it should.

local comparing = {}

-- Whether any plugin keeps these pixels when it saves: their codes are as wide as the colour table is deep, unless the
-- plugin is tolerant.
function comparing.fit(pixels, owner_of_table)
  local depth = math.max(2, owner_of_table.PaletteDepth)
  return depth >= 8 or not pixels:find(("[%c-\255]"):format(1 << depth))
end

local function pixel_count(image) return image.Width > 0 and image.Height > 0 and image.Width * image.Height or 0 end

-- An image's pixels as they are saved: zeros follow those that it has.
local function pixels_of(image)
  local count, pixels = pixel_count(image), tostring(image.Data or "")
  return #pixels == count and pixels or pixels:sub(1, count) .. ("\0"):rep(count - #pixels)
end

local function have_same_pixels(made, written)
  local count, block, other = pixel_count(made), made.Data, written.Data
  if block and other and #block == count and #other == count then return block:Equals(other) end
  return pixels_of(made) == pixels_of(written)
end

local function bytes_of(extension)
  local parts = {}
  for _, data in pairs(extension) do parts[#parts + 1] = data and data.DataString or "" end
  return table.concat(parts)
end

-- Gives false for the same, else how one differs from the other.
local function differs(made, written, screen)
  if (made.Picture == nil) ~= (written.Picture == nil) or (made.Extension == nil) ~= (written.Extension == nil) then
    return "differs"
  end
  if made.Extension then
    local same = made.Extension.Marker & 255 == written.Extension.Marker and bytes_of(made.Extension) == bytes_of(written.Extension)
    return not same and "differs"
  end
  local image = made.Picture
  if not image then return false end
  if have_same_pixels(image, written.Picture) then return false end
  local owner = image.HasPalette and image or screen
  return owner and not comparing.fit(pixels_of(image), owner) and "has lost pixels that lie beyond its colours" or "differs"
end

-- In what a document that was read back differs from the one that was saved; nil when it has all its blocks, with
-- their pixels and bytes.
function comparing.difference(made, written)
  local expected = {}
  for i, block in pairs(made) do expected[#expected + 1] = { i, block } end
  if written.Count ~= #expected then return ("%d of its %d blocks are there"):format(written.Count, #expected) end
  local screen, looked_at = made.Screen, 0
  for place, row in ipairs(expected) do
    local index, block = table.unpack(row)
    local difference = differs(block, written:Block(place - 1), screen)
    if difference then return ("block %d %s"):format(index, difference) end
    looked_at = looked_at + (block.Picture and block.Picture.Width * block.Picture.Height or 0)
    if looked_at > 1 << 22 then -- Lua does not see how much memory their pixels take
      collectgarbage()
      looked_at = 0
    end
  end
  return nil
end

return comparing
