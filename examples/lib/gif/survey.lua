-- Everything worth knowing about one GIF: its screen, blocks, frames, colours and how often each colour is used.

local blocks, composing, document = require "gif.blocks", require "gif.composing", require "gif.document"
local files, scanning = require "gif.files", require "gif.scanning"

local survey = {}

local kMostPixels, kMostPixelsOfOne = 1 << 27, 1 << 26 -- of images whose pixels are looked at

-- Adds to a frame: colours, those it is drawn with; own_colours, whether they are a table of its own. Gives how often
-- each index stands in its pixels; nil when they are too many to look at.
local function look_at(frame, screen_colours, pixels_left)
  local own, pixels = frame.colours or {}, frame.width * frame.height
  frame.own_colours = #own > 0
  frame.colours = frame.own_colours and own or screen_colours
  if pixels > math.min(pixels_left, kMostPixelsOfOne) then return nil end
  composing.sweep(2 * pixels)
  return host.counts(tostring(frame.image.Data or ""))
end

-- The highest index that is used; -1 when none is.
function survey.highest_used(counts)
  for i = 255, 0, -1 do
    if counts[i] > 0 then return i end
  end
  return -1
end

-- In groups: there may be as many as blocks, and as large.
local function findings_in(path)
  local scan, why = scanning.of(path)
  if not scan then return nil, why end
  local groups = scanning.groups(scan)
  scan = nil
  collectgarbage()
  return groups
end

-- Surveys a file; nil and the reason. start_progress(number, noun) gives what is called after each image. So many images
-- keep their counts, how often each index stands in their pixels; all that were looked at have highest_used.
function survey.of(path, start_progress, most_counted)
  local settled, unknown = files.settled(path) -- it is read twice
  if not settled then return nil, unknown end
  local findings, unreadable = findings_in(settled)
  if not findings then return nil, unreadable end
  local opened, why = document.open(settled)
  if not opened then return nil, why end
  local screen = opened.gif.Screen
  local found = {
    document = opened, findings = findings, path = path, version = opened.version, bytes = opened.bytes, comments = {},
    blocks = opened.blocks, frames = opened.frames, sums = blocks.sums(opened.blocks),
    screen_width = screen.Width, screen_height = screen.Height, width = opened.width, height = opened.height,
    background = opened.background, colours = opened.colours or {} }
  for _, block in ipairs(found.blocks) do
    if block.extension and block.extension.kind == "comment" then
      found.comments[#found.comments + 1] = block.extension.text
    end
  end
  local step = start_progress(#found.frames, "images")
  local pixels_left = kMostPixels
  found.counts = host.counts("")
  for _, frame in ipairs(found.frames) do
    local counts = look_at(frame, found.colours, pixels_left)
    pixels_left = pixels_left - frame.width * frame.height
    frame.highest_used = counts and survey.highest_used(counts)
    frame.counts = frame.number < most_counted and counts or nil
    if counts and not frame.own_colours then
      for i = 0, 255 do found.counts[i] = found.counts[i] + counts[i] end
    end
    step()
  end
  return found
end

return survey
