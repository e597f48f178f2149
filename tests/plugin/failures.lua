-- Each allocation of the plugin fails once, and each call of each host function that can fail: what a session then
-- gives may lack parts, but is not wrong, and nothing stays behind.
--
--   gifhost [--plugin FAILING_PLUGIN] failures.lua SCRATCH_FILE [FAILING_PLUGIN]
--
-- With FAILING_PLUGIN, a plugin whose allocations fail on demand, the allocations; else the host's functions.

local folder = arg[0]:gsub("[^/]*$", "")
local session = dofile(folder .. "../support/session.lua")
local path, failing_plugin = ...

local kept = failing_plugin and assert(package.loadlib(failing_plugin, "KeptByScript")) or function() return 0 end
local documents = dofile(folder .. "../support/documents.lua")

-- Runs the session with the n-th of something failing, for each n until all of them succeed.
local function sweep(what, bytes, fail)
  session.may_raise = false
  local expected = session.run(bytes, path)
  session.may_raise = true
  local n = 0
  repeat
    n = n + 1
    collectgarbage()
    local before, reached = kept(), fail(n)
    local found = session.run(bytes, path)
    local did_fail, complete = reached(), session.is_complete(found, expected)
    local why = session.wrong(found, expected)
    if why then error(("%s %d: %s"):format(what, n, why)) end
    for class, count in pairs(host.live()) do error(("%s %d: %d of %s alive"):format(what, n, count, class)) end
    collectgarbage()
    if kept() ~= before then error(("%s %d: %d pieces of memory or files are not given back"):format(what, n, kept() - before)) end
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

-- --- What exactly is left of a read that lacks one allocation, and of a write ----------------------------------------

if not failing_plugin then return end
local fail = package.loadlib(failing_plugin, "FailAllocationByScript")

local function saved(gif)
  if not FolderItem(path):SaveAsGIFZKV(gif) then return nil end
  local file <close> = io.open(path, "rb")
  return file:read("a")
end

local kStart = "GIF89a\1\0\1\0\x80\0\0"
local kTable, kEnd = kStart .. "nine 9", "\x3B"
local kFirst = "!\1\1;\1;\0" -- sub-blocks that, left unread, read as the trailer
local kDescriptor = ",\4\1\5\0\5\0\1\0\x80rgbRGB\2"
local kImage, kLast = kDescriptor .. "\3\x0C\x3C\5\0", "!\2\0"
local whole = kTable .. kFirst .. kImage .. kLast
local no_image = kTable .. kFirst .. "," .. kLast
for n, row in ipairs {
  { "document" },
  { "global colours", kStart .. kFirst .. kImage .. kLast },
  { "block with its extension", kTable },
  { "sub-block", kTable .. "!\1\0" },
  { "list of sub-blocks", kTable .. "!\1\0" .. kImage .. kLast },
  { "second sub-block", kTable .. "!\1\1;\0" },
  { "list of blocks", kTable .. kImage .. kLast },
  { "block with its picture", kTable .. kFirst },
  { "local colours", no_image }, { "pixels", no_image }, { "less memory for the pixels", whole },
  { "block with its extension", kTable .. kFirst .. kImage },
  { "list of blocks", kTable },
  { "none", whole },
} do
  local what, left = table.unpack(row)
  local reached = fail(n)
  local gif = GifStringToGifZKV(whole .. kEnd)
  assert(reached() == (what ~= "none"), what)
  assert((gif and saved(gif)) == (left and left .. kEnd), what)
  reached = fail(n, true) -- from there on all fail: no more than no fault
  GifStringToGifZKV(whole .. kEnd)
  reached()
end

-- Without memory for its text an error is still raised.
local empty, release = GIFZKV(), fail(1)
local _, message = pcall(empty.Block, empty, 7)
assert(release() and tostring(message):find("OutOfBoundsException: Out of Bounds", 1, true), message)

-- Without memory for its encoder an image has no pixels; what follows stays readable.
local gif, n, seen, reached = GifStringToGifZKV(whole .. kEnd), 0, {}, nil
repeat
  n = n + 1
  release = fail(n)
  local bytes = saved(gif)
  reached = release()
  seen[bytes or "none"] = true
until not reached
assert(seen[whole .. kEnd] and seen[kTable .. kFirst .. kDescriptor .. "\0" .. kLast .. kEnd])
