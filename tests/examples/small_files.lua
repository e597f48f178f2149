-- Small files that stand for much take little: time and memory of sheets and reports are bounded by what they show.
-- Argument: "limited" for the system to hold them to it.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local examples = dofile(here .. "../support/examples.lua")
local processes, files = require "gif.processes", require "gif.files"

local kScreen = "GIF89a" .. ("<I2I2"):pack(8000, 8000) .. "\x80\0\0" .. "\0\0\0\xFF\xFF\xFF"
local function control(disposal) return "!\xF9\4" .. ("<BI2B"):pack(disposal << 2, 5, 0) .. "\0" end
local function image(left, top, width, height, data)
  return "," .. ("<I2I2I2I2B"):pack(left, top, width, height, 0) .. (data or "\2\2\x44\x0A\0")
end

-- name, how many times what is repeated, what the page says of things left out
local kFiles = {
  { "frames on a large screen", 300, function(i) return control(i % 4) .. image(20 * i, 20 * i, 2, 1) end },
  { "frames that claim the screen", 300, function() return image(0, 0, 8000, 8000, "\2\0") end },
  { "many frames", 3000, function() return control(3) .. image(5, 5, 2, 1) end, "The last 2,001 images are left out" },
  { "many blocks", 9000, function() return "!\xFF\0" end, "The last 5,001 blocks are left out" },
  { "many comments", 2000, function() return "!\xFE\1x\0" end, "The last 1,900 comments are left out" },
  { "one large frame", 1, function() return image(0, 0, 8000, 8000) end },
}

examples.with_folder(function(folder)
  local program = processes.command(processes.this_program())
  for _, row in ipairs(kFiles) do
    local name, count, part, left_out = table.unpack(row)
    local parts = { kScreen, image(0, 0, 1, 1) }
    for i = 0, count - 1 do parts[#parts + 1] = part(i) end
    local path = examples.write(folder .. "/a.gif", table.concat(parts) .. ";")
    for _, script in ipairs { "sheet", "report" } do
      local limits = arg[1] == "limited" and "ulimit -t 15; ulimit -v 330000;" or ""
      local done = os.execute(("%s %s %s %s %s/out >%s/said"):format(
        limits, program, files.quoted(here .. "../../examples/" .. script .. ".lua"), path, folder, folder))
      assert(done, script .. " of " .. name)
      assert(host.stat(folder .. "/out").size < 30 << 20, name)
    end
    local page = examples.read(folder .. "/out")
    t.expect(name, page:find("left out of this page", 1, true) ~= nil, left_out ~= nil)
    assert(not left_out or page:find(left_out, 1, true), name)
  end
end)
