-- The pages of docs/: their snippets run, and what they say about classes and bytes is so.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")

local function read(name)
  local file <close> = assert(io.open("docs/" .. name))
  return file:read("a")
end

-- Runs each ```lua block in an environment of its own. Gives what the last one returned, and how many there are.
local function run_snippets(name)
  local line, in_block, from, count, result = 0, nil, nil, 0, nil
  for text in (read(name) .. "\n"):gmatch("(.-)\n") do
    line = line + 1
    if text == "```lua" then
      in_block, from = {}, line
    elseif text == "```" and in_block then
      local code = ("\n"):rep(from) .. table.concat(in_block, "\n")
      result = assert(load(code, "@" .. name, "t", setmetatable({}, { __index = _G })))()
      in_block, count = nil, count + 1
    elseif in_block then
      in_block[#in_block + 1] = text
    end
  end
  return result, count
end

-- --- docs/scanning.md -----------------------------------------------------------------------------------------------

t.expect("snippets of scanning.md", select(2, run_snippets("scanning.md")), 1)
local kinds = {}
for kind in read("scanning.md"):gmatch("\n| `([%w_]+)` | [yn]") do kinds[kind] = true end
for kind in pairs(require "gifscan".meanings) do
  assert(kinds[kind], kind .. " is not on the page")
  kinds[kind] = nil
end
assert(not next(kinds), next(kinds))

-- --- docs/scripting.md ----------------------------------------------------------------------------------------------

assert(select(2, run_snippets("scripting.md")) > 50, "snippets are missing")

-- Every member as a heading shows it, by class; a module's extension methods as the class has them.
local function registered(class)
  local members, known = {}, host.describe(class)
  for _, property in ipairs(known.properties) do
    members[("`%s as %s`%s"):format(property.name, property.type, property.readonly and " read-only" or "")] = true
  end
  for _, method in ipairs(known.methods) do
    local declaration = method.declaration:gsub("%(extends ref as %w+%)", ""):gsub("extends ref as %w+, ", "")
    members[("`%s`%s"):format(declaration, method.assignable and " assignable" or "")] = true
  end
  return members
end

local expected = { ["Global methods"] = registered() }
for _, class in ipairs(host.classes()) do expected[class] = registered(class) end
-- Of no use to scripts: the host's pointer for plugins, classes without members of their own or that are tables in Lua.
expected.MemoryBlock["`Operator_Convert() As Ptr`"] = nil
for class in pairs(expected) do
  if class:find("Exception$") or class:find("Application$") then expected[class] = nil end
end

local class
for line in read("scripting.md"):gmatch("[^\n]+") do
  class = line:match("^## (.+)") or class
  local member = line:match("^### (.+)")
  if member then
    assert(expected[class] and expected[class][member], ("%s has no %s"):format(class, member))
    expected[class][member] = nil
  end
end
for name, members in pairs(expected) do
  assert(next(members) == nil, ("%s: not on the page: %s"):format(name, next(members)))
end

-- --- docs/library.md ------------------------------------------------------------------------------------------------

run_snippets("library.md")
local library, headings = require "gif", {}
for name in read("library.md"):gmatch("\n### `([%w_.:]+)%(") do headings[name] = true end
local function check_documented(prefix, functions)
  for name, value in pairs(functions) do
    if type(value) == "function" and name ~= "__index" then
      assert(headings[prefix .. name], prefix .. name .. " is not on the page")
      headings[prefix .. name] = nil
    end
  end
end
check_documented("gif.", library)
check_documented("gif.payloads.", { all = print, get = print, set = print, remove = print })
check_documented("document:", getmetatable(library.new(1, 1)))
assert(next(headings) == nil, next(headings))

-- --- docs/gif-by-hand.md --------------------------------------------------------------------------------------------

local bytes = read("gif-by-hand.md"):match("```hex\n(.-)```"):gsub(";[^\n]*", ""):gsub("%s+", "")
    :gsub("%x%x", function(hex) return string.char(tonumber(hex, 16)) end)
local by_hand = GifStringToGifZKV(bytes)
t.expect("pixels", tostring(by_hand.FirstBlock.Picture.Data), "\0\1\0\1\1\1\0\1\0")
t.expect("picture", by_hand:MakeFirstPicture():Pixel(1, 0), 0xC00000)
for what, gif in pairs { opened = by_hand, cloned = by_hand:Clone(), ["by script"] = run_snippets("gif-by-hand.md") } do
  t.expect(what, t.saved(gif), bytes)
end
t.expect("bytes of an empty document", #t.saved(GIFZKV()), 14)

-- --- docs/host-interface.md -----------------------------------------------------------------------------------------

local page, functions = read("host-interface.md"), 2 -- the two of the start are not kept in the table
for rule, form, name in read("../bridge/host_functions.h"):gmatch('\ninline HostFunction(%a*)<([^\n]-)>%s+%w+%s*{"(%w+)"};') do
  local row = page:match(("\n| `%s` | `%s` | ([^\n]*)"):format(name, form:gsub("%p", "%%%0")))
  assert(row, name .. ": no row of that form")
  t.expect(name .. " is asked for again", row:find("*Again.*", 1, true) ~= nil, rule == "UntilFound")
  functions = functions + 1
end
t.expect("host functions", select(2, page:gsub("\n| `%w+` | `[^\n]*`", "")), functions)
local records = read("../bridge/gif_plugin_host.h") .. read("../platform/host_platform.h")
for record, size in page:gmatch("\n| `(%w+)` +| (%d+)") do
  assert(records:find(("sizeof(%s) == %s"):format(record, size), 1, true), record)
end
