-- What a script can do with a document, from its bytes to pictures and back, and what must come out of it.
--
-- Parts are tables of plain values. Where something failed, parts may be missing, but nothing may be wrong.

local session = {}

-- --- Taking things apart ---------------------------------------------------------------------------------------------

local kLists = { GIFZKV = "Block", GifExtensionZKV = "Data" }

-- What each class tells beyond its properties.
local kMore = {
  GifPaletteZKV = function(palette, parts)
    local entries = {}
    for i = 0, palette.Count - 1 do
      entries[i + 1] = ("%02X%02X%02X"):format(palette:Red(i), palette:Green(i), palette:Blue(i))
    end
    parts.entries = table.concat(entries)
  end,
  GifPictureZKV = function(picture, parts)
    parts.rows, parts.copied = {}, session.parts(picture:CopyData())
    for row = 0, math.min(picture.Height, 100) - 1 do
      parts.rows[row + 1] = session.parts(picture:PixelData(row)) or ""
    end
  end,
}

-- The properties that are read, by class: none that stands for an item of a list.
local properties = setmetatable({}, { __index = function(known, class)
  local names = {}
  for _, property in ipairs(host.describe(class).properties) do
    local of_list = kLists[class] and (property.name == "Count" or property.name:find("^First"))
    if not of_list then names[#names + 1] = property.name end
  end
  known[class] = names
  return names
end })

function session.parts(value)
  if type(value) ~= "userdata" then return value end
  local class, parts = host.class(value), {}
  if class == "MemoryBlock" then return tostring(value) end
  for _, name in ipairs(properties[class]) do parts[name] = session.parts(value[name]) end
  for i = 1, kLists[class] and value.Count or 0 do
    parts[i] = session.parts(value[kLists[class]](value, i - 1)) or {}
  end
  if kMore[class] then kMore[class](value, parts) end
  return parts
end

local function surface(picture)
  return picture and { width = picture.Width, height = picture.Height, rgb = picture:RGB() } or nil
end

-- --- The session ---------------------------------------------------------------------------------------------------

local function clone(object) return object and object:Clone() end

local function build(document)
  local made = GIFZKV()
  made.Header, made.Screen = document.Header, clone(document.Screen)
  for i = 0, document.Count - 1 do
    local block = document:Block(i)
    if block then
      local copy = GifBlockZKV()
      copy.Intro = block.Intro
      copy.Picture = clone(block.Picture)
      copy.Extension = clone(block.Extension)
      made:Add(copy)
    end
  end
  return made
end

-- Of each image, and of the first in several ways.
local function pictures(document, bytes)
  local images = {}
  for i = 0, document.Count - 1 do
    local block = document:Block(i)
    local image = block and block.Picture
    if image then
      local picture, mask, mask1 = surface(image:MakePicture()), surface(image:MakeMask()), surface(image:MakeMask(1))
      images[#images + 1] = { picture = picture, mask = mask, mask1 = mask1 }
    end
  end
  local first = { { picture = surface(document:MakeFirstPicture()), mask = surface(document:MakeFirstMask()) } }
  for i, picture in pairs { document:MakeFirstPictureWithMask(), GifStringToPictureZKV(bytes) } do
    first[i + 1] = { picture = surface(picture), mask = surface(picture.Mask) }
  end
  return images, first
end

-- A step that ends with an exception gave nothing; only one for memory may come, where something was made to fail.
session.may_raise = false

local function try(step, ...)
  local succeeded, result = pcall(step, ...)
  if succeeded then return result end
  local for_memory = type(result) == "table" and result.class == "OutOfMemoryException"
  if not for_memory or not session.may_raise then error(result, 0) end
end

-- `path` names a file to save to. What could not be made is nil.
function session.run(bytes, path)
  local found = {}
  local document = GifStringToGifZKV and try(GifStringToGifZKV, bytes)
  found.opened = try(session.parts, document)
  if not document then return found end
  local function step(name, f) found[name] = try(f) end
  local copy = try(document.Clone, document)
  local made = try(build, document)
  step("cloned", function() return session.parts(copy) end)
  step("built", function() return session.parts(made) end)
  for name, saved in pairs { saved_view = document, saved_clone = copy, saved_made = made } do
    step(name, function()
      local item = FolderItem(path)
      if not item:SaveAsGIFZKV(saved) then return nil end
      return session.parts(item:OpenAsGIFZKV())
    end)
  end
  step("pictures", function()
    local images, first = pictures(document, bytes)
    found.first = first
    return images
  end)
  return found
end

-- --- The judge ------------------------------------------------------------------------------------------------------

local function is_neutral(value)
  if type(value) == "string" then return value:find("[^\0]") == nil end
  return value == nil or value == 0 or value == false
end

-- Nil when `actual` is `expected` but for missing parts, else where it is not. Lists may lack items.
local function difference(actual, expected, where)
  if type(actual) ~= "table" or type(expected) ~= "table" then
    if actual == expected or is_neutral(actual) then return nil end
    return ("%s is %s, expected %s"):format(where, tostring(actual), tostring(expected))
  end
  local next_expected = 1
  for i, item in ipairs(actual) do
    while next_expected <= #expected and difference(item, expected[next_expected], "") do
      next_expected = next_expected + 1
    end
    if next_expected > #expected then return ("%s[%d] is none of those expected"):format(where, i) end
    next_expected = next_expected + 1
  end
  for key, value in pairs(actual) do
    local why = type(key) == "string" and difference(value, expected[key], where .. "." .. key)
    if why then return why end
  end
  return nil
end

function session.is_complete(found, expected) return not difference(expected, found, "") end

-- Nil when what a session found is what it should have found but for missing parts, else where it is not.
function session.wrong(found, expected)
  -- A document that lacks parts is written as it is, sound or not.
  for saved, from in pairs { saved_view = "opened", saved_clone = "cloned", saved_made = "built" } do
    if not session.is_complete(found[from], expected[from]) then found[saved] = nil end
  end
  -- Without the first image another is the first.
  for i, first in pairs(found.first or {}) do
    for _, image in pairs(expected.pictures) do
      if not difference(first, image, "") then found.first[i] = nil end
    end
  end
  return difference(found, expected, "session")
end

return session
