-- One animation after the other.

local composing, document = require "gif.composing", require "gif.document"

local joining = {}

local kRestoreBackground = 2 -- disposal: GIF89a, section 23

local function covers(frame, of)
  return not frame.transparent and frame.left <= 0 and frame.top <= 0 and
    frame.left + frame.width >= of.width and frame.top + frame.height >= of.height
end

-- Nothing of an animation may stay on the screen of the next one: its last frame is made whole and cleared.
local function make_last_whole(of)
  local last = of.frames[#of.frames]
  local seen
  composing.play(of, {}, function(frame, canvas) if frame == last then seen = composing.seen(canvas) end end)
  local exact
  last.pixels, last.colours, last.transparent, exact = composing.indexed(seen)
  last.left, last.top, last.width, last.height, last.disposal = 0, 0, of.width, of.height, kRestoreBackground
  return exact
end

-- Joins documents into the first: its screen grows to the largest, the others stand in the middle of it. What says how
-- often to repeat comes from the first that says it. Gives the joined document and whether all colours were kept.
---@param documents Document[]
---@return Document
---@return boolean
function joining.join(documents)
  local first, width, height, exact, loops = documents[1], 0, 0, true, nil
  for _, each in ipairs(documents) do
    width, height = math.max(width, each.width), math.max(height, each.height)
    if loops == nil then loops = each:loops() end
  end
  local frames = {}
  for i, each in ipairs(documents) do
    local next_one = documents[i % #documents + 1]
    local next_frame = next_one.frames[1]
    if #documents > 1 and next_frame and not covers(next_frame, { width = width, height = height }) and #each.frames > 0 then
      exact = make_last_whole(each) and exact
    end
    for _, frame in ipairs(each.frames) do
      if each ~= first and not frame.colours and each.colours then frame.colours = each.colours end
      frame.left, frame.top = frame.left + (width - each.width) // 2, frame.top + (height - each.height) // 2
      frames[#frames + 1] = frame
    end
    if each ~= first then each:set_loops(nil) end
  end
  local list = {}
  for _, each in ipairs(documents) do table.move(each.blocks, 1, #each.blocks, #list + 1, list) end
  first.blocks, first.frames, first.width, first.height, first.resized = list, frames, width, height, true
  for i, block in ipairs(list) do block.index = i - 1 end
  for i, frame in ipairs(frames) do frame.number = i - 1 end
  if loops then first:set_loops(loops) end
  return first, exact
end

-- Opens and joins files, the last frame of each staying for pause_cs if that is given; nil and the reason.
function joining.join_files(paths, pause_cs)
  local documents = {}
  for i, path in ipairs(paths) do
    local opened, why = document.open(path)
    if not opened then return nil, why end
    if #opened.frames == 0 then return nil, path .. ": holds no image" end
    if pause_cs then opened.frames[#opened.frames].delay_cs = pause_cs end
    documents[i] = opened
  end
  return joining.join(documents)
end

return joining
