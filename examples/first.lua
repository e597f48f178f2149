-- Saves the first image of a GIF as a PNG file, its transparent colour as transparency.
--
--   gifhost examples/first.lua IN.gif OUT.png
--
-- The shortest way from bytes to a picture: no document, no blocks, one call.

local command, files, text = require "gif.command", require "gif.files", require "gif.text"

local _, operands = command.parse {
  about = "Saves the first image of a GIF as a PNG file, its transparent colour as transparency.",
  operands = "IN.gif OUT.png",
}
local input, output = table.unpack(operands)

local bytes, why = files.read(input)
if not bytes then command.fail(why) end
local picture = GifStringToPictureZKV(bytes)
if not picture then command.fail(input .. ": no GIF file with an image that can be shown") end

local saved, problem = files.save_png(picture, output)
if not saved then command.fail(problem) end
print(("%s: %d x %d pixels"):format(text.shown(output), picture.Width, picture.Height))
