-- What extensions say. Sections are those of GIF89a.

local text = require "gif.text"

local extensions = {}

local kLongestText = 60 -- bytes of a comment or text that are shown in a line
local kDisposals = { [0] = "", "keep", "restore background", "restore previous" }

-- --- Reading: each takes the sub-blocks and fills in the fields ----------------------------------------------------

-- Section 23: about the image that follows. Without transparency `transparent` is nil.
local function graphic_control(to, blocks)
  local packed, delay_cs, transparent = ("<BI2B"):unpack(blocks[1])
  to.disposal, to.delay_cs = packed >> 2 & 7, delay_cs
  to.transparent = packed & 1 ~= 0 and transparent or nil
  to.waits_for_input = packed & 2 ~= 0
end

-- Section 24.
local function comment(to, blocks) to.text = table.concat(blocks) end

-- Section 25: a grid of characters.
local function plain_text(to, blocks)
  to.left, to.top, to.width, to.height, to.cell_width, to.cell_height, to.ink, to.paper =
    ("<I2I2I2I2BBBB"):unpack(blocks[1])
  to.text = table.concat(blocks, "", 2)
end

-- Section 26: eight characters of identifier, three of authentication code. Looping is that of the Netscape browser;
-- `loops` 0 stands for ever.
local function application(to, blocks)
  to.application = blocks[1]:sub(1, 11)
  local looping = (to.application == "NETSCAPE2.0" or to.application == "ANIMEXTS1.0") and blocks[2] or ""
  to.loops = #looping >= 3 and looping:byte(1) & 7 == 1 and ("<I2"):unpack(looping, 2) or nil
end

-- By label: a name, the bytes that the first sub-block must have, and what reads them.
local kKinds = {
  [0x01] = { "plain text", 12, plain_text },
  [0xF9] = { "graphic control", 4, graphic_control },
  [0xFE] = { "comment", 0, comment },
  [0xFF] = { "application", 11, application },
}

local kNone = {}

-- An extension as a table: label, kind (nil for labels that no one has defined), sub_blocks (their bytes), bytes (how
-- many), damaged (too short for its kind), and what the functions above read.
function extensions.read(extension)
  local blocks, bytes, label = kNone, 0, extension.Marker
  for i, data in pairs(extension) do
    if i == 0 then blocks = {} end
    blocks[i + 1] = data.DataString
    bytes = bytes + #blocks[i + 1]
  end
  local kind, least, read = table.unpack(kKinds[label] or kNone)
  local result = { label = label, kind = kind, sub_blocks = blocks, bytes = bytes }
  result.damaged = kind ~= nil and #(blocks[1] or "") < least
  if kind and not result.damaged then read(result, blocks) end
  return result
end

-- --- Describing ------------------------------------------------------------------------------------------------------

local function loops_text(loops) return loops == 0 and "loops forever" or "repeats " .. text.count(loops, "time") end
extensions.loops_text = loops_text

-- What a graphic control, or a frame that it is about, says; with commas or what is given in place of them.
function extensions.describe_control(of, separator)
  return text.list({
    "delay " .. text.seconds(of.delay_cs),
    of.disposal > 0 and ("disposal %d (%s)"):format(of.disposal, kDisposals[of.disposal] or "unknown") or "",
    of.transparent and "transparent " .. of.transparent or "",
    of.waits_for_input and "waits for input" or "" }, separator)
end

local kDescriptions = {
  ["comment"] = function(of) return text.quoted(of.text, kLongestText) end,
  ["plain text"] = function(of)
    return text.list {
      text.quoted(of.text, kLongestText),
      ("%d x %d at (%d, %d)"):format(of.width, of.height, of.left, of.top),
      ("cells %d x %d"):format(of.cell_width, of.cell_height),
      ("colours %d on %d"):format(of.ink, of.paper) }
  end,
  ["application"] = function(of)
    return text.list { text.quoted(of.application, kLongestText), of.loops and loops_text(of.loops) or "" }
  end,
}

-- The bytes of all sub-blocks.
function extensions.payload(of) return table.concat(of.sub_blocks) end

function extensions.name(of) return of.kind or ("extension 0x%02X"):format(of.label) end

-- One line about what was read.
function extensions.describe(of)
  local sizes = ("%s in %s"):format(text.count(of.bytes, "byte"), text.count(#of.sub_blocks, "sub-block"))
  if not of.kind then return sizes end
  if of.damaged then return "damaged, " .. sizes end
  if of.kind == "graphic control" then return extensions.describe_control(of) end
  return text.list { kDescriptions[of.kind](of), sizes }
end

return extensions
