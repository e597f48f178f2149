-- What is a GIF by its first letters, and names and paths of exactly the longest lengths.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))

-- bytes, the width of the screen read; nil: no document. Of another version nothing but the header is read.
local kScreen = "\5\0\1\0\0\0\0;"
for _, row in ipairs {
  { "" }, { "G" }, { "GI" }, { "GI\0" .. kScreen }, { "GIX89a" .. kScreen }, { "gif89a" .. kScreen }, { "\0GIF89a" .. kScreen },
  { "GIF", 0 }, { "GIF8", 0 }, { "GIF88a" .. kScreen, 0 }, { "GIF87b" .. kScreen, 0 }, { "GIF89\0" .. kScreen, 0 },
  { "GIF87a" .. kScreen, 5 }, { "GIF89a" .. kScreen, 5 },
} do
  local gif = GifStringToGifZKV(row[1])
  t.expect(("width of %q"):format(row[1]), gif and gif.Screen.Width, row[2])
end

local folder = t.new_path("")
assert(os.execute("mkdir " .. folder))
for length, saved in pairs { [255] = true, [256] = false } do
  t.expect("name of " .. length, FolderItem(folder .. "/" .. ("n"):rep(length)):SaveAsGIFZKV(t.open()), saved)
end
-- One file by paths as long as wanted.
assert(FolderItem(folder .. "/a"):SaveAsGIFZKV(t.open()))
for length, opened in pairs { [4094] = true, [4095] = true, [4096] = false } do
  local room = length - #folder - 1
  local path = folder .. ("/"):rep(room % 2 == 0 and 2 or 1) .. ("./"):rep((room - 1) // 2) .. "a"
  assert(#path == length)
  t.expect("path of " .. length, FolderItem(path):OpenAsGIFZKV() ~= nil, opened)
  t.expect("saved by path of " .. length, FolderItem(path:sub(1, -2) .. "b"):SaveAsGIFZKV(t.open()), opened)
end
assert(os.execute("rm -r " .. folder))
