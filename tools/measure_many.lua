-- Runs check, tree --json and edit --into over many files and measures them. On the way a process of each is killed, and
-- each run as a whole, which then goes on by --resume: nothing may be lost, and memory must not grow with the files.
--
--   gifhost tools/measure_many.lua COUNT FOLDER        (files as make_many.lua makes them, in a folder that is not there yet)
--
-- Prints a table; status 1 when something was lost.

local files, json, processes = require "gif.files", require "gif.json", require "gif.processes"

local count, folder = math.tointeger(arg[1]), arg[2]
local top = arg[0]:gsub("[^/]*$", "../")
local program = processes.command(processes.this_program())
local kJobs = 2
local kKillProcess, kKillRun = 10, 40 -- when so many of 100 files are done
local kMemoryMargin = 1.5 -- at the end, against after a tenth of the files

local function quoted(...) return processes.command { ... } end

local function read(path)
  local file <close> = io.open(path, "rb")
  return file and file:read("a")
end

local function seconds_now() return tonumber((read("/proc/uptime"):match("%S+"))) end
local function kilobytes(process, what) return tonumber((read("/proc/" .. process .. "/status") or ""):match(what .. ":%s*(%d+)")) or 0 end
local function children(process)
  local found = {}
  for child in (read(("/proc/%s/task/%s/children"):format(process, process)) or ""):gmatch("%d+") do found[#found + 1] = child end
  return found
end

-- --- One run -----------------------------------------------------------------------------------------------------------

-- Starts a command line; look(process) is called several times a second until it has ended. Gives its seconds, and those
-- of the processor.
local function run(command_line, look)
  local started = seconds_now()
  local shell = io.popen(("%s >%s/said 2>&1 & echo $!; wait; times"):format(command_line, quoted(folder)))
  local process = shell:read("l")
  while read("/proc/" .. process .. "/stat") do
    look(process)
    os.execute("sleep 0.04")
  end
  local times = shell:read("a")
  shell:close()
  local used = 0
  for minutes, seconds in times:match("\n(.*)"):gmatch("(%d+)m([%d.]+)s") do used = used + 60 * minutes + seconds end
  return seconds_now() - started, used
end

-- Lines of a file that grows: calls each(line) for those that are new.
local function follower(path, each)
  local file
  return function()
    file = file or io.open(path, "rb")
    while file do
      local place = file:seek()
      local line = file:read("L")
      if not line or line:sub(-1) ~= "\n" then return file:seek("set", place) end
      each(line)
    end
  end
end

-- --- A command ---------------------------------------------------------------------------------------------------------

local function is_damaged(name) return name:find("99%.gif$") end

-- Runs a command until all files have a line. Gives what was measured.
local function measure(name, words)
  local log = ("%s/%s.jsonl"):format(folder, name)
  local command_line = ("%s %s --jobs %d --timeout 60 --resume %s --files-from %s/names"):format(
    program, words, kJobs, quoted(log), quoted(folder))
  local seen, lines, stopped, kills = {}, 0, 0, 0
  local early, late, worker_most = 0, 0, 0
  local follow = follower(log, function(line)
    local path = json.name_in(line)
    assert(path and not seen[path], "a second line: " .. line)
    seen[path], lines = true, lines + 1
    if line:find("stopped by signal 9", 1, true) then
      stopped = stopped + 1
    elseif line:find('^{"file":"[^"]*","error":') then
      assert(is_damaged(path), line)
    end
  end)

  local seconds, used, runs = 0, 0, 0
  while lines < count do
    local before = lines
    local took, cost = run(command_line, function(process)
      follow()
      local now = kilobytes(process, "VmRSS")
      if lines < count // 10 or early == 0 then early = math.max(early, now) end
      late = math.max(late, now)
      for _, child in ipairs(children(process)) do worker_most = math.max(worker_most, kilobytes(child, "VmHWM")) end
      if lines * 100 >= kKillProcess * count and stopped == 0 then
        local victim = children(process)[1] -- it may have done its part, then it is the next one's turn
        if victim and os.execute("kill -KILL " .. victim .. " 2>&-") then kills = kills + 1 end
      elseif lines * 100 >= kKillRun * count and runs == 0 then
        os.execute("kill -KILL " .. process)
      end
    end)
    follow()
    runs, seconds, used = runs + 1, seconds + took, used + cost
    assert(lines > before or runs < 3, "nothing gets done: " .. read(folder .. "/said"))
  end
  assert(lines == count, ("%s: %d lines for %d files"):format(name, lines, count))
  assert(stopped > 0 and stopped <= kills and runs == 2, ("%s: %d stopped by %d kills in %d runs"):format(name, stopped, kills, runs))
  assert(late < early * kMemoryMargin + 1024 * 8, ("%s: %d kB grew to %d kB"):format(name, early, late))
  return { name = name, seconds = seconds, used = used, early = early, late = late, worker = worker_most }
end

-- --- All of them -------------------------------------------------------------------------------------------------------

assert(os.execute("mkdir " .. quoted(folder)))
assert(os.execute(("%s %s %d %s"):format(program, quoted(top .. "tools/make_many.lua"), count, quoted(folder .. "/files"))))
assert(os.execute(("find %s -name '*.gif' -print0 >%s/names"):format(quoted(folder .. "/files"), quoted(folder))))

print("| | files a second | a second of one processor | memory after a tenth | at most | of a process |\n|---|---|---|---|---|---|")
for _, row in ipairs {
  { "check", "check.lua --json" }, { "tree", "tree.lua --json" },
  { "edit", "edit.lua --delay x2 --into " .. quoted(folder .. "/edited") } } do
  local found = measure(row[1], top .. "examples/" .. row[2])
  print(("| `%s` | %.0f | %.0f | %.1f MB | %.1f MB | %.1f MB |"):format(row[2]:gsub(" %-%-into.*", " --into …"),
    count / found.seconds, count / found.used, found.early / 1024, found.late / 1024, found.worker / 1024))
  io.stdout:flush()
end

-- Every file that could be edited is there, and nothing else.
local pipe <close> = io.popen(("cd %s; find edited -type f | wc -l; grep -vc '\"error\":' edit.jsonl; find edited -name '*.part' | wc -l")
  :format(quoted(folder)))
local made, edited, litter = pipe:read("n", "n", "n")
assert(made - litter - edited <= kJobs and made - litter >= edited and litter <= 2 * kJobs, ("%d made, %d edited, %d unfinished"):format(made, edited, litter))
