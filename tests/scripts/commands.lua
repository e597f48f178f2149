-- The host's commands that show what is registered. Argument: the host's program.

local t = dofile((arg[0]:gsub("[^/]*$", "support.lua")))

local function run(command)
  local pipe = assert(io.popen(('"%s" %s 2>&1'):format(arg[1], command)))
  local output = pipe:read("a")
  local _, _, status = pipe:close()
  return output, status
end

local page <close> = io.open((arg[0]:gsub("tests/[^/]*/[^/]*$", "docs/gifhost.1")))
local manual = page:read("a"):gsub("\\%-", "-")
for option in run("--help"):gmatch("%-%-?%a[%a-]*") do assert(manual:find(option, 1, true), option .. " is not in the manual") end

t.expect("describe", run("describe gifdatazkv"), "class GifDataZKV\n  DataMemory as Memoryblock\n  DataString as String\n" ..
  "  Length as Integer  (read-only)\n  Clone as GifDataZKV\n")

-- No string of these holds brackets or escapes.
local function json(text)
  local code = text:gsub("[%[%]]", { ["["] = "{", ["]"] = "}" }):gsub('("%w+"):', "[%1]="):gsub("null", "nil")
  return assert(load("return " .. code))()
end
local listed = {}
for _, class in ipairs(json(run("describe --json"))) do
  local known = host.describe(class.class)
  listed[class.class or ""] = true
  for _, kind in ipairs { "properties", "methods" } do
    local expected = {}
    for _, member in ipairs(known[kind]) do
      if not member.native then expected[#expected + 1] = member end
    end
    t.expect(kind, #class[kind], #expected)
    for i, member in ipairs(expected) do
      for field, value in pairs(member) do
        if field ~= "native" then t.expect(member.name .. "." .. field, class[kind][i][field], value) end
      end
    end
  end
end
assert(listed.GIFZKV and listed.FolderItem and listed[""] and not listed.MemoryBlock, "listed classes")
t.expect("list", select(2, run("list"):gsub("\n", "")), #json(run("list --json")))

local annotations, stub = run("annotations"), {}
assert(load(annotations, "annotations", "t", stub))()
for _, class in ipairs(host.classes()) do assert(stub[class], class) end
for name in pairs(host) do assert(stub.host[name] ~= nil, name) end
assert(stub.GIFZKV.Block and stub.FolderItem.SaveAsGIFZKV and stub.GifStringToGifZKV, "annotated functions")
for _, line in ipairs {
  "---@field Red { [integer]: integer } | fun(self: GifPaletteZKV, index: integer): integer",
  "---@field Count integer read-only", "---@field Data MemoryBlock?", "---@class OutOfBoundsException: RuntimeException",
  "---@overload fun(self: GifPictureZKV, TransparentColorIndex: integer): Picture?",
} do assert(annotations:find(line .. "\n", 1, true), line) end

for command, status in pairs {
  ["list GIFZKV"] = 2, ["describe Nothing"] = 1, ["validate --only nothing"] = 2, ["validate --seed x"] = 2,
  ["./list"] = 1, ["-e 'assert(arg[1] == [[list]])' list"] = 0, ["--plugin /none validate"] = 1,
} do t.expect(command, select(2, run(command)), status) end
