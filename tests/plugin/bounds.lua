-- Small files that claim much: what they cost in memory and time, and that nothing of them is lost.
--
--   gifhost bounds.lua [NUMBER]   -- one of the cases below; without a number, files that are opened, cloned and saved

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local examples = dofile(here .. "../support/examples.lua")
local processes = require "gif.processes"

local kScreen, kMiB = "GIF89a\1\0\1\0\0\0\0", 1 << 20

-- An image, and codes of `size` and more bits as its data.
local function image(width, height, data, size)
  local blocks = {}
  for at = 1, #(data or ""), 255 do blocks[#blocks + 1] = ("s1"):pack(data:sub(at, at + 254)) end
  return ("<BI2I2I2I2BB"):pack(0x2C, 0, 0, width, height, 0, size or 8) .. table.concat(blocks) .. "\0"
end

-- Codes that fill the table with ever longer strings of one pixel, the longest last. All that follow have 12 bits.
local function long_strings(size)
  local bytes, bits, count = {}, 0, 0
  local entry, width = (1 << size) + 2, size + 1
  for code = entry - 1, 4095 do
    bits, count = bits | (code < entry and 1 or code) << count, count + width
    if code + 1 >= 1 << width and width < 12 then width = width + 1 end
    while count >= 8 do bytes[#bytes + 1], bits, count = string.char(bits & 255), bits >> 8, count - 8 end
  end
  return table.concat(bytes) .. (count > 0 and string.char(bits) or "")
end

-- As many of the blocks as make a megabyte, and their number.
local function megabyte(blocks) return blocks:rep(kMiB // #blocks), kMiB // #blocks end

local kStrings = long_strings(2)
local function codes(one, two, bytes) return ("<I3"):pack(one | two << 12):rep(bytes // 3) end
local kPixel, kFull = "\0\x81\x02", 98300  -- a clear code, a pixel, an end code; bytes that end 65,535 rows
local kAnyDocument, kEachByte, kEachBlock = 4 * kMiB, 16384, 1024

local kCases = {
  -- what, blocks, their number, bytes for each byte of the file
  { "no data", image(65535, 65535):rep(4000), 4000, 0 },
  { "no data, narrow", image(1, 65535):rep(4000), 4000, 0 },
  { "no data, low", image(65535, 1):rep(4000), 4000, 0 },
  { "a pixel", image(65535, 65535, kPixel):rep(4000), 4000, 0 },
  { "a pixel, narrow", image(1, 65535, kPixel):rep(4000), 4000, 0 },
  { "a pixel, low", image(65535, 1, kPixel):rep(4000), 4000, 0 },
  { "a string drained again, from no data", image(9017, 65535, kStrings, 2):rep(20), 20 },
  { "a string drained again, an end code a row", megabyte(image(9017, 65535, kStrings .. codes(5, 5, kFull), 2)) },
  { "a string drained again, never alike", image(9017, 65535, kStrings .. codes(5, 1, kFull), 2), 1 },
  { "a long string a row", megabyte(image(65535, 65535, kStrings .. codes(4095, 4095, kFull), 2)) },
  { "a long string a row, never alike", image(65535, 65535, kStrings .. codes(4095, 4094, kFull), 2), 1 },
  { "end codes", megabyte(image(65535, 65535, kStrings .. codes(5, 5, kFull), 2)) },
  { "end codes, a pixel a row", megabyte(image(1, 65535, kStrings .. codes(5, 1, kFull), 2)) },
  { "a million empty images", image(0, 0):rep(1000000), 1000000, 0 },
  { "a million extensions", ("\x21\xFE\0"):rep(1000000), 1000000, 0 },
  { "a million sub-blocks of a byte", "\x21\xFE" .. ("\1a"):rep(1000000) .. "\0", 1, 21 },
}

local function touched() -- the most so far, in bytes
  local file <close> = io.open("/proc/self/status")
  local text = file:read("a")
  return tonumber(text:match("VmHWM:%s*(%d+) kB")) << 10, tonumber(text:match("VmSize:%s*(%d+) kB")) << 10
end

-- Every image is there and can be read at its end.
local function expect_whole(what, gif, count)
  t.expect(what .. ": blocks", gif.Count, count)
  for i = 0, count - 1, math.max(count // 100, 1) do
    local picture = gif:Block(i).Picture
    if picture and picture.Width > 0 then t.expect(what, picture:PixelData(picture.Height - 1).Size, picture.Width) end
  end
end

local _, address_space = touched()
local sanitized = address_space > 1 << 40 -- slower, and with memory of its own

local case = kCases[math.tointeger(arg[1])]
if case then
  local what, blocks, count, each_byte = table.unpack(case, 1, 4)
  local bytes = kScreen .. blocks
  collectgarbage()
  local before = touched()
  local start_s = os.clock()
  local gif = GifStringToGifZKV(bytes)
  local taken_s = os.clock() - start_s
  local most = kAnyDocument + #bytes * (each_byte or kEachByte) + count * kEachBlock
  assert(taken_s < 2 * (sanitized and 5 or 1), what .. ": " .. taken_s .. " s")
  assert(sanitized or touched() - before <= most, what .. ": " .. touched() - before .. " bytes")
  expect_whole(what, gif, count)
  return
end

-- Opened from a string, a file and a pipe; cloned; saved, and read again.
examples.with_folder(function(folder)
  local function save(gif)
    local item = FolderItem(folder .. "/saved.gif")
    assert(item:SaveAsGIFZKV(gif))
    return item
  end
  local sound = GIFZKV()
  local block, large = GifBlockZKV(), GifPictureZKV()
  large.Width, large.Height, block.Intro, block.Picture = 12000, 12000, 0x2C, large
  sound:Add(block)
  local kFiles = {
    ["many without data"] = { kScreen .. image(1000, 1000):rep(150), 150 },
    ["cut short"] = { (kScreen .. image(9000, 9000, "\0\2\4\6\8")):sub(1, -4), 1 },
    ["sound"] = { (save(sound) and examples.read(folder .. "/saved.gif")), 1 },
  }
  for what, row in pairs(kFiles) do
    local bytes, count = table.unpack(row)
    local path = examples.write(folder .. "/" .. what .. ".gif", bytes)
    local opened = GifStringToGifZKV(bytes)
    expect_whole(what, opened, count)
    expect_whole(what .. " in a file", FolderItem(path):OpenAsGIFZKV(), count)
    for how, gif in pairs { [", saved"] = opened, [", cloned and saved"] = opened:Clone() } do
      expect_whole(what .. how, save(gif):OpenAsGIFZKV(), count)
      collectgarbage() -- they are large
    end
    local code = "local g = FolderItem('/dev/stdin'):OpenAsGIFZKV() print(g.Count, g:Block(g.Count - 1).Picture.Width)"
    local words = table.move({ "-e", code }, 1, 2, #processes.this_program() + 1, processes.this_program())
    local pipe <close> = io.popen("cat '" .. path .. "' | " .. processes.command(words))
    t.expect(what .. " through a pipe", pipe:read("l"), count .. "\t" .. opened:Block(count - 1).Picture.Width)
  end

  local start_s = os.clock()
  save(GifStringToGifZKV(kScreen .. image(65535, 65535)))
  assert(sanitized or os.clock() - start_s < 2, "seconds to save an empty image")
end)
