-- Smaller files that show the same: images cut to what changes, pixels that are there already made transparent, frames
-- that show nothing new joined, tables without unused colours. All is drawn on a film (class Film), which finds the
-- images that show it again from few bytes.

local building, document, extensions = require "gif.building", require "gif.document", require "gif.extensions"
local files, progress = require "gif.files", require "gif.progress"

local optimising = {}

local kRestorePrevious, kLongestDelayCs = 3, 65535
local kLeastDelayCs = 2 -- players take shorter ones for longer: they cannot be added up
local kPlainText = 0x01

local function bytes_of(palette)
  local parts = {}
  for i = 0, palette.Count - 1 do parts[i + 1] = (">I3"):pack(palette:Value(i)) end
  return table.concat(parts)
end

-- The colours of a film's table.
function optimising.colours_from(bytes)
  local colours = {}
  for at = 1, #bytes, 3 do colours[#colours + 1] = (">I3"):unpack(bytes, at) end
  return colours
end

-- What a block says when it is a graphic control that is whole.
local function read_control(block)
  local extension = block.Extension
  local said = extension and extension.Marker == 0xF9 and extensions.read(extension)
  return said and not said.damaged and said or nil
end

-- Draws an image; gives the reason when that cannot be done for sure.
local function draw(film, image, control, number, shared)
  local colours = image.HasPalette and bytes_of(image.Palette) or shared
  if not colours then return "image " .. number .. " has no colours" end
  if control.disposal > kRestorePrevious then return "image " .. number .. " has a disposal that no one has defined" end
  local drawn = film:Draw(image.Data, colours, control.transparent or -1, image.Left, image.Top, image.Width, image.Height,
    control.disposal)
  return not drawn and "image " .. number .. " has pixels beyond its colours" or nil
end

-- Whether one frame can be shown for as long as two.
function optimising.can_join(a, b)
  local kept = not (a.waits_for_input or b.waits_for_input)
  return kept and math.min(a.delay_cs, b.delay_cs) >= kLeastDelayCs and a.delay_cs + b.delay_cs <= kLongestDelayCs
end

-- The images of a film that is planned, each as a list of a control and an image. frames: delay_cs and waits_for_input of
-- each frame.
function optimising.stored(film, frames)
  local result, step = {}, progress.start(#frames, "frames")
  for i, frame in ipairs(frames) do
    film:Next()
    local colours = film.Colors
    local image = building.image {
      left = film.Left, top = film.Top, width = film.Width, height = film.Height, pixels = film:Pixels(),
      colours = #colours > 0 and optimising.colours_from(colours) or nil }
    local control = building.control {
      disposal = film.Disposal, delay_cs = frame.delay_cs, waits_for_input = frame.waits_for_input,
      transparent = film.Transparent >= 0 and film.Transparent or nil }
    result[i] = { control, image }
    step()
  end
  return result
end

local function set_table(screen, colours)
  local background = screen.HasPalette and screen.BackgroundColor < screen.Palette.Count and
    screen.Palette:Value(screen.BackgroundColor)
  screen.HasPalette, screen.BackgroundColor = #colours > 0, 0
  if #colours == 0 then return end
  screen.Palette, screen.PaletteDepth = building.palette(colours)
  for i, colour in ipairs(colours) do
    if colour == background then screen.BackgroundColor = i - 1 end
  end
end

-- A list of blocks that shows what the given one does; the screen gets another table. All blocks other than images and
-- graphic controls stay. tolerance: how far a colour may be from the right one where that makes it smaller (0).
-- nil and the reason when the images cannot be drawn as every player would.
function optimising.optimised(blocks, screen, tolerance)
  local shared = screen.HasPalette and bytes_of(screen.Palette) or nil
  local film, order, frames, control, number = Film(screen.Width, screen.Height), {}, {}, nil, 0
  for _, block in ipairs(blocks) do
    local image = block.Picture
    local said = read_control(block)
    if said then
      control = said
    elseif image then
      control = control or { delay_cs = 0, disposal = 0 }
      if image.Left + image.Width > screen.Width or image.Top + image.Height > screen.Height then
        return nil, "image " .. number .. " reaches outside the screen"
      end
      local reason = draw(film, image, control, number, shared)
      if reason then return nil, reason end
      number = number + 1
      if #frames == 0 or film.Changed or not optimising.can_join(frames[#frames], control) then
        film:Keep()
        frames[#frames + 1] = { delay_cs = control.delay_cs, waits_for_input = control.waits_for_input }
        order[#order + 1] = #frames
      else
        frames[#frames].delay_cs = frames[#frames].delay_cs + control.delay_cs
      end
      control = nil
    elseif block.Extension and block.Extension.Marker == kPlainText then
      return nil, "it holds plain text, which is drawn between images"
    else
      order[#order + 1] = block
    end
  end
  if #frames == 0 then return blocks end
  if not film:Plan(256, true, 0, 0, tolerance or 0) then return nil, "it shows too many colours at once" end

  local images, result = optimising.stored(film, frames), {}
  set_table(screen, optimising.colours_from(film.Table))
  for _, entry in ipairs(order) do
    if images[entry] then
      table.move(images[entry], 1, 2, #result + 1, result)
    else
      result[#result + 1] = entry
    end
  end
  return result
end

-- A document that shows what the given one does, from fewer bytes; the given one itself where that takes no more; nil and
-- the reason. tolerance as above.
---@param of Document
---@return Document?
---@return string? why
function optimising.smaller(of, tolerance)
  local gif, list = of:build(), {}
  for _, block in pairs(gif) do list[#list + 1] = block end
  local result, screen = GIFZKV(), gif.Screen:Clone()
  local blocks, why = optimising.optimised(list, screen, tolerance)
  if not blocks then return nil, why end
  result.Screen, result.Header = screen, "GIF89a" -- its graphic controls are extensions
  for _, block in ipairs(blocks) do result:Add(block) end
  return files.saved_size(result) < files.saved_size(gif) and document.read(result) or of
end

return optimising
