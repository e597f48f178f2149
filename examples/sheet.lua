-- Draws a contact sheet of an animation: what a viewer shows after each image, in order, in one PNG file.
--
--   gifhost examples/sheet.lua IN.gif OUT.png
--
-- Under each frame stand its number and how long it stays; the bar is as long as the frame stays, the longest one's
-- filling the width. Transparent areas show a checkerboard. Large animations are scaled down, tiny ones up; of very
-- long ones every second, third, ... frame is drawn. Sections are those of GIF89a.

local kLargestSide = 240 -- pixels of a frame on the sheet
local kSmallestSide = 72
local kMostFrames = 100
local kMostPixels = 1 << 26 -- of the logical screen
local kGap = 12 -- around frames
local kCaptionGap = 2
local kLineHeight, kCharacterWidth = 13, 6
local kBarHeight = 3
local kPaper, kInk, kBar, kBarGround = 0xF4F4F1, 0x30343A, 0x3B82C4, 0xDCDCD6
local kCheckerSize, kLightCheck, kDarkCheck = 8, 0xFFFFFF, 0xD9D9D9
local kWhite = 0xFFFFFF -- in a mask: transparent

local function give_up(status, message)
  io.stderr:write("sheet.lua: ", message, "\n")
  os.exit(status, true)
end

-- --- Reading the animation --------------------------------------------------------------------------------------------

-- What a graphic control extension (section 23) says about the image after it.
local function graphic_control(extension)
  local bytes = extension.Count > 0 and extension:Data(0).DataString or ""
  if #bytes < 4 then return nil end
  local packed, delay_cs, transparent = ("<BI2B"):unpack(bytes)
  return { disposal = packed >> 2 & 7, delay_cs = delay_cs, transparent = packed & 1 ~= 0 and transparent or -1 }
end

