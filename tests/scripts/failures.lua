-- Each allocation of the plugin fails once, and each call of each host function that can fail: what a session then
-- gives may lack parts, but is not wrong, and nothing stays behind.
--
--   gifhost [--plugin FAILING_PLUGIN] failures.lua SCRATCH_FILE [FAILING_PLUGIN]
--
-- With FAILING_PLUGIN, a plugin whose allocations fail on demand, the allocations; else the host's functions.

local folder = arg[0]:gsub("[^/]*$", "")
local session = dofile(folder .. "support/session.lua")
local path, failing_plugin = ...

local documents = dofile(folder .. "support/documents.lua")

-- Runs the session with the n-th of something failing, for each n until all of them succeed.
local function sweep(what, bytes, fail)
  session.may_raise = false
  local expected = session.run(bytes, path)
  session.may_raise = true
  local n = 0
  repeat
    n = n + 1
    local reached = fail(n)
    local found = session.run(bytes, path)
    local did_fail, complete = reached(), session.is_complete(found, expected)
    local why = session.wrong(found, expected)
    if why then error(("%s %d: %s"):format(what, n, why)) end
    for class, count in pairs(host.live()) do error(("%s %d: %d of %s alive"):format(what, n, count, class)) end
    if not did_fail then assert(complete, what .. ": parts are missing though nothing failed") end
  until not did_fail
  return n - 1
end

local failed = 0
for _, bytes in ipairs(documents) do
  if failing_plugin then
    local fail = assert(package.loadlib(failing_plugin, "FailAllocationByScript"))
    failed = failed + sweep("allocation", bytes, fail)
  else
    for _, name in ipairs {
      "PluginNewInstance", "REALBuildString", "REALBuildStringWithEncoding", "REALConvertString", "newMemoryBlock",
      "memoryBlockGetPtr", "REALFSRefFromFolderItem", "newPicture", "REALLockPictureDescription",
      "REALGetPictureMask", "pluginPictureGraphicsGetter", "StringGetCString",
    } do
      failed = failed + sweep(name, bytes, function(n)
        local before = host.calls(name)
        host.fail(name, n)
        return function()
          host.fail(name, 0) -- not later, if it has not failed by now
          return host.calls(name) - before >= n
        end
      end)
    end
  end
end
print(failed .. " failures")
assert(failed > 100)
