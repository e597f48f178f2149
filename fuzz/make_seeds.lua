-- Writes what the fuzzers start from, taken from the tests' documents:
--
--   gifhost fuzz/make_seeds.lua fuzz/corpus
--   gifhost fuzz/make_seeds.lua FOLDER large     -- instead inputs of up to 64 KiB, with images of a million pixels

local documents = dofile(arg[0]:gsub("[^/]*$", "") .. "../tests/support/documents.lua")

local function write(name, bytes)
  local file = assert(io.open(arg[1] .. "/" .. name, "wb"))
  file:write(bytes)
  file:close()
end

-- An image of 12-bit codes that fill the table, which takes 3 KB, and go on. In further rounds tables are cleared again.
local function full_table(width, height, rounds)
  local codes, blocks = {}, {}
  for round = 1, rounds do
    for i = 1, 2200, 2 do
      local one, two = i == 1 and 2048 or i * 37 & 2047, i % 6 == 1 and 2050 + i // (2 + (round - 1) % 3) or i * 11 & 2047
      codes[#codes + 1] = ("<I3"):pack(one | two << 12)
    end
  end
  codes = table.concat(codes)
  for at = 1, #codes, 255 do blocks[#blocks + 1] = ("s1"):pack(codes:sub(at, at + 254)) end
  return "GIF89a" .. ("<I2I2BBB"):pack(width, height, 0, 0, 0) ..
    ("<BI2I2I2I2BB"):pack(0x2C, 0, 0, width, height, 0x40, 11)
    .. table.concat(blocks) .. "\0\x3B"
end

-- An image of `size` bits whose table fills with ever longer strings, the longest in the last row that is whole; then
-- codes that damage row after row, or the end of the data.
local function long_strings(size, width, height, damage)
  local bytes, blocks, bits, count, code_width = {}, {}, 0, 0, size + 1
  for code = (1 << size) + 1, 4095 do
    bits, count = bits | (code < (1 << size) + 2 and 1 or code) << count, count + code_width
    if code + 1 >= 1 << code_width and code_width < 12 then code_width = code_width + 1 end
    while count >= 8 do bytes[#bytes + 1], bits, count = string.char(bits & 255), bits >> 8, count - 8 end
  end
  local codes = table.concat(bytes) .. string.char(bits) .. damage
  for at = 1, #codes, 255 do blocks[#blocks + 1] = ("s1"):pack(codes:sub(at, at + 254)) end
  return "GIF89a" .. ("<I2I2BBB"):pack(9, 9, 0, 0, 0) .. ("<BI2I2I2I2BB"):pack(0x2C, 0, 0, width, height, 0, size)
    .. table.concat(blocks) .. "\0\x3B"
end

local function noise(count, seed)
  local bytes = {}
  for n = 1, count do bytes[n] = string.char(n * n * (seed + 6) // 7 & 255) end
  return table.concat(bytes)
end

if arg[2] == "large" then
  for i, size in ipairs { { 1000, 1000, 18 }, { 60000, 16, 12 }, { 16, 60000, 6 }, { 999, 1001, 1 } } do
    local bytes, choices = full_table(table.unpack(size)), noise(500, i)
    write("read/large_" .. i, bytes)
    write("write/large_" .. i, "\1" .. choices .. bytes)
    write("session/large_" .. i, ("<s2"):pack(bytes) .. choices)
  end
  return
end

write("read/full_table", full_table(200, 150, 1))
for name, row in pairs {
  drained_again = { 2, 9017, 65535, "" }, drained_by_codes = { 2, 9017, 65535, ("<I3"):pack(5 | 1 << 12):rep(60) },
  string_a_row = { 0, 65535, 65535, ("\xFF\xFF\xFE"):rep(60) }, narrow = { 3, 1, 65535, "\x09\x90\x00" },
} do
  write("read/" .. name, long_strings(table.unpack(row)))
end
for i, bytes in ipairs(documents) do
  local choices = noise(150, i)
  write("read/document_" .. i, bytes)
  write("write/sound_" .. i, "\1" .. choices .. bytes)
  write("write/unsound_" .. i, "\0" .. choices .. bytes)
  write("session/document_" .. i, ("<s2"):pack(bytes) .. choices)
end
