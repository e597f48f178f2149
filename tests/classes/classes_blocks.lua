-- GifBlockZKV, GifExtensionZKV and GifDataZKV.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))
local opened = t.open()

-- Blocks
t.check_fields(opened:Block(1), { Intro = 0x2C }, GifBlockZKV(), { Intro = -1 - (1 << 40) })
local image, extension, picture = opened:Block(1), GifExtensionZKV(), GifPictureZKV()
t.expect("Extension of an image", image.Extension, nil)
image.Extension = extension -- the record has none: what is stored shows
t.expect("stored Extension", image.Extension, extension)
image.Picture = picture
assert(image.Picture ~= picture, "the stored picture hides the record's")
local copy = image:Clone()
t.expect("cloned Picture", copy.Picture.Top, 2)
assert(copy.Extension ~= extension and copy.Extension.Count == 0, "the stored extension is not cloned")
copy.Extension, copy.Picture = nil, nil
t.expect("cleared", copy.Extension or copy.Picture, nil)
copy = copy:Clone()
t.expect("cloned nil", copy.Extension or copy.Picture, nil)

-- Extensions
t.check_fields(opened:Block(0).Extension, { Marker = 0xF9 }, GifExtensionZKV(), { Marker = 1 << 40 })
local first, second = GifDataZKV(), GifDataZKV()
t.expect("Count", extension.Count, 0)
t.expect_out_of_bounds(0, 0, "index", "Data", function() return extension.FirstData end)
for _, added in ipairs { first, second, false } do extension:Add(added or nil) end
t.expect("FirstData", extension.FirstData, first)
t.expect("Data", extension:Data(1), second)
t.expect("Data", extension:Data(2), nil)
local view = opened:Block(0).Extension
view:Add(first)
t.expect("Count", view.Count, 3)
for _, index in ipairs { -1, 3 } do
  t.expect_out_of_bounds(index, 3, "index", "Data", extension.Data, index)
  t.expect_out_of_bounds(index, 3, "index", "Data", view.Data, index)
end
first.DataString = "one"
copy = extension:Clone()
t.expect("Count", copy.Count, 3)
t.expect("Data", copy:Data(2), nil)
copy:Data(0).DataString = "another"
t.expect("Data", first.DataString, "one")
for i, data in pairs(view:Clone()) do t.expect("Data", data.DataString, view:Data(i).DataString) end

-- Sub-blocks: string, bytes, in both modes
local function expect_data(what, data, bytes)
  t.expect(what .. " Length", data.Length, #bytes)
  t.expect(what .. " DataString", data.DataString, bytes)
  t.expect_bytes(what .. " DataMemory", data.DataMemory, bytes ~= "" and bytes or nil)
end
for i, bytes in ipairs { "\1\2\3\4", "\xFFx", "\0" } do
  local record = view:Data(i - 1)
  record.DataString, record.DataMemory = "ignored", MemoryBlock(7)
  expect_data("view", record, bytes)
  expect_data("clone of view", record:Clone(), bytes)
end
expect_data("new", GifDataZKV(), "")
for _, bytes in ipairs { "abc", "", "\0\xFF\0", ("\xE2\x82"):rep(5000) } do
  local data, block = GifDataZKV(), MemoryBlock(bytes)
  data.DataString = bytes
  expect_data("string", data, bytes)
  expect_data("clone", data:Clone(), bytes)
  data.DataMemory = block
  if #bytes > 0 then block[0] = 0x77 end -- the block was copied
  expect_data("memory", data, bytes)
  data.DataMemory = nil
  expect_data("cleared", data, "")
end
