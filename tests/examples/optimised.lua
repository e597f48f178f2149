-- Optimised animations show what they showed before, for as long: random ones of all kinds, frame by frame.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local examples = dofile(here .. "../support/examples.lua")
local blocks, building, composing = require "gif.blocks", require "gif.building", require "gif.composing"
local document, optimising = require "gif.document", require "gif.optimising"

local kWidth, kHeight = 23, 17

-- Few in all, so that tables have some in common.
local function random_colours(count)
  local colours = {}
  for i = 1, count do colours[i] = count > 8 and math.random(0, 0xFFFFFF) or math.random(0, 9) * 0x1A1B19 end
  return colours
end

-- Pixels in runs, so that images have something in common with those before them.
local function random_pixels(count, colours)
  local pixels, at, index = MemoryBlock(count), 0, 0
  while at < count do
    if math.random() < 0.7 then index = math.random(0, colours - 1) end
    for _ = 1, math.random(1, 9) do
      if at < count then pixels[at] = index end
      at = at + 1
    end
  end
  return pixels
end

-- kind: colours of the shared table; the chance of tables of their own and their greatest depth; of transparency; the greatest disposal; delays.
local function random_gif(kind)
  local gif = GIFZKV()
  gif.Header, gif.Screen = "GIF89a", building.screen(kWidth, kHeight, random_colours(kind.colours))
  gif:Add(building.loops(3))
  local last
  for i = 1, kind.frames do
    local own = math.random() < kind.own and random_colours(1 << math.random(1, kind.depth or 8))
    local of = { left = math.random(0, kWidth - 1), top = math.random(0, kHeight - 1), colours = own }
    of.width, of.height = math.random(1, kWidth - of.left), math.random(1, kHeight - of.top)
    if math.random() < kind.whole then of.left, of.top, of.width, of.height = 0, 0, kWidth, kHeight end
    local colours = own and #own or kind.colours
    of.pixels = random_pixels(of.width * of.height, colours)
    if last and math.random() < 0.4 then of = last end -- the same again
    last = of
    gif:Add(building.control { disposal = math.random(0, kind.disposal), delay_cs = math.random(kind.least_delay, 5),
      transparent = math.random() < kind.transparent and math.random(0, colours - 1) or nil,
      waits_for_input = math.random() < 0.1 })
    if math.random() < 0.2 then gif:Add(building.comment("before image " .. i)) end
    gif:Add(building.image(of))
  end
  gif:Add(building.comment("the end"))
  return gif
end

