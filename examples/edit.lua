-- Edits an animation, saves it, reads it back and says what changed. What no option names stays: colour indexes, tables,
-- the order of blocks, unknown ones, plain text.
--
--   gifhost examples/edit.lua [OPTION...] IN.gif OUT.gif
--
-- Each option is a function of the library, which scripts call in the same way: docs/library.md.

local command, drawing, extensions = require "gif.command", require "gif.drawing", require "gif.extensions"
local files, gif, json, many = require "gif.files", require "gif", require "gif.json", require "gif.many"
local optimising, recolouring, text = require "gif.optimising", require "gif.recolouring", require "gif.text"

local kLeastDelayCs = 2 -- players take shorter ones for 0.1 s: they count as this long

-- --- Kinds of values ---------------------------------------------------------------------------------------------------

-- "0.08", or "x2" for twice as long. Gives a function from delay to delay.
local function read_delay(given)
  local factor = tonumber(given:match("^x(.+)$"))
  if factor and factor >= 0 and factor < 65536 then
    return function(delay_cs) return math.floor(math.max(delay_cs, kLeastDelayCs) * factor + 0.5) end
  end
  local delay_cs = command.seconds.read(given)
  return delay_cs and function() return delay_cs end
end

-- "3-7", "3-", "-7" or "3".
local function read_range(given)
  local first, last = given:match("^(%d*)%-(%d*)$")
  first, last = first or given:match("^%d+$"), last or given
  return first and { first = tonumber(first) or 0, last = tonumber(last) or math.huge } or nil
end

