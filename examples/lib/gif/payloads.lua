-- What files carry besides pictures: comments, XMP, ICC profiles.

local building = require "gif.building"

local payloads = {}

local kXmp, kIcc = "XMP DataXMP", "ICCRGBG1012" -- application identifiers

-- XMP stands in the file as it is, not in sub-blocks. So that readers of sub-blocks find the end, wherever they come out
-- of the text, these bytes follow: each leads to the last.
local kTrailer = "\1"
for i = 255, 0, -1 do kTrailer = kTrailer .. string.char(i) end

local function stored(bytes)
  local parts = {}
  for at = 1, #bytes, 255 do parts[#parts + 1] = bytes:sub(at, at + 254) end
  return parts
end

-- The sub-blocks with their lengths are the text.
local function read_xmp(sub_blocks)
  local parts = {}
  for i = 2, #sub_blocks do parts[#parts + 1] = string.char(#sub_blocks[i]) .. sub_blocks[i] end
  local bytes = table.concat(parts)
  return bytes:sub(-#kTrailer) == kTrailer and bytes:sub(1, -#kTrailer - 1) or bytes
end

-- nil and the reason when it can't be stored.
local function write_xmp(bytes)
  if bytes:find("\0", 1, true) then return nil, "XMP holds a zero byte" end
  local all, at, parts = bytes .. kTrailer, 1, {}
  while at <= #all do
    local length = all:byte(at)
    if length > 0 then parts[#parts + 1] = all:sub(at + 1, at + length) end
    at = at + 1 + length
  end
  return building.extension(0xFF, kXmp, table.unpack(parts))
end

local function is_application(name)
  return function(extension) return extension.label == 0xFF and extension.sub_blocks[1] == name end
end

local function rest(sub_blocks) return table.concat(sub_blocks, "", 2) end

-- By kind: which extensions are of it, their payload, and the block for a payload.
local kKinds = {
  xmp = { is = is_application(kXmp), read = read_xmp, write = write_xmp },
  icc = {
    is = is_application(kIcc), read = rest,
    write = function(bytes) return building.extension(0xFF, kIcc, table.unpack(stored(bytes))) end },
  comment = {
    is = function(extension) return extension.label == 0xFE end,
    read = table.concat, write = function(bytes) return building.comment(bytes) end },
}

-- The kind of an extension that blocks.read gives, and its payload; nil for others.
function payloads.read(extension)
  for name, kind in pairs(kKinds) do
    if kind.is(extension) then return name, kind.read(extension.sub_blocks) end
  end
  if extension.label == 0xFF then return extension.sub_blocks[1], rest(extension.sub_blocks) end
  return nil
end

-- All payloads in order: { kind, bytes, block }, the last the number of the block.
---@param document Document
function payloads.all(document)
  local found = {}
  for _, block in ipairs(document.blocks) do
    local kind, bytes = nil, nil
    if block.extension and not block.control_of then kind, bytes = payloads.read(block.extension) end
    if kind then found[#found + 1] = { kind = kind, bytes = bytes, block = block.index } end
  end
  return found
end

-- The first payload of a kind; nil for none.
function payloads.get(document, kind)
  for _, found in ipairs(payloads.all(document)) do
    if found.kind == kind then return found.bytes end
  end
  return nil
end

-- Takes out all payloads of a kind. Gives how many there were.
function payloads.remove(document, kind)
  local is = kKinds[kind] and kKinds[kind].is or is_application(kind)
  return document:remove(function(block) return block.extension and not block.control_of and is(block.extension) end)
end

-- Puts a payload of a kind in the place of those that are there: before the frames, a comment at the end. Nil and the
-- reason when it can't be stored.
function payloads.set(document, kind, bytes)
  local block, why = kKinds[kind].write(bytes)
  if not block then return nil, why end
  payloads.remove(document, kind)
  local place = #document.blocks + 1
  if kind ~= "comment" then
    place = 1
    while document.blocks[place] and document.blocks[place].extension and document.blocks[place].extension.loops do
      place = place + 1
    end
  end
  document:add(block, place)
  return true
end

payloads.kinds = { "comment", "icc", "xmp" }

return payloads
