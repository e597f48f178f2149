-- Saves the first image of a GIF as a PNG file, its transparent colour as transparency.
--
--   gifhost examples/first.lua IN.gif OUT.png
--
-- The shortest way from bytes to a picture: no document, no blocks, one call.

local function give_up(status, message)
  io.stderr:write("first.lua: ", message, "\n")
  os.exit(status, true)
end

if #arg ~= 2 then give_up(2, "name a GIF file and the PNG file to write") end
local input, output = table.unpack(arg)

local file, why = io.open(input, "rb")
if not file then give_up(1, why) end
local bytes = file:read("a")
file:close()

local picture = GifStringToPictureZKV(bytes or "")
if not picture then give_up(1, input .. ": no GIF file with an image that can be shown") end

local saved, problem = pcall(picture.SavePNG, picture, output)
if not saved then give_up(1, problem.message) end
print(("%s: %d x %d pixels"):format(output, picture.Width, picture.Height))
