-- Writes what the fuzzers start from, taken from the tests' documents:
--
--   gifhost fuzz/make_seeds.lua fuzz/corpus

local documents = dofile(arg[0]:gsub("[^/]*$", "") .. "../tests/support/documents.lua")

local function write(name, bytes)
  local file = assert(io.open(arg[1] .. "/" .. name, "wb"))
  file:write(bytes)
  file:close()
end

-- An image of 12-bit codes that fill the table, which takes 3 KB, and go on.
local function full_table()
  local codes, blocks = {}, {}
  for i = 1, 2200, 2 do
    local one, two = i == 1 and 2048 or i * 37 & 2047, i % 6 == 1 and 2050 + i // 2 or i * 11 & 2047
    codes[#codes + 1] = ("<I3"):pack(one | two << 12)
  end
  codes = table.concat(codes)
  for at = 1, #codes, 255 do blocks[#blocks + 1] = ("s1"):pack(codes:sub(at, at + 254)) end
  return "GIF89a" .. ("<I2I2BBB"):pack(200, 150, 0, 0, 0) .. ("<BI2I2I2I2BB"):pack(0x2C, 0, 0, 200, 150, 0x40, 11)
    .. table.concat(blocks) .. "\0\x3B"
end

write("read/full_table", full_table())
for i, bytes in ipairs(documents) do
  local choices = {}
  for n = 1, 150 do choices[n] = string.char(n * n * (i + 6) // 7 & 255) end
  choices = table.concat(choices)
  write("read/document_" .. i, bytes)
  write("write/sound_" .. i, "\1" .. choices .. bytes)
  write("write/unsound_" .. i, "\0" .. choices .. bytes)
  write("session/document_" .. i, ("<s2"):pack(bytes) .. choices)
end
