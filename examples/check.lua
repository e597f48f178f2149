-- Checks GIF files: opens each, walks every part of it, renders all images, saves it and its clone, reads both back, and
-- looks for damage in its bytes.
--
--   gifhost examples/check.lua [OPTION...] [PATH...]
--
-- A PATH is a GIF file or a folder; of a folder all files named *.gif are checked, those in folders within it too.
-- Several processes share them, so that a file that breaks one does not stop the others.

local blocks, command, comparing = require "gif.blocks", require "gif.command", require "gif.comparing"
local composing, files, json = require "gif.composing", require "gif.files", require "gif.json"
local many, scanning, text = require "gif.many", require "gif.scanning", require "gif.text"

-- --- One file -----------------------------------------------------------------------------------------

-- A line for each property, entry and sub-block below a part of the tree. The pixels of an image are one.
local function values_of(part, names)
  local values = {}
  for i, name in ipairs(names) do values[i] = tostring(part[name]) end
  local palette = part.HasPalette and part.Palette
  for i = 0, palette and palette.Count - 1 or -1 do values[#values + 1] = tostring(palette:Value(i)) end
  return table.concat(values, " ")
end

local kScreenNames = { "Width", "Height", "ColorResolution", "BackgroundColor", "Aspect", "HasPalette", "Sorted" }
local kImageNames = { "Left", "Top", "Width", "Height", "Interlace", "HasPalette", "Sorted" }

-- The document as texts: the screen, then one for each block; the pixels of each image, by block; and the numbers of
-- the images that saving can't keep.
local function walk(gif, all)
  local screen, pixels, unfit = gif.Screen, {}, {}
  local texts = { [0] = gif.Header .. " " .. values_of(screen, kScreenNames) }
  for i, block in ipairs(all) do
    local image, extension = block.image, block.extension
    if image then
      texts[i], pixels[i] = values_of(image, kImageNames), tostring(image.Data or "")
      if not comparing.fit(pixels[i], image.HasPalette and image or screen) then unfit[i] = true end
    elseif extension then
      texts[i] = extension.label .. table.concat(extension.sub_blocks, "|")
    else
      texts[i] = tostring(block.introducer)
    end
  end
  return texts, pixels, unfit
end

-- Gives how many images differ that saving can't keep.
local function require_same(gif, what, texts, pixels, unfit)
  local other_texts, other_pixels = walk(gif, blocks.read(gif))
  if #other_texts ~= #texts then
    command.fail(("%s holds %s in place of %d"):format(what, text.count(#other_texts, "block"), #texts))
  end
  local not_kept = 0
  for i = 0, #texts do
    local same_pixels = other_pixels[i] == pixels[i]
    if other_texts[i] ~= texts[i] or not same_pixels and not unfit[i] then
      command.fail(("%s differs in %s"):format(what, i == 0 and "its screen" or "block " .. i - 1))
    end
    if not same_pixels then not_kept = not_kept + 1 end
  end
  return not_kept
end

-- Saves a document into the file and opens it from there.
local function saved(gif, path, what)
  if not FolderItem(path):SaveAsGIFZKV(gif) then command.fail(what .. " can't be saved") end
  return FolderItem(path):OpenAsGIFZKV() or command.fail(what .. " can't be read back")
end

-- Renders every image; gives the number of those that can't be shown.
local function render(all)
  local not_shown = 0
  for _, block in ipairs(all) do
    local picture = block.image and block.image:MakePicture()
    if block.image and not (picture and block.image:MakeMask()) then not_shown = not_shown + 1 end
    picture = nil
    composing.sweep(8 * (block.image and block.image.Width * block.image.Height or 0))
  end
  return not_shown
end

-- What is to be said of a file; fails when something of it is lost, or odd and that counts.
local function judged(path, says, not_kept, strict)
  local scan, why = scanning.of(path)
  if not scan then command.fail(why) end
  local groups, sentences = scanning.groups(scan), { says }
  for i, group in ipairs(groups) do sentences[i + 1] = group.text end
  local all = text.list(sentences, "; ")
  if groups[1] and groups[1].damage then command.fail(path .. ": damaged: " .. all) end
  if not_kept > 0 then command.fail(path .. ": not kept: " .. all) end
  if groups[1] and strict then command.fail(path .. ": odd: " .. all) end
  return all
end

local function check_file(path, strict)
  local settled, unknown = files.settled(path) -- it is read twice
  if not settled then command.fail(unknown) end
  local gif, why = files.open_gif(settled)
  if not gif then command.fail(why) end
  local all = blocks.read(gif)
  local texts, pixels, unfit = walk(gif, all)
  local not_shown = render(all)

  local scratch <const> = OutputFile()
  local copy = scratch.Path
  local not_kept = require_same(saved(gif, copy, "the document"), "the saved document", texts, pixels, unfit)
  require_same(saved(gif:Clone(), copy, "the clone"), "the saved clone", texts, pixels, unfit)

  local sums = blocks.sums(all)
  return judged(settled, text.list {
    text.count(sums.images, "image"), text.count(sums.extensions, "extension"), text.count(sums.pixels, "pixel"),
    not_shown > 0 and text.count(not_shown, "image") .. " without pixels or colours" or "",
    not_kept > 0 and text.count(not_kept, "image") .. " with pixels beyond the colours, which saving can't keep" or "" },
    not_kept, strict)
end

-- --- Many files, in several processes -----------------------------------------------------------------------------------

-- A line for people.
local function show(line, has_failed)
  local path = text.shown(json.name_in(line))
  local said = json.text_in(line, has_failed and "error" or "says")
  if said:sub(1, #path + 2) == path .. ": " then said = said:sub(#path + 3) end
  print(("%-6s  %s: %s"):format(has_failed and "FAILED" or "ok", path, said))
end

local options, paths = command.parse {
  about = "Opens, walks, renders and saves GIF files, and reads back what was saved. A PATH is a file or a folder.",
  operands = "PATH...",
  operands_with = { ["files-from"] = "[PATH...]" },
  plugin = "designed",
  options = { { "--json", "one line of JSON for each file" },
    { "--strict", "take what is odd for damage, too" }, table.unpack(many.options) },
}
if #paths == 1 and not many.is_asked_for(options, paths) then
  print(check_file(paths[1], options.strict))
else
  local count, failed = many.run {
    options = options, paths = paths, show = not options.json and show or nil,
    work = function(path)
      local says, why = command.attempt(check_file, path, options.strict)
      return says and { says = says }, why
    end }
  if not options.json then print(("%s, %d failed"):format(text.count(count, "file"), failed)) end
  os.exit(failed == 0)
end
