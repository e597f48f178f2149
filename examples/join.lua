-- Joins animations: one plays after the other. Their indexes and tables stay; smaller ones stand in the middle.
--
--   gifhost examples/join.lua [OPTION...] IN.gif... OUT.gif

local command, extensions, joining = require "gif.command", require "gif.extensions", require "gif.joining"
local text = require "gif.text"

local options, operands = command.parse {
  about = "Joins animations: one plays after the other. Smaller ones stand in the middle of the largest one's screen.",
  operands = "IN.gif... OUT.gif",
  options = {
    { "--loop N", "times that players repeat it; 0 is for ever (default: as the first that says it)", command.whole(0, 65535) },
    { "--pause SECONDS", "that the last frame of each stays", command.seconds },
  },
}
local output = table.remove(operands)
local joined, why_or_exact = joining.join_files(operands, options.pause)
if not joined then command.fail(why_or_exact) end
if options.loop then joined:set_loops(options.loop) end
local saved, problem = joined:save(output)
if not saved then command.fail(problem) end
local loops = joined:loops()
print(("%s: %s of %d x %d pixels, %s, %s"):format(
  text.shown(output), text.count(#joined.frames, "frame"), joined.width, joined.height,
  text.seconds(joined:duration_cs()), loops and extensions.loops_text(loops) or "plays once"))
if not why_or_exact then print("  note: where one ends some colours were reduced") end
