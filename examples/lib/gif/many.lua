-- Many files: each looked at in one of several processes, so that one that breaks or hangs does not stop the others.
--
-- The files are dealt out in bundles. A bundle is a file of names; the process that it is given to writes a line for
-- each name into another, and says so on its standard output. What has no line when the process is gone was not done: the
-- first of these stopped it, the rest are dealt out again.

local command, files, json = require "gif.command", require "gif.files", require "gif.json"
local processes, progress, text = require "gif.processes", require "gif.progress", require "gif.text"

local many = {}

local kSeconds = 60 -- that one file may take
local kShort, kLong, kLargestBundle = 3, 20, 64 -- bundles that take fewer seconds grow, others shrink
local kAlarmSignal = 14
local kDone = "\0\n" -- what a process says after each line
local kMostSaid = 4096 -- of what else it says
-- The environment's variables that make a process one that looks at a bundle: the files of its names and its lines.
local kNames, kLines = "GIF_BUNDLE_NAMES", "GIF_BUNDLE_LINES"

many.options = {
  { "--files-from FILE", "look at the files that it names, one a line or with zero bytes between; - is standard input",
    command.text },
  { "--jobs N", "files at a time (default: as many as there are processors)", command.whole(1, 200) },
  { "--timeout SECONDS", ("that a file may take (default: %d)"):format(kSeconds), command.whole(1, 1000000) },
  { "--resume LOG", "add lines to this file, and leave out what it has lines for", command.text },
}

-- Whether a command line is about many files: it has one of the options, or names a folder.
function many.is_asked_for(options, paths)
  if os.getenv(kNames) or options["files-from"] or options.jobs or options.timeout or options.resume then return true end
  for _, path in ipairs(paths) do
    local facts = host.stat(path)
    if facts and facts.kind == "folder" then return true end
  end
  return false
end

-- --- Names ---------------------------------------------------------------------------------------------------------------

-- Calls f(name) for each part of an open file that ends with that byte, the last one's may be missing.
local function for_each_part(file, ending, f)
  local rest = ""
  while true do
    local bytes = file:read(1 << 16)
    if not bytes then break end
    rest = rest .. bytes
    local at = 1
    while true do
      local last = rest:find(ending, at, true)
      if not last then break end
      f(rest:sub(at, last - 1))
      at = last + 1
    end
    rest = rest:sub(at)
  end
  if rest ~= "" then f(rest) end
end

-- A name below the folder that it is mirrored in: without what leads out of it.
local function below(path) return (path:gsub("^[/.]*/", "")) end

