-- Documents cut at every byte, and with each byte changed: a session with each ends in time, with nothing raised and
-- nothing left behind. Prints what each sample gave, so that two runs can be compared.
--
--   gifhost damage.lua SCRATCH_FILE [STEP FILE...]
--
-- Without files: small documents. STEP: only each so many-th byte.

local folder = arg[0]:gsub("[^/]*$", "")
local session = dofile(folder .. "../support/session.lua")
local path, step = arg[1], math.tointeger(arg[2] or 1)
local kLongest_s = 10

local samples = {}
for i = 3, #arg do
  local file = assert(io.open(arg[i], "rb"))
  samples[#samples + 1] = file:read("a")
  file:close()
end
if #samples == 0 then samples = dofile(folder .. "../support/documents.lua") end

-- The same for equal parts, in whatever order they are met.
local function checksum(value, where)
  local sum = #where
  if type(value) == "table" then
    for key, item in pairs(value) do sum = sum + checksum(item, where .. key) end
  else
    local text = where .. tostring(value)
    text = text .. ("\0"):rep(-#text % 8)
    for at = 1, #text, 8 do sum = (sum ~ ("<i8"):unpack(text, at)) * 0x9E3779B97F4A7C15 + (sum >> 29) end
  end
  return sum
end

local sessions, slowest_s = 0, 0
for number, bytes in ipairs(samples) do
  local sum = 0
  local function try(damaged)
    local start_s = os.clock()
    sum = sum + checksum(session.run(damaged, path), "")
    slowest_s = math.max(slowest_s, os.clock() - start_s)
    sessions = sessions + 1
    if slowest_s > kLongest_s then error(("%d bytes took %.1f s: %q"):format(#damaged, slowest_s, damaged)) end
  end
  for at = 1, #bytes, step do
    try(bytes:sub(1, at - 1))
    local byte = bytes:byte(at)
    for _, other in ipairs { 0, 255, ~byte & 255 } do
      if other ~= byte then try(bytes:sub(1, at - 1) .. string.char(other) .. bytes:sub(at + 1)) end
    end
  end
  print(("sample %d: %016x"):format(number, sum))
  assert(next(host.live()) == nil)
end
io.stderr:write(("%d sessions, the slowest took %.3f s\n"):format(sessions, slowest_s))
