-- Saves every image of a GIF file, and the mask of its transparent pixels, as PNG files of their own.
--
--   gifhost examples/frames.lua IN.gif FOLDER
--
-- The files are FOLDER/000.png, FOLDER/000-mask.png, FOLDER/001.png and so on, counted by images. Each shows the image
-- as it is stored, not what an animation has drawn by then (sheet.lua shows that); a mask is white where the image is
-- transparent. The folder is made when it is missing.

local composing, blocks, command = require "gif.composing", require "gif.blocks", require "gif.command"
local files, progress = require "gif.files", require "gif.progress"

local _, operands = command.parse {
  about = "Saves every image of a GIF, and the mask of its transparent pixels, as PNG files of their own.",
  operands = "IN.gif FOLDER",
}
local input, folder = table.unpack(operands)

local function require_done(done, why)
  if not done then command.fail(why) end
  return done
end

-- Saves what there is, and returns the names of the files.
local function save(name, picture, mask)
  local saved = {}
  for suffix, shown in pairs { [""] = picture, ["-mask"] = mask } do
    local path = folder .. "/" .. name .. suffix .. ".png"
    if files.same(path, input) then command.fail(path .. ": would replace " .. input) end
    require_done(files.save_png(shown, path))
    saved[#saved + 1] = name .. suffix .. ".png"
  end
  table.sort(saved)
  return #saved > 0 and table.concat(saved, ", ") or "nothing to save"
end

local gif = require_done(files.open_gif(input))
local frames = blocks.frames(blocks.read(gif))
if #frames == 0 then command.fail(input .. ": no images") end
require_done(files.make_folder(folder))
local step = progress.start(#frames, "images")
for _, frame in ipairs(frames) do
  local saved = save(("%03d"):format(frame.number), frame.image:MakePicture(), frame.image:MakeMask())
  progress.clear()
  print(("block %3d: %4d x %-4d %s"):format(frame.block, frame.width, frame.height, saved))
  step()
  composing.sweep(8 * frame.width * frame.height)
end
