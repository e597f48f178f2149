-- The prompt as people meet it: typed on a terminal, with TAB and Ctrl-C. Arguments: the host's program, the project's
-- folder. Status 77: there is no terminal to be had.

local here = arg[0]:gsub("[^/]*$", "")
local examples = dofile(here .. "../../support/examples.lua")
local files = require "gif.files"

if not os.execute("command -v script >/dev/null") then os.exit(77) end
local kPatience = 20 -- seconds for an answer
local kOpen = 'g = FolderItem("examples/gifs/lightho\t):OpenAsGIFZKV()\n'

-- What is typed, and what must be seen after it; at what place the next is looked for.
local kSession = {
  { "", "> " },
  { kOpen, 'lighthouse.gif")' },
  { "g\n", "GIFZKV 160 x 120, 34 blocks, 16 images" },
  { "g.scr\t.pal\t:Val\t11)\n", "#FCEE94" },
  { "g.Screen.Palette:Value(11) + 0.0\n", "16576148.0" },
  { "g:Block(0).Ext\t:Data(1).DataStr\t\n", [["\x01\x00\x00"]] },
  { "g:Block(3).Picture.Ma\t", "MakeMask(" }, -- what it may go on with is listed
  { "\3", "^C" },
  { 'GifStringToGi\t"GIF89a"):Fi\t', "FirstBlock" },
  { "\3", "^C" },
  { "{ 1, 'a\\nb', g.FirstBlock }\n", 'GifBlockZKV application, "NETSCAPE2.0", loops forever' },
  { "gg\n", 'nil; did you mean "g"?' },
  { "g.Palette\n", 'GIFZKV has no member "Palette"' },
  { "g.Scren\n", 'did you mean "Screen"?' },
  { "while true do end\n", "while true do end\r\n" },
  { "\3", "interrupted" },
  { "for i = 1, 2 do\n", ">> " },
  { "\3", "> " },
  { "for i = 6, 7 do\nprint(i * 7)\nend\n", "49" },
  { "help\n", "classes:" },
  { "help(GifDataZKV)\n", "Length as Integer  (read-only)" },
  { "help(g.Block)\n", "The block at an index" },
  { "look(g)\n", "▀" },
  { "", "160 x 120, 12 of 16 frames" },
  { "look(g:Block(0))\n", "look: the block is no image" },
  { "print(7 * 8)", "print" },
  { "\n", "56" },
}

examples.with_folder(function(folder)
  local keys = examples.write(folder .. "/inputrc", "set show-all-if-ambiguous on\nset bell-style none\n")
  local seen = examples.write(folder .. "/seen", "")
  local terminal = io.popen(("cd %s && exec env TERM=dumb INPUTRC=%s script -qefc %s %s >/dev/null 2>&1"):format(
    files.quoted(arg[2]), keys, files.quoted("stty cols 120 rows 40; exec " .. files.quoted(arg[1]) .. " --"), seen), "w")
  local at, text = 1, ""
  local function wait_for(expected, typed)
    for _ = 1, kPatience * 20 do
      text = examples.read(seen):gsub("\27%[[%d;?]*%a", "")
      local _, last = text:find(expected, at, true)
      if last then
        at = last + 1
        return
      end
      os.execute("sleep 0.05")
    end
    error(("after %q no %q:\n%s"):format(typed, expected, text:sub(at)))
  end
  local passed, why = pcall(function()
    for _, row in ipairs(kSession) do
      terminal:write(row[1])
      terminal:flush()
      wait_for(row[2], row[1])
    end
  end)
  terminal:write(passed and "\4" or "\3\3\4")
  local _, how, status = terminal:close()
  assert(passed, why)
  assert(how == "exit" and status == 0, status)
end)
