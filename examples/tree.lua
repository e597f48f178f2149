-- Prints the tree of each GIF file: the screen, every block by its index, and the sums.
--
--   gifhost examples/tree.lua FILE...
--
-- Nothing is taken for granted: damaged files print as far as they can be read. Sections are those of GIF89a.

local kLongestText = 60 -- bytes of a comment or text that are shown

-- --- Words --------------------------------------------------------------------------------------------------------

local function count(number, noun)
  return ("%d %s%s"):format(number, noun, number == 1 and "" or "s")
end

-- Bytes between quotes, with everything but printable ASCII escaped.
local function quoted(bytes)
  local names = { ["\n"] = "\\n", ["\r"] = "\\r", ["\t"] = "\\t", ['"'] = '\\"', ["\\"] = "\\\\" }
  local shown = bytes:sub(1, kLongestText):gsub('[%c"\\\127-\255]', function(c)
    return names[c] or ("\\x%02X"):format(c:byte())
  end)
  return '"' .. shown .. '"' .. (#bytes > kLongestText and "..." or "")
end

local function size(picture_or_screen)
  return ("%d x %d"):format(picture_or_screen.Width, picture_or_screen.Height)
end

-- A colour table with its owner's flags: "64 colours, sorted".
local function colours(owner)
  local palette = owner.Palette
  return count(palette and palette.Count or 0, "colour") .. (owner.Sorted and ", sorted" or "")
end

-- Fields that are present, between commas.
local function list(...)
  local present = {}
  for _, field in ipairs { ... } do
    if field ~= "" then present[#present + 1] = field end
  end
  return table.concat(present, ", ")
end

-- --- Extensions -----------------------------------------------------------------------------------------------------

local function sub_blocks(extension)
  local blocks = {}
  for i, data in pairs(extension) do blocks[i + 1] = data.DataString end
  return blocks
end

-- Section 23. The delay and the transparent index are those of the image that follows.
local function graphic_control(blocks)
  local disposals = { [0] = "", "keep", "restore background", "restore previous" }
  local packed, delay_cs, transparent = ("<BI2B"):unpack(blocks[1])
  local disposal = packed >> 2 & 7
  local text = list(
    ("delay %.2f s"):format(delay_cs / 100),
    disposal > 0 and ("disposal %d (%s)"):format(disposal, disposals[disposal] or "unknown") or "",
    packed & 1 ~= 0 and ("transparent %d"):format(transparent) or "",
    packed & 2 ~= 0 and "waits for input" or "")
  return text, { delay_cs = delay_cs }
end

-- Section 24.
local function comment(blocks)
  return quoted(table.concat(blocks))
end

-- Section 25: a grid of characters.
local function plain_text(blocks)
  local left, top, width, height, cell_width, cell_height, ink, paper = ("<I2I2I2I2BBBB"):unpack(blocks[1])
  return list(
    quoted(table.concat(blocks, "", 2)),
    ("%d x %d at (%d, %d)"):format(width, height, left, top),
    ("cells %d x %d"):format(cell_width, cell_height),
    ("colours %d on %d"):format(ink, paper))
end

-- 0 stands for ever, nil for an animation that says nothing.
local function loops_text(loops)
  return not loops and "" or loops == 0 and "loops forever" or "loops " .. count(loops, "time")
end

-- Section 26: eight characters of identifier, three of authentication code. Looping is that of the Netscape browser.
local function application(blocks)
  local name, code = blocks[1]:sub(1, 8), blocks[1]:sub(9, 11)
  local looping = (name .. code == "NETSCAPE2.0" or name .. code == "ANIMEXTS1.0") and blocks[2] or ""
  local loops = #looping >= 3 and looping:byte(1) & 7 == 1 and ("<I2"):unpack(looping, 2) or nil
  return list(quoted(name .. code), loops_text(loops)), { loops = loops }
end

-- By label: a name, the bytes that the first sub-block must have, and what tells the rest.
local kExtensions = {
  [0x01] = { "plain text", 12, plain_text },
  [0xF9] = { "graphic control", 4, graphic_control },
  [0xFE] = { "comment", 0, comment },
  [0xFF] = { "application", 11, application },
}

-- The name and the description of an extension, and what it says about the animation.
local function describe_extension(extension)
  local blocks = sub_blocks(extension)
  local bytes = #table.concat(blocks)
  local sizes = ("%s in %s"):format(count(bytes, "byte"), count(#blocks, "sub-block"))
  local name, least, describe = table.unpack(kExtensions[extension.Marker] or {})
  if not name then return ("extension 0x%02X"):format(extension.Marker), sizes, {} end
  if #(blocks[1] or "") < least then return name, "damaged, " .. sizes, {} end

  local text, facts = describe(blocks)
  return name, name == "graphic control" and text or list(text, sizes), facts or {}
end

-- --- Images and the screen ------------------------------------------------------------------------------------------

-- Sections 20 and 21.
local function describe_image(picture)
  local place = ("(%d, %d)"):format(picture.Left, picture.Top)
  local flags = list(
    picture.Interlace and "interlaced" or "",
    picture.HasPalette and "local table of " .. colours(picture) or "")
  return (("%-11s at %-11s %s"):format(size(picture), place, flags):gsub(" +$", ""))
end

-- Section 18. An aspect byte of 0 gives no ratio.
local function describe_screen(screen)
  local aspect = screen.Aspect
  return list(
    size(screen) .. " pixels",
    count(screen.ColorResolution, "bit") .. " per primary colour",
    ("background %d"):format(screen.BackgroundColor),
    aspect > 0 and ("pixel aspect %.2f"):format((aspect + 15) / 64) or "")
end

-- --- The tree ---------------------------------------------------------------------------------------------------------

local function print_line(index, name, text)
  print(("  %5s  %-16s %s"):format(index, name, text))
end

-- One block's line; adds to the sums.
local function print_block(index, block, sums)
  if block.Picture then
    print_line(index, "image", describe_image(block.Picture))
    sums.images = sums.images + 1
    sums.pixels = sums.pixels + block.Picture.Width * block.Picture.Height
  elseif block.Extension then
    local name, text, facts = describe_extension(block.Extension)
    print_line(index, name, text)
    sums.extensions = sums.extensions + 1
    sums.delay_cs = sums.delay_cs + (facts.delay_cs or 0)
    sums.loops = facts.loops or sums.loops
  else
    print_line(index, "nothing", ("introducer 0x%02X"):format(block.Intro))
  end
end

local function print_sums(sums)
  print_line("", "sum", list(
    count(sums.images, "image"),
    count(sums.extensions, "extension"),
    count(sums.pixels, "pixel"),
    sums.delay_cs > 0 and ("%.2f s"):format(sums.delay_cs / 100) or "",
    loops_text(sums.loops)))
end

local function print_tree(path, gif)
  print(path)
  print_line("", "version", gif.Header)
  print_line("", "logical screen", describe_screen(gif.Screen))
  print_line("", "global table", gif.Screen.HasPalette and colours(gif.Screen) or "none")

  local sums = { images = 0, extensions = 0, pixels = 0, delay_cs = 0 }
  for i, block in pairs(gif) do print_block(i, block, sums) end
  print_sums(sums)
end

-- --- The files ---------------------------------------------------------------------------------------------------------

local status = 0
if #arg == 0 then
  io.stderr:write("tree.lua: name one GIF file or more\n")
  status = 2
end
for i, path in ipairs(arg) do
  local gif = FolderItem(path):OpenAsGIFZKV()
  if gif then
    if i > 1 then print() end
    print_tree(path, gif)
  else
    io.stderr:write(path, ": no GIF file\n")
    status = 1
  end
end
os.exit(status, true)
