-- Saves every image of a GIF file, and the mask of its transparent pixels, as PNG files of their own.
--
--   gifhost examples/frames.lua IN.gif FOLDER
--
-- The files are FOLDER/000.png, FOLDER/000-mask.png, FOLDER/001.png and so on, counted by images. Each shows the image
-- as it is stored, not what an animation has drawn by then (sheet.lua shows that); a mask is white where the image is
-- transparent. The folder is made when it is missing.

local function give_up(status, message)
  io.stderr:write("frames.lua: ", message, "\n")
  os.exit(status, true)
end

if #arg ~= 2 then give_up(2, "name a GIF file and a folder for the PNG files") end
local input, folder = table.unpack(arg)

local gif = FolderItem(input):OpenAsGIFZKV()
if not gif then give_up(1, input .. ": no GIF file") end
if not host.exists(folder) then os.execute("mkdir -p -- '" .. folder:gsub("'", [['\'']]) .. "'") end

-- Saves what there is, and returns the names of the files.
local function save(name, picture, mask)
  local saved = {}
  for suffix, shown in pairs { [""] = picture, ["-mask"] = mask } do
    saved[#saved + 1] = name .. suffix .. ".png"
    local done, problem = pcall(shown.SavePNG, shown, folder .. "/" .. saved[#saved])
    if not done then give_up(1, problem.message) end
  end
  table.sort(saved)
  return #saved > 0 and table.concat(saved, ", ") or "nothing to save"
end

local images = 0
for i, block in pairs(gif) do
  local image = block.Picture
  if image then
    local saved = save(("%03d"):format(images), image:MakePicture(), image:MakeMask())
    print(("block %3d: %4d x %-4d %s"):format(i, image.Width, image.Height, saved))
    images = images + 1
    collectgarbage() -- pictures are large, and Lua sees only their handles
  end
end
if images == 0 then give_up(1, input .. ": no images") end
