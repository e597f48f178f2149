-- The example scripts: their command lines, what they print of odd and damaged files, what they write.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local examples = dofile(here .. "../support/examples.lua")
local run = examples.run

local function extension(label, ...)
  local bytes = "\x21" .. string.char(label)
  for _, sub_block in ipairs { ... } do bytes = bytes .. ("s1"):pack(sub_block) end
  return bytes .. "\0"
end
-- Its data are two pixels of index 3, whatever its size.
local function image(left, top, width, height, colours)
  return "\x2C" .. ("<I2I2I2I2B"):pack(left, top, width, height, colours and 0x82 or 0) ..
    (colours or "") .. "\2\2\xDC\x0A\0"
end
local kScreen = "GIF89a" .. "\1\0\1\0" .. "\0\0\0"
local kOdd = kScreen .. table.concat {
  extension(0xFF, "NETSCAPE2.0", "\1\0\0"), extension(0xFF, "NETSCAPE2.0", "\1\3\0"), extension(0xFF, "NETSCAPE2.0", "\1"),
  extension(0xFF, "short"), extension(0xFF),
  extension(0xF9, "\x1F\xFF\xFF\7"), extension(0xF9, "\4\1\0"),
  extension(0xFE, "it's \"\0\x1B[2J\xFF\\\n"), extension(0xFE, ("x"):rep(255), "y"), extension(0xFE),
  extension(0x01, ("<I2I2I2I2BBBB"):pack(1, 2, 3, 4, 5, 6, 7, 8), "Hi"), extension(0x01, "Hi"),
  extension(0x99, "z"),
}

-- Command lines: script, arguments, status, the end of the one line that is said.
local kOperands = {
  first = "IN.gif OUT.png", build = "[IN.png...] OUT.gif", edit = "IN.gif OUT.gif",
  tree = "PATH...", frames = "IN.gif FOLDER", sheet = "IN.gif OUT.png", report = "IN.gif OUT.html", check = "PATH...",
}
for script, operands in pairs(kOperands) do
  local status, output = run(script, "--help")
  t.expect(script .. " --help", status, 0)
  assert(output:find(operands, 1, true) and output:find("--help", 1, true), output)
  for _, row in ipairs {
    { {}, 2, ": expected " .. operands .. "; --help tells more\n" },
    { { "--wrong", "a", "b" }, 2, ": unknown option --wrong; --help tells more\n" },
    { { "--", "-no/such/place", operands:find(" ") and "b" or nil }, 1, ": -no/such/place: " },
  } do
    local arguments, expected_status, message = table.unpack(row)
    local got, _, errors = run(script, table.unpack(arguments))
    t.expect(script .. message, got, expected_status)
    assert(errors:find(message, 1, true) and not errors:find("\n."), errors)
  end
end
for _, arguments in ipairs { { "--jobs" }, { "--jobs=0" }, { "--jobs", "1.5" } } do
  t.expect("jobs", run("check", "x", table.unpack(arguments)), 2)
end
t.expect("value", run("tree", "--json=1", "x"), 2)
for _, row in ipairs {
  { 2, "edit", "--delay", "x" }, { 2, "edit", "--delay=656" }, { 2, "edit", "--blocks=1-x" }, { 2, "edit", "--recolour=12=34" },
  { 2, "edit", "--jobs=2", "a", "b" }, { 2, "edit", "--at=nowhere" }, { 2, "edit", "--crop=1,2,3" }, { 2, "edit", "--resize=x" },
  { 2, "payload", "--set", "x=y", "a", "b" }, { 2, "payload", "a", "b" }, { 2, "tree", "--where=(", "a" }, { 1, "join", "a", "b" },
  { 2, "build", "--colours=1" }, { 2, "build", "--loop=65536" }, { 1, "build", "x.png" }, { 1, "build", arg[0], "x.gif" },
} do t.expect(table.concat(row, " "), run(table.unpack(row, 2)), row[1]) end

