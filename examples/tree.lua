-- Prints the tree of each GIF file: the screen, every block by its index, and the sums.
--
--   gifhost examples/tree.lua [OPTION...] [PATH...]
--
-- A PATH is a file or a folder; of a folder all files named *.gif count. Nothing is taken for granted: damaged files print
-- as far as they can be read.

local blocks, command, extensions = require "gif.blocks", require "gif.command", require "gif.extensions"
local files, json, many = require "gif.files", require "gif.json", require "gif.many"
local scanning, text = require "gif.scanning", require "gif.text"
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
  return (flags == "" and "%-11s at %s" or "%-11s at %-11s %s"):format(text.size(image), place, flags)
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

-- A piece of the file stands before its line: its offset and length.
local function print_line(index, name, description, piece)
  local place = piece and ("%10s %9s"):format(text.grouped(piece.offset), text.grouped(piece.length)) or ""
  io.write(("%s  %5s  %-16s %s\n"):format(place, index, name, description))
end

-- What an image's data consist of.
local function describe_data(image)
  return list {
    image.code_size and "code size " .. image.code_size or "", count(image.compressed_bytes, "byte"),
    count(image.codes, "code"), count(image.clear_codes, "clear code"), count(image.pixels, "pixel") }
end

local function print_block(block, with_hex, piece)
  if block.image then
    print_line(block.index, "image", describe_image(block.image), piece)
    if piece then print_line("", "  data", describe_data(piece.image), piece.image.data or { offset = 0, length = 0 }) end
  elseif block.extension then
    print_line(block.index, extensions.name(block.extension), extensions.describe(block.extension), piece)
    if with_hex then print((text.hex(extensions.payload(block.extension)):gsub("[^\n]+", "           %0"))) end
  else
    print_line(block.index, "nothing", ("introducer 0x%02X"):format(block.introducer), piece)
  end
end

-- With a scan of the file: offsets and sizes, and what is damaged or odd.
local function print_tree(path, gif, with_hex, scan)
  local nothing = scan and { offset = 0, length = 0 }
  print(text.shown(path))
  print_line("", "version", gif.Header, scan and { offset = 0, length = math.min(6, scan.size) })
  print_line("", "logical screen", describe_screen(gif.Screen), scan and scan.screen or nothing)
  print_line("", "global table", gif.Screen.HasPalette and colours(gif.Screen) or "none", scan and scan.table or nothing)

  local sums, i = blocks.sums {}, 0
  for block in blocks.each(gif) do  -- there may be very many: none is kept
    i = i + 1
    print_block(block, with_hex, scan and scan.blocks[i])
    blocks.add(sums, block)
  end
  print_line("", "sum", list {
    count(sums.images, "image"),
    count(sums.extensions, "extension"),
    count(sums.pixels, "pixel"),
    sums.delay_cs > 0 and text.seconds(sums.delay_cs) or "",
    sums.loops and extensions.loops_text(sums.loops) or "" }, scan and { offset = 0, length = scan.size })
  for _, group in ipairs(scan and scanning.groups(scan) or {}) do
    print_line("", group.damage and "damage" or "odd", group.text)
  end
end

-- --- For programs ----------------------------------------------------------------------------------------------------

-- A colour table as "#RRGGBB" texts; none when its owner has none.
local function table_values(owner)
  if not owner.HasPalette or not owner.Palette then return nil end
  local palette, values = owner.Palette, {}
  for i = 0, palette.Count - 1 do values[i + 1] = ("#%06X"):format(palette:Value(i)) end
  return { colours = json.list(values), sorted = owner.Sorted }
end

local function checksum(bytes) return ("%08x"):format(host.crc32(bytes)) end

-- Of a graphic control, an image's pixels or an extension's bytes: what tells copies from each other.
local function block_values(block, with_hex, piece)
  local image, extension = block.image, block.extension
  local values = { index = block.index, type = image and "image" or extension and extensions.name(extension) or "nothing" }
  values.offset, values.length = piece.offset, piece.length
  if image then
    local data = piece.image
    values.data = {
      code_size = data.code_size, sub_blocks = data.sub_blocks, bytes = data.compressed_bytes, codes = data.codes,
      clear_codes = data.clear_codes, pixels = data.pixels }
    values.left, values.top, values.width, values.height = image.Left, image.Top, image.Width, image.Height
    values.interlaced, values.table = image.Interlace, table_values(image)
    values.crc32 = checksum(tostring(image.Data or ""))
  end
  for name, value in pairs(not image and extension or {}) do
    if name ~= "kind" and name ~= "sub_blocks" then values[name] = value end
  end
  if extension and not image then
    local payload = extensions.payload(extension)
    values.crc32 = checksum(payload)
    values.hex = with_hex and payload:gsub(".", function(c) return ("%02x"):format(c:byte()) end) or nil
  end
  return values
