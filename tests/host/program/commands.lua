-- The host: its commands that show what is registered, what it says of mistakes in scripts, and that it finds each rule
-- that a plugin breaks. Arguments: the host's program, the sample plugin, a folder.

local t = dofile((arg[0]:gsub("[^/]*$", "../../support/support.lua")))

local function run(command)
  local pipe = assert(io.popen(('ulimit -f 100; exec 2>&1; "%s" %s'):format(arg[1], command)))
  local output = pipe:read("a")
  local _, _, status = pipe:close()
  return output, status
end

local page <close> = io.open((arg[0]:gsub("tests/host/program/[^/]*$", "docs/gifhost.1")))
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
  ["./list"] = 1, ["-e 'assert(arg[1] == [[list]])' list"] = 0, ["--plugin /none validate"] = 1, ["-e 'print(1)' >/dev/full"] = 1,
  -- Which plugin, until it is used
  ["-e 'host.use([[tolerant]]) local f = FolderItem assert(host.use() == [[tolerant]])'"] = 0,
  ["-e 'assert(not host.use()) local f = FolderItem assert(host.use([[designed]]) == [[designed]])'"] = 0,
  ["-e 'local f = FolderItem host.use([[tolerant]])'"] = 1, 
  ["-e 'host.use([[tolerant]]) host.use([[designed]]) local f = FolderItem assert(host.use() == [[designed]])'"] = 0,
  ["--as-designed -e 'host.use([[tolerant]]) assert(host.use() == [[designed]])'"] = 0,
  ["--tolerant -e 'host.use([[designed]]) assert(GIFZKV and host.use() == [[tolerant]])'"] = 0,
  ["-e 'host.use([[/none]]) local f = FolderItem'"] = 1, ["--plugin /none -e 'x = 1'"] = 1,
  ["--without nothing -e 'x = 1'"] = 2, ["--without nothing -e 'local f = FolderItem'"] = 2,
} do t.expect(command, select(2, run(command)), status) end

