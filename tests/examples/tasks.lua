-- What people want done with GIFs, each by its command: what comes of the pixels, the times and the other blocks.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local examples = dofile(here .. "../support/examples.lua")
local make_gif = dofile(here .. "../support/make_gif.lua")
local run, gif = examples.run, require "gif"
local lighthouse = here .. "../../examples/gifs/lighthouse.gif"

-- Four frames on 4 x 3 pixels that need each other: the second lets the first show through, the third is disposed of.
local function delay(cs, disposal, transparent)
  return { 0xF9, ("<BI2B"):pack((disposal or 0) << 2 | (transparent and 1 or 0), cs, transparent or 0) }
end
local kColours = { 0x000000, 0xFF0000, 0x00FF00, 0x0000FF }
local bytes = make_gif(4, 3, kColours,
  { 0xFF, "NETSCAPE2.0", "\1\0\0" }, { 0xFE, "first" },
  delay(10), { width = 4, height = 3, pixels = "\0\1\2\3\0\1\2\3\0\1\2\3" },
  delay(20, 1, 3), { left = 1, top = 1, width = 2, height = 2, pixels = "\2\3\3\2" },
  { 0x99, "unknown" },
  delay(30, 3), { left = 3, top = 0, width = 1, height = 3, pixels = "\1\1\1" },
  delay(40, 1), { left = 0, top = 2, width = 1, height = 1, pixels = "\3" }, { 0xFE, "last" })

