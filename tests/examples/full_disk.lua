-- A disk that is full after any number of bytes: the old file stays or the new one is whole, nothing else is left, and
-- the reason is said. Status 77 where no file system can be mounted.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local examples = dofile(here .. "../support/examples.lua")
local processes, files = require "gif.processes", require "gif.files"
local gif = here .. "../../examples/gifs/lighthouse.gif"

local kPage = 4096
local kPages = 64

local program = processes.command(processes.this_program())
local function shell(line, ...)
  local pipe = io.popen(("{ %s; } 2>&1"):format(line:format(...)))
  local output = pipe:read("a")
  return select(3, pipe:close()), output
end
local function script(name) return program .. " " .. files.quoted(here .. "../../examples/" .. name .. ".lua") end

-- What is run on the disk, in which the old file is "out". Only one of them makes files elsewhere.
local kJobs = {
  { "edit, itself", script "edit" .. " --comment x out out" },
  { "edit", script "edit" .. " --comment x " .. gif .. " out" },
  { "build", script "build" .. " out" },
  { "first", script "first" .. " " .. gif .. " out" },
  { "sheet", script "sheet" .. " " .. gif .. " out" },
  { "report", script "report" .. " " .. gif .. " out" },
  { "PNG", program .. " -e 'Picture(300, 200):SavePNG([[out]])'" },
  -- What is redirected is the shell's file: only the status and the reason are ours.
  { "tree", script "tree" .. " --json --where 'images > 0' " .. gif .. " >>appended", redirected = true, scratch = true },
}

local function with_disk(f)
  examples.with_folder(function(folder)
    if not os.execute(("mount -t tmpfs -o size=%d tmpfs %s 2>/dev/null"):format(kPages * kPage, folder)) then
      print("skipped: no file system can be mounted")
      os.execute("rmdir " .. folder)
      os.exit(77, true)
    end
    local succeeded, message = pcall(f, folder)
    os.execute("umount " .. folder)
    assert(succeeded, message)
  end)
end

with_disk(function(disk)
  local old = examples.read(gif)
  local function facts() return select(2, shell("cd %s && ls -A | grep -v filler", disk)) end
  local function run(job, pages, temporary)
    shell("cd %s && rm -f * && head -c %d /dev/zero >filler", disk, pages * kPage)
    examples.write(disk .. "/out", old)
    return shell("cd %s && TMPDIR=%s %s", disk, temporary, job)
  end
  for _, row in ipairs(kJobs) do
    local name, job = table.unpack(row)
    local used = (#old + kPage - 1) // kPage
    local room, refused, status, said = 0, 0
    repeat
      status, said = run(job, kPages - used - room, row.scratch and "/tmp" or "/dev/null")
      local what = ("%s with %d pages: %s"):format(name, room, said)
      if status == 0 then
        assert(row.redirected or examples.read(disk .. "/out") ~= old, what)
      else
        refused = refused + 1
        t.expect(what, status, 1)
        assert(said:find("No space left on device", 1, true), what)
        t.expect(what, examples.read(disk .. "/out"), old)
      end
      t.expect(what, facts(), row.redirected and "appended\nout\n" or "out\n")
      room = room < 3 and room + 1 or room + 5
    until status == 0 or room > kPages
    t.expect(name .. " in the end: " .. said, status, 0)
    assert(refused > 0, name)
  end
end)
