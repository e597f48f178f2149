-- Concatenation by a metamethod is what Lua's manual says, wherever it runs.

local joined = {}
function joined.__concat(a, b)
  local function text(of) return type(of) == "table" and of.text or of end
  return setmetatable({ text = text(a) .. text(b) }, joined)
end
local function new(text) return setmetatable({ text = text }, joined) end
local function expect(actual, expected) assert(actual == expected, ("%s, expected %s"):format(actual, expected)) end
local function failing(f) return setmetatable({}, { __concat = f }) end

expect(("a" .. new("b") .. "c" .. "d" .. new("e") .. 1).text, "abcde1")
expect(select("#", failing(function() end) .. "x"), 1)
expect(failing(function() return 1, 2 end) .. "x", 1)
expect(coroutine.wrap(function() return new("p") .. "q" end)().text, "pq")
collectgarbage("stop")
expect((new("p") .. "q").text, "pq")
expect(collectgarbage("isrunning"), false)
collectgarbage("restart")
local last
setmetatable({}, { __gc = function() last = new("p") .. "q" end })
collectgarbage()
expect(last.text, "pq")
assert(collectgarbage("isrunning"))

-- Errors are those of the metamethod, and close what it has opened.
local closed = 0
local closing = setmetatable({}, { __close = function() closed = closed + 1 end })
for _, row in ipairs {
  { function() return {} .. "x" end, "attempt to concatenate a table value" },
  { function() local t = {} return "x" .. t.y end, "attempt to concatenate a nil value (field 'y')" },
  { function() return failing(function() error("inside") end) .. "x" end, "inside" },
  { function() return failing(function(a, b) return a .. b end) .. "x" end, "C stack overflow" },
  { function() return failing(function() local c <close> = closing error("behind") end) .. "x" end, "behind" },
  { function() return failing(function() local c <close> = closing coroutine.yield() end) .. "x" end, "attempt to yield" },
} do
  for _ = 1, 3 do
    local done, why = pcall(row[1])
    assert(not done and why:find(row[2], 1, true), why)
  end
end
expect(closed, 6)
local thrown = {}
expect(select(2, pcall(function() return failing(function() error(thrown) end) .. "x" end)), thrown)
