-- Rectangles of pixels: a byte for each, row by row.

local areas = {}

-- How many bytes two strings of one length have in common from the start.
local function same_start(a, b)
  local least, most = 0, #a
  while least < most do
    local middle = (least + most + 1) // 2
    if a:sub(least + 1, middle) == b:sub(least + 1, middle) then least = middle else most = middle - 1 end
  end
  return least
end

-- The smallest rectangle that holds all in which two pictures of that width differ; nil when they are the same.
function areas.difference(before, after, width)
  if before == after then return nil end
  local top = same_start(before, after) // width
  local bottom = (#after - 1 - same_start(before:reverse(), after:reverse())) // width
  local left, right = width, 0 -- bytes alike at the start of every row; bytes up to the last that differs
  for y = top, bottom do
    local a, b = before:sub(y * width + 1, (y + 1) * width), after:sub(y * width + 1, (y + 1) * width)
    if a:sub(1, left) ~= b:sub(1, left) then left = same_start(a, b) end
    if a:sub(right + 1) ~= b:sub(right + 1) then right = width - same_start(a:reverse(), b:reverse()) end
  end
  return { left = left, top = top, width = right - left, height = bottom - top + 1 }
end

-- The pixels of a rectangle that lies inside a picture of that width.
function areas.part(bytes, width, of)
  if of.left == 0 and of.width == width then return bytes:sub(of.top * width + 1, (of.top + of.height) * width) end
  local rows = {}
  for y = of.top, of.top + of.height - 1 do
    rows[#rows + 1] = bytes:sub(y * width + of.left + 1, y * width + of.left + of.width)
  end
  return table.concat(rows)
end

return areas
