-- Builds an animation of PNG files, or without any draws one from nothing: a planet turning before the stars.
--
--   gifhost examples/build.lua [OPTION...] [IN.png...] OUT.gif
--
-- The tree is put together from new objects, the way every GIF is: a screen with the global table, then blocks: an
-- extension that makes players loop, a comment, and for each frame an extension with its delay before its image. Where
-- the frames come from is the business of lib/gif/pictures.lua and lib/gif/planet.lua.

local building, command, files = require "gif.building", require "gif.command", require "gif.files"
local optimising, pictures, planet, text = require "gif.optimising", require "gif.pictures", require "gif.planet", require "gif.text"

-- One of several words.
local function choice(...)
  local words, known = table.concat({ ... }, ", "), {}
  for _, word in ipairs { ... } do known[word] = word end
  return { name = "one of " .. words, read = function(given) return known[given] end }
end

local options, operands = command.parse {
  about = "Builds an animation of PNG files; without any, draws one from nothing: a planet turning.",
  operands = "[IN.png...] OUT.gif",
  options = {
    { "--colours N", "at most, transparency among them: 2 to 256 (default: 256)", command.whole(2, 256) },
    { "--tables HOW", "one table for all pictures, their own for each, or what each needs: one, own or auto (default: one)",
      choice("one", "own", "auto") },
    { "--own-tables", "the same as --tables own" },
    { "--dither HOW", "mix colours that are not in the table: none, diffusion or ordered (default: none)",
      choice("none", "diffusion", "ordered") },
    { "--quality N", "no more colours than that quality takes, 1 to 100; where libimagequant is built in", command.whole(1, 100) },
    { "--lossy N", "colours may be up to that far from the right ones where it makes the file smaller: 1 to 255",
      command.whole(1, 255) },
    { "--delay SECONDS", "that each picture stays (default: 0.1)", command.seconds },
    { "--loop N", "times that players repeat it; 0 is for ever (default: 0)", command.whole(0, 65535) },
    { "--comment TEXT", "to be stored in the file", command.text },
  },
  more = [[
Pictures with few enough colours keep them exactly; others get the nearest of those that fit all pictures, or each, best.
Pixels more than half transparent become transparent. Pictures of several sizes stand in the middle of the largest one's
screen. Of each picture only what differs is stored, in the way that takes the fewest bytes.]],
}
local output = table.remove(operands)
if output:lower():find("%.png$") then command.fail(output .. ": a GIF is not written over a PNG file; name OUT.gif last") end

for i, path in ipairs(operands) do -- each is read twice
  local settled, why = files.settled(path)
  operands[i] = settled or command.fail(why)
end

local animation = #operands == 0 and planet.animation(options.delay) or pictures.animation(operands, {
  colours = options.colours or 256, delay_cs = options.delay or 10, tolerance = options.lossy,
  tables = options["own-tables"] and "own" or options.tables, dithering = options.dither, quality = options.quality })

local gif = GIFZKV()
gif.Header = "GIF89a"
local colours = optimising.colours_from(animation.film.Table)
gif.Screen = building.screen(animation.width, animation.height, #colours > 0 and colours or nil)
if options.loop or #animation.frames > 1 then gif:Add(building.loops(options.loop or 0)) end
local comment = options.comment or animation.comment
if comment then gif:Add(building.comment(comment)) end
for _, blocks in ipairs(optimising.stored(animation.film, animation.frames)) do
  gif:Add(blocks[1])
  gif:Add(blocks[2])
end

local saved, problem = files.save_gif(gif, output)
if not saved then command.fail(problem) end
print(("%s: %s of %d x %d pixels"):format(
  text.shown(output), text.count(#animation.frames, "frame"), animation.width, animation.height))
