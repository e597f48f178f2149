-- In what two documents differ: their screens, tables, blocks, and what viewers show.

local areas, composing, extensions = require "gif.areas", require "gif.composing", require "gif.extensions"
local text = require "gif.text"

local differences = {}

local kFrameFields = { "left", "top", "width", "height", "interlaced", "delay_cs", "disposal", "transparent", "waits_for_input" }

local function colour(value) return value and ("#%06X"):format(value) or "none" end

-- "4 colours: 0 #000000 -> #FFFFFF, ..."
local function of_tables(a, b)
  if not a or not b then
    return a ~= b and ("table: %s -> %s"):format(a and text.count(#a, "colour") or "none", b and text.count(#b, "colour") or "none")
  end
  local changes, shown = 0, {}
  for i = 1, math.max(#a, #b) do
    if a[i] ~= b[i] then
      changes = changes + 1
      if changes <= 4 then shown[#shown + 1] = ("%d %s -> %s"):format(i - 1, colour(a[i]), colour(b[i])) end
    end
  end
  if changes == 0 then return nil end
  return ("table: %s: %s%s"):format(
    text.count(changes, "colour") .. (changes == 1 and " differs" or " differ"), table.concat(shown, ", "), changes > 4 and ", ..." or "")
end

local function of_pixels(a, b)
  if a.width ~= b.width or a.height ~= b.height then return nil end
  local before, after = a.pixels, b.pixels
  local where = areas.difference(before, after, a.width)
  if not where then return nil end
  return ("indexes differ within %d x %d at (%d, %d)"):format(where.width, where.height, where.left, where.top)
end

local function of_frames(a, b)
  local found = {}
  for _, name in ipairs(kFrameFields) do
    if a[name] ~= b[name] then found[#found + 1] = ("%s: %s -> %s"):format(name, tostring(a[name]), tostring(b[name])) end
  end
  found[#found + 1] = of_tables(a.colours, b.colours) or nil
  found[#found + 1] = of_pixels(a, b)
  return found
end

local function of_blocks(a, b)
  if a.frame and b.frame then return of_frames(a.frame, b.frame) end
  local function name(block)
    return block.frame and "image" or block.extension and extensions.name(block.extension) or "nothing"
  end
  if name(a) ~= name(b) then return { ("%s -> %s"):format(name(a), name(b)) } end
  if a.control_of and b.control_of or not a.extension then return {} end -- told with the frame
  if table.concat(a.extension.sub_blocks, "|") == table.concat(b.extension.sub_blocks, "|") then return {} end
  return { ("%s: %s -> %s"):format(name(a), extensions.describe(a.extension), extensions.describe(b.extension)) }
end

-- Sentences about the screen and the blocks.
---@param a Document
---@param b Document
---@return string[]
function differences.of_structure(a, b)
  local found = {}
  for _, name in ipairs { "version", "width", "height", "background", "aspect" } do
    if a[name] ~= b[name] then found[#found + 1] = ("screen: %s: %s -> %s"):format(name, a[name], b[name]) end
  end
  local tables = of_tables(a.colours, b.colours)
  if tables then found[#found + 1] = "global " .. tables end
  for i = 1, math.max(#a.blocks, #b.blocks) do
    local left, right = a.blocks[i], b.blocks[i]
    if not left or not right then
      found[#found + 1] = ("blocks: %d -> %d"):format(#a.blocks, #b.blocks)
      break
    end
    for _, what in ipairs(of_blocks(left, right)) do found[#found + 1] = ("block %d: %s"):format(i - 1, what) end
  end
  return found
end

-- What viewers show after each frame.
local function pictures_of(document, show)
  local number = 0
  composing.play(document, {}, function(_, canvas)
    number = number + 1
    show(number, composing.seen(canvas))
  end)
end

local function seen(picture) return picture:RGB() .. (picture.Mask and picture.Mask:RGB() or "") end

-- The frames, from 0 on, after which viewers show something else, and the first of them: { number, before, after },
-- pictures. Nil when the screens are of different sizes.
---@param a Document
---@param b Document
function differences.of_pictures(a, b)
  if a.width ~= b.width or a.height ~= b.height then return nil end
  local before, wanted = {}, {}
  pictures_of(a, function(number, picture) before[number] = { #seen(picture), host.crc32(seen(picture)) } end)
  local count = math.max(#a.frames, #b.frames)
  pictures_of(b, function(number, picture)
    local of_a = before[number]
    if not of_a or of_a[1] ~= #seen(picture) or of_a[2] ~= host.crc32(seen(picture)) then wanted[#wanted + 1] = number - 1 end
  end)
  for number = #b.frames, count - 1 do wanted[#wanted + 1] = number end
  local first
  if #wanted > 0 and wanted[1] < math.min(#a.frames, #b.frames) then
    first = { number = wanted[1] }
    pictures_of(a, function(number, picture) if number - 1 == first.number then first.before = picture end end)
    pictures_of(b, function(number, picture) if number - 1 == first.number then first.after = picture end end)
  end
  return wanted, first
end

-- A picture of a difference: before, after, and red where they differ; and how many pixels that are.
function differences.picture(first)
  local gap, width, height = 8, first.before.Width, first.before.Height
  local marks = first.before:Difference(first.after)
  local picture = Picture(3 * width + 4 * gap, height + 2 * gap)
  picture:FillRect(0, 0, picture.Width, picture.Height, 0xE0E0DC)
  for i, part in ipairs { first.before, first.after, marks } do picture:DrawPicture(part, i * gap + (i - 1) * width, gap) end
  return picture, host.counts(marks:RGB())[255]
end

return differences
