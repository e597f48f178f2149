-- docs/cookbook.md: each of its commands runs as it stands.

local here = arg[0]:gsub("[^/]*$", "")
local examples = dofile(here .. "../support/examples.lua")
local processes, files = require "gif.processes", require "gif.files"

local top = here .. "../../"
local page = examples.read(top .. "docs/cookbook.md")
local has_parallel = os.execute("command -v parallel >/dev/null")

-- Stands in for the ssh of recipes: whatever the other machine's name, this one does it. SHELL is set there, as it is for whoever
-- logs in.
local kSsh = [[#!/bin/sh
while [ "${1#-}" != "$1" ]; do shift; done
shift 2
SHELL=/bin/sh exec sh -c "$*"
]]

examples.with_folder(function(folder)
  local words = processes.this_program()
  if words[1]:find("/") then words[1] = FolderItem(words[1]).NativePath end
  local program = examples.write(folder .. "/program", ("#!/bin/sh\nexec %s \"$@\"\n"):format(
    processes.command(words)))
  examples.write(folder .. "/ssh", kSsh)
  assert(os.execute(([[cd %s && mkdir bin desk desk/one desk/one/sub && chmod +x program ssh && mv ssh bin && mv program bin/gifhost &&
    ln -s %s desk/examples && for f in in other one/a one/sub/b; do cp desk/examples/gifs/lighthouse.gif desk/$f.gif; done]])
    :format(folder, files.quoted(FolderItem(top .. "examples").NativePath))))
  Picture(12, 8):SavePNG(folder .. "/desk/mark.png")
  examples.write(folder .. "/desk/notes.xmp", "<x:xmpmeta/>")
  local run, count = { "set -e", "PATH=" .. files.quoted(folder .. "/bin") .. ":$PATH", "cd " .. folder .. "/desk" }, 0
  for kind, block in page:gmatch("```(sh[%w-]*)\n(.-)```") do
    for line in block:gmatch("[^\n]+") do
      if kind == "sh" or has_parallel then
        line = line:gsub("%-N 200", "-N 2") -- there are a few files
        run[#run + 1] = ("{ %s\n} >said 2>&1 || { echo %s; cat said; exit 1; }"):format(line, files.quoted(line))
        count = count + 1
      end
    end
  end
  assert(count > 40, "commands are missing")
  local script = examples.write(folder .. "/run", table.concat(run, "\n"))
  assert(os.execute("sh " .. script), "a command of the cookbook fails")
  -- What some of them leave behind
  local function lines(name) return select(2, examples.read(folder .. "/desk/" .. name):gsub("\n", "")) end
  assert(host.stat(folder .. "/desk/smaller/sub/b.gif") and lines("check.jsonl") > 5 and lines("trees.jsonl") > 5)
  assert(examples.read(folder .. "/desk/copy.xmp") == "<x:xmpmeta/>")
  if has_parallel then
    local jobs = examples.read(folder .. "/desk/jobs.log")
    assert(jobs:find("\tone\t") and jobs:find("\ttwo\t"), "two workers at work: " .. jobs)
    assert(lines("all.jsonl") == lines("trees.jsonl"), "lines of two workers")
  end
end)