-- The files that paths and a list name, in a scratch file: path and name for mirroring, a zero byte after each. Folders
-- stand for all files in them named *.gif. What is no file cannot be shared. Gives the scratch file and how many there are.
local function gather(paths, list, shared)
  local names <const>, count = OutputFile(), 0
  local written = {}
  local function flush()
    names:Write(table.concat(written))
    written = {}
  end
  local function add(path, mirrored)
    written[#written + 1] = path .. "\0" .. mirrored .. "\0"
    count = count + 1
    if #written > 1000 then flush() end
  end
  for _, path in ipairs(paths) do
    local facts, why = host.stat(path)
    if not facts then command.fail(why) end
    if facts.kind == "folder" then
      local root = path:gsub("/*$", "/")
      local pipe <close> = io.popen("find -L -- " .. files.quoted(root) .. " -type f -iname '*.gif' -print0 | LC_ALL=C sort -z")
      for_each_part(pipe, "\0", function(name) add(name, name:sub(#root + 1)) end)
    elseif shared and facts.kind ~= "file" then
      command.fail(path .. ": what is no file cannot be shared among processes")
    else
      add(path, path:match("[^/]*$"))
    end
  end
  if list then
    local settled, why = files.settled(list == "-" and "/dev/stdin" or list)
    if not settled then command.fail(why) end
    local file <close> = assert(io.open(settled, "rb"))
    local has_zeros = (file:read(1 << 16) or ""):find("\0", 1, true)
    file:seek("set")
    for_each_part(file, has_zeros and "\0" or "\n", function(name) if name ~= "" then add(name, below(name)) end end)
  end
  flush()
  return names, count
end

-- Gives the next path and name of a file that gather() made; nil at its end.
local function reader(path)
  local file, waiting, at = io.open(path, "rb"), {}, 1
  local rest = ""
  return function()
    while not waiting[at] do
      local bytes = file:read(1 << 16)
      if not bytes then return nil end
      waiting, at = {}, 1
      local taken = 1
      rest = rest .. bytes
      for name, mirrored, after in rest:gmatch("([^\0]*)\0([^\0]*)\0()") do
        waiting[#waiting + 1], taken = { name, mirrored }, after
      end
      rest = rest:sub(taken)
    end
    at = at + 1
    return table.unpack(waiting[at - 1])
  end
end

-- Calls f(path) for each file that paths and a list name, in this process. Gives how many there were.
function many.each(paths, list, f)
  local names <const>, count = gather(paths, list)
  for path in reader(names.Path) do f(path) end
  return count
end

-- --- A process that looks at a bundle ------------------------------------------------------------------------------------

-- A line each, written at once: a process that is stopped loses none of them. Saying so ends it when nobody listens any
-- more.
local function work_through(seconds, work)
  local results <close> = assert(io.open(os.getenv(kLines), "r+b"))
  local next_name = reader(os.getenv(kNames))
  for path, mirrored in next_name do
    host.alarm(seconds)
    local called, result, why = pcall(work, path, mirrored)
    host.alarm(0)
    local line = called and result or { error = text.shown(tostring(called and why or result)) }
    results:write(json.line(path, line), "\n")
    results:flush()
    io.stdout:write(kDone)
    io.stdout:flush()
    collectgarbage()
  end
end

-- --- The one that deals them out -----------------------------------------------------------------------------------------

local function start(bundle)
  local words = processes.this_program()
  table.move(arg, 0, #arg, #words + 1, words)
  local command_line = ("exec env %s=%s %s=%s %s 2>&1 <&-"):format(kNames, files.quoted(bundle.file.Path),
    kLines, files.quoted(bundle.lines.Path), processes.command(words))
  bundle.started, bundle.pipe = os.time(), io.popen(command_line)
end

local function new_bundle(names)
  local parts = {}
  for i, name in ipairs(names) do parts[i] = name[1] .. "\0" .. name[2] .. "\0" end
  local bundle = { names = names, file = OutputFile(), lines = OutputFile() }
  bundle.file:Write(table.concat(parts))
  start(bundle)
  return bundle
end

local function reason(output, kind, status, seconds)
  if kind == "signal" and status == kAlarmSignal then return "not done after " .. text.count(seconds, "second") end
  if kind == "signal" then return "stopped by signal " .. status end
  local said = output:match("([^\n]+)\n?$") or "no output"
  return ("%s (status %d)"):format(said, status)
end

-- Passes on the lines of a bundle as they come. Gives the names that are left when its process was stopped.
local function finish(bundle, seconds, pass_on)
  local lines <close>, done, output = io.open(bundle.lines.Path, "rb"), 0, ""
  local function pass_on_next()
    local line = lines:read("L")
    if not line or line:sub(-1) ~= "\n" then return false end
    done = done + 1
    pass_on(line)
    return true
  end
  for said in bundle.pipe:lines("L") do
    local before, is_done = said:gsub(kDone .. "$", "")
    output = (output .. before):sub(-kMostSaid)
    if is_done > 0 then pass_on_next() end
  end
  local _, kind, status = bundle.pipe:close()
  while pass_on_next() do end -- stopped before it said so
  bundle.file:Discard()
  bundle.lines:Discard()
  if done == #bundle.names then return {} end
  local culprit = bundle.names[done + 1][1]
  pass_on(json.line(culprit, { error = text.shown(reason(output, kind, status, seconds)) }) .. "\n")
  return table.move(bundle.names, done + 2, #bundle.names, 1, {})
end

-- Goes through the names of a log's whole lines, each with the place behind it.
local function names_in(log)
  local at = 0
  return function()
    for line in log:lines("L") do
      at = at + #line
      local name = line:sub(-1) == "\n" and json.name_in(line)
      if name then return name, at end
    end
  end
end

-- Gives a function that tells whether a log has a line for a name; what is behind its last whole line is cut off. Lines come
-- in the order of the names, so that one after the other is looked at; all are kept only when they are of another list.
local function done_by(path)
  local log = io.open(path, "rb")
  if not log then return function() return false end end
  local whole = 0
  for _, at in names_in(log) do whole = at end
  if whole < log:seek("end") then os.execute(("truncate -s %d -- %s"):format(whole, files.quoted(path))) end
  log:seek("set")
  local next_name, others = names_in(log), nil
  local logged = next_name()
  return function(name)
    if not others and logged ~= name and logged then
      others = { [logged] = true }
      for other in next_name do others[other] = true end
    end
    if others then return others[name] end
    if not logged then return false end
    logged = next_name()
    return true
  end
end

-- Looks at many files. wanted: options, those of many.options; paths; work(path, mirrored), which gives a table of
-- fields for JSON, or nil and the reason; show(line), in place of writing the line. Gives how many there were and how
-- many failed.
function many.run(wanted)
  local options = wanted.options
  local seconds = options.timeout or kSeconds
  if os.getenv(kNames) then
    work_through(seconds, wanted.work)
    os.exit(0, true)
  end
  local names <const>, count = gather(wanted.paths, options["files-from"], true)
  if count == 0 then command.fail("no files named *.gif there") end
  local log, is_done
  if options.resume then
    is_done = done_by(options.resume)
    local opened, why = io.open(options.resume, "ab")
    log = opened or command.fail(why)
  end
  local failed, total, sink = 0, 0, log or io.stdout
  local step = progress.start(count, "files")
  local function pass_on(line)
    if not log then progress.clear() end
    local has_failed = line:find('^{"file":"[^"]*","error":')
    if has_failed then failed = failed + 1 end
    if log then
      assert(log:write(line))
    elseif wanted.show then
      wanted.show(line, has_failed)
    elseif not line:find('"left_out":true}\n', 1, true) then
      io.stdout:write(line)
    end
    sink:flush()
    total = total + 1
    step()
  end

  local next_name, size = reader(names.Path), 1
  local function take(wished)
    local taken = {}
    while #taken < wished do
      local path, mirrored = next_name()
      if not path then break end
      if is_done and is_done(path) then step() else taken[#taken + 1] = { path, mirrored } end
    end
    return #taken > 0 and taken or nil
  end
  local running = {}
  for _ = 1, options.jobs or processes.count() do
    local taken = take(size)
    if taken then running[#running + 1] = new_bundle(taken) end
  end
  while #running > 0 do -- the oldest first, so that lines come in the order of the names
    local bundle = table.remove(running, 1)
    local left = finish(bundle, seconds, pass_on)
    if #left > 0 then
      table.insert(running, 1, new_bundle(left))
    else
      local took = os.time() - bundle.started
      if took < kShort then size = math.min(size * 2, kLargestBundle) end
      if took > kLong then size = math.max(1, size // 2) end
      local taken = take(size)
      if taken then running[#running + 1] = new_bundle(taken) end
    end
  end
  if log then log:close() end
  return total, failed
end

return many