-- What is seen after each frame, as indexes of the colours above, rows between bars; "." for nothing.
local function seen(path)
  local frames = {}
  local names = {}
  for i, colour in ipairs(kColours) do names[colour] = tostring(i - 1) end
  gif.play(gif.open(path), {}, function(_, canvas)
    local picture, rows = canvas:Picture(), {}
    for y = 0, picture.Height - 1 do
      local row = {}
      for x = 0, picture.Width - 1 do
        local hidden = picture.Mask and picture.Mask:Pixel(x, y) ~= 0
        row[#row + 1] = hidden and "." or names[picture:Pixel(x, y)] or "?"
      end
      rows[#rows + 1] = table.concat(row)
    end
    frames[#frames + 1] = table.concat(rows, "|")
  end)
  return table.concat(frames, " ")
end

local function times(path)
  local list = {}
  for _, frame in ipairs(gif.open(path).frames) do list[#list + 1] = frame.delay_cs end
  return table.concat(list, " ")
end

local function others(path)
  local list = {}
  for _, block in ipairs(gif.open(path).blocks) do
    if block.extension and not block.control_of then list[#list + 1] = table.concat(block.extension.sub_blocks, "+") end
  end
  return (table.concat(list, " "):gsub("%c", ""))
end

local kSeen = "0123|0123|0123 0123|0223|0123 0121|0221|0121 0123|0223|3123"
local kOthers = "NETSCAPE2.0+ first unknown last"

examples.with_folder(function(folder)
  local a, out = examples.write(folder .. "/a.gif", bytes), folder .. "/out.gif"
  t.expect("made", seen(a), kSeen)
  -- Options of edit, what is seen then, the times, the other blocks if they change
  for _, row in ipairs {
    { {}, kSeen, "10 20 30 40" },
    { { "--whole" }, kSeen, "10 20 30 40" },
    { { "--every=2" }, "0123|0123|0123 0121|0221|0121", "30 70" },
    { { "--every=2", "--whole", "--reverse" }, "0121|0221|0121 0123|0123|0123", "70 30" },
    { { "--crop=1,1,3x2" }, "123|123 223|123 221|121 223|123", "10 20 30 40" },
    { { "--crop=0,0,1x1" }, "0 0 0 0", "10 20 30 40" },
    { { "--rotate=90" }, "000|111|222|333 000|121|222|333 000|121|222|111 300|121|222|333", "10 20 30 40" },
    { { "--rotate=180", "--flip=v" }, "3210|3210|3210 3210|3220|3210 1210|1220|1210 3210|3220|3213", "10 20 30 40" },
    { { "--flip=h" }, "3210|3210|3210 3210|3220|3210 1210|1220|1210 3210|3220|3213", "10 20 30 40" },
    { { "--rotate=270" }, "333|222|111|000 333|222|121|000 111|222|121|000 333|222|121|003", "10 20 30 40" },
    { { "--recolour=FF0000=0000FF" }, (kSeen:gsub("1", "3")), "10 20 30 40" },
    { { "--delay=1:0.05,2-:x2" }, kSeen, "10 5 60 80" },
    { { "--delay=0.5", "--last-delay=2" }, kSeen, "50 50 50 200" },
    { { "--loop=3", "--comment=new" }, kSeen, "10 20 30 40", "NETSCAPE2.0+ first unknown last new" },
    { { "--blocks=1-3" }, "0123|0123|0123", "10", "first" },
  } do
    local arguments, expected_seen, expected_times, expected_others = table.unpack(row)
    local what = table.concat(arguments, " ")
    arguments = table.move({ a, out }, 1, 2, #arguments + 1, table.move(arguments, 1, #arguments, 1, {}))
    local status, _, errors = run("edit", table.unpack(arguments))
    t.expect(what .. errors, status, 0)
    t.expect(what, seen(out), expected_seen)
    t.expect(what, times(out), expected_times)
    t.expect(what, others(out), expected_others or kOthers)
  end
  run("edit", lighthouse, out)
  t.expect("no options", examples.read(out), examples.read(lighthouse))

  -- What an edit does not name stays, down to the bits; whole and back again
  local document = gif.open(a)
  document:save(out)
  t.expect("built anew", run("diff", a, out), 0)
  run("edit", "--whole", a, out)
  t.expect("whole", run("diff", a, out), 1)
  t.expect("whole, seen", run("diff", "--seen", a, out), 0)
  for _, frame in ipairs(gif.open(out).frames) do t.expect("whole", frame.width * frame.height, 12) end
  document = gif.open(out)
  gif.make_deltas(document)
  document:save(out)
  t.expect("deltas, seen", run("diff", "--seen", a, out), 0)
  t.expect("deltas", gif.open(out).frames[3].width * gif.open(out).frames[3].height, 3)
  -- Tables of their own, holes, more than 256 colours at once
  local many = { width = 16, height = 16, palette = {}, pixels = {} }
  for i = 0, 255 do many.palette[i + 1], many.pixels[i + 1] = i << 8, string.char(i) end
  many.pixels = table.concat(many.pixels)
  local other = { left = 1, top = 1, width = 2, height = 1, palette = { 0xFF0000, 0x0000FF }, pixels = "\0\1" }
  local b = examples.write(folder .. "/b.gif", make_gif(17, 16, nil, delay(5), other, delay(5), many, delay(5), other))
  local _, said = run("edit", "--whole", b, out)
  assert(said:find("2 frames had more than 256 colours"), said) -- with the transparent one
  t.expect("first frame", run("edit", "--blocks=0-1", b, b), 0)
  t.expect("own table", run("edit", "--whole", b, out), 0)
  t.expect("seen", run("diff", "--seen", b, out), 0)

  -- Sizes and drawings
  for size, expected in pairs { ["50%"] = "80x60", ["40x"] = "40x30", x60 = "80x60", ["7x9"] = "7x9", ["200%"] = "320x240" } do
    t.expect(size, run("edit", "--resize", size, lighthouse, out), 0)
    local made = gif.open(out)
    t.expect(size, made.width .. "x" .. made.height, expected)
    t.expect(size, others(out), others(lighthouse))
    local picture, from = nil, GifStringToPictureZKV(examples.read(lighthouse)):Scaled(made.width, made.height)
    gif.play(made, {}, function(frame, canvas) picture = frame.number == 0 and canvas:Picture() or picture end)
    for i = 0, 6 do
      local x, y = i * (made.width - 1) // 6, i * (made.height - 1) // 6
      local away = math.abs((picture:Pixel(x, y) >> 8 & 255) - (from:Pixel(x, y) >> 8 & 255))
      assert(away < 24, ("%s: %d, %d: %06X %06X"):format(size, x, y, picture:Pixel(x, y), from:Pixel(x, y)))
    end
  end
  local mark = Picture(2, 2)
  mark:FillRect(0, 0, 2, 2, 0x123456)
  mark:SavePNG(folder .. "/mark.png")
  t.expect("overlay", run("edit", "--overlay", folder .. "/mark.png", "--at=top right", a, out), 0)
  t.expect("overlay", seen(out), "01??|01??|0123 01??|02??|0123 01??|02??|0121 01??|02??|3123")
  t.expect("indexes stay", gif.open(out).frames[1].pixels:sub(9), "\0\1\2\3")
  for _, row in ipairs { { "top", 0, 40 }, { "bottom", 80, 120 }, { "30,50", 50, 90 } } do
    local at, first, last = table.unpack(row)
    t.expect("text", run("edit", "--text=Hj", "--at", at, "--colour=00FF00", "--outline=FF00FF", lighthouse, out), 0)
    local letters, outside = 0, 0
    gif.play(gif.open(out), {}, function(frame, canvas)
      local picture = canvas:Picture()
      for y = 0, frame.number == 5 and 119 or -1 do
        for x = 0, 159 do
          local is_letter = picture:Pixel(x, y) == 0x00FF00
          if is_letter then letters = letters + 1 end
          if is_letter and (y < first or y >= last) then outside = outside + 1 end
        end
      end
    end)
    assert(letters > 10 and outside == 0, at .. letters .. " " .. outside)
  end
  t.expect("no font", run("edit", "--text=x", "--font=/no/such.ttf", a, out), 1)
  local _, recoloured = run("edit", "--recolour=FF0000=010203,ABCDEF=000000", a, out)
  assert(recoloured:find("global 1 +#FF0000 %-> #010203") and recoloured:find("no table has #ABCDEF"), recoloured)

  -- Joined: one after the other, nothing of the first shows through the second
  t.expect("join", run("join", "--pause=1", a, lighthouse, a, out), 0)
  local joined = gif.open(out)
  t.expect("frames", #joined.frames, 4 + 16 + 4)
  t.expect("size", joined.width .. "x" .. joined.height .. tostring(joined:loops()), "160x1200")
  t.expect("pause", joined.frames[4].delay_cs + joined.frames[20].delay_cs, 200)
  local last
  gif.play(joined, {}, function(frame, canvas)
    local picture = canvas:Picture()
    if frame.number == 20 then t.expect("in the middle", picture:Pixel(79, 59), 0xFF0000) end
    if frame.number == 20 then t.expect("cleared", picture.Mask:Pixel(1, 1), 0xFFFFFF) end
    last = picture:Pixel(78, 60)
  end)
  t.expect("last", last, 0x0000FF)

  -- Payloads come out as they went in, whatever their bytes
  local payload = folder .. "/payload"
  for kind, content in pairs {
    xmp = "<x:xmpmeta>" .. ("h\u{E9}\1\xFE\xFF"):rep(400), icc = ("\0\1\2"):rep(300), comment = ("\0c"):rep(200) } do
    examples.write(payload, content)
    t.expect(kind, run("payload", "--set", kind .. "=" .. payload, a, out), 0)
    t.expect(kind, run("payload", "--get", kind .. "=" .. payload .. "2", out), 0)
    t.expect(kind, examples.read(payload .. "2"), content)
    t.expect(kind, seen(out), kSeen)
    t.expect("again", run("payload", "--set", kind .. "=" .. payload, out, out), 0)
    local _, listed = run("payload", out)
    t.expect("once", select(2, listed:gsub(kind .. " ", "")), 1)
    t.expect("removed", run("payload", "--remove", kind, out, out), 0)
    t.expect("gone", run("payload", "--get", kind .. "=" .. payload, out), 1)
  end
  -- XMP stands in the file as it is, then bytes that lead readers of sub-blocks to its end
  examples.write(payload, "<x/>")
  run("payload", "--set=xmp=" .. payload, a, out)
  local trailer = "\1"
  for i = 255, 0, -1 do trailer = trailer .. string.char(i) end
  assert(examples.read(out):find("!\xFF\11XMP DataXMP<x/>" .. trailer .. "\0", 1, true), "XMP")

  -- What differs
  run("edit", "--recolour=00FF00=00FE00", "--delay=3:1", "--comment=x", a, out)
  local status, lines = run("diff", "--picture=" .. payload, a, out)
  t.expect("differ", status, 1)
  for _, line in ipairs {
    "global table: 1 colour differs: 2 #00FF00 -> #00FE00", "block 10: delay_cs: 40 -> 100", "blocks: 12 -> 13",
    "seen: different: frames 0 to 3; in frame 0 3 pixels" } do
    assert(lines:find(line, 1, true), lines)
  end
  t.expect("picture", Picture(payload):Pixel(8 + 4 + 8 + 4 + 8 + 2, 8), 0xFF0000)
  t.expect("same", run("diff", a, a), 0)
end)
