-- What the example scripts tell of damaged and disputed files. With a folder as argument: puts the disputed ones there.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local disputed = dofile(here .. "../support/disputed.lua")
local examples = dofile(here .. "../support/examples.lua")
local run, gifhost = examples.run, require "gif.processes".this_program()[1]

if arg[1] then
  for _, name in ipairs { "full_table", "beyond" } do examples.write(("%s/%s.gif"):format(arg[1], name), disputed[name]) end
  return
end

-- check.lua: a file, options, status, what is said.
local kFullTable = "full_table in block 0, at byte 6,%d+: .* %(361 pixels%)"
local kBeyond = "index_beyond_table in block 1, at byte 44: "
examples.with_folder(function(folder)
  local function check(bytes, ...)
    local status, output, errors = run("check", examples.write(folder .. "/a.gif", bytes), ...)
    return status, output .. errors
  end
  for _, row in ipairs {
    { t.sample, 0, "^2 images, 1 extension, 7 pixels; " }, { t.sample, 1, "odd: 2 images.*odd_sub_blocks", "--strict" },
    { t.sample .. "junk", 0, "; after_trailer at byte %d+: .*lost on saving %(4 bytes%)\n$" },
    { t.sample:sub(1, -2), 1, "damaged: .*; no_trailer at byte " },
    { t.sample:sub(1, -6), 1, "damaged: .*; too_few_pixels in block 2.*; cut_short in block 2, " },
    { t.sample:sub(1, -2) .. "\0", 1, "damaged: .*; stray_byte at byte %d+: .*%(1 byte%)" },
    { "GIF90a" .. t.sample:sub(7), 1, "damaged: 0 images, .*not_a_gif at byte 0: " },
    { disputed.full_table, 1, "damaged: 1 image.*; " .. kFullTable }, { disputed.full_table, 0, kFullTable, "--tolerant" },
    { disputed.beyond, 1, "not kept: .*1 image with pixels beyond the colours.*" .. kBeyond },
    { disputed.beyond, 0, kBeyond, "--tolerant" }, { disputed.beyond, 1, "odd: .*" .. kBeyond, "--tolerant", "--strict" },
  } do
    local bytes, status, said = table.unpack(row)
    local got, output = check(bytes, table.unpack(row, 4))
    t.expect(output, got, status)
    assert(output:find(said), output)
  end
end)

-- tree.lua: where things are.
examples.with_folder(function(folder)
  local _, output = run("tree", "--offsets", examples.write(folder .. "/a.gif", disputed.beyond))
  local lines = {}
  for line in output:gmatch("[^\n]+") do lines[#lines + 1] = line:gsub("  +", " | ") end
  for i, expected in pairs {
    [2] = " | 0 | 6 | version | GIF89a", [4] = " | 13 | 12 | global table | 4 colours",
    [5] = " | 25 | 8 | 0 | graphic control | delay 0.00 s, transparent 4", [6] = " | 33 | 16 | 1 | image | 2 x 2 | at (0, 0)",
    [7] = " | 44 | 5 | data | code size 3, 3 bytes, 6 codes, 1 clear code, 4 pixels",
    [8] = " | 0 | 50 | sum | 1 image, 1 extension, 4 pixels",
  } do t.expect("line " .. i, lines[i], expected) end
  assert(lines[9]:find("^ | odd | index_beyond_table in block 1"), lines[9])
end)

-- Who edits or draws sees what browsers show, and writes what they read; unless told otherwise.
examples.with_folder(function(folder)
  local full, beyond = examples.write(folder .. "/a.gif", disputed.full_table), examples.write(folder .. "/b.gif", disputed.beyond)
  local edited = folder .. "/edited.gif"
  local function pixels_of(path, plugin)
    local words = ("host.use [[%s]] for _, block in pairs(FolderItem([[%s]]):OpenAsGIFZKV()) do " ..
      "if block.Picture then io.write(tostring(block.Picture.Data)) end end"):format(plugin, path)
    local pipe <close> = io.popen(('"%s" -e "%s"'):format(gifhost, words))
    return pipe:read("a")
  end
  t.expect("status", run("edit", full, edited), 0)
  assert(pixels_of(edited, "designed") == disputed.pixels, "a full table is read on")
  t.expect("status", run("edit", "--as-designed", full, edited), 0)
  assert(pixels_of(edited, "tolerant") ~= disputed.pixels, "a row ends at a full table")
  t.expect("status", run("edit", beyond, edited), 0)
  t.expect("pixels", pixels_of(edited, "designed"), "\4\1\2\3")
  local status, _, errors = run("edit", "--as-designed", beyond, edited)
  t.expect("status", status, 1)
  assert(errors:find("block 1 has lost pixels that lie beyond its colours"), errors)

  t.expect("page", run("report", examples.write(folder .. "/c.gif", disputed.full_table .. "junk"), folder .. "/page"), 0)
  local page = examples.read(folder .. "/page")
  for _, part in ipairs { "<li>In block 0, at byte 6,", "(361 pixels).", "<li>At byte " } do assert(page:find(part, 1, true), part) end
end)
