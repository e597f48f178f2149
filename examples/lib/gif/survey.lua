-- Everything worth knowing about one GIF: its screen, blocks, frames, colours and how often each colour is used.

local blocks, files = require "gif.blocks", require "gif.files"

local survey = {}

local kMostPixels = 1 << 26 -- of an image whose pixels are looked at

-- Adds to a frame: colours, those it is drawn with; own_colours, whether they are a table of its own; counts, how often
-- each index stands in its pixels, nil when they are too many to look at; interlaced.
local function look_at(frame, screen_colours)
  local image = frame.image
  local own = image.HasPalette and blocks.colours_of(image.Palette) or {}
  frame.own_colours = #own > 0
  frame.colours = frame.own_colours and own or screen_colours
  frame.interlaced = image.Interlace
  local few_enough = frame.width * frame.height <= kMostPixels
  frame.counts = few_enough and host.counts(tostring(image.Data or "")) or nil
end

-- How often each index of the global table stands in images drawn with it.
local function global_counts(frames)
  local sums = host.counts("")
  for _, frame in ipairs(frames) do
    for i = 0, not frame.own_colours and frame.counts and 255 or -1 do sums[i] = sums[i] + frame.counts[i] end
  end
  return sums
end

-- The highest index that is used; -1 when none is.
function survey.highest_used(counts)
  for i = 255, 0, -1 do
    if counts[i] > 0 then return i end
  end
  return -1
end

-- Surveys a file; nil and the reason. start_progress(number, noun) gives what is called after each image.
function survey.of(path, start_progress)
  local gif, bytes = files.open_gif(path)
  if not gif then return nil, bytes end
  local found = { gif = gif, path = path, version = gif.Header, bytes = bytes, comments = {} }
  found.blocks = blocks.read(gif)
  found.frames, found.sums = blocks.frames(found.blocks), blocks.sums(found.blocks)
  found.screen_width, found.screen_height = gif.Screen.Width, gif.Screen.Height
  found.width, found.height = blocks.screen_size(gif, found.frames)
  found.background = gif.Screen.BackgroundColor
  found.colours = gif.Screen.HasPalette and blocks.colours_of(gif.Screen.Palette) or {}
  for _, block in ipairs(found.blocks) do
    if block.extension and block.extension.kind == "comment" then
      found.comments[#found.comments + 1] = block.extension.text
    end
  end
  local step = start_progress(#found.frames, "images")
  for _, frame in ipairs(found.frames) do
    look_at(frame, found.colours)
    step()
  end
  found.counts = global_counts(found.frames)
  return found
end

return survey
