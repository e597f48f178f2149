-- Draws a contact sheet of an animation: what a viewer shows after each image, in order, in one PNG file.
--
--   gifhost examples/sheet.lua IN.gif OUT.png
--
-- Under each frame stand its number and how long it stays; the bar is as long as the frame stays, the longest one's
-- filling the width. Transparent areas show a checkerboard. Large animations are scaled down, tiny ones up; of very
-- long ones every second, third, ... frame is drawn.

local command, composing, document = require "gif.command", require "gif.composing", require "gif.document"
local files, progress, text = require "gif.files", require "gif.progress", require "gif.text"

local kLargestSide = 240 -- pixels of a frame on the sheet
local kSmallestSide = 72
local kMostFrames = 100
local kSeconds = 5 -- that drawing may take
local kGap = 12 -- around frames
local kCaptionGap = 2
local kLineHeight, kCharacterWidth = 13, 6
local kBarHeight = 3
local kPaper, kInk, kBar, kBarGround = 0xF4F4F1, 0x30343A, 0x3B82C4, 0xDCDCD6
local kCheckerSize, kLightCheck, kDarkCheck = 8, 0xFFFFFF, 0xD9D9D9

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

-- The frame in its place, with number, delay and bar.
local function draw_cell(sheet, layout, place, frame, canvas, board, longest_cs)
  local x = kGap + place % layout.columns * layout.cell_width
  local y = layout.top + place // layout.columns * layout.cell_height
  local width, height = layout.shown_width, layout.shown_height
  sheet:DrawPicture(board, x, y)
  sheet:DrawPicture(canvas, x, y, width, height)

  local caption_y, bar_y = y + height + kCaptionGap, y + height + kCaptionGap + kLineHeight
  local caption_width, delay = layout.cell_width - kGap, text.seconds(frame.delay_cs)
  sheet:DrawText(x, caption_y, tostring(frame.number), kInk)
  sheet:DrawText(x + caption_width - #delay * kCharacterWidth, caption_y, delay, kInk)
  sheet:FillRect(x, bar_y, caption_width, kBarHeight, kBarGround)
  if longest_cs > 0 then
    sheet:FillRect(x, bar_y, caption_width * frame.delay_cs // longest_cs, kBarHeight, kBar)
  end
end

-- Gives the sheet, and the number of frames that time was left for.
local function draw_sheet(name, of)
  local width, height, frames = of.width, of.height, of.frames
  if not composing.can_draw(width, height) then
    command.fail(("%s: no sheet can be drawn of %d x %d pixels"):format(name, width, height))
  end

  local longest_cs = 0
  for _, frame in ipairs(frames) do longest_cs = math.max(longest_cs, frame.delay_cs) end
  local step = math.ceil(#frames / kMostFrames)
  local title = ("%s  %d x %d  %s  %s"):format(
    name, width, height, text.count(#frames, "frame"), text.seconds(of:duration_cs()))

  local shown_width, shown_height = shown_size(width, height)
  local layout = lay_out(math.ceil(#frames / step), shown_width, shown_height, title)
  local sheet, board = Picture(layout.width, layout.height), checkerboard(shown_width, shown_height)
  sheet:FillRect(0, 0, layout.width, layout.height, kPaper)
  sheet:DrawText(kGap, kGap, title, kInk)
  local advance, drawn, started = progress.start(#frames, "frames"), 0, os.clock()
  composing.play(of, {
    width = math.min(width, shown_width), height = math.min(height, shown_height),
    needed = function() return os.clock() - started < kSeconds end,
  }, function(frame, canvas)
    advance()
    drawn = drawn + 1
    if frame.number % step > 0 then return end
    draw_cell(sheet, layout, frame.number // step, frame, composing.seen(canvas), board, longest_cs)
  end)
  return sheet, drawn
end

local _, operands = command.parse {
  about = "Draws a contact sheet of an animation: what a viewer shows after each image, in one PNG file.",
  operands = "IN.gif OUT.png",
}
local input, output = table.unpack(operands)
local opened, why = document.open(input)
if not opened then command.fail(why) end
local frames = opened.frames
if #frames == 0 then command.fail(input .. ": no images") end

local sheet, drawn = draw_sheet(input:match("[^/]*$"), opened)
local saved, problem = files.save_png(sheet, output)
if not saved then command.fail(problem) end
print(("%s: %d x %d pixels, %s"):format(text.shown(output), sheet.Width, sheet.Height, text.count(#frames, "frame")))
if drawn < #frames then print(("  note: they take long; only the first %s are drawn"):format(text.grouped(drawn))) end
