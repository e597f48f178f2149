-- GifScreenZKV and GifPaletteZKV.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))
local opened = t.open()

-- Screens
t.check_fields(opened.Screen,
  { Width = 5, Height = 4, HasPalette = true, ColorResolution = 4, Sorted = true, PaletteDepth = 2,
    BackgroundColor = 3, Aspect = 0x31 },
  GifScreenZKV(),
  { Width = 1 << 40, Height = -2, HasPalette = false, ColorResolution = -(1 << 40), Sorted = false,
    PaletteDepth = 300, BackgroundColor = math.mininteger, Aspect = math.maxinteger })
t.check_fields(GifStringToGifZKV("GIF87a").Screen, { HasPalette = false, Sorted = false, PaletteDepth = 1 },
  GifScreenZKV(), { HasPalette = true, Sorted = true })
local palette, screen = GifPaletteZKV(), opened.Screen
screen.Palette = palette
assert(screen.Palette ~= palette, "the stored table hides the record's")
local copy = screen:Clone()
t.expect("Count", copy.Palette.Count, 4)
copy.Palette = nil
t.expect("Palette", copy:Clone().Palette, nil)
t.expect("table without colours", GifStringToGifZKV("GIF87a").Screen.Palette.Count, 0)

-- How many entries count
for _, count in ipairs { 256, 1, 0, 2 } do
  palette.Count = count
  t.expect("Count", palette.Count, count)
end
for _, count in ipairs { 257, -1 } do
  t.expect_out_of_bounds(count, 257, "value", "count", function() palette.Count = count end)
end
t.expect("Count", palette.Count, 2)

-- Entries of a free-standing table: 256, whatever the count
local kComponents = { "Red", "Green", "Blue" }
for _, name in ipairs { "Red", "Green", "Blue", "Value" } do
  for index, value in pairs { [0] = 1, [5] = 44, [255] = 255 } do
    t.expect(name, palette[name](index), 0)
    palette[name][index] = value
    t.expect(name, palette[name](index), value)
    palette[name][index] = 0
  end
  for _, index in ipairs { 256, -1, 1 << 32 } do
    t.expect_out_of_bounds(index, 256, "index", name:lower(), palette[name], index)
  end
end
for _, name in ipairs(kComponents) do
  for _, index in ipairs { 256, -1, math.mininteger } do
    t.expect_out_of_bounds(index, 256, "index", name:lower(), function() palette[name][index] = 1 end)
  end
  for value, stored in pairs { [300] = 44, [-1] = 255, [1 << 40 | 7] = 7 } do
    palette[name][1] = value
    t.expect(name .. " of " .. value, palette[name](1), stored)
  end
end
for index, entry in pairs { [3] = 3, [259] = 3, [-1] = 255, [256] = 0, [-(1 << 40) + 9] = 9 } do
  palette.Value[index] = 0xFF123456 -- the index is folded, the top byte ignored
  t.expect("Value", palette:Value(entry), 0x123456)
  for i, name in ipairs(kComponents) do t.expect(name, palette[name](entry), ({ 0x12, 0x34, 0x56 })[i]) end
  palette.Value[entry] = 0
end

-- Clones hold the entries that count, the rest is black
palette.Value[1], palette.Value[2], palette.Value[5] = 0x111111, 0x222222, 0x555555
copy = palette:Clone()
t.expect("Count", copy.Count, 2)
for index, colour in pairs { [1] = 0x111111, [2] = 0, [5] = 0 } do
  t.expect("cloned " .. index, copy:Value(index), colour)
end
palette.Count = 256
t.expect("cloned last", palette:Clone():Value(5), 0x555555)

-- Views read the record alone
local view = opened.Screen.Palette
for index, colour in pairs { [0] = 0x000102, 0x123456, 0xFDFEFF, 0x070809 } do
  t.expect("Value", view:Value(index), colour)
end
for _, name in ipairs { "Red", "Green", "Blue", "Value" } do
  local before = view[name](0)
  view[name][0] = 9
  view[name][255] = 9
  t.expect(name, view[name](0), before)
  for _, index in ipairs { 4, -1 } do t.expect_out_of_bounds(index, 4, "index", name:lower(), view[name], index) end
end
view.Count = 1
t.expect("Count", view.Count, 4)
copy = view:Clone()
t.expect("Count", copy.Count, 4)
t.expect("Value", copy:Value(2), 0xFDFEFF)
