-- Graphic controls (GIF89a, section 23) in lists of free-standing blocks.

local building, extensions = require "gif.building", require "gif.extensions"

local controls = {}

local kLongestDelayCs = 65535

-- What a block says when it is a graphic control that is whole.
function controls.read(block)
  local extension = block.Extension
  local said = extension and extension.Marker == 0xF9 and extensions.read(extension)
  return said and not said.damaged and said or nil
end

-- The images, each with what the control before it says, and the blocks that are neither.
function controls.take_apart(blocks)
  local frames, others, control = {}, {}, nil
  for _, block in ipairs(blocks) do
    local said = controls.read(block)
    if said then
      control = said
    elseif block.Picture then
      frames[#frames + 1] = { block = block, image = block.Picture, control = control or { delay_cs = 0, disposal = 0 } }
      control = nil
    else
      others[#others + 1] = block
    end
  end
  return frames, others
end

-- Sets the delay of each image to change(delay), in hundredths of a second. Gives the list with a control before
-- every image.
function controls.with_delays(blocks, change)
  local result, control = {}, nil
  for _, block in ipairs(blocks) do
    if controls.read(block) then control = block end
    if block.Picture then
      if not control then
        control = building.control { delay_cs = 0, disposal = 0 }
        result[#result + 1] = control
      end
      local data = control.Extension.FirstData
      local packed, delay_cs, rest = ("<BI2"):unpack(data.DataString)
      data.DataString = ("<BI2"):pack(packed, math.min(change(delay_cs), kLongestDelayCs)) .. data.DataString:sub(rest)
      control = nil
    end
    result[#result + 1] = block
  end
  return result
end

return controls
