-- What is damaged or odd in a GIF's bytes, in words. docs/scanning.md tells of every finding.

local gifscan = require "gifscan"
local files, text = require "gif.files", require "gif.text"

local scanning = {}

-- Scans a file; nil and the reason.
function scanning.of(path)
  local bytes, why = files.read(path)
  if not bytes then return nil, why end
  return gifscan.scan(bytes)
end

-- Whether something is lost. What follows a full code table is, to all but a tolerant plugin.
local function is_damage(finding)
  return finding.damage or finding.kind == "full_table" and host.use() ~= "tolerant"
end

local function amount(sums)
  local amounts = {}
  for _, unit in ipairs { "pixel", "byte" } do
    if sums[unit .. "s"] then amounts[1] = text.count(sums[unit .. "s"], unit) end
  end
  return amounts[1] and " (" .. amounts[1] .. ")" or ""
end

local function place(group)
  local blocks = #group.blocks > 0 and "in block" .. (#group.blocks > 1 and "s " or " ") .. text.ranges(group.blocks) .. ", " or ""
  return blocks .. (#group.blocks > 1 and "first at byte " or "at byte ") .. text.grouped(group.offset)
end

-- One for each kind found, damage first: kind, damage, place and meaning in words, and text, all of that in a line.
function scanning.groups(scan)
  local groups, by_kind = {}, {}
  for _, finding in ipairs(scan.findings) do
    local group = by_kind[finding.kind]
    if not group then
      group = { kind = finding.kind, damage = is_damage(finding), offset = finding.offset, blocks = {}, sums = {} }
      groups[#groups + 1], by_kind[finding.kind] = group, group
    end
    if group.blocks[#group.blocks] ~= finding.block then group.blocks[#group.blocks + 1] = finding.block end
    for _, name in ipairs { "pixels", "bytes" } do
      if finding[name] then group.sums[name] = (group.sums[name] or 0) + finding[name] end
    end
  end
  local sorted = {}
  for _, wanted in ipairs { true, false } do
    for _, group in ipairs(groups) do
      if group.damage == wanted then sorted[#sorted + 1] = group end
    end
  end
  for _, group in ipairs(sorted) do
    group.place, group.meaning = place(group), gifscan.meanings[group.kind] .. amount(group.sums)
    group.text = ("%s %s: %s"):format(group.kind, group.place, group.meaning)
  end
  return sorted
end

return scanning
