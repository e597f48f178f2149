-- Values as JSON, on one line, the members of objects in alphabetical order.

local text = require "gif.text"

local json = {}

local List = {} -- marks tables that are arrays, so that empty ones are known

function json.list(values) return setmetatable(values or {}, List) end

local function quote(bytes)
  return '"' .. text.utf8(bytes):gsub('[%c"\\\127]', function(c) return ("\\u%04X"):format(c:byte()) end) .. '"'
end

function json.encode(value)
  if type(value) == "string" then return quote(value) end
  if type(value) ~= "table" then return tostring(value) end
  local parts = {}
  if getmetatable(value) == List then
    for i, element in ipairs(value) do parts[i] = json.encode(element) end
    return "[" .. table.concat(parts, ",") .. "]"
  end
  for name, member in pairs(value) do parts[#parts + 1] = quote(name) .. ":" .. json.encode(member) end
  table.sort(parts)
  return "{" .. table.concat(parts, ",") .. "}"
end

return json
