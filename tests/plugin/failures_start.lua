-- Each allocation that starting the plugin takes fails once: it starts all the same, and nothing stays behind.
--
--   gifhost failures_start.lua GIFHOST FAILING_PLUGIN

local kCommand = [[FAIL_ALLOCATION=%d "%s" --c-modules --plugin "%s" -e '
  assert(GIFZKV())
  io.write("failed: ", tostring(package.loadlib(arg[1], "AllocationFailedByScript")()))' "%s" 2>&1]]

local n = 0
repeat
  n = n + 1
  local pipe = io.popen(kCommand:format(n, arg[1], arg[2], arg[2]))
  local output = pipe:read("a")
  assert(pipe:close(), output)
  local failed = assert(output:match("^failed: (%a+)"), output)
until failed == "false"
assert(n > 5, "few allocations have failed")