-- The images in order, each with what its graphic control says.
local function frames_of(gif)
  local frames, control = {}, nil
  for _, block in pairs(gif) do
    if block.Extension and block.Extension.Marker == 0xF9 then control = graphic_control(block.Extension) end
    if block.Picture then
      local frame = control or { disposal = 0, delay_cs = 0, transparent = -1 }
      frame.image, control = block.Picture, nil
      frames[#frames + 1] = frame
    end
  end
  return frames
end

-- The logical screen; files that give none get the room that their images take.
local function screen_size(gif, frames)
  local width, height = gif.Screen.Width, gif.Screen.Height
  if width > 0 and height > 0 then return width, height end
  for _, frame in ipairs(frames) do
    width = math.max(width, frame.image.Left + frame.image.Width)
    height = math.max(height, frame.image.Top + frame.image.Height)
  end
  return width, height
end

-- --- The canvas that images are drawn on -----------------------------------------------------------------------------

local function new_canvas(width, height)
  local canvas = Picture(width, height)
  canvas.Mask = Picture(width, height)
  canvas.Mask:FillRect(0, 0, width, height, kWhite)
  return canvas
end

local function copy_of(canvas)
  local copy = new_canvas(canvas.Width, canvas.Height)
  copy:DrawPicture(canvas, 0, 0)
  copy.Mask:DrawPicture(canvas.Mask, 0, 0)
  return copy
end

-- The image's opaque pixels cover what was there, and make the canvas opaque where they lie.
local function draw_frame(canvas, frame)
  local image = frame.image
  local picture, mask = image:MakePicture(), image:MakeMask(frame.transparent)
  if not picture or not mask then return end -- an image without pixels or colours
  local black = Picture(image.Width, image.Height)
  picture.Mask, black.Mask = mask, mask
  canvas:DrawPicture(picture, image.Left, image.Top)
  canvas.Mask:DrawPicture(black, image.Left, image.Top)
end

-- Calls show(frame number, canvas) for what is seen after each image. The disposal of an image takes effect just before
-- the next one is drawn.
local function play(frames, width, height, show)
  local canvas = new_canvas(width, height)
  for i, frame in ipairs(frames) do
    local image, before = frame.image, frame.disposal == 3 and copy_of(canvas)
    draw_frame(canvas, frame)
    show(i, canvas)
    if frame.disposal == 2 then
      canvas.Mask:FillRect(image.Left, image.Top, image.Width, image.Height, kWhite)
    elseif frame.disposal == 3 then
      canvas = before
    end
    collectgarbage() -- pictures are large, and Lua sees only their handles
  end
end

-- --- The sheet ---------------------------------------------------------------------------------------------------------

local function checkerboard(width, height)
  local board = Picture(width, height)
  board:FillRect(0, 0, width, height, kLightCheck)
  for y = 0, height - 1, kCheckerSize do
    for x = y // kCheckerSize % 2 * kCheckerSize, width - 1, 2 * kCheckerSize do
      board:FillRect(x, y, kCheckerSize, kCheckerSize, kDarkCheck)
    end
  end
  return board
end

-- Size of a frame on the sheet: scaled down to the largest side, or up by a whole number.
local function shown_size(width, height)
  local longest = math.max(width, height)
  local scale = longest > kLargestSide and kLargestSide / longest or math.max(1, kSmallestSide // longest)
  return math.max(1, math.floor(width * scale)), math.max(1, math.floor(height * scale))
end

-- About as many as give the whole a shape of 3 to 2; of these, those that leave the fewest places empty.
local function best_columns(count, cell_width, cell_height)
  local ideal = math.ceil(math.sqrt(count * 1.5 * cell_height / cell_width))
  local best, fewest = 1, math.huge
  for _, columns in ipairs { ideal, ideal + 1, ideal - 1 } do
    local empty = columns > 0 and columns <= count and -count % columns or math.huge
    if empty < fewest then best, fewest = columns, empty end
  end
  return best
end

local function lay_out(count, width, height, title)
  local layout = { shown_width = width, shown_height = height }
  layout.cell_width = math.max(width, kSmallestSide) + kGap
  layout.cell_height = height + kCaptionGap + kLineHeight + kBarHeight + kGap
  layout.columns = best_columns(count, layout.cell_width, layout.cell_height)
  layout.rows = math.ceil(count / layout.columns)
  layout.top = kGap + kLineHeight + kGap
  layout.width = math.max(layout.columns * layout.cell_width, #title * kCharacterWidth + kGap) + kGap
  layout.height = layout.top + layout.rows * layout.cell_height
  return layout
end

local function seconds(centiseconds) return ("%.2f s"):format(centiseconds / 100) end

-- The frame in its place, with number, delay and bar.
local function draw_cell(sheet, layout, place, number, frame, canvas, board, longest_cs)
  local x = kGap + place % layout.columns * layout.cell_width
  local y = layout.top + place // layout.columns * layout.cell_height
  local width, height = layout.shown_width, layout.shown_height
  sheet:DrawPicture(board, x, y)
  sheet:DrawPicture(canvas, x, y, width, height)

  local caption_y, bar_y = y + height + kCaptionGap, y + height + kCaptionGap + kLineHeight
  local caption_width, delay = layout.cell_width - kGap, seconds(frame.delay_cs)
  sheet:DrawText(x, caption_y, tostring(number), kInk)
  sheet:DrawText(x + caption_width - #delay * kCharacterWidth, caption_y, delay, kInk)
  sheet:FillRect(x, bar_y, caption_width, kBarHeight, kBarGround)
  if longest_cs > 0 then
    sheet:FillRect(x, bar_y, caption_width * frame.delay_cs // longest_cs, kBarHeight, kBar)
  end
end

local function draw_sheet(name, gif, frames)
  local width, height = screen_size(gif, frames)
  if width * height > kMostPixels then give_up(1, ("%d x %d pixels are too many for a sheet"):format(width, height)) end
  if width * height == 0 then give_up(1, "the images have no pixels") end

  local longest_cs, sum_cs = 0, 0
  for _, frame in ipairs(frames) do
    longest_cs, sum_cs = math.max(longest_cs, frame.delay_cs), sum_cs + frame.delay_cs
  end
  local step = math.ceil(#frames / kMostFrames)
  local title = ("%s  %d x %d  %d frame%s  %s"):format(
    name, width, height, #frames, #frames == 1 and "" or "s", seconds(sum_cs))

  local shown_width, shown_height = shown_size(width, height)
  local layout = lay_out(math.ceil(#frames / step), shown_width, shown_height, title)
  local sheet, board = Picture(layout.width, layout.height), checkerboard(shown_width, shown_height)
  sheet:FillRect(0, 0, layout.width, layout.height, kPaper)
  sheet:DrawText(kGap, kGap, title, kInk)
  play(frames, width, height, function(i, canvas)
    if (i - 1) % step > 0 then return end
    draw_cell(sheet, layout, (i - 1) // step, i - 1, frames[i], canvas, board, longest_cs)
  end)
  return sheet
end

if #arg ~= 2 then give_up(2, "name a GIF file and the PNG file to write") end
local input, output = table.unpack(arg)
local gif = FolderItem(input):OpenAsGIFZKV()
if not gif then give_up(1, input .. ": no GIF file") end
local frames = frames_of(gif)
if #frames == 0 then give_up(1, input .. ": no images") end

local sheet = draw_sheet(input:match("[^/]*$"), gif, frames)
local saved, problem = pcall(sheet.SavePNG, sheet, output)
if not saved then give_up(1, problem.message) end
print(("%s: %d x %d pixels, %d frames"):format(output, sheet.Width, sheet.Height, #frames))
