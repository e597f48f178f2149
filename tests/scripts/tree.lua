-- examples/tree.lua: what it prints, and that nothing damaged stops it.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "support.lua")

-- Runs it over files of these contents; gives the exit status, and what it printed for each file line by line.
local function run(...)
  local real_print, real_exit, real_error, real_arg = print, os.exit, io.stderr, arg
  local files, trees, status = {}, {}, nil
  for i, bytes in ipairs { ... } do
    files[i] = os.tmpname()
    local file <close> = assert(io.open(files[i], "wb"))
    file:write(bytes)
  end
  files[0] = here .. "../../examples/tree.lua"
  arg = files
  io.stderr = { write = function(_, _, _, message)
    local name, what = message:match("^(.-): (.*)")
    trees[name] = { what }
  end }
  os.exit = function(code) status = code end
  local lines
  print = function(line)
    if line and not line:find("^ ") then
      lines = {}
      trees[line] = lines
    elseif line then
      lines[#lines + 1] = line:gsub("^ +", ""):gsub("  +", " | ")
    end
  end
  local succeeded, message = pcall(dofile, files[0])
  print, os.exit, io.stderr, arg = real_print, real_exit, real_error, real_arg
  for i, name in ipairs(files) do
    os.remove(name)
    trees[i] = trees[name]
  end
  assert(succeeded, message)
  return status, trees
end

local function extension(label, ...)
  local bytes = "\x21" .. string.char(label)
  for _, sub_block in ipairs { ... } do bytes = bytes .. ("s1"):pack(sub_block) end
  return bytes .. "\0"
end
local kScreen = "GIF89a" .. "\1\0\1\0" .. "\0\0\0"

local status, trees = run(t.sample, "no GIF", kScreen .. table.concat {
  extension(0xFF, "NETSCAPE2.0", "\1\0\0"), extension(0xFF, "NETSCAPE2.0", "\1\3\0"), extension(0xFF, "NETSCAPE2.0", "\1"),
  extension(0xFF, "short"), extension(0xFF),
  extension(0xF9, "\x1F\xFF\xFF\7"), extension(0xF9, "\4\1\0"),
  extension(0xFE, "it's \"\0\x1B[2J\xFF\\\n"), extension(0xFE, ("x"):rep(255), "y"), extension(0xFE),
  extension(0x01, ("<I2I2I2I2BBBB"):pack(1, 2, 3, 4, 5, 6, 7, 8), "Hi"), extension(0x01, "Hi"),
  extension(0x99, "z"),
})
t.expect("status", status, 1)
t.expect("message", trees[2][1], "no GIF file")
for tree, lines in pairs {
  [1] = {
    "version | GIF89a",
    "logical screen | 5 x 4 pixels, 4 bits per primary colour, background 3, pixel aspect 1.00",
    "global table | 4 colours, sorted",
    "0 | graphic control | delay 7.70 s, transparent 4",
    "1 | image | 3 x 2 | at (1, 2) | interlaced, local table of 2 colours, sorted",
    "2 | image | 1 x 1 | at (0, 0)",
    "sum | 2 images, 1 extension, 7 pixels, 7.70 s",
  },
  [3] = {
    "version | GIF89a", "logical screen | 1 x 1 pixels, 1 bit per primary colour, background 0", "global table | none",
    '0 | application | "NETSCAPE2.0", loops forever, 14 bytes in 2 sub-blocks',
    '1 | application | "NETSCAPE2.0", loops 3 times, 14 bytes in 2 sub-blocks',
    '2 | application | "NETSCAPE2.0", 12 bytes in 2 sub-blocks',
    "3 | application | damaged, 5 bytes in 1 sub-block", "4 | application | damaged, 0 bytes in 0 sub-blocks",
    "5 | graphic control | delay 655.35 s, disposal 7 (unknown), transparent 7, waits for input",
    "6 | graphic control | damaged, 3 bytes in 1 sub-block",
    [[7 | comment | "it's \"\x00\x1B[2J\xFF\\\n", 14 bytes in 1 sub-block]],
    '8 | comment | "' .. ("x"):rep(60) .. '"..., 256 bytes in 2 sub-blocks',
    '9 | comment | "", 0 bytes in 0 sub-blocks',
    '10 | plain text | "Hi", 3 x 4 at (1, 2), cells 5 x 6, colours 7 on 8, 14 bytes in 2 sub-blocks',
    "11 | plain text | damaged, 2 bytes in 1 sub-block",
    "12 | extension 0x99 | 1 byte in 1 sub-block",
    "sum | 0 images, 13 extensions, 0 pixels, 655.35 s, loops 3 times",
  },
} do
  for i, line in ipairs(lines) do t.expect("line " .. i, trees[tree][i], line) end
  t.expect("lines", #trees[tree], #lines)
end

-- Cut off anywhere, or with any one byte turned over
local damaged = {}
for i = 1, #t.sample do
  damaged[#damaged + 1] = t.sample:sub(1, i)
  damaged[#damaged + 1] = t.sample:sub(1, i - 1) .. string.char(t.sample:byte(i) ~ 0xFF) .. t.sample:sub(i + 1)
end
run(table.unpack(damaged))
