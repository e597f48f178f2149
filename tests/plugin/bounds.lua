-- Small files that claim much: what they may cost in memory and time, in a process that has little memory.
--
--   gifhost bounds.lua [NUMBER]   -- one of the cases below; without a number, the budget's edge and pipes

local here = arg[0]:gsub("[^/]*$", "")
local t, examples = dofile(here .. "../support/support.lua"), dofile(here .. "../support/examples.lua")
local processes = require "gif.processes"

local kScreen, kMiB = "GIF89a\1\0\1\0\0\0\0", 1 << 20
-- An image whose data end at once, or are one clear code.
local function image(width, height, data)
  return ("<BI2I2I2I2BB"):pack(0x2C, 0, 0, width, height, 0, 8) .. (data or "") .. "\0"
end

local kCases = {
  -- what, blocks in bytes, their number, whether the last is an image with rows, MiB for reading, MiB touched, seconds
  { "no pixels for 35 bytes", image(65535, 65535), 1, false, 80, 4, 0.5 },
  { "what 35 bytes may have", image(8192, 8000), 1, true, 80, 4, 0.5 },
  { "20,000 images of 4 GiB", image(65535, 65535):rep(20000), 20000, false, 80, 8, 2 },
  { "20,000 images of 64 MiB", image(8192, 8192):rep(20000), 20000, false, 600, 16, 4 },
  { "20,000 images with a code each", image(8192, 8192, "\2\0\1"):rep(20000), 20000, false, 600, 64, 4 },
  { "a million empty images", image(0, 0):rep(1000000), 1000000, true, 600, 512, 4 },
  { "a million extensions", ("\x21\xFE\0"):rep(1000000), 1000000, false, 300, 256, 4 },
  { "a million sub-blocks", "\x21\xFE" .. ("\1A"):rep(1000000), 1, false, 300, 256, 4 },
}

local function status(field) -- in bytes
  local file <close> = io.open("/proc/self/status")
  return tonumber(file:read("a"):match(field .. ":%s*(%d+) kB")) << 10
end

local function has_rows(gif, index) return gif:Block(index).Picture ~= nil end

local case = kCases[math.tointeger(arg[1])]
if case then
  local what, blocks, count, last_has_rows, spare, touched, longest_s = table.unpack(case, 1, 7)
  local bytes = kScreen .. blocks
  collectgarbage()
  local in_use, most_touched, start_s = status("VmSize"), status("VmHWM"), os.clock()
  local sanitized = in_use > 1 << 40 -- the sanitizer needs all the address space there is
  if not sanitized then
    local file <close> = io.open("/proc/self/stat")
    assert(os.execute(("prlimit --pid %d --as=%d"):format(file:read("n"), in_use + spare * kMiB)))
  end
  local gif = GifStringToGifZKV(bytes)
  local taken_s = os.clock() - start_s
  t.expect(what .. ": blocks", gif.Count, count)
  t.expect(what .. ": rows", has_rows(gif, count - 1), last_has_rows)
  assert(taken_s < longest_s * (sanitized and 5 or 1), taken_s .. " s")
  assert(sanitized or status("VmHWM") - most_touched <= touched * kMiB, "memory touched")
  return
end

-- 64 MiB and 16,384 bytes for each byte of the stream, to the byte: pixels, and 8 bytes for each row.
for what, row in pairs {
  ["all that is free"] = { 8184, { 0, 0 }, true }, ["a row more"] = { 8184, { 0, 1 }, false },
  ["a pixel less in each row"] = { 8183, { 0, 1024 }, true }, ["and a row more"] = { 8183, { 0, 1025 }, false },
  ["what is refused costs nothing"] = { 8184, { 0, 0 }, true, image(65535, 65535) },
} do
  local width, last, fits, before = table.unpack(row, 1, 4)
  local size = #kScreen + 2 * #image(0, 0) + #(before or "")
  local gif = GifStringToGifZKV(kScreen .. (before or "") .. image(width + 2 * size, 8192) .. image(last[1], last[2]))
  assert(has_rows(gif, gif.Count - 2), what)
  t.expect(what, has_rows(gif, gif.Count - 1), fits)
end

-- A file counts whole from the start; a pipe's bytes once they have been delivered.
examples.with_folder(function(folder)
  local large, padding = image(16384, 8192), ("\x21\xFE\4\1\2\3\4\0"):rep(2000)
  for feed, row in pairs { ["<"] = { large .. padding, 0, true }, ["cat <"] = { large .. padding, 0, false },
                           ["cat  <"] = { padding .. large, 2000, true } } do
    local bytes, index, expected = table.unpack(row)
    local code = ("print(FolderItem('/dev/stdin'):OpenAsGIFZKV():Block(%d).Picture ~= nil)"):format(index)
    local words = table.move({ "-e", code }, 1, 2, #processes.this_program() + 1, processes.this_program())
    local input = feed .. examples.write(folder .. "/x", kScreen .. bytes) .. (feed == "<" and " " or " | ")
    local pipe <close> = io.popen(input .. processes.command(words))
    t.expect(feed, pipe:read("l"), tostring(expected))
  end
end)
