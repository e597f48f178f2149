-- Words for what people read.

local text = {}

-- 1234567 as "1,234,567".
function text.grouped(number)
  local digits = tostring(number)
  if #digits < 4 then return digits end
  return (digits:reverse():gsub("(%d%d%d)", "%1,"):reverse():gsub("^,", ""))
end

-- "1 image", "1,234 images".
function text.count(number, noun)
  return ("%s %s%s"):format(text.grouped(number), noun, number == 1 and "" or "s")
end

-- The fields that are not empty, between commas or what is given in place of them.
function text.list(fields, separator)
  local present = {}
  for _, field in ipairs(fields) do
    if field ~= "" then present[#present + 1] = field end
  end
  return table.concat(present, separator or ", ")
end

-- "3, 5 to 9, 12" for numbers in ascending order.
function text.ranges(numbers)
  local ranges, first = {}, 1
  for i, number in ipairs(numbers) do
    if numbers[i + 1] ~= number + 1 then
      local alone, pair = i == first, i == first + 1
      ranges[#ranges + 1] = alone and tostring(number) or numbers[first] .. (pair and ", " or " to ") .. number
      first = i + 1
    end
  end
  return table.concat(ranges, ", ")
end

function text.seconds(centiseconds) return ("%.2f s"):format(centiseconds / 100) end

function text.size(of) return ("%d x %d"):format(of.Width, of.Height) end

-- Bytes between quotes, with everything but printable ASCII escaped; the end of long ones is left out.
function text.quoted(bytes, longest)
  local names = { ["\n"] = "\\n", ["\r"] = "\\r", ["\t"] = "\\t", ['"'] = '\\"', ["\\"] = "\\\\" }
  local shown = bytes:sub(1, longest):gsub('[%c"\\\127-\255]', function(c)
    return names[c] or ("\\x%02X"):format(c:byte())
  end)
  return '"' .. shown .. '"' .. (#bytes > longest and "..." or "")
end

-- A file's name, or a message with names in it, as people may see it: control characters, which a terminal would obey,
-- and bytes that are not UTF-8 are escaped.
function text.shown(name)
  local shown, at = {}, 1
  while at <= #name do
    local valid = utf8.len(name, at)
    local last = valid and #name or select(2, utf8.len(name, at)) - 1
    local part = name:sub(at, last):gsub("\xC2[\x80-\x9F]", function(c) return ("\\u{%X}"):format(utf8.codepoint(c)) end)
    shown[#shown + 1] = part:gsub("[%c\127]", function(c) return ("\\x%02X"):format(c:byte()) end)
    if valid then break end
    shown[#shown + 1] = ("\\x%02X"):format(name:byte(last + 1))
    at = last + 2
  end
  return table.concat(shown)
end

-- Sixteen bytes a line: the offset, the bytes, and those that are printable; at most so many bytes.
function text.hex(bytes, most)
  local lines, last = {}, math.min(#bytes, most or #bytes)
  for at = 1, last, 16 do
    local line = bytes:sub(at, math.min(at + 15, last))
    local digits = line:gsub(".", function(c) return ("%02x "):format(c:byte()) end)
    lines[#lines + 1] = ("%04x  %-48s %s"):format(at - 1, digits, line:gsub("[^ -~]", "."))
  end
  if last < #bytes then lines[#lines + 1] = ("… and %s more"):format(text.count(#bytes - last, "byte")) end
  return table.concat(lines, "\n")
end

-- Valid UTF-8 as it is; other bytes read as Latin-1.
function text.utf8(bytes)
  if utf8.len(bytes) then return bytes end
  return (bytes:gsub("[\128-\255]", function(c) return utf8.char(c:byte()) end))
end

return text
