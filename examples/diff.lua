-- Says in what two GIFs differ: their screens, tables, blocks, indexes, and what viewers show.
--
--   gifhost examples/diff.lua [OPTION...] A.gif B.gif

local command, differences, files = require "gif.command", require "gif.differences", require "gif.files"
local gif, text = require "gif", require "gif.text"

local kDiffer = 1

local options, operands = command.parse {
  about = "Says in what two GIFs differ: their screens, tables, blocks, indexes, and what viewers show.",
  operands = "A.gif B.gif",
  options = {
    { "--seen", "only what viewers show counts" },
    { "--picture OUT.png", "draw the first frame that looks different: before, after, and red where", command.text },
  },
  more = "Exit status 1 also says that they differ.",
}

local documents = {}
for i, path in ipairs(operands) do
  local opened, why = gif.open(path)
  documents[i] = opened or command.fail(why)
end
local a, b = table.unpack(documents)

local lines = options.seen and {} or differences.of_structure(a, b)
local frames, first = differences.of_pictures(a, b)
if not frames then
  lines[#lines + 1] = ("seen: %d x %d -> %d x %d pixels"):format(a.width, a.height, b.width, b.height)
elseif #frames > 0 then
  local where = ""
  if first then
    local picture, count = differences.picture(first)
    where = ("; in frame %d %s"):format(first.number, text.count(count, "pixel"))
    if options.picture then
      local saved, why = files.save_png(picture, options.picture)
      if not saved then command.fail(why) end
    end
  end
  lines[#lines + 1] = ("seen: %s: frames %s%s"):format(
    #a.frames == #b.frames and "different" or ("%d -> %d frames"):format(#a.frames, #b.frames), text.ranges(frames), where)
end
for _, line in ipairs(lines) do print(line) end
os.exit(#lines > 0 and kDiffer or 0, true)
