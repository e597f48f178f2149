-- Checks GIF files: opens each, walks every part of it, renders all images, saves it and its clone, and reads both back.
--
--   gifhost examples/check.lua [--jobs N] [--seconds N] PATH...
--
-- A PATH is a GIF file or a folder; of a folder all files named *.gif are checked, those in folders within it too.
-- Every file has a process of its own, so that one that breaks it does not stop the others.

local animation, blocks, command = require "gif.animation", require "gif.blocks", require "gif.command"
local comparing, files, processes = require "gif.comparing", require "gif.files", require "gif.processes"
local progress, text = require "gif.progress", require "gif.text"

local kSeconds = 60 -- that one file may take
local kTimedOut = 124 -- the status that the command "timeout" gives then

-- --- One file, in this process -----------------------------------------------------------------------------------------

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

local function require_same(gif, what, texts, pixels, unfit)
  local other_texts, other_pixels = walk(gif, blocks.read(gif))
  if #other_texts ~= #texts then
    command.fail(("%s holds %s in place of %d"):format(what, text.count(#other_texts, "block"), #texts))
  end
  for i = 0, #texts do
    if other_texts[i] ~= texts[i] or other_pixels[i] ~= pixels[i] and not unfit[i] then
      command.fail(("%s differs in %s"):format(what, i == 0 and "its screen" or "block " .. i - 1))
    end
  end
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
    animation.sweep(block.image and block.image.Width * block.image.Height or 0)
  end
  return not_shown
end

local function check_file(path)
  local gif, why = files.open_gif(path)
  if not gif then command.fail(why) end
  local all = blocks.read(gif)
  local texts, pixels, unfit = walk(gif, all)
  local not_shown = render(all)

  local scratch <const> = OutputFile()
  local copy = scratch.Path
  require_same(saved(gif, copy, "the document"), "the saved document", texts, pixels, unfit)
  require_same(saved(gif:Clone(), copy, "the clone"), "the saved clone", texts, pixels, unfit)

  local sums, not_kept = blocks.sums(all), 0
  for _ in pairs(unfit) do not_kept = not_kept + 1 end
  print(text.list {
    text.count(sums.images, "image"), text.count(sums.extensions, "extension"), text.count(sums.pixels, "pixel"),
    not_shown > 0 and text.count(not_shown, "image") .. " without pixels or colours" or "",
    not_kept > 0 and text.count(not_kept, "image") .. " with pixels beyond the colours, which saving can't keep" or "" })
end

-- --- Many files, a process for each ------------------------------------------------------------------------------------

-- The GIF files that the paths name, and whether one of these is a folder.
local function find_files(paths)
  local found, folders = {}, false
  for _, path in ipairs(paths) do
    if not host.exists(path) then command.fail(path .. ": no such file or folder") end
    local is_folder = host.exists(path .. "/.")
    if not is_folder then found[#found + 1] = path end
    folders = folders or is_folder
    local pipe <close> = io.popen(is_folder and
      "find -L -- " .. files.quoted(path) .. " -type f -iname '*.gif' -print0 | LC_ALL=C sort -z" or "true")
    for name in pipe:read("a"):gmatch("[^\0]+") do found[#found + 1] = name end
  end
  return found, folders
end

-- What to say of a file whose process failed; its own message begins with the names of the script and the file.
local function failure(path, output, kind, status, seconds)
  if kind == "signal" then return "stopped by signal " .. status end
  if status == kTimedOut then return ("not done after %s"):format(text.count(seconds, "second")) end
  local line = (output:match("[^\n]+") or "no output"):gsub("^check.lua: ", "")
  if line:sub(1, #path + 2) == path .. ": " then line = line:sub(#path + 3) end
  return line .. (status == 1 and "" or (" (status %d)"):format(status))
end

local function check_files(paths, jobs, seconds)
  local commands = {}
  for i, path in ipairs(paths) do
    local words = { "timeout", tostring(seconds), table.unpack(processes.this_program()) }
    table.move({ arg[0], "--", path }, 1, 3, #words + 1, words)
    commands[i] = processes.command(words)
  end
  local failed, step = 0, progress.start(#paths, "files")
  processes.run(commands, jobs, function(i, output, kind, status)
    local succeeded = kind == "exit" and status == 0
    if not succeeded then failed = failed + 1 end
    progress.clear()
    print(("%-6s  %s: %s"):format(
      succeeded and "ok" or "FAILED", text.shown(paths[i]),
      succeeded and output:gsub("\n$", "") or failure(paths[i], output, kind, status, seconds)))
    step()
  end)
  print(("%s, %d failed"):format(text.count(#paths, "file"), failed))
  return failed == 0
end

local options, paths = command.parse {
  about = "Opens, walks, renders and saves GIF files, and reads back what was saved. A PATH is a file or a folder.",
  operands = "PATH...",
  options = {
    { "--jobs N", "files at a time (default: as many as there are processors)", command.whole(1) },
    { "--seconds N", ("that a file may take (default: %d)"):format(kSeconds), command.whole(1) },
  },
}
local found, folders = find_files(paths)
if #found == 0 then command.fail("no files named *.gif there") end
if #found == 1 and not folders then
  check_file(found[1])
else
  os.exit(check_files(found, options.jobs or processes.count(), options.seconds or kSeconds))
end