end

local function json_values(gif, bytes, with_hex, scan)
  local all, screen, values = blocks.read(gif), gif.Screen, {}
  for i, block in ipairs(all) do values[i] = block_values(block, with_hex, scan.blocks[i]) end
  return {
    findings = json.list(scan.findings), trailer = scan.trailer,
    version = gif.Header, bytes = bytes, blocks = json.list(values), sum = blocks.sums(all),
    screen = {
      width = screen.Width, height = screen.Height, color_resolution = screen.ColorResolution,
      background = screen.BackgroundColor, aspect = screen.Aspect, table = table_values(screen) } }
end

-- --- Queries ---------------------------------------------------------------------------------------------------------

-- What --where may ask of a file.
local function facts(path, gif, bytes)
  local all, screen = blocks.read(gif), gif.Screen
  local sums, values = blocks.sums(all), { tables = 0, interlaced = 0, comments = 0, plain_texts = 0, unknown = 0 }
  for _, block in ipairs(all) do
    local image, extension = block.image, block.extension
    if image and image.HasPalette then values.tables = values.tables + 1 end
    if image and image.Interlace then values.interlaced = values.interlaced + 1 end
    local kind = extension and not extension.kind and "unknown" or extension and extension.kind:gsub(" ", "_") .. "s"
    if kind and values[kind] then values[kind] = values[kind] + 1 end
  end
  values.file, values.bytes, values.version = path, bytes, gif.Header
  values.width, values.height, values.aspect = screen.Width, screen.Height, screen.Aspect
  values.colours = screen.HasPalette and screen.Palette.Count or 0
  values.images, values.extensions, values.pixels = sums.images, sums.extensions, sums.pixels
  values.seconds, values.loops = sums.delay_cs / 100, sums.loops
  return values
end

local condition_kind = {
  name = "a condition, such as 'images > 1 and not loops'",
  read = function(given)
    local asked = {}
    local condition = load("return " .. given, "=where", "t", setmetatable({}, { __index = function(_, name)
      if asked.values[name] ~= nil then return asked.values[name] end
      return _G[name]
    end }))
    return condition and function(values)
      asked.values = values
      local done, holds = pcall(condition)
      if not done then command.fail("--where: " .. tostring(holds)) end
      return holds
    end
  end }

-- --- The files ---------------------------------------------------------------------------------------------------------

local options, paths = command.parse {
  about = "Prints the tree of each GIF file: the screen, every block by its index, and the sums.",
  operands = "PATH...",
  operands_with = { ["files-from"] = "[PATH...]" },
  plugin = "designed",
  options = {
    { "--json", "one line of JSON for each file; delays in hundredths of a second (\"_cs\")" },
    { "--hex", "the bytes of extensions too" },
    { "--offsets", "where each block stands and how long it is, what images' data consist of, what is damaged or odd" },
    { "--where CONDITION", "only the names of files for which it holds; with --json their lines", condition_kind },
    table.unpack(many.options) },
  more = [[
Conditions are Lua: file, bytes, version, width, height, aspect, colours (of the global table), tables (of images),
images, interlaced, extensions, comments, plain_texts, unknown, pixels, seconds, loops (nil when nothing is said).]],
}

local where, with_hex = options.where, options.hex

if options.json and many.is_asked_for(options, paths) then
  local _, failed = many.run {
    options = options, paths = paths,
    work = function(path)
      local settled, unknown = files.settled(path)
      if not settled then return nil, unknown end
      local gif, bytes = files.open_gif(settled)
      if not gif then return nil, bytes end
      if where and not where(facts(path, gif, bytes)) then return { left_out = true } end
      return json_values(gif, bytes, with_hex, scanning.of(settled))
    end }
  os.exit(failed == 0, true)
end

local status, printed = 0, false
many.each(paths, options["files-from"], function(path)
  local settled, unknown = files.settled(path)
  local gif, bytes
  if settled then gif, bytes = files.open_gif(settled) end
  if not gif then
    command.complain(unknown or bytes)
    status = 1
  elseif where and not where(facts(path, gif, bytes)) then
    return
  elseif options.json then
    print(json.line(path, json_values(gif, bytes, with_hex, scanning.of(settled))))
  elseif where then
    print(text.shown(path))
  else
    if printed then print() end
    printed = true
    print_tree(path, gif, with_hex, options.offsets and scanning.of(settled))
  end
end)
os.exit(status, true)
