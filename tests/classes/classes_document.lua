-- GIFZKV, and what all classes share: modes, identity, lifetimes.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))

-- A new document is empty.
local new = GIFZKV()
t.expect("Screen", new.Screen, nil)
t.expect("Header", new.Header, "")
t.expect_out_of_bounds(0, 0, "index", "Block", function() return new.FirstBlock end)
for _, index in ipairs { 0, -1, 1, math.mininteger, math.maxinteger } do
  t.expect_out_of_bounds(index, 0, "index", "Block", new.Block, index)
end

-- An opened one gives a new view of its record at each call.
local opened = t.open()
for _, index in ipairs { 3, -1, 1 << 32 } do
  t.expect_out_of_bounds(index, 3, "index", "Block", opened.Block, index)
end
for _, get in ipairs {
  function() return opened:Block(0) end, function() return opened.FirstBlock end,
  function() return opened.Screen end, function() return opened.Screen.Palette end,
  function() return opened:Block(1).Picture end, function() return opened:Block(1).Picture.Palette end,
  function() return opened:Block(0).Extension end, function() return opened:Block(0).Extension:Data(0) end,
  function() return opened:Block(0).Extension.FirstData end,
} do
  assert(get() ~= get(), "one object for two calls")
end
t.expect("FirstBlock", opened.FirstBlock.Intro, opened:Block(0).Intro)

-- What is stored in it does not show.
local screen, block = GifScreenZKV(), GifBlockZKV()
t.check_fields(opened, { Header = "GIF89a" }, new, { Header = "much longer than six bytes \xFF" })
opened.Screen = screen
opened:Add(block)
t.expect("Screen", opened.Screen.Width, 5)
t.expect("Count", opened.Count, 3)

-- A free-standing one gives the very objects back, also several times and as often as they were stored.
new.Screen = screen
t.expect("Screen", new.Screen, screen)
new.Screen = nil
t.expect("Screen", new.Screen, nil)
for _, added in ipairs { block, false, block } do new:Add(added or nil) end
t.expect("Count", new.Count, 3)
for index, added in pairs { [0] = block, [2] = block } do t.expect("Block", new:Block(index), added) end
t.expect("Block", new:Block(1), nil)
t.expect_out_of_bounds(3, 3, "index", "Block", new.Block, 3)
new.Header = nil
t.expect("Header", new.Header, "")

-- A clone goes all the way down; null entries stay.
local copy = opened:Clone()
t.expect("Count", copy.Count, 3)
t.expect("Block", copy:Block(1), copy:Block(1))
copy:Block(1).Picture.Left = 99
copy.Screen.Palette.Red[0] = 99
copy:Block(0).Extension:Data(0).DataString = ""
t.expect("Left", opened:Block(1).Picture.Left, 1)
t.expect("cloned Red", copy.Screen.Palette:Red(0), 99)
t.expect("Red", opened.Screen.Palette:Red(0), 0)
t.expect("Length", opened:Block(0).Extension:Data(0).Length, 4)
local second = copy:Clone()
second:Block(1).Picture.Palette.Green[0] = 99
t.expect("Green", copy:Block(1).Picture.Palette:Green(0), 0x12)
t.expect("Left", second:Block(1).Picture.Left, 99)
local third = new:Clone()
t.expect("Count", third.Count, 3)
t.expect("Block", third:Block(1), nil)
assert(third:Block(0) ~= block and third:Block(0) ~= third:Block(2), "shared block")

-- Documents that hold views of each other, in a chain too long for the stack: all go with the last one made.
local kOneBlock = "GIF89a" .. "\1\0\1\0\0\0\0" .. "\x21\xFE\0" .. "\x3B";
(function()
  local chain = GifStringToGifZKV(kOneBlock)
  for _ = 1, 50000 do
    local longer = GifStringToGifZKV(kOneBlock)
    longer:Add(chain.FirstBlock)
    chain = longer
  end
end)()
opened, new, copy, second, third = nil, nil, nil, nil, nil
t.expect("documents", host.live().GIFZKV, nil)
