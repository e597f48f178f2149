-- Many files at once: each gets its line, whatever becomes of the others, of a process or of the whole run.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local examples = dofile(here .. "../support/examples.lua")
local files, json, processes = require "gif.files", require "gif.json", require "gif.processes"
local run = examples.run
local kFiles = 150

local function lines_of(text)
  local names, failed, count = {}, {}, 0
  for line in text:gmatch("([^\n]*)\n") do
    local name = json.name_in(line)
    assert(name and not names[name], line)
    names[name], failed[name], count = true, json.text_in(line, "error"), count + 1
  end
  return names, failed, count
end

-- A script that breaks, hangs or is slow on files of some names.
local kTroubled = [[
local many, command = require "gif.many", require "gif.command"
local options, paths = command.parse { about = "", operands = "PATH...", options = many.options }
os.exit(select(2, many.run { options = options, paths = paths, work = function(path)
  if path:find("hangs") then while true do end end
  if path:find("kills") then io.popen("kill -KILL $PPID"):close() end
  if path:find("fails") then error("no luck") end
  if path:find("slow") then io.popen("sleep 1"):close() end
  return { ok = true } end }) == 0)]]

examples.with_folder(function(folder)
  local a = folder .. "/a"
  assert(os.execute(("mkdir -p %s/b/c; cd %s; for i in $(seq %d); do : > $i.gif; done"):format(a, a, kFiles)))
  for name, bytes in pairs { ["b/x\xFF\n\u{E9}.gif"] = t.sample, ["b/c/x.GIF"] = t.sample, ["b/no.txt"] = t.sample } do
    examples.write(a .. "/" .. name, bytes)
  end
  local status, output = run("tree", "--json", a)
  local names, failed, count = lines_of(output)
  t.expect("status", status, 1)
  t.expect("lines", count, kFiles + 2)
  assert(names[a .. "/b/x\xFF\n\u{E9}.gif"] and not failed[a .. "/b/x\xFF\n\u{E9}.gif"] and failed[a .. "/7.gif"])
  -- In order, however many processes there are
  t.expect("order", select(2, run("tree", "--json", "--jobs=3", a)) == output, true)
  os.execute("rm " .. a .. "/*.gif")

  -- One that breaks or hangs is named; the others go on
  local script = examples.write(folder .. "/troubled.lua", kTroubled)
  for _, name in ipairs { "1", "2hangs", "3", "4kills", "5", "6fails", "7" } do examples.write(a .. "/" .. name .. ".gif", "") end
  local function troubled(options)
    local pipe = io.popen(processes.command(processes.this_program()) .. " " .. files.quoted(script) .. " " .. options)
    local said = pipe:read("a")
    pipe:close()
    return lines_of(said)
  end
  names, failed, count = troubled("--timeout=1 --jobs=2 " .. a)
  t.expect("lines", count, 9)
  t.expect("hangs", failed[a .. "/2hangs.gif"], "not done after 1 second")
  t.expect("kills", failed[a .. "/4kills.gif"], "stopped by signal 9")
  assert(failed[a .. "/6fails.gif"]:find("no luck"), failed[a .. "/6fails.gif"])
  assert(names[a .. "/7.gif"] and not failed[a .. "/7.gif"])

  -- A killed run goes on where it stopped; a line that was cut is written anew
  os.execute("rm " .. a .. "/*.gif; rm -r " .. a .. "/b")
  for i = 1, 6 do examples.write(("%s/%d%s.gif"):format(a, i, i == 4 and "slow" or ""), "") end
  local log = folder .. "/log"
  local command = processes.command(processes.this_program())
  os.execute(("%s %s --jobs=1 --resume %s %s & pid=$!; while ! grep -q 3.gif %s 2>/dev/null; do sleep 0.05; done; kill -KILL $pid"):format(
    command, script, log, a, log))
  local before = examples.read(log)
  assert(before:find("/3.gif") and not before:find("/6.gif"), before)
  examples.write(log, before .. '{"file":"' .. a .. '/5.g')
  troubled(("--resume %s %s"):format(log, a))
  local after = examples.read(log)
  t.expect("kept", after:sub(1, #before), before)
  t.expect("lines", select(3, lines_of(after)), 6)

  -- How far it is, seen on a terminal while lines go elsewhere
  for i = 1, 3 do examples.write(("%s/%dslow.gif"):format(a, i), "") end
  local terminal = io.popen(("script -qec %s /dev/null </dev/null 2>&1"):format(
    files.quoted(("%s %s --jobs 1 --resume %s.2 %s"):format(command, script, log, a))))
  local bars = terminal:read("a")
  terminal:close()
  assert(not os.execute("command -v script >/dev/null") or bars:find("] %d of 9 files, %d a second, %d s left\r"), bars)

  -- Edited into a folder that mirrors theirs; nothing there is replaced
  os.execute("rm -r " .. a)
  for _, name in ipairs { "x", "c/x", "d/x" } do
    os.execute(("mkdir -p %s/%s"):format(a, name:match("(.*)/") or ""))
    examples.write(a .. "/" .. name .. ".gif", t.sample)
  end
  local into = folder .. "/into"
  local list = examples.write(folder .. "/list", a .. "/x.gif\0" .. a .. "/d/x.gif\0")
  t.expect("into", run("edit", "--delay=x2", "--into", into, a), 0)
  for _, name in ipairs { "x", "c/x", "d/x" } do
    local made = FolderItem(into .. "/" .. name .. ".gif"):OpenAsGIFZKV()
    t.expect(name, made:Block(0).Extension.FirstData.DataString, "\1\4\6\4")
  end
  examples.write(into .. "/x.gif", "kept")
  status, output = run("edit", "--into", into, a .. "/x.gif", a .. "/c/x.gif")
  t.expect("refused", status, 1)
  t.expect("both", select(2, output:gsub("is there already", "")), 2)
  t.expect("kept", examples.read(into .. "/x.gif"), "kept")
  t.expect("list", run("edit", "--into", into, "--files-from", list), 0)
  assert(host.exists(into .. a .. "/d/x.gif"))
  t.expect("litter", select(2, io.popen("ls -A " .. into):read("a"):gsub("%.part", "")), 0)
end)