-- What is shown, a line for each span of time; the extensions other than controls.
local function story(gif)
  local all, lines, others = blocks.read(gif), {}, {}
  local read = document.read(gif)
  local frames = read.frames
  composing.play(read, {}, function(frame, canvas)
    local picture <const> = composing.seen(canvas)
    local shown, mask = picture:RGB(), picture.Mask and picture.Mask:RGB()
    local seen = {}
    for at = 1, #shown, 3 do seen[#seen + 1] = mask and mask:byte(at) == 255 and "---" or shown:sub(at, at + 2) end
    local line = table.concat(seen)
    local last = lines[#lines]
    if last and last.shown == line then
      last.delay_cs = last.delay_cs + frame.delay_cs
    else
      lines[#lines + 1] = { shown = line, delay_cs = frame.delay_cs }
    end
  end)
  for _, block in ipairs(all) do
    if block.extension and block.extension.label ~= 0xF9 then others[#others + 1] = block.extension.sub_blocks[1] end
  end
  return lines, table.concat(others, "|"), #frames
end

local function optimised(gif, tolerance)
  local list = {}
  for _, block in pairs(gif:Clone()) do list[#list + 1] = block end
  local result, screen = GIFZKV(), gif.Screen:Clone()
  local smaller, why = optimising.optimised(list, screen, tolerance)
  assert(smaller, why)
  result.Header, result.Screen = "GIF89a", screen
  for _, block in ipairs(smaller) do result:Add(block) end
  return result
end

local kKinds = {
  { colours = 4, own = 0, transparent = 0, disposal = 1, whole = 0.5 },
  { colours = 16, own = 0, transparent = 0.5, disposal = 3, whole = 0.5 },
  { colours = 256, own = 0, transparent = 0.3, disposal = 3, whole = 0.2 },
  { colours = 8, own = 0.5, transparent = 0.5, disposal = 3, whole = 0.3 },
  { colours = 128, own = 1, transparent = 0.2, disposal = 2, whole = 0.7, least_delay = 0 },
  { colours = 256, own = 0.9, depth = 2, transparent = 0, disposal = 1, whole = 0.8 },
  { colours = 2, own = 0.2, transparent = 0.8, disposal = 3, whole = 0.1 },
}
local before, after = 0, 0
for seed = 1, 70 do
  local kind <const> = kKinds[seed % #kKinds + 1]
  kind.frames, kind.least_delay = seed % 7 + 2, kind.least_delay or 2
  math.randomseed(seed)
  local gif <const> = GifStringToGifZKV(t.saved(random_gif(kind)))
  local bytes <const> = t.saved(optimised(gif))
  local lines, others, count = story(gif)
  local new_lines, new_others, new_count = story(GifStringToGifZKV(bytes))
  t.expect(seed .. ": pictures", #new_lines, #lines)
  for i, line in ipairs(lines) do
    t.expect(seed .. ": picture " .. i, new_lines[i].shown == line.shown, true)
    t.expect(seed .. ": time " .. i, new_lines[i].delay_cs, line.delay_cs)
  end
  t.expect(seed .. ": extensions", new_others, others)
  assert(new_count <= count, seed)
  before, after = before + #t.saved(gif), after + #bytes
end
assert(after < 0.8 * before, after / before)

-- What cannot be drawn for sure is refused with the reason.
local function made_of(...)
  local gif = GIFZKV()
  gif.Header, gif.Screen = "GIF89a", building.screen(4, 4)
  for _, block in ipairs { ... } do gif:Add(block) end
  return GifStringToGifZKV(t.saved(gif))
end
local function image_of(left, colours)
  return building.image { left = left, top = 0, width = 2, height = 1, pixels = MemoryBlock("\1\3"), colours = colours }
end
for reason, gif in pairs {
  ["image 0 reaches outside the screen"] = made_of(image_of(3, { 1, 2, 3, 4 })),
  ["image 0 has no colours"] = made_of(image_of(0)),
  ["image 1 has pixels beyond its colours"] = made_of(image_of(0, { 1, 2, 3, 4 }), image_of(0, { 1, 2 })),
  ["image 0 has a disposal that no one has defined"] = made_of(building.control { disposal = 5, delay_cs = 1 }, image_of(0, { 1, 2, 3, 4 })),
  ["it holds plain text, which is drawn between images"] = made_of(building.extension(1, ("x"):rep(12))),
} do
  local succeeded, message = pcall(optimised, gif)
  assert(not succeeded and tostring(message):find(reason, 1, true), tostring(message))
end

-- Colours stay as near as they were asked to, and files become smaller with more of it.
math.randomseed(5)
local gradient, last_size = GIFZKV(), math.huge
local greys = {}
for i = 0, 255 do greys[i + 1] = i * 0x010101 end
gradient.Header, gradient.Screen = "GIF89a", building.screen(64, 48, greys)
for i = 1, 5 do
  local pixels = MemoryBlock(64 * 48)
  for at = 0, 64 * 48 - 1 do pixels[at] = math.min(255, at % 64 * 3 + math.random(0, 9) + i) end
  gradient:Add(building.image { left = 0, top = 0, width = 64, height = 48, pixels = pixels })
end
local wanted = story(GifStringToGifZKV(t.saved(gradient)))
for _, tolerance in ipairs { 0, 8, 20, 40 } do
  local bytes <const> = t.saved(optimised(gradient, tolerance))
  local shown, furthest = story(GifStringToGifZKV(bytes)), 0
  t.expect("frames", #shown, #wanted)
  for i, line in ipairs(wanted) do
    for at = 1, #line.shown, 3 do
      furthest = math.max(furthest, 3 * (line.shown:byte(at) - shown[i].shown:byte(at)) ^ 2)
    end
  end
  assert(furthest <= tolerance ^ 2, furthest)
  assert(#bytes < last_size, #bytes)
  last_size = #bytes
end

-- By the command: the sample, made by another program with care, becomes smaller still; what cannot stays as it is.
local kStays = "images stay as they are"
examples.with_folder(function(folder)
  local sample, result = here .. "../../examples/gifs/lighthouse.gif", folder .. "/small.gif"
  local status, said = examples.run("edit", "--optimise", sample, result)
  t.expect("edit", status, 0)
  assert(#examples.read(result) <= 11400 and not said:find(kStays, 1, true), said)
  local still = made_of(image_of(0, { 1, 2, 3, 4 })) -- a graphic control would make it longer
  assert(FolderItem(folder .. "/still.gif"):SaveAsGIFZKV(still))
  for i, options in ipairs { {}, { "--optimise" }, { "--lossy=40" }, { "--comment=there" }, { "--comment=there", "--optimise" } } do
    local words = { "edit", table.unpack(options) }
    table.move({ folder .. "/still.gif", ("%s/%d.gif"):format(folder, i) }, 1, 2, #words + 1, words)
    status, said = examples.run(table.unpack(words))
    t.expect(i .. ": edit", status, 0)
    t.expect(i .. ": said", said:find(kStays, 1, true) ~= nil, i ~= 1 and i ~= 4)
  end
  for i, same in pairs { [2] = 1, [3] = 1, [5] = 4 } do
    t.expect(i .. ": as without", examples.read(("%s/%d.gif"):format(folder, i)), examples.read(("%s/%d.gif"):format(folder, same)))
  end
end)
