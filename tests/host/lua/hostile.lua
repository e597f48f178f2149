-- Scripts that want the host to crash: each ends in a Lua error with file and line, and nothing is left alive.
--
--   gifhost hostile.lua GIFHOST SCRATCH_FOLDER

local program, scratch = ...

-- Run in this process: what the error says behind "case:LINE: ".
local kCases = {
  -- Objects that Lua has given up.
  { "an object brought back by another one's __gc", [[
      local seen
      do
        local keeper = setmetatable({ object = MemoryBlock(4) }, { __gc = function(self) seen = self.object end })
        keeper = nil
      end
      collectgarbage() collectgarbage()
      return seen.Size ]], "the object is dead" },
  { "a dead object as argument", [[
      local seen
      setmetatable({ block = GifBlockZKV() }, { __gc = function(self) seen = self.block end })
      collectgarbage() collectgarbage()
      GIFZKV():Add(seen) ]], "the object is dead" },
  { "a dead object's method", [[
      local method
      setmetatable({ add = GIFZKV().Add }, { __gc = function(self) method = self.add end })
      collectgarbage() collectgarbage()
      method(GifBlockZKV()) ]], "the object is dead" },
  { "a dead object in pairs", [[
      local seen
      setmetatable({ g = GIFZKV() }, { __gc = function(self) seen = self.g end })
      collectgarbage() collectgarbage()
      for _ in pairs(seen) do end ]], "the object is dead" },
  -- What stands behind objects.
  { "an object's metatable", "getmetatable(MemoryBlock(4)).__gc(io.stdout)", "attempt to index a boolean" },
  { "a method's metatable", "getmetatable(MemoryBlock(4).Byte).__call(1)", "attempt to index a boolean" },
  { "a class's metatable", "getmetatable(GIFZKV).__call(1)", "attempt to index a boolean" },
  { "a file's __gc on an object", "getmetatable(io.stdout).__gc(MemoryBlock(4))", "FILE%* expected" },
  { "another metatable", "setmetatable(MemoryBlock(4), {})", "table expected" },
  { "upvalues", "debug.setupvalue(pairs(GIFZKV()), 1, io.stdout)", "nil value %(field 'setupvalue'%)" },
  { "the registry", "debug.getregistry()", "nil value %(field 'getregistry'%)" },
  { "an iterator found in the debugger", [[
      local g = GIFZKV()
      g:Add(GifBlockZKV())
      local next = pairs(g)
      assert(next(nil, math.maxinteger) == nil and next(nil, math.mininteger) == nil)
      assert(next(nil, "x") == 0 and next() == 0)
      error("fine") ]], "fine" },
  { "the functions that call", [[
      local found = {}
      local probe = setmetatable({}, { __tostring = function()
        for level = 1, 9 do
          local info = debug.getinfo(level, "fS")
          if info and info.what == "C" then found[#found + 1] = info.func end
        end
        return "probe"
      end })
      pcall(function() error(probe) end)
      pcall(function() return MemoryBlock(4)[probe] end)
      tostring(probe)
      for _, call in ipairs(found) do
        for _, argument in ipairs { io.stdout, 1, {}, "x" } do pcall(call, argument, argument, argument) end
      end
      error("fine") ]], "fine" },
  -- Code that is no text.
  { "bytecode", [[ assert(load(string.dump(function() end), "x", "b")) ]], "only text can be loaded" },
  { "bytecode that looks harmless", [[ assert(load(string.dump(function() end))) ]], "binary chunk" },
  { "bytecode in pieces", [[
      local whole = { string.dump(function() end) }
      assert(load(function() return table.remove(whole) end, "x", "bt")) ]], "binary chunk" },
  { "bytecode in a file", [[ assert(loadfile(kBytecode, "bt")) ]], "binary chunk" },
  { "bytecode that is run", [[ dofile(kBytecode) ]], "binary chunk" },
  { "bytecode as a module", [[ package.path = kScratch .. "/?.luac" require "hostile" ]], "binary chunk" },
  { "a library of C code", [[ package.loadlib("libm.so.6", "*") ]], "nil value %(field 'loadlib'%)" },
  { "a module of C code", [[ package.cpath = kScratch .. "/?.so" require "hostile" ]], "module 'hostile' not found" },
  -- Numbers and texts beyond what they are for.
  { "a part that begins before all", "MemoryBlock(4):String(math.mininteger, -1)", "OutOfBoundsException" },
  { "a part that ends behind all", "MemoryBlock(4):String(1, math.maxinteger)", "OutOfBoundsException" },
  { "a block too large", "MemoryBlock(math.maxinteger)", "OutOfMemoryException" },
  { "a call that never fails", [[
      GIFZKV()
      host.fail("PluginNewInstance", math.maxinteger)
      GIFZKV():Block(0) ]], "OutOfBoundsException" },
  { "a zero byte in an item's path", [[ FolderItem("x.gif\0.txt") ]], "can't hold a zero byte" },
  { "a zero byte in a picture's path", [[ Picture("x.png\0.txt") ]], "can't hold a zero byte" },
  { "a zero byte in an output", [[ Picture(2, 2):SavePNG(kScratch .. "/x.png\0.txt") ]], "can't hold a zero byte" },
  { "a zero byte in a question", [[ host.exists("x\0y") ]], "can't hold a zero byte" },
  { "a zero byte in a file's name", [[ io.open("x\0y") ]], "can't hold a zero byte" },
  { "a zero byte in the name of lines", [[ io.lines("x\0y") ]], "can't hold a zero byte" },
  { "a zero byte in what is removed", [[ os.remove("x\0y") ]], "can't hold a zero byte" },
  { "a zero byte in a new name", [[ os.rename("x", "x\0y") ]], "can't hold a zero byte" },
  { "a zero byte in code's name", [[ loadfile("x\0y") ]], "can't hold a zero byte" },
  { "a zero byte in what is run", [[ dofile("x\0y") ]], "can't hold a zero byte" },
  { "a zero byte in a member", [[ return GIFZKV()["Count\0"] ]], "has no member" },
  { "a zero byte in a global", [[ return _G["GIFZKV\0"]() ]], "nil value" },
  -- What Lua itself does with its stack.
  { "a concatenation that moves the stack", [[
      collectgarbage("incremental", 100, 200, 3)
      local keep = {}
      local function deep(n) return n > 0 and deep(n - 1) + 1 or 0 end
      local mt = { __concat = function(a, b)
        for k = 1, #b do keep[k] = setmetatable({}, { __gc = function() end }) end
        deep(10 * #b)
        return a
      end }
      for i = 1, 1000 do local x = setmetatable({}, mt) .. ("x"):rep(i % 50) end
      error("fine") ]], "fine" },
  { "a concatenation that waits", [[
      coroutine.wrap(function()
        local x = setmetatable({}, { __concat = function() coroutine.yield() end }) .. "x"
      end)() ]], "attempt to yield from a concatenation" },
  -- Chains and circles.
  { "masks of masks", [[
      local first = Picture()
      local last = first
      for _ = 1, 100000 do
        local mask = Picture()
        last.Mask = mask
        last = mask
      end ]], "can't be a mask" },
  { "a picture as its own mask", "local p = Picture(2, 2) p.Mask = p", "can't be a mask" },
  { "a call inside itself", [[
      local t = setmetatable({}, {})
      getmetatable(t).__index = function(_, key) return t[key .. "x"] end
      return GIFZKV()[t.x] ]], "overflow" },
  { "a key that ends the loop", [[
      local g = GIFZKV()
      return g[setmetatable({}, { __tostring = function() g = nil collectgarbage() return "x" end })] ]],
    "can't be indexed with a table" },
  { "a yield out of a metamethod", [[
      assert(coroutine.resume(coroutine.create(function()
        return #setmetatable({}, { __len = function() return coroutine.yield() end }), MemoryBlock(coroutine.yield())
      end)))
      error("fine") ]], "fine" },
}

local path = scratch .. "/hostile.luac"
local file = assert(io.open(path, "wb"))
file:write(string.dump(function() return 1 end))
file:close()

local function run(code)
  local environment = setmetatable({ kScratch = scratch, kBytecode = path, _G = _G }, { __index = _G })
  local chunk = assert(load(code, "=case", "t", environment))
  local kept = package.path
  local done, message = pcall(chunk)
  package.path, package.cpath = kept, nil
  return done, tostring(message)
end

for _, case in ipairs(kCases) do
  local name, code, expected = table.unpack(case)
  local done, message = run(code)
  assert(not done, name .. ": no error")
  assert(message:find("^case:%d+: ") and message:find(expected), name .. ": " .. message)
end

-- Run in a process each, because they end it: the status, and what it says.
local kEndings = {
  { "ending twice", [[ setmetatable({}, { __gc = function() os.exit(4) end }) os.exit(3) ]], 3 },
  { "ending in a coroutine", [[ local g = GIFZKV() coroutine.wrap(function() os.exit(3) end)() ]], 3 },
  { "ending while something is collected", [[
      local g = GIFZKV()
      setmetatable({}, { __gc = function() os.exit(3) end })
      for i = 1, 1e6 do g.Header = ("x"):rep(100) .. i; local h = g.Header end ]], 3 },
  { "using the dead at the end", [[
      local g = GIFZKV()
      keep = setmetatable({}, { __gc = function() io.write(tostring(select(2, pcall(function() return g.Count end)))) end })
      ]], 0 },
  { "an error that cannot say what it is", [[ error(setmetatable({}, { __tostring = function() error("x") end })) ]], 1,
    "can't say what it is" },
  { "an error that says a table", [[ error(setmetatable({}, { __tostring = function() return {} end })) ]], 1,
    "can't say what it is" },
  { "an error in every handler", [[ local function f() error("x") end xpcall(f, f) error("fine") ]], 1, "fine" },
}

for _, case in ipairs(kEndings) do
  local name, code, status, expected = table.unpack(case)
  local script = scratch .. "/hostile_end.lua"
  local out = assert(io.open(script, "w"))
  out:write(code)
  out:close()
  local pipe = io.popen(("'%s' '%s' 2>&1"):format(program, script))
  local output = pipe:read("a")
  local _, how, found = pipe:close()
  assert(how == "exit" and found == status, ("%s: %s %d\n%s"):format(name, how, found, output))
  assert(not expected or output:find(expected), name .. ": " .. output)
end
print(#kCases + #kEndings .. " hostile scripts")
