-- Values as JSON, on one line, the members of objects in alphabetical order.

local text = require "gif.text"

local json = {}

local Literal = {} -- marks what stands as it is

-- A file's name: each byte that is not UTF-8 is a lone surrogate, from \uDC80 to \uDCFF, so that names can be told apart
-- and read back.
function json.name(path)
  local parts, at = {}, 1
  while at <= #path do
    local valid, wrong = utf8.len(path, at)
    local last = valid and #path or wrong - 1
    parts[#parts + 1] = path:sub(at, last):gsub('[%c"\\\127]', function(c) return ("\\u%04X"):format(c:byte()) end)
    if not valid then parts[#parts + 1] = ("\\uDC%02X"):format(path:byte(last + 1)) end
    at = last + 2
  end
  return setmetatable({ '"' .. table.concat(parts) .. '"' }, Literal)
end

local function unquoted(quoted)
  return (quoted:gsub("\\u(%x%x%x%x)", function(hex)
    local code = tonumber(hex, 16)
    return code >= 0xDC80 and code <= 0xDCFF and string.char(code - 0xDC00) or utf8.char(code)
  end))
end

-- A text in a line that json.encode made, by the name of the member: the first of that name.
function json.text_in(line, name)
  local quoted = line:match('"' .. name .. '":"([^"]*)"')
  return quoted and unquoted(quoted)
end

function json.name_in(line) return json.text_in(line, "file") end

local List = {} -- marks tables that are arrays, so that empty ones are known

function json.list(values) return setmetatable(values or {}, List) end

local function quote(bytes)
  return '"' .. text.utf8(bytes):gsub('[%c"\\\127]', function(c) return ("\\u%04X"):format(c:byte()) end) .. '"'
end

function json.encode(value)
  if type(value) == "string" then return quote(value) end
  if type(value) ~= "table" then return tostring(value) end
  if getmetatable(value) == Literal then return value[1] end
  local parts = {}
  if getmetatable(value) == List then
    for i, element in ipairs(value) do parts[i] = json.encode(element) end
    return "[" .. table.concat(parts, ",") .. "]"
  end
  for name, member in pairs(value) do parts[#parts + 1] = quote(name) .. ":" .. json.encode(member) end
  table.sort(parts)
  return "{" .. table.concat(parts, ",") .. "}"
end

-- A line about a file: its name, then the fields.
function json.line(path, fields)
  local rest = json.encode(fields):sub(2)
  return '{"file":' .. json.encode(json.name(path)) .. (rest == "}" and "" or ",") .. rest
end

return json