-- A list of such, each with frames before it or for all: "0.1,3:0.5,7-9:x2".
local delay_kind = {
  name = "seconds, 0 to 655.35, or xN for N times as long; with frames before it, such as 3:0.5 or 0-4:x2",
  read = function(given)
    local rows = {}
    for part in (given .. ","):gmatch("(.-),") do
      local frames, delay = part:match("^(.-):(.*)$")
      local range, change = frames and read_range(frames), read_delay(delay or part)
      if not change or frames and not range then return nil end
      rows[#rows + 1] = { range = range or { first = 0, last = math.huge }, change = change }
    end
    return rows
  end }

local range_kind = { name = "block numbers, such as 3-7, 3- or -7", read = read_range }

local area_kind = {
  name = "X,Y,WxH in pixels, such as 10,20,320x240",
  read = function(given)
    local left, top, width, height = given:match("^(%d+),(%d+),(%d+)x(%d+)$")
    if not left or tonumber(width) == 0 or tonumber(height) == 0 then return nil end
    return { left = tonumber(left), top = tonumber(top), width = tonumber(width), height = tonumber(height) }
  end }

-- "50%", "320x240", "320x" or "x240". Gives a function from size to size.
local size_kind = {
  name = "a size, such as 50%, 320x240, 320x or x240",
  read = function(given)
    local percent = tonumber(given:match("^([%d.]+)%%$"))
    local width, height = given:match("^(%d*)x(%d*)$")
    local function whole(number) return math.max(1, math.floor(number + 0.5)) end
    if percent and percent > 0 then
      return function(w, h) return whole(w * percent / 100), whole(h * percent / 100) end
    elseif width and width .. height ~= "" then
      width, height = tonumber(width), tonumber(height)
      return function(w, h) return whole(width or w * height / h), whole(height or h * width / w) end
    end
  end }

local function one_of(name, values)
  return { name = name, read = function(given) return values[given] end }
end

local place_kind = {
  name = "a place, such as bottom, top left or 10,20",
  read = function(given) return drawing.place(given, 1, 1, 9, 9, 0) and given or nil end }

local colour_kind = {
  name = "a colour in hex digits, such as FFFFFF",
  read = function(given) return tonumber(given:match("^#?(%x%x%x%x%x%x)$") or "", 16) end }

-- --- The command line --------------------------------------------------------------------------------------------------

local options, operands = command.parse {
  about = "Edits an animation, saves it, reads it back and says what changed.",
  operands = "IN.gif OUT.gif",
  operands_with = { into = "[PATH...]" },
  options = {
    { "--blocks FIRST-LAST", "keep only these blocks, by the numbers that tree.lua prints", range_kind },
    { "--whole", "make each frame show the whole screen, so that it stands for itself" },
    { "--every N", "keep every Nth frame, for the time of those left out", command.whole(1) },
    { "--reverse", "last frame first" },
    { "--crop X,Y,WxH", "cut out a part of the screen", area_kind },
    { "--resize SIZE", "50%, 320x240, 320x or x240; colours between those there are made", size_kind },
    { "--rotate DEGREES", "90, 180 or 270, clockwise",
      one_of("90, 180 or 270", { ["90"] = 1, ["180"] = 2, ["270"] = 3 }) },
    { "--flip HOW", "h exchanges left and right, v top and bottom", one_of("h or v", { h = 0, v = 2 }) },
    { "--overlay PNG", "draw a picture on every frame", command.text },
    { "--text TEXT", "write a text on every frame", command.text },
    { "--at PLACE", "of text (default: bottom) or picture (bottom right): top left, center, 10,20 ...", place_kind },
    { "--font FONT", "a file, or a name such as \"DejaVu Sans:bold\" (default: sans:bold)", command.text },
    { "--size PIXELS", "of the text's letters (default: a tenth of the height)", command.whole(4, 2000) },
    { "--colour RRGGBB", "of the text (default: FFFFFF)", colour_kind },
    { "--outline RRGGBB", "around its letters (default: 000000)", colour_kind },
    { "--recolour HOW", "sunset, or FROM=TO,... in hex digits, such as FF0000=0000FF", recolouring.kind },
    { "--delay SECONDS", "that each frame stays; x2 is twice as long; 3:0.5,5-8:x2 for these frames", delay_kind },
    { "--last-delay SECONDS", "that the last frame stays", command.seconds },
    { "--loop N", "times that players repeat it; 0 is for ever", command.whole(0, 65535) },
    { "--comment TEXT", "add a comment at the end", command.text },
    { "--optimise", "make the file smaller without changing what it shows" },
    { "--lossy N", "optimise, with colours up to that far from the right ones (1 to 255)", command.whole(1, 255) },
    { "--into FOLDER", "edit each PATH, files and all *.gif of folders, into files of the same names there", command.text },
    table.unpack(many.options) },
  more = "Edits are made in this order; without options nothing changes. Frames count from 0.",
}
local input -- the file that is edited now

-- --- Edits: each changes the document, and may give a remark -----------------------------------------------------------

local function reduced_remark(exact) return not exact and "colours had to be chosen anew: there are more than 256" or nil end

local function made_whole(document)
  local reduced = gif.make_whole(document)
  return reduced > 0 and ("%s had more than 256 colours, which were reduced"):format(text.count(reduced, "frame")) or nil
end

local edits = {}

function edits.blocks(document, range)
  document:remove(function(block) return block.index < range.first or block.index > range.last end)
  local frames = {}
  for _, block in ipairs(document.blocks) do frames[#frames + 1] = block.frame end
  if #document.blocks == 0 then
    command.fail(("%s: has %s, none of them kept"):format(input, text.count(document.gif.Count, "block")))
  end
  -- Controls whose frames are gone stay as they were.
  for _, block in ipairs(document.blocks) do
    local is_kept = false
    for _, frame in ipairs(frames) do is_kept = is_kept or frame == block.control_of end
    if not is_kept then block.control_of = nil end
  end
  document:set_frames(frames)
end

edits.whole = made_whole

function edits.every(document, step)
  local remark, kept = made_whole(document), {}
  for i, frame in ipairs(document.frames) do
    if (i - 1) % step == 0 then
      kept[#kept + 1] = frame
    else
      kept[#kept].delay_cs = math.min(kept[#kept].delay_cs + frame.delay_cs, 65535)
    end
  end
  document:set_frames(kept)
  if not options.whole then gif.make_deltas(document) end
  return remark
end

function edits.reverse(document)
  local remark, turned = made_whole(document), {}
  for i = #document.frames, 1, -1 do turned[#turned + 1] = document.frames[i] end
  document:set_frames(turned)
  if not options.whole then gif.make_deltas(document) end
  return remark
end

function edits.crop(document, area)
  if area.left + area.width > document.width or area.top + area.height > document.height then
    command.fail(("%s: --crop reaches beyond its %d x %d pixels"):format(input, document.width, document.height))
  end
  gif.crop(document, area)
end

function edits.resize(document, size_of)
  local width, height = size_of(document.width, document.height)
  if width > 32767 or height > 32767 or width * height > 1 << 26 then
    command.fail(("%s: %d x %d pixels are too many"):format(input, width, height))
  end
  return reduced_remark(gif.resize(document, width, height))
end

function edits.rotate(document, quarters) gif.turn(document, quarters) end
function edits.flip(document, quarters) gif.turn(document, quarters, true) end

function edits.overlay(document, path)
  local picture, why = files.load_png(path)
  if not picture then command.fail(why) end
  return reduced_remark(gif.overlay(document, picture, options.at or "bottom right"))
end

edits["text"] = function(document, words)
  local drawn, exact = pcall(gif.caption, document, {
    text = words, at = options.at or "bottom", font = options.font or "sans:bold",
    size = options.size or math.max(8, document.height // 10), colour = options.colour or 0xFFFFFF,
    outline = options.outline or 0x000000 })
  if not drawn then command.fail(type(exact) == "table" and exact.message or exact) end
  return reduced_remark(exact)
end

local recoloured = {}
function edits.recolour(document, how)
  local missing
  recoloured, missing = recolouring.apply(document, how)
  for i, colour in ipairs(missing) do missing[i] = ("#%06X"):format(colour) end
  return #missing > 0 and "no table has " .. table.concat(missing, ", ") or nil
end

function edits.delay(document, rows)
  for _, row in ipairs(rows) do
    if row.range.first >= #document.frames then
      command.fail(("%s: has no frame %d, only %s"):format(input, row.range.first, text.count(#document.frames, "frame")))
    end
    document:set_delays(row.change, function(frame)
      return frame.number >= row.range.first and frame.number <= row.range.last
    end)
  end
end

edits["last-delay"] = function(document, delay_cs) document.frames[#document.frames].delay_cs = delay_cs end
function edits.loop(document, count) document:set_loops(count) end
function edits.comment(document, words) document:add_comment(words) end

local kOrder = {
  "blocks", "whole", "every", "reverse", "crop", "resize", "rotate", "flip", "overlay", "text", "recolour", "delay",
  "last-delay", "loop", "comment" }
local kWithoutFrames = { blocks = true, recolour = true, loop = true, comment = true }

-- --- What changed ------------------------------------------------------------------------------------------------------

-- Without reading the table of one that still has its image's.
local function has_own_table(frame)
  local colours, image = rawget(frame, "colours"), frame.image
  if colours then return #colours > 0 end
  local palette = image and image.HasPalette and image.Palette
  return palette and palette.Count > 0
end

local function summary(document)
  local pixels, own = 0, 0
  for _, frame in ipairs(document.frames) do
    pixels = pixels + frame.width * frame.height
    own = own + (has_own_table(frame) and 1 or 0)
  end
  local others, loops = 0, document:loops()
  for _, block in ipairs(document.blocks) do others = others + (not block.frame and not block.control_of and 1 or 0) end
  return {
    { "frames", tostring(#document.frames) },
    { "playing time", text.seconds(document:duration_cs()) },
    { "screen", ("%d x %d"):format(document.width, document.height) },
    { "pixels stored", text.grouped(pixels) },
    { "global table", text.count(document.colours and #document.colours or 0, "colour") },
    { "own tables", tostring(own) },
    { "other blocks", tostring(others) },
    { "repetition", loops and extensions.loops_text(loops) or "plays once" },
  }
end

local kMostColoursSaid = 8
local function print_changes(before, after)
  for i, row in ipairs(before) do
    if row[2] ~= after[i][2] then
      print(("  %-16s %s -> %s"):format(row[1], row[2], after[i][2]))
    end
  end
  for i, change in ipairs(recoloured) do
    if i > kMostColoursSaid then
      print(("  and %s more"):format(text.count(#recoloured - kMostColoursSaid, "colour")))
      break
    end
    local whose, index, from, to = table.unpack(change)
    print(("  %-16s #%06X -> #%06X"):format(("%s %d"):format(whose, index), from, to))
  end
end

-- --- The work ----------------------------------------------------------------------------------------------------------

-- Edits one file. Gives what is told of it, or nil and the reason.
local function edit(path, output, only_new)
  input, recoloured = path, {}
  local document, why = gif.open(path)
  if not document then return nil, why end
  local before, remarks, is_edited = summary(document), {}, false
  for _, name in ipairs(kOrder) do
    if options[name] then
      if #document.frames == 0 and not kWithoutFrames[name] then
        command.fail(path .. ": holds no image" .. (options.blocks and " there" or ""))
      end
      remarks[#remarks + 1] = edits[name](document, options[name])
      is_edited = true
    end
  end
  if options.optimise or options.lossy then
    local smaller, reason = optimising.smaller(document, options.lossy)
    if not smaller then command.fail(path .. ": cannot be optimised: " .. reason) end
    if smaller == document then
      remarks[#remarks + 1] = "it takes no fewer bytes in any other way that was tried: images stay as they are"
    else
      document, is_edited = smaller, true
    end
  end
  local saved, problem = files.save_gif(is_edited and document:build() or document.gif, output, only_new)
  if not saved then return nil, problem end
  return { document = document, before = before, remarks = remarks, is_edited = is_edited }
end

local function edit_one(path, output)
  local done, why = edit(path, output)
  if not done then command.fail(why) end
  print(("%s -> %s"):format(text.shown(path), text.shown(output)))
  print_changes(done.before, summary(done.document))
  if not done.is_edited and #done.remarks == 0 then print("  nothing changed; --help tells what can be") end
  for _, remark in ipairs(done.remarks) do print("  note: " .. remark) end
  print(("  %s read back as they were made"):format(text.count(#done.document.frames, "frame")))
end

-- Into the folder, which gets the folders of the inputs; nothing that is there is replaced. A run that was stopped may have
-- made files that its log has no lines for: the next one finds them as it would make them.
local function edit_many(paths, folder)
  local _, failed = many.run {
    options = options, paths = paths,
    work = function(path, name)
      if ("/" .. name .. "/"):find("/../", 1, true) then return nil, path .. ": leads out of the folder" end
      local output = folder .. "/" .. name
      local made, why = files.make_folder(output:match("^(.*)/"))
      if not made then return nil, why end
      local done, problem = command.attempt(edit, path, output, options.resume and "or equal" or true)
      if not done then return nil, problem end
      return { out = json.name(output), frames = #done.document.frames, notes = json.list(done.remarks) }
    end }
  os.exit(failed == 0, true)
end

if options.into then edit_many(operands, options.into) end
for _, row in ipairs(many.options) do
  local name = row[1]:match("^%-%-(%S+)")
  if options[name] then command.reject("--" .. name .. " needs --into") end
end
edit_one(table.unpack(operands))
