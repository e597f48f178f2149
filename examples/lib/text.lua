-- Words for what people read.

local text = {}

-- 1234567 as "1,234,567".
function text.grouped(number)
  local digits = tostring(number):reverse():gsub("(%d%d%d)", "%1,"):reverse()
  return (digits:gsub("^,", ""))
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

-- Valid UTF-8 as it is; other bytes read as Latin-1.
function text.utf8(bytes)
  if utf8.len(bytes) then return bytes end
  return (bytes:gsub("[\128-\255]", function(c) return utf8.char(c:byte()) end))
end

return text
