-- What the test scripts share.

local support = {}

local function fail(what, actual, expected)
  error(("%s: %s, expected %s"):format(what, tostring(actual), tostring(expected)), 3)
end

-- Objects are equal when they are one object.
function support.expect(what, actual, expected)
  if actual ~= expected then fail(what, actual, expected) end
end

-- A MemoryBlock of these bytes; nil for none.
function support.expect_bytes(what, block, expected)
  local actual = block and tostring(block)
  if actual ~= expected then fail(what, actual and ("%q"):format(actual), expected and ("%q"):format(expected)) end
end

function support.expect_error(class, message, f, ...)
  local succeeded, caught = pcall(f, ...)
  if succeeded then fail("raised", "nothing", message) end
  if type(caught) ~= "table" then error(caught, 2) end
  if caught.class ~= class then fail("class", caught, class) end
  if caught.message ~= message then fail("message", caught.message, message) end
end

function support.expect_out_of_bounds(value, count, parameter, method, f, ...)
  local text = ("Parameter %s to method %s is too %s. Range is 0 to %d, but value is %d.")
      :format(parameter, method, value < 0 and "small" or "big", count - 1, value)
  support.expect_error("OutOfBoundsException", text, f, ...)
end

local function expect_fields(what, object, values)
  for name, value in pairs(values) do support.expect(what .. "." .. name, object[name], value) end
end

local function set_fields(object, values)
  for name, value in pairs(values) do object[name] = value end
end

-- Every property in both modes: a view keeps reading its record whatever is set, a free-standing object reads what
-- was set, and clones of both are free-standing.
function support.check_fields(view, of_record, new, to_set)
  expect_fields("view", view, of_record)
  set_fields(view, to_set)
  expect_fields("view after setting", view, of_record)

  set_fields(new, to_set)
  expect_fields("free-standing", new, to_set)
  local copy = new:Clone()
  expect_fields("clone of free-standing", copy, to_set)
  set_fields(copy, of_record)
  expect_fields("original after its clone was changed", new, to_set)

  copy = view:Clone()
  expect_fields("clone of view", copy, of_record)
  set_fields(copy, to_set)
  expect_fields("clone of view after setting", copy, to_set)
end

-- Codes of three bits each, from the lowest bit up.
local function codes(...)
  local word = 0
  for i, code in ipairs { ... } do word = word | code << 3 * (i - 1) end
  return ("<I4"):pack(word)
end

-- Three blocks: an extension of three sub-blocks, an image with a table of its own, one without.
support.sample = table.concat {
  "GIF89a",
  "\x05\0", "\x04\0",         -- screen, 5 x 4 pixels
  "\xB9",                     -- global table, 4 bits per primary colour, sorted, 2 bits per index
  "\x03", "\x31",             -- background index, aspect
  "\0\1\2", "\x12\x34\x56", "\xFD\xFE\xFF", "\7\8\9",

  "\x21", "\xF9",             -- extension, label
  "\x04\1\2\3\4", "\x02\xFFx", "\x01\0", "\0",

  "\x2C",                     -- image
  "\1\0", "\2\0", "\3\0", "\2\0",
  "\xE0",                     -- local table, interlaced, sorted, 1 bit per index
  "\x11\x12\x13", "\x21\x22\x23",
  "\2", "\4", codes(4, 0, 1, 4, 2, 3, 4, 2, 1, 5), "\0",

  "\x2C",                     -- image
  "\0\0", "\0\0", "\1\0", "\1\0",
  "\0",
  "\2", "\2", codes(4, 3, 5):sub(1, 2), "\0",
  "\x3B",
}
support.pixels = "\0\1\2\3\2\1" -- of its first image

function support.open() return GifStringToGifZKV(support.sample) end

-- A path in the folder for temporary files where nothing is.
function support.new_path(ending)
  local path = os.tmpname()
  os.remove(path)
  return path .. (ending or ".gif")
end

-- The bytes of a file, nil when there is none; the file is removed.
function support.take_file(path)
  local file = io.open(path, "rb")
  if not file then return nil end
  local bytes = file:read("a")
  file:close()
  os.remove(path)
  return bytes
end

-- Saving is refused, and the file not made.
function support.expect_not_saved(what, gif)
  local path = support.new_path()
  support.expect(what .. " saved", FolderItem(path):SaveAsGIFZKV(gif), false)
  support.expect(what .. " touched", io.open(path), nil)
end

-- What a document is saved as.
function support.saved(gif)
  local path = support.new_path()
  support.expect("saved", FolderItem(path):SaveAsGIFZKV(gif), true)
  return support.take_file(path)
end

return support
