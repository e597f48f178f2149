-- Text and pictures inside a page.

local text = require "gif.text"

local html = {}

local kNames = { ["&"] = "&amp;", ["<"] = "&lt;", [">"] = "&gt;", ['"'] = "&quot;", ["'"] = "&#39;" }

-- Any bytes as text of a page: markup escaped, control characters shown by their symbols.
function html.escape(bytes)
  local escaped = text.utf8(tostring(bytes)):gsub("[&<>\"']", kNames)
  return (escaped:gsub("[\0-\8\11-\31\127]", function(c)
    return utf8.char(c == "\127" and 0x2421 or c == "\r" and 0x20 or 0x2400 + c:byte())
  end))
end

-- The template with each $name replaced by that value, escaped, and each $!name by that value as it stands.
function html.fill(template, values)
  return (template:gsub("%$(!?)([%a_]+)", function(as_it_stands, name)
    local value = values[name]
    if value == nil then error("no value for $" .. name) end
    return as_it_stands == "" and html.escape(value) or tostring(value)
  end))
end

local kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
local two_digits = {} -- by twelve bits
for i = 0, 4095 do
  two_digits[i] = kDigits:sub((i >> 6) + 1, (i >> 6) + 1) .. kDigits:sub((i & 63) + 1, (i & 63) + 1)
end

-- Six bytes at a time: pages hold megabytes of this.
function html.base64(bytes)
  local byte, parts, at, padding = string.byte, {}, 0, -#bytes % 3
  local filled = bytes .. ("\0"):rep(-#bytes % 6)
  for i = 1, #filled, 6 do
    local a, b, c, d, e, f = byte(filled, i, i + 5)
    parts[at + 1] = two_digits[a << 4 | b >> 4]
    parts[at + 2] = two_digits[(b & 15) << 8 | c]
    parts[at + 3] = two_digits[d << 4 | e >> 4]
    parts[at + 4] = two_digits[(e & 15) << 8 | f]
    at = at + 4
  end
  return table.concat(parts):sub(1, (#bytes + padding) // 3 * 4 - padding) .. ("="):rep(padding)
end

-- The picture as the address of an image.
function html.picture_address(picture) return "data:image/png;base64," .. html.base64(picture:PNG()) end

return html
