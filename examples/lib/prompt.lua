-- What the host's prompt says of values, and its own words: help and look.

local extensions, text = require "gif.extensions", require "gif.text"

local prompt = { words = {} }

local kLongestString, kLongestBytes = 400, 24 -- that are shown; bytes as a part of something
local kMostEntries = 24 -- of a table
local kMostColours = 8

-- --- Objects -----------------------------------------------------------------------------------------------------------

local function colour(value) return ("#%06X"):format(value) end

local function colours_of(palette)
  local shown = {}
  for i = 0, math.min(palette.Count, kMostColours) - 1 do shown[i + 1] = colour(palette:Value(i)) end
  if palette.Count > kMostColours then shown[#shown + 1] = "…" end
  return table.concat(shown, " ")
end

local function image_facts(image)
  return text.list {
    ("%s at (%d, %d)"):format(text.size(image), image.Left, image.Top), image.Interlace and "interlaced" or "",
    image.HasPalette and "a palette of " .. text.count(image.Palette.Count, "colour") or "" }
end

local function extension_facts(extension)
  local read = extensions.read(extension)
  return extensions.name(read) .. ", " .. extensions.describe(read)
end

-- By class; others tell their properties.
local kFacts = {
  GIFZKV = function(gif)
    local images = 0
    for _, block in pairs(gif) do images = images + (block.Picture and 1 or 0) end
    local size = gif.Screen and text.size(gif.Screen) or "without a screen"
    return text.list { size, text.count(gif.Count, "block"), text.count(images, "image") }
  end,
  GifScreenZKV = function(screen)
    return text.list {
      text.size(screen), screen.HasPalette and text.count(screen.Palette.Count, "colour") or "no colours",
      "background " .. screen.BackgroundColor }
  end,
  GifPaletteZKV = function(palette)
    return text.list({ text.count(palette.Count, "colour"), colours_of(palette) }, ": ")
  end,
  GifBlockZKV = function(block)
    if block.Picture then return "image, " .. image_facts(block.Picture) end
    return block.Extension and extension_facts(block.Extension) or ("introducer 0x%02X"):format(block.Intro)
  end,
  GifPictureZKV = image_facts,
  GifExtensionZKV = extension_facts,
  GifDataZKV = function(data)
    return text.count(data.Length, "byte") .. ", " .. text.quoted(data.DataString, kLongestBytes)
  end,
  MemoryBlock = function(block)
    return text.count(block.Size, "byte") .. ", " .. text.quoted(block:String(0, math.min(block.Size, kLongestBytes + 1)), kLongestBytes)
  end,
  Picture = function(picture) return text.size(picture) .. (picture.Mask and ", with a mask" or "") end,
  FolderItem = function(item) return item.NativePath .. (item.Exists and "" or ", nothing there") end,
}

local describe

-- What is neither an object nor nil, in the order of the registry.
local function properties_of(object)
  local facts = {}
  for _, property in ipairs(host.describe(host.class(object)).properties) do
    local told, value = pcall(function() return object[property.name] end)
    if told and value ~= nil and not host.class(value) then
      facts[#facts + 1] = ("%s %s"):format(property.name, describe(value, property.type:lower() == "color"))
    end
  end
  return table.concat(facts, ", ")
end

local function object_facts(object)
  local class = host.class(object)
  local told, facts = pcall(kFacts[class] or properties_of, object)
  if not told then facts = properties_of(object) end -- parts are missing
  return facts == "" and class or class .. " " .. facts
end

-- --- Other values ------------------------------------------------------------------------------------------------------

-- UTF-8 as it is, but for what a terminal would obey; other bytes as numbers.
local function string_facts(bytes)
  local part = bytes:sub(1, kLongestString)
  local names = { ["\n"] = "\\n", ["\r"] = "\\r", ["\t"] = "\\t", ['"'] = '\\"', ["\\"] = "\\\\" }
  local shown = utf8.len(part) and text.shown((part:gsub('[\n\r\t"\\]', names))) or text.quoted(part):sub(2, -2)
  return ('"%s"%s'):format(shown, #bytes > #part and (" and %s more"):format(text.count(#bytes - #part, "byte")) or "")
end

-- Frames and documents of the library, by the fields that they have.
local function library_facts(value)
  local function has(...)
    for _, name in ipairs { ... } do
      if rawget(value, name) == nil then return false end
    end
    return true
  end
  if has("frames", "blocks", "width", "height") then
    return ("document %d x %d, %s, %s, %s"):format(value.width, value.height, text.count(#value.blocks, "block"),
      text.count(#value.frames, "frame"), text.seconds(value:duration_cs()))
  elseif has("left", "top", "width", "height", "delay_cs") then
    return text.list {
      has("number") and "frame " .. value.number or "frame",
      ("%d x %d at (%d, %d)"):format(value.width, value.height, value.left, value.top), extensions.describe_control(value) }
  end
  return nil
end

-- One level deep: a list's values, else names and values.
local function table_facts(value, are_colours)
  local facts = {}
  local function inner(entry) return type(entry) == "table" and (library_facts(entry) or tostring(entry)) or describe(entry, are_colours) end
  local count = #value
  for i = 1, math.min(count, kMostEntries) do facts[i] = inner(value[i]) end
  local names = {}
  for name in next, value do
    local is_listed = math.type(name) == "integer" and name >= 1 and name <= count
    if not is_listed then names[#names + 1] = name end
  end
  table.sort(names, function(a, b) return tostring(a) < tostring(b) end)
  for i = 1, math.min(#names, kMostEntries - #facts) do
    local name = names[i]
    local shown = type(name) == "string" and name:find("^[%a_][%w_]*$") and name or "[" .. describe(name) .. "]"
    facts[#facts + 1] = shown .. " = " .. inner(value[name])
  end
  local more = count + #names - #facts
  if more > 0 then facts[#facts + 1] = ("and %d more"):format(more) end
  if #facts == 0 then return "{}" end
  local is_long = table.concat(facts):find(", ", 1, true) -- of parts themselves: a line each
  return is_long and "{\n  " .. table.concat(facts, "\n  ") .. "\n}" or "{ " .. table.concat(facts, ", ") .. " }"
end

-- What the prompt prints of a value.
function describe(value, is_colour)
  if is_colour and math.type(value) == "integer" and value >= 0 and value <= 0xFFFFFF then return colour(value) end
  if host.class(value) then return object_facts(value) end
  if type(value) == "string" then return string_facts(value) end
  if type(value) == "table" then
    local own = getmetatable(value)
    if type(own) == "table" and own.__tostring then return tostring(value) end
    return library_facts(value) or table_facts(value, is_colour)
  end
  return tostring(value)
end

-- The same of what a line gave; is_colour when the host knows that it is one. Lists of colours have such names.
function prompt.describe(value, line, is_colour)
  return describe(value, is_colour or line:find("%f[%a]colours%s*$") or line:find("%f[%a]colours%[[^%]]*%]%s*$"))
end

-- --- help --------------------------------------------------------------------------------------------------------------

local kHelp = [[
Lua 5.4: what is typed is run, and what it gives is shown. A beginning goes on in the next line.

  g = FolderItem("in.gif"):OpenAsGIFZKV()      a file's tree; g, g.Screen, g:Block(3) tell what they are
  gif = require "gif"                          documents as lists of frames: d = gif.open("in.gif")
  help(g), help(GIFZKV), help "GIFZKV.Block"   the members of an object or a class; one of them
  look(g), look(g, "out.png")                  draws it here, or into a PNG file: documents, images, palettes, pictures
  TAB                                          goes on with a name, a member (g.Screen.) or a file inside a string
  Ctrl-C, Ctrl-D                               stops what runs or drops the line; ends the session]]

-- The page of all members, among the sources or where it is installed; nil when it is not there.
local function page()
  local folder = package.searchpath("prompt", package.path):gsub("[^/]*$", "")
  for _, place in ipairs { "../../docs/scripting.md", "../../../doc/gif-plugin/scripting.md" } do
    local file <close> = io.open(folder .. place)
    if file then return file:read("a") end
  end
end

-- What the page says of a class, by member: the first lines below its heading, or below those that it shares them with.
local function texts_of(class)
  local texts, headings, written = {}, {}, page()
  local section = written and ("\n" .. written .. "\n## "):match("\n## " .. class .. "\n(.-)\n## ") or ""
  section = section:gsub("```.-```", "")
  for line in section:gmatch("[^\n]+") do
    local heading = line:match("^### `([%w_]+)")
    if heading then
      if headings.text then headings = {} end
      headings[#headings + 1] = heading:lower()
    elseif #headings > 0 then
      headings.text = (headings.text and headings.text .. "\n" or "") .. line:gsub("%*%*", ""):gsub("%[(.-)%]%(.-%)", "%1")
      for _, name in ipairs(headings) do texts[name] = headings.text end
    end
  end
  return texts
end

-- Prints the members of a class, or the one of that name, and what they are.
local function print_members(class, wanted)
  local known, texts, said, count = host.describe(class), texts_of(class or "Global methods"), nil, 0
  if not wanted then print(class and "class " .. known.name or "global methods") end
  local function show(name, declaration)
    if wanted and wanted:lower() ~= name:lower() then return end
    local told = texts[name:lower()]
    if said and said ~= told then print("      " .. said:gsub("\n", "\n      ")) end
    print("  " .. declaration)
    said, count = told, count + 1
  end
  for _, property in ipairs(known.properties) do
    show(property.name, ("%s as %s%s"):format(property.name, property.type, property.readonly and "  (read-only)" or ""))
  end
  for _, method in ipairs(known.methods) do
    show(method.declaration:match("^%s*([%w_]+)"), method.declaration .. (method.assignable and "  (assignable)" or ""))
  end
  if said then print("      " .. said:gsub("\n", "\n      ")) end
  return count
end

local function all()
  local names = {}
  for i, method in ipairs(host.describe().methods) do names[i] = method.declaration:match("^%s*([%w_]+)") end
  return ("%s\n\nclasses:  %s\nglobals:  %s host help look, and Lua's"):format(
    kHelp, table.concat(host.classes(), " "), table.concat(names, " "))
end

local function print_table(of)
  local names = {}
  for name, value in pairs(of) do names[#names + 1] = tostring(name) .. (type(value) == "function" and "()" or "") end
  table.sort(names)
  print(#names == 0 and "an empty table" or table.concat(names, " "))
  if package.loaded.gif == of then print("docs/library.md tells all of it.") end
end

local function help(_, what)
  if what == nil then return print(all()) end
  local class = host.class(what) or type(what) == "userdata" and tostring(what):match("^class (%S+)")
  local name = type(what) == "string" and what or tostring(what):match("^method (%S+)")
  if class then
    print_members(class)
  elseif name then
    local owner, member = name:match("^([%w_]+)[.:]([%w_]+)$")
    if owner then
      if print_members(owner, member) == 0 then print(("%s has no member %s"):format(owner, member)) end
    elseif print_members(nil, name) == 0 then
      print_members(name)
    end
  elseif type(what) == "table" then
    print_table(what)
  else
    print("Nothing more is known of a " .. type(what) .. "; help alone tells what there is.")
  end
end

local function word(name, call, said)
  prompt.words[name] = setmetatable({}, { __call = call, __tostring = said, __name = name })
end

word("help", help, all)
word("look", function(_, ...)
  local done, why = pcall(require("gif.looking").look, ...)
  if not done then io.stderr:write("look: ", tostring(why), "\n") end
end, function()
  return "look(g) draws a document, an image, a palette or a picture; look(g, \"out.png\") writes it to a file"
end)
local function leave() return "Ctrl-D, or os.exit(), ends the session" end
word("exit", function() os.exit() end, leave)
word("quit", function() os.exit() end, leave)

return prompt
