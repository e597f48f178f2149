-- Scripts one after the other in one process, as in an application that runs for days: nothing stays alive, and memory
-- does not grow.
--
--   gifhost --largest-block 1000000 soak.lua SECONDS   -- prints how many a second, and the memory

local seconds = assert(tonumber((...)), "wants SECONDS")
local tests = arg[0]:gsub("[^/]*$", "../")
local path = os.tmpname()

local kScripts = {
  { "classes/classes_blocks.lua" }, { "classes/classes_tables.lua" }, { "classes/classes_picture.lua" },
  { "picture/pictures_first.lua" }, { "picture/pictures_render.lua" }, { "entry/save_documents.lua" },
  { "entry/open_edges.lua" }, { "plugin/lifetimes.lua", path, 1, 40 },
}

local function resident() -- in KiB
  for line in io.lines("/proc/self/status") do
    local kib = line:match("^VmRSS:%s*(%d+)")
    if kib then return tonumber(kib) end
  end
end

local function run(row)
  local script = tests .. row[1]
  arg = { [0] = script, table.unpack(row, 2) }
  assert(loadfile(script))(table.unpack(row, 2))
  collectgarbage()
  collectgarbage()
  for class, count in pairs(host.live()) do error(("%s leaves %d of %s"):format(script, count, class)) end
end

-- What the first rounds make may stay for good: caches, the allocator's store.
for _ = 1, 60 do
  for _, row in ipairs(kScripts) do run(row) end
end
local started, count, most = os.time(), 0, { 0, 0, 0 }
local spent
repeat
  for _, row in ipairs(kScripts) do run(row) end
  count, spent = count + #kScripts, os.time() - started
  if count == #kScripts then seconds = math.max(seconds, 3 * spent + 3) end -- each third has rounds, on slow machines too
  local third = math.min(spent * 3 // seconds + 1, 3)
  most[third] = math.max(most[third], resident())
until spent >= seconds
os.remove(path)
print(("%d scripts in %d s, %.0f a second; at most %d, %d, %d KiB in the thirds of that time"):format(
  count, spent, count / spent, table.unpack(most)))
assert(most[3] - math.max(most[2], most[1]) < 2048, "memory grows")
