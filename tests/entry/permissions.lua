-- What a user may not read, write or enter: nil or false, and nothing is changed. Not for root, whom nothing is denied.

local t = dofile((arg[0]:gsub("[^/]*$", "../support/support.lua")))
local folder = t.new_path("")

local function shell(command) assert(os.execute(("cd '%s' && %s"):format(folder, command))) end
assert(os.execute(("mkdir '%s'"):format(folder)))

local sample = t.open()
for name in ("file locked/file closed/file"):gmatch("%S+") do
  shell(("mkdir -p $(dirname %s)"):format(name))
  t.expect("made " .. name, FolderItem(folder .. "/" .. name):SaveAsGIFZKV(sample), true)
end

-- permissions of what, then: what is used, whether it opens, whether it is saved
for _, row in ipairs {
  { "600 file", "file", true, true },
  { "400 file", "file", true, false },
  { "200 file", "file", false, true },
  { "000 file", "file", false, false },
  { "500 locked", "locked/file", true, true },
  { "500 locked", "locked/new", false, false },
  { "000 closed", "closed/file", false, false },
  { "000 closed", "closed/new", false, false },
} do
  local change, name, opens, saves = table.unpack(row)
  shell("chmod " .. change)
  local item, what = FolderItem(folder .. "/" .. name), change .. ", " .. name
  t.expect("opened: " .. what, item:OpenAsGIFZKV() ~= nil, opens)
  t.expect("saved: " .. what, item:SaveAsGIFZKV(sample), saves)
  shell("chmod 700 " .. change:match("%S+$"))
  local file <close> = io.open(item.NativePath, "rb")
  t.expect("bytes: " .. what, file and #file:read("a"), not name:find("new") and #t.saved(sample) or nil)
end
shell("rm -r '" .. folder .. "'")
