-- Which file a FolderItem names, on a file system that tells composed and decomposed accents apart.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))

local kComposed, kDecomposed = "\u{FC}", "u\u{308}"
local kOdd = "odd\xFF\xC3(" -- not UTF-8
local kBytes = t.saved(t.open())

local function write(path, bytes)
  local file = assert(io.open(path, "wb"))
  file:write(bytes)
  file:close()
end

-- In a new folder with these folders and files: saves under a name, which must reach the file of that name (all other
-- files stay), and opens what was saved.
local function expect_saved_as(name, reached, folders, files)
  local top = t.new_path("") .. "/"
  local function quoted(path) return "'" .. top .. path .. "'" end
  os.execute("mkdir " .. quoted "")
  for _, folder in ipairs(folders) do os.execute("mkdir " .. quoted(folder)) end
  for _, file in ipairs(files) do write(top .. file, file) end

  local item = FolderItem(top .. name)
  t.expect(name .. " saved", item:SaveAsGIFZKV(t.open()), true)
  t.expect(name .. " opened", FolderItem(top .. name):OpenAsGIFZKV().Count, 3)
  t.expect(name .. " reaches " .. reached, t.take_file(top .. reached), kBytes)
  for _, file in ipairs(files) do
    if file ~= reached then t.expect(file, t.take_file(top .. file), file) end
  end
  for i = #folders, 1, -1 do os.execute("rmdir " .. quoted(folders[i])) end
  t.expect("other files", os.execute("rmdir " .. quoted ""), true)
end

-- name, the file reached, folders and files that are there before
expect_saved_as(kComposed, kDecomposed, {}, {})
expect_saved_as(kDecomposed, kDecomposed, {}, {})
expect_saved_as(kComposed, kComposed, {}, { kComposed })
expect_saved_as(kDecomposed, kDecomposed, {}, { kComposed })
expect_saved_as(kComposed, kDecomposed, {}, { kDecomposed })
expect_saved_as(kComposed, kDecomposed, {}, { kComposed, kDecomposed })
-- Folders on the way
local in_composed = kComposed .. "/"
expect_saved_as(in_composed .. kComposed, in_composed .. kDecomposed, { kComposed }, {})
expect_saved_as(in_composed .. kComposed, in_composed .. kComposed, { kComposed }, { in_composed .. kComposed })
expect_saved_as(in_composed .. "a/" .. kComposed, in_composed .. "a/" .. kDecomposed, { kComposed, in_composed .. "a" }, {})
expect_saved_as(in_composed .. "a.gif", in_composed .. "a.gif", { kComposed, kDecomposed }, { in_composed .. "a.gif" })
-- Names that are no text
expect_saved_as(kOdd, kOdd, {}, { kOdd })
expect_saved_as(kOdd, kOdd, {}, {})
expect_saved_as("\xF0\x9F\xFF" .. kComposed, "\xF0\x9F\xFF" .. kDecomposed, {}, {})
expect_saved_as(kOdd .. "/" .. kComposed, kOdd .. "/" .. kDecomposed, { kOdd }, {})
-- Characters beyond 16 bits, marks out of order, a ligature that is no composition
local kMarks, kOrdered = "s\u{307}\u{323}x\u{307}\u{323}", "s\u{323}\u{307}x\u{323}\u{307}"
expect_saved_as("\u{1F600}\u{AC00}\u{1D15E}", "\u{1F600}\u{1100}\u{1161}\u{1D157}\u{1D165}", {}, {})
expect_saved_as("\u{FB01}" .. kMarks, "\u{FB01}" .. kOrdered, {}, {})
expect_saved_as("\xF0\x9F\xFF" .. kMarks, "\xF0\x9F\xFF" .. kOrdered, {}, { "\xF0\x9F\xFF" .. kMarks, "\xF0\x9F\xFF" .. kOrdered })

return "OK"
