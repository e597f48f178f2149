-- Prints the tree of each GIF file: the screen, every block by its index, and the sums.
--
--   gifhost examples/tree.lua [--json] FILE...
--
-- Nothing is taken for granted: damaged files print as far as they can be read.

local blocks, command, extensions = require "gif.blocks", require "gif.command", require "gif.extensions"
local files, json, text = require "gif.files", require "gif.json", require "gif.text"
local count, list = text.count, text.list

-- --- For people ------------------------------------------------------------------------------------------------------

-- A colour table with its owner's flags: "64 colours, sorted".
local function colours(owner)
  local palette = owner.Palette
  return count(palette and palette.Count or 0, "colour") .. (owner.Sorted and ", sorted" or "")
end

-- GIF89a, sections 20 and 21.
local function describe_image(image)
  local place = ("(%d, %d)"):format(image.Left, image.Top)
  local flags = list {
    image.Interlace and "interlaced" or "",
    image.HasPalette and "local table of " .. colours(image) or "" }
  return (("%-11s at %-11s %s"):format(text.size(image), place, flags):gsub(" +$", ""))
end

-- GIF89a, section 18. An aspect byte of 0 gives no ratio.
local function describe_screen(screen)
  local aspect = screen.Aspect
  return list {
    text.size(screen) .. " pixels",
    count(screen.ColorResolution, "bit") .. " per primary colour",
    ("background %d"):format(screen.BackgroundColor),
    aspect > 0 and ("pixel aspect %.2f"):format((aspect + 15) / 64) or "" }
end

local function print_line(index, name, description)
  print(("  %5s  %-16s %s"):format(index, name, description))
end

local function print_block(block)
  if block.image then
    print_line(block.index, "image", describe_image(block.image))
  elseif block.extension then
    print_line(block.index, extensions.name(block.extension), extensions.describe(block.extension))
  else
    print_line(block.index, "nothing", ("introducer 0x%02X"):format(block.introducer))
  end
end

local function print_tree(path, gif)
  print(text.shown(path))
  print_line("", "version", gif.Header)
  print_line("", "logical screen", describe_screen(gif.Screen))
  print_line("", "global table", gif.Screen.HasPalette and colours(gif.Screen) or "none")

  local all = blocks.read(gif)
  for _, block in ipairs(all) do print_block(block) end
  local sums = blocks.sums(all)
  print_line("", "sum", list {
    count(sums.images, "image"),
    count(sums.extensions, "extension"),
    count(sums.pixels, "pixel"),
    sums.delay_cs > 0 and text.seconds(sums.delay_cs) or "",
    sums.loops and extensions.loops_text(sums.loops) or "" })
end

-- --- For programs ----------------------------------------------------------------------------------------------------

-- A colour table as "#RRGGBB" texts; none when its owner has none.
local function table_values(owner)
  if not owner.HasPalette or not owner.Palette then return nil end
  local palette, values = owner.Palette, {}
  for i = 0, palette.Count - 1 do values[i + 1] = ("#%06X"):format(palette:Value(i)) end
  return { colours = json.list(values), sorted = owner.Sorted }
end

local function block_values(block)
  local image, extension = block.image, block.extension
  local values = { index = block.index, type = image and "image" or extension and extensions.name(extension) or "nothing" }
  if image then
    values.left, values.top, values.width, values.height = image.Left, image.Top, image.Width, image.Height
    values.interlaced, values.table = image.Interlace, table_values(image)
  end
  for name, value in pairs(not image and extension or {}) do
    if name ~= "kind" and name ~= "sub_blocks" then values[name] = value end
  end
  return values
end

local function print_json(path, gif)
  local all, screen, values = blocks.read(gif), gif.Screen, {}
  for i, block in ipairs(all) do values[i] = block_values(block) end
  print(json.encode {
    file = path, version = gif.Header, blocks = json.list(values), sum = blocks.sums(all),
    screen = {
      width = screen.Width, height = screen.Height, color_resolution = screen.ColorResolution,
      background = screen.BackgroundColor, aspect = screen.Aspect, table = table_values(screen) } })
end

-- --- The files ---------------------------------------------------------------------------------------------------------

local options, paths = command.parse {
  about = "Prints the tree of each GIF file: the screen, every block by its index, and the sums.",
  operands = "FILE...",
  options = { { "--json", "one line of JSON for each file; delays in hundredths of a second (\"_cs\")" } },
}
local status, printed = 0, false
for _, path in ipairs(paths) do
  local gif, why = files.open_gif(path)
  if gif then
    if printed and not options.json then print() end
    printed = true;
    (options.json and print_json or print_tree)(path, gif)
  else
    command.complain(why)
    status = 1
  end
end
os.exit(status, true)
