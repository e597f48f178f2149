-- Each allocation of the plugin fails once, and each call of each host function that can fail: what a session then
-- gives may lack parts, but is not wrong, and nothing stays behind.
--
--   gifhost [--plugin FAILING_PLUGIN] failures.lua SCRATCH_FILE [FAILING_PLUGIN]
--
-- With FAILING_PLUGIN, a plugin whose allocations fail on demand, the allocations; else the host's functions.

local folder = arg[0]:gsub("[^/]*$", "")
local session = dofile(folder .. "support/session.lua")
local make_gif = dofile(folder .. "support/make_gif.lua")
local path, failing_plugin = ...

local control, comment = { 0xF9, "\1\5\0\2" }, { 0xFE, "first", ("second"):rep(40), "x" }
local image = { width = 3, height = 9, pixels = ("\0\1\2\3\2\1\1\1\1"):rep(3), interlaced = true }
local own_table = { width = 4, height = 2, pixels = "\1\0\1\0\0\1\1\1", palette = { 0x102030, 0xFFEEDD } }
local colours = { 0x000000, 0xFF0000, 0x00FF00, 0x0000FF }
local documents = {
  make_gif(5, 9, colours, control, image, comment, own_table),
  make_gif(1, 1, nil, own_table, control, own_table, own_table, own_table, comment),
  make_gif(2, 2, colours),
  "GIF89a" .. ("\xFF"):rep(30),
}

local function complete(found, expected) return not session.difference(expected, found, "") end

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
    local did_fail = reached()
    -- A copy that lacks parts is written as it is, sound or not.
    if not complete(found.cloned, expected.cloned) then found.saved_clone = nil end
    if not complete(found.built, expected.built) then found.saved_made = nil end
    local why = session.difference(found, expected, "session")
    if why then error(("%s %d: %s"):format(what, n, why)) end
    for class, count in pairs(host.live()) do error(("%s %d: %d of %s alive"):format(what, n, count, class)) end
    if not did_fail then assert(complete(found, expected), what .. ": parts are missing though nothing failed") end
  until not did_fail
  return n - 1
end

local failed = 0
for _, bytes in ipairs(documents) do
  if failing_plugin then
    local fail = assert(package.loadlib(failing_plugin, "FailAllocation"))
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