-- Trees
local function tree_of(folder, bytes)
  local _, output, errors = run("tree", examples.write(folder .. "/a", bytes))
  local lines = {}
  for line in output:gmatch("  +([^\n]*)\n") do lines[#lines + 1] = line:gsub("  +", " | ") end
  return lines, errors
end
examples.with_folder(function(folder)
  for bytes, expected in pairs {
    [t.sample] = {
      "version | GIF89a",
      "logical screen | 5 x 4 pixels, 4 bits per primary colour, background 3, pixel aspect 1.00",
      "global table | 4 colours, sorted",
      "0 | graphic control | delay 7.70 s, transparent 4",
      "1 | image | 3 x 2 | at (1, 2) | interlaced, local table of 2 colours, sorted",
      "2 | image | 1 x 1 | at (0, 0)",
      "sum | 2 images, 1 extension, 7 pixels, 7.70 s",
    },
    [kOdd] = {
      "version | GIF89a", "logical screen | 1 x 1 pixels, 1 bit per primary colour, background 0", "global table | none",
      '0 | application | "NETSCAPE2.0", loops forever, 14 bytes in 2 sub-blocks',
      '1 | application | "NETSCAPE2.0", repeats 3 times, 14 bytes in 2 sub-blocks',
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
      "sum | 0 images, 13 extensions, 0 pixels, 655.35 s, repeats 3 times",
    },
  } do
    local lines = tree_of(folder, bytes)
    for i, line in ipairs(expected) do t.expect("line " .. i, lines[i], line) end
    t.expect("lines", #lines, #expected)
  end
  local _, json = run("tree", "--json", examples.write(folder .. "/j", kScreen .. extension(0xFE, 'a"\n\xFF') .. image(1, 2, 3, 4)))
  t.expect("json", json, '{"file":"' .. folder .. '/j","blocks":[{"bytes":4,"crc32":"4efadaf3","damaged":false,"index":0,' ..
    '"label":254,"length":8,"offset":13,"text":"a\\u0022\\u000Aÿ","type":"comment"},' ..
    '{"crc32":"95a9729e","data":{"bytes":2,"clear_codes":1,"code_size":2,"codes":4,"pixels":2,"sub_blocks":1},"height":4,' ..
    '"index":1,"interlaced":false,"left":1,"length":15,"offset":21,"top":2,"type":"image","width":3}],"bytes":36,"findings":[' ..
    '{"block":1,"damage":true,"kind":"too_few_pixels","offset":34,"pixels":10},' ..
    '{"damage":true,"kind":"no_trailer","offset":36}],' ..
    '"screen":{"aspect":0,"background":0,"color_resolution":1,"height":1,"width":1},' ..
    '"sum":{"delay_cs":0,"extensions":1,"images":1,"pixels":12},"version":"GIF89a"}\n')

  -- Cut off anywhere, or with any one byte turned over: no script error
  local damaged = {}
  for i = 1, #t.sample do
    damaged[#damaged + 1] = examples.write(folder .. "/cut" .. i, t.sample:sub(1, i))
    damaged[#damaged + 1] = examples.write(
      folder .. "/turned" .. i, t.sample:sub(1, i - 1) .. string.char(t.sample:byte(i) ~ 0xFF) .. t.sample:sub(i + 1))
  end
  for _, options in ipairs { {}, { "--json" } } do
    local status, _, errors = run("tree", table.unpack(table.move(damaged, 1, #damaged, #options + 1, options)))
    t.expect("damaged", status, 1)
    assert(not errors:find("gifhost:"), errors)
  end
  for i = 20, #damaged, 24 do
    t.expect(damaged[i], run("report", damaged[i], folder .. "/page"), 0)
    local _, _, errors = run("sheet", damaged[i], folder .. "/sheet")
    assert(not errors:find("gifhost:"), errors)
  end
end)

-- PNG files become an animation that stores what is new in each and keeps their few colours; edits change what they say.
examples.with_folder(function(folder)
  local a, b, c = Picture(4, 3), Picture(4, 3), Picture(2, 5)
  b:FillRect(1, 1, 2, 2, 0x102030)
  c.Mask = Picture(2, 5)
  c.Mask:FillRect(0, 0, 1, 5, 0xFFFFFF)
  for name, picture in pairs { a = a, b = b, c = c } do picture:SavePNG(folder .. "/" .. name) end
  a, b, c = folder .. "/a", folder .. "/b", folder .. "/c"
  local made, edited = folder .. "/made", folder .. "/edited"
  local function lines_of(path) return (select(2, run("tree", path)):gsub("[^\n]*\n", "", 2):gsub("  +", " ")) end
  t.expect("build", run("build", "--loop=2", "--delay", "0.05", a, a, b, b, a, made), 0)
  assert(lines_of(made):find("table 2 colours.*0.10 s.* 4 x 3 at %(0, 0%).*0.10 s.* 2 x 2 at %(1, 1%).*0.05 s.* 1 x 1 .*" ..
    "3 images, 4 extensions, 17 pixels, 0.25 s, repeats 2 times"), lines_of(made))
  for _, row in ipairs {
    { "--delay=x3", "0.75 s, repeats 2" }, { "--delay=1", "3.00 s" }, { "--loop=7", "repeats 7 times" },
    { "--comment=hi", '7 comment "hi"' },
    { "--blocks=3-4", "0 graphic.*1 image 2 x 2.* 1 image, 1 ext" }, { "--reverse", "2 image 4 x 3.*4 image 2 x 2.*6 image 2 x 2.*3 images.*20 pixels" },
  } do
    t.expect(row[1], run("edit", row[1], made, edited), 0)
    assert(lines_of(edited):find(row[2]), row[1] .. lines_of(edited))
  end
  run("edit", "--recolour=000000=FF8000", made, edited)
  t.expect("recoloured", FolderItem(edited):OpenAsGIFZKV():MakeFirstPicture():Pixel(0, 0), 0xFF8000)
  t.expect("sizes", run("build", "--colours=3", a, c, b, made), 0)
  local gif = FolderItem(made):OpenAsGIFZKV()
  local image = gif:Block(4).Picture
  t.expect("shown of it", ("%d %d %d %d"):format(image.Left, image.Top, image.Width, image.Height), "2 0 1 5")
  t.expect("the one before goes", gif:Block(1).Extension.FirstData.DataString:byte() >> 2 > 1, true)
end)

-- A folder is checked file by file, in order, in folders within it too.
examples.with_folder(function(folder)
  assert(os.execute("mkdir " .. folder .. "/in"))
  examples.write(folder .. "/b.gif", "no GIF")
  examples.write(folder .. "/in/it's.GIF", t.sample)
  examples.write(folder .. "/a.gif", kScreen .. image(0, 0, 0, 0) .. ";")
  examples.write(folder .. "/c.txt", "")
  local status, output = run("check", "--jobs=2", folder)
  t.expect("status", status, 1)
  t.expect("lines", output:gsub(folder:gsub("%p", "%%%0"), ""):gsub("; [^\n]*", ""), [[
ok      /a.gif: 1 image, 0 extensions, 0 pixels, 1 image without pixels or colours
FAILED  /b.gif: no GIF file
ok      /in/it's.GIF: 2 images, 1 extension, 7 pixels
3 files, 1 failed
]])
  t.expect("file", run("check", folder .. "/in/it's.GIF"), 0)
  t.expect("empty", run("check", "--timeout", "9", folder .. "/c.txt/.."), 1)
end)

-- The page escapes what the file says, and warns of mistakes.
examples.with_folder(function(folder)
  local path = examples.write(folder .. "/<b>&.gif", table.concat {
    "GIF89a", "\4\0\4\0\x82\9\0", ("\0"):rep(24),
    extension(0xFE, "</blockquote><script>\"'&\1\xFF"),
    extension(0xF9, "\1\1\0\xFF"), image(3, 0, 2, 1),
    extension(0xF9, "\x10\2\0\0"), image(0, 0, 2, 1, ("\0"):rep(24)), image(0, 0, 0, 1),
    extension(0xF9), extension(0xFF, "x") })
  t.expect("status", run("report", path, folder .. "/page"), 0)
  local page = examples.read(folder .. "/page")
  for _, part in ipairs {
    "<title>&lt;b&gt;&amp;.gif</title>", "&lt;/blockquote&gt;&lt;script&gt;&quot;&#39;&amp;␁ÿ</blockquote>",
    "<li>plays once (it says nothing of loops)</li>",
    "The background index, 9, lies beyond the 8 colours of the global table.",
    "Global table: the last 4 of its 8 colours are unused.",
    "Images 0, 2: a delay under 20 ms.", "Image 0: reaches outside the logical screen.",
    "Image 2: no pixels.", "Image 0: the transparent index lies beyond the colours.",
    "Image 1: the last half of its own colours, or more, is unused.", "Image 1: a disposal that no one has defined.",
    "Block 6 (graphic control): too short", "Block 7 (application): too short", "0000  78 ",
  } do
    assert(page:find(part, 1, true), part)
  end
end)