-- Mistakes and exceptions, as scripts meet them
local function message(f, ...) return tostring(select(2, pcall(f, ...))):gsub("^[^ ]*:%d+: ", "") end
local gif, block = GIFZKV(), MemoryBlock("a\0c")
for expected, f in pairs {
  ['GIFZKV has no member "Haeder"; did you mean "Header"?'] = function() gif.Haeder = 1 end,
  ["GIFZKV.Count can't be set"] = function() gif.Count = 1 end,
  ["GIFZKV.Header is a String, not a table"] = function() gif.Header = {} end,
  ["GIFZKV.Block: parameter index is an integer, not a table"] = function() gif:Block({}) end,
  ["GIFZKV.Block takes (index as integer), not 0 arguments"] = function() gif:Block() end,
  ["OutOfMemoryException: A MemoryBlock of -1 bytes can't be made."] = function() MemoryBlock(-1) end,
  ["OutOfBoundsException: Parameter index to method Block is too big. Range is 0 to -1, but value is 7."] =
    function() gif:Block(7) end,
} do t.expect("message", message(f), expected) end
block[1] = 98
assert(#block == 3 and block[0] == 97 and block:String() == "abc" and block:String(1, 1) == "b")
assert(MemoryBlock(5).Size == 5 and LenB("h\u{E9}") == 3 and not pcall(function() return block[3] end))

-- A program that is stopped for what its plugin did leaves no unfinished files.
t.expect("stopped", select(2, run(("--plugin '%s' -e 'file = OutputFile([[%s/stopped]]) file:Write([[x]]) Bag():Break(1)'"):format(arg[2], arg[3]))), 70)
t.expect("litter", io.popen("ls -A " .. arg[3] .. " | grep -c part$"):read("n"), 0)

-- Rules broken by the sample plugin: code, status, what is said
for _, row in ipairs {
  { "local b = WideBag() assert(b.WIDTH == 80) b.width = 5 assert(b.Width == 5 and WideBag(1).Width == 1)", 0, "" },
  { "local function f() error([[why]]) end f()", 1, "-e:1: why\nstack traceback:" },
  { "Bag():Break(0)", 71, "leak: 1 Bag (object), 1 references held by the plugin; Bag#2: made by PluginNewInstance in Bag.Break" },
  { "Bag():Break(1)", 70, "REALUnlockObject in Bag.Break: object Bag#2 is dead; the last operation on it: REALUnlockObject in Bag.Break" },
  { "Bag():Break(2)", 70, "object Bag#1: a reference is given up that the plugin does not have" },
  { "Bag():Break(3)", 70, "REALLockString in Bag.Break: object Bag#2 was given where a handle of kind string is needed" },
  { "Bag():Break(4)", 70, "something was written outside the instance data of Bag#2" },
  { "Bag():Break(5)", 70, "was never given out" },
  { "local b = Bag() b:GiveBorrowed(b)", 70, "returning a result in Bag.GiveBorrowed: object Bag#1: a reference is given up" },
} do
  local code, expected, said = table.unpack(row)
  local output, status = run(("--plugin '%s' -e '%s'"):format(arg[2], code))
  t.expect(code .. ": " .. output, status, expected)
  assert(output:find(said, 1, true), output)
end
for declaration, complaint in pairs {
  ["Block(index)"] = '"as" expected at column 12', ["Block(index as integer"] = '")" expected at column 23',
  ["Block(index as ) as X"] = "a type expected at column 16",
  ["Block(a as integer = x)"] = "a default value expected at column 22",
  ["Open(extends b as Bag, quiet as boolean = true, assigns n as integer) as Bag"] = "Bag",
} do
  local pipe = io.popen(("SAMPLE_DECLARATION='%s' '%s' --plugin '%s' list 2>&1"):format(declaration, arg[1], arg[2]))
  local output = pipe:read("a")
  t.expect(declaration, select(3, pipe:close()), complaint == "Bag" and 0 or 70)
  assert(output:find(complaint, 1, true), output)
end

-- What people type: the command, its status, what is said
for _, row in ipairs {
  { "-e 'local x = 1' -e 'print(2)'", 0, "2\n" },
  { "list --help", 0, "Usage: gifhost [OPTION...] list [--json]   " },
  { "validate --help", 0, "--json of all for programs\nSee gifhost --help" },
  { "lst", 1, "did you mean the command \"list\"?" },
  { "'" .. arg[1] .. "'", 1, "it is no script" },
  { "-e 'GFIZKV()'", 1, "(global 'GFIZKV'); did you mean \"GIFZKV\"?" },
  { "-e 'tosting(1)'", 1, "did you mean \"tostring\"?" },
  { "-e 'Foldr([[x]])'", 1, "did you mean \"FolderItem\"?" },
  { "-e 'FolderItem([[x]]):Open()'", 1, "FolderItem has no member \"Open\"; did you mean \"OpenAsGIFZKV\"?" },
  { "-e 'GIF([[x]])'", 1, "did you mean \"GIFZKV\"?" },
  { "-e 'frobnicate()'", 1, "(global 'frobnicate')\nstack" },
  { "-e 'for _ in ipairs(GIFZKV()) do end'", 1, "-e:1: GIFZKV can't be indexed with 1; pairs() goes through" },
  { "-e 'FolderItem(nil)'", 1, "-e:1: RuntimeException: A FolderItem needs a path, not nil." },
  { "validate --only nil", 0, "1 case, 0 failed" },
  { "validate --only nil --json", 0, '[{"case":"nil","passed":true,"failure":null,"output":""}]' },
  { ("--plugin '%s' validate --failed --only properties --only nil"):format(arg[2]), 1, "FAIL  nil: left" },
  -- Nothing that a terminal would obey, and the system's reason
  { "'no\27[2J\u{9B}\xFF.lua'", 1, "cannot open no\\x1B[2J\\u{9B}\\xFF.lua: No such file or directory" },
  { "--plugin '/no\27[2J' -e 'GIFZKV()'", 1, "/no\\x1B[2J: cannot open" },
  { "-e 'error[[no\27[2J]]'", 1, "no\\x1B[2J" },
  { "-e 'print(1)' >/dev/full", 1, "output cannot be written: No space left on device" },
  { ("-e 'for i = 1, 1e5 do print(i) end' >%s/full"):format(arg[3]), 1, "output cannot be written: File too large" },
} do
  local output, status = run(row[1])
  t.expect(row[1] .. ": " .. output, status, row[2])
  assert(output:find(row[3], 1, true) and not (row[1]:find("failed") and output:find("ok ")), row[1] .. ": " .. output)
end

-- Where libgd cannot be loaded, pictures are made and drawn on; what needs it says so.
local folder = t.new_path("") .. "/"
os.execute("mkdir '" .. folder .. "' && touch '" .. folder .. "libgd.so.3'")
local pipe = io.popen(([[LD_LIBRARY_PATH='%s' '%s' -e 'local p = Picture(3, 2) p:FillRect(0, 0, 3, 2, 5) p:PNG()' 2>&1]])
  :format(folder, arg[1]))
local output = pipe:read("a")
assert(not pipe:close() and output:find("-e:1: RuntimeException: this needs libgd, which can't be loaded", 1, true), output)
os.execute("rm -r '" .. folder .. "'")
