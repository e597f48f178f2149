-- Sessions on a host that lacks a function give what they give on a complete one, but for missing parts.
--
--   gifhost missing.lua SCRATCH_FILE EXPECTED_FILE write   -- on a complete host
--   gifhost --without NAME missing.lua SCRATCH_FILE EXPECTED_FILE

local folder = arg[0]:gsub("[^/]*$", "")
local session = dofile(folder .. "../support/session.lua")
local documents = dofile(folder .. "../support/documents.lua")
local path, expected_file, writes = ...

local function write(file, value)
  if type(value) ~= "table" then return file:write(("%q"):format(value)) end
  file:write("{")
  for key, item in pairs(value) do
    file:write(("[%q]="):format(key))
    write(file, item)
    file:write(",")
  end
  file:write("}")
end

local found = {}
session.may_raise = not writes
for i, bytes in ipairs(documents) do found[i] = session.run(bytes, path) end
if writes then
  local file = assert(io.open(expected_file, "w"))
  file:write("return ")
  write(file, found)
  file:close()
else
  for i, expected in ipairs(dofile(expected_file)) do
    local why = session.wrong(found[i], expected)
    assert(not why, why)
  end
end
