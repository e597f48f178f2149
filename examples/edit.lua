-- Edits an animation, saves it, reads it back and says what changed.
--
--   gifhost examples/edit.lua [OPTION...] IN.gif OUT.gif
--
-- An opened document is read-only; its clone is free-standing and can be changed. The clone's blocks are taken into a
-- list, edits make other lists of it, and a new document holds what the last one does.

local building, command, controls, extensions = require "gif.building", require "gif.command", require "gif.controls", require "gif.extensions"
local files, recolouring, reversing, text = require "gif.files", require "gif.recolouring", require "gif.reversing", require "gif.text"

local kLeastDelayCs = 2 -- players take shorter ones for 0.1 s: they count as this long

-- --- The command line -------------------------------------------------------------------------------------------------

-- "0.08", or "x2" for twice as long. Gives a function from delay to delay.
local delay_kind = {
  name = "seconds, 0 to 655.35, or xN for N times as long",
  read = function(given)
    local factor = tonumber(given:match("^x(.+)$"))
    if factor and factor >= 0 and factor < 65536 then
      return function(delay_cs) return math.floor(math.max(delay_cs, kLeastDelayCs) * factor + 0.5) end
    end
    local delay_cs = command.seconds.read(given)
    return delay_cs and function() return delay_cs end
  end }

-- "3-7", "3-", "-7" or "3".
local range_kind = {
  name = "block numbers, such as 3-7, 3- or -7",
  read = function(given)
    local first, last = given:match("^(%d*)%-(%d*)$")
    first, last = first or given:match("^%d+$"), last or given
    return first and { first = tonumber(first) or 0, last = tonumber(last) or math.huge } or nil
  end }

local options, operands = command.parse {
  about = "Edits an animation, saves it, reads it back and says what changed.",
  operands = "IN.gif OUT.gif",
  options = {
    { "--blocks FIRST-LAST", "keep only these blocks, by the numbers that tree.lua prints", range_kind },
    { "--reverse", "last frame first; images that hold a part of the screen are made whole" },
    { "--recolour HOW", "sunset, or FROM=TO,... in hex digits, such as FF0000=0000FF", recolouring.kind },
    { "--delay SECONDS", "that each frame stays; x2 is twice as long as now, x0.5 half", delay_kind },
    { "--loop N", "times that players repeat it; 0 is for ever", command.whole(0, 65535) },
    { "--comment TEXT", "add a comment at the end", command.text },
  },
  more = "Edits are made in this order. Without options: --reverse --recolour sunset --delay x2.",
}
if not next(options) then
  options = { reverse = true, recolour = recolouring.kind.read "sunset", delay = delay_kind.read "x2" }
end
local input, output = table.unpack(operands)

-- --- Edits: each takes a list of blocks and gives one -----------------------------------------------------------------

local function only(blocks, range)
  if range.first > range.last or range.first >= #blocks then
    command.fail(("%s: has %s, none of them kept"):format(input, text.count(#blocks, "block")))
  end
  return table.move(blocks, range.first + 1, math.min(range.last + 1, #blocks), 1, {})
end

-- Sets the count where one stands; players look for it before the first image.
local function with_loops(blocks, count)
  for _, block in ipairs(blocks) do
    local extension = block.Extension
    if extension and extensions.read(extension).loops then
      extension:Data(1).DataString = ("<BI2"):pack(1, count)
      return blocks
    end
  end
  table.insert(blocks, 1, building.loops(count))
  return blocks
end

local function edited(blocks, screen)
  local whole = true
  if options.blocks then blocks = only(blocks, options.blocks) end
  if (options.reverse or options.delay) and #controls.take_apart(blocks) == 0 then
    command.fail(input .. ": holds no image" .. (options.blocks and " there" or ""))
  end
  if options.reverse then blocks, whole = reversing.reversed(blocks, screen) end
  if options.recolour then recolouring.apply(screen, blocks, options.recolour) end
  if options.delay then blocks = controls.with_delays(blocks, options.delay) end
  if options.loop then blocks = with_loops(blocks, options.loop) end
  if options.comment then blocks[#blocks + 1] = building.comment(options.comment) end
  return blocks, whole
end

-- --- What changed -----------------------------------------------------------------------------------------------------

local function list_of(gif)
  local blocks = {}
  for _, block in pairs(gif) do blocks[#blocks + 1] = block end
  return blocks
end

local function summary(gif)
  local frames, others = controls.take_apart(list_of(gif))
  local delay_cs, pixels, loops = 0, 0, nil
  for _, frame in ipairs(frames) do
    delay_cs = delay_cs + frame.control.delay_cs
    pixels = pixels + frame.image.Width * frame.image.Height
  end
  for _, block in ipairs(others) do
    loops = block.Extension and extensions.read(block.Extension).loops or loops
  end
  local palette = gif.Screen.HasPalette and gif.Screen.Palette
  return { frames = #frames, others = #others, seconds = delay_cs / 100, pixels = text.grouped(pixels),
    loops = loops and extensions.loops_text(loops) or "plays once", palette = palette }
end

local function print_change(what, form, before, after)
  print(("  %-16s " .. form .. " -> " .. form):format(what, before, after))
end

local function print_changes(before, after)
  print_change("frames", "%d", before.frames, after.frames)
  print_change("playing time", "%.2f s", before.seconds, after.seconds)
  print_change("pixels stored", "%s", before.pixels, after.pixels)
  print_change("other blocks", "%d", before.others, after.others)
  print_change("repetition", "%s", before.loops, after.loops)
  for i = 0, before.palette and math.min(before.palette.Count, 4) - 1 or -1 do
    print_change("colour " .. i, "#%06X", before.palette:Value(i), after.palette:Value(i))
  end
end

-- --- The work ---------------------------------------------------------------------------------------------------------

local opened, why = files.open_gif(input)
if not opened then command.fail(why) end
local gif, result = opened:Clone(), GIFZKV()
local blocks, whole = edited(list_of(gif), gif.Screen)
result.Screen, result.Header = gif.Screen, gif.Header
for _, block in ipairs(blocks) do
  result:Add(block)
  if block.Extension then result.Header = "GIF89a" end -- GIF87a has none
end
local saved, problem = files.save_gif(result, output)
if not saved then command.fail(problem) end
local after = summary(result)
print(("%s -> %s"):format(text.shown(input), text.shown(output)))
print_changes(summary(opened), after)
print(("  %s read back as they were made%s%s"):format(text.count(after.frames, "frame"), options.reverse and ", in reverse" or "",
  whole and "" or "; images with tables of their own were not made whole"))
