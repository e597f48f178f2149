-- What scripts meet on a host that lacks something: no crash, no exception but the ones told here, nothing lost.
--
--   gifhost --without NAME [--without NAME...] classes_without.lua NAME...
--
-- With no name: all of them present, so that each case is known to tell the difference.

local t = dofile((arg[0]:gsub("[^/]*$", "support.lua")))
local missing = {}
for _, name in ipairs(arg) do missing[name] = true end
local function lacks(...)
  for _, name in ipairs { ... } do
    if not missing[name] then return false end
  end
  return true
end

local kInstance = lacks "PluginNewInstance"
local kBlock = lacks "newMemoryBlock" or lacks("Operator_Convert", "memoryBlockGetPtr")
local kSize = lacks("REALGetPropValueInteger", "memoryBlockGetSize")
local kText = lacks "REALBuildString"
local kRead = lacks "StringGetCString" or lacks "LenB"

-- Raised as ever, or, when no exception can be made either, nil.
local function expect_no_block(bytes, f, ...)
  if kInstance then return t.expect("MemoryBlock", f(...), nil) end
  t.expect_error("OutOfMemoryException",
    kText and "" or ("Failed to allocate a memoryblock with %d bytes in size."):format(bytes), f, ...)
end

-- Free-standing objects
local document, extension, data = GIFZKV(), GifExtensionZKV(), GifDataZKV()
local screen, palette, picture = GifScreenZKV(), GifPaletteZKV(), GifPictureZKV()
local block = GifBlockZKV()
data.DataString = "\1\2\3"
extension:Add(data)
document:Add(block)
picture.Width, picture.Height, picture.Data = 2, 1, MemoryBlock("\5\6")
block.Extension, block.Picture, screen.Palette, document.Screen = extension, picture, palette, screen
for _, object in ipairs { document, extension, data, screen, palette, picture, block } do
  t.expect("no clone of " .. host.class(object), object:Clone() == nil, kInstance or lacks(host.class(object)))
end
t.expect("Length", data.Length, lacks "LenB" and 0 or 3)
if kRead then
  t.expect("DataMemory", data.DataMemory, nil)
elseif kBlock then
  expect_no_block(3, function() return data.DataMemory end)
else
  t.expect_bytes("DataMemory", data.DataMemory, "\1\2\3")
end
data.DataMemory = MemoryBlock("four")
t.expect("DataString", data.DataString,
  (kText or kSize or lacks("Operator_Convert", "memoryBlockGetPtr")) and "" or "four")
if kBlock then
  expect_no_block(2, picture.PixelData, 0)
  t.expect("CopyData", picture:CopyData(), nil)
else
  local bytes = kSize and "\0\0" or "\5\6" -- of a block of unknown size nothing is read
  t.expect_bytes("PixelData", picture:PixelData(0), bytes)
  t.expect_bytes("CopyData", picture:CopyData(), bytes)
end
if kInstance then t.expect("Block", document:Block(7), nil) end

-- Views
local opened = not kRead and t.open() or nil
t.expect("no document", opened == nil, kInstance or kRead or lacks "GIFZKV")
if not opened then return end
t.expect("Header", opened.Header, kText and "" or "GIF89a")
if lacks "GifScreenZKV" then
  t.expect("Screen", opened.Screen, nil)
  opened.Screen = screen -- what is stored shows when no view can be made
  t.expect("Screen", opened.Screen, screen)
end
local copy = opened:Clone()
t.expect("Count", copy.Count, 3)
t.expect("no block", copy:Block(1) == nil and opened:Block(1) == nil, lacks "GifBlockZKV")
if lacks "GifBlockZKV" then return end

local parts = opened:Block(0).Extension
t.expect("no extension", parts == nil, lacks "GifExtensionZKV")
if parts then
  copy = parts:Clone()
  t.expect("Count", copy.Count, 3)
  t.expect("no data", copy:Data(0) == nil and parts:Data(0) == nil, lacks "GifDataZKV")
end
local view = opened:Block(1).Picture
t.expect("no picture", view == nil, lacks "GifPictureZKV")
if not view then return end
t.expect("no table", view:Clone().Palette == nil and view.Palette == nil, lacks "GifPaletteZKV")
if kBlock then
  t.expect("Data", view.Data or view:CopyData() or view:Clone().Data, nil)
  expect_no_block(3, view.PixelData, 1)
else
  for _, copied in ipairs { view.Data, view:CopyData(), view:Clone().Data } do t.expect_bytes("Data", copied, t.pixels) end
end
