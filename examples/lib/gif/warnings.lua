-- What in a GIF is likely to be a mistake, in sentences that say what comes of it.

local composing = require "gif.composing"
local survey, text = require "gif.survey", require "gif.text"

local warnings = {}

local kShortestDelayCs = 2 -- what viewers take as it stands
local kHighestDisposal = 3 -- GIF89a, section 23

local function outside(frame, found)
  return frame.left + frame.width > found.screen_width or frame.top + frame.height > found.screen_height
end

-- How many colours of a table could be left out. Tables have 2, 4, 8, ... 256 entries: nothing is said unless the
-- next smaller one would do.
local function spare(colours, highest_used)
  local used = highest_used + 1
  return #colours > 2 and used <= #colours // 2 and #colours - used or 0
end

-- Questions about a frame; what to say of those that answer true. "%s" becomes "Image 3" or "Images 3, 5 to 9".
local kAboutFrames = {
  { function(frame, found) return #found.frames > 1 and frame.delay_cs < kShortestDelayCs end,
    "%s: a delay under 20 ms. Most viewers show such frames for 100 ms." },
  { function(frame, found) return found.screen_width * found.screen_height > 0 and outside(frame, found) end,
    "%s: reaches outside the logical screen. Viewers cut it off there, or enlarge the screen." },
  { function(frame) return frame.width * frame.height == 0 end, "%s: no pixels. Many viewers refuse the file." },
  { function(frame) return #frame.colours == 0 end,
    "%s: no colours, neither its own nor the file's. Viewers choose some." },
  { function(frame) return #frame.colours > 0 and (frame.transparent or -1) >= #frame.colours end,
    "%s: the transparent index lies beyond the colours. Some viewers show no transparency there." },
  { function(frame)
      return frame.highest_used and #frame.colours > 0 and frame.highest_used >= #frame.colours end,
    "%s: pixels beyond the colours. What they look like is up to the viewer, and saving can't keep them all." },
  { function(frame) return frame.own_colours and frame.highest_used and spare(frame.colours, frame.highest_used) > 0 end,
    "%s: the last half of its own colours, or more, is unused. A smaller table would do." },
  { function(frame) return frame.disposal > kHighestDisposal end, "%s: a disposal that no one has defined." },
}

-- Findings in the file's bytes that are told above in other words.
local kTold = { index_beyond_table = true, transparent_beyond_table = true }

local function images(numbers) return (#numbers == 1 and "Image " or "Images ") .. text.ranges(numbers) end

-- The sentences about what survey.of() found.
function warnings.of(found)
  local sentences = {}
  local function say(...) sentences[#sentences + 1] = (...):format(select(2, ...)) end

  if #found.frames == 0 then say("There is no image.") end
  if found.screen_width * found.screen_height == 0 then
    say("The logical screen is %d × %d pixels. Viewers guess its size.", found.screen_width, found.screen_height)
  end
  if found.width * found.height > 0 and not composing.can_draw(found.width, found.height) then
    say("The screen is %d × %d pixels, more than many viewers can show. It is not drawn here.", found.width, found.height)
  end
  if #found.colours > 0 and found.background >= #found.colours then
    say("The background index, %d, lies beyond the %d colours of the global table.", found.background, #found.colours)
  end
  local unused = spare(found.colours, survey.highest_used(found.counts))
  if #found.frames > 0 and #found.colours > 0 and unused == #found.colours then
    say("Global table: no image uses it.")
  elseif #found.frames > 0 and unused > 0 then
    say("Global table: the last %d of its %d colours are unused. A smaller table would do.", unused, #found.colours)
  end
  for _, row in ipairs(kAboutFrames) do
    local applies, sentence = table.unpack(row)
    local numbers = {}
    for _, frame in ipairs(found.frames) do
      if applies(frame, found) then numbers[#numbers + 1] = frame.number end
    end
    if #numbers > 0 then say(sentence, images(numbers)) end
  end
  for _, block in ipairs(found.blocks) do
    if block.extension and block.extension.damaged then
      say("Block %d (%s): too short to be read.", block.index, block.extension.kind)
    end
  end
  for _, group in ipairs(found.findings) do
    if not kTold[group.kind] then say("%s: %s.", (group.place:gsub("^%l", string.upper)), group.meaning) end
  end
  return sentences
end

return warnings
