-- GIF files as lists of frames among other blocks: `local gif = require "gif"`. docs/library.md tells all of it.

-- Whoever edits a GIF wants the picture that everyone sees, and a file that everyone reads.
if not host.use() then host.use "tolerant" end

local composing, document = require "gif.composing", require "gif.document"
local drawing, joining = require "gif.drawing", require "gif.joining"
local optimising, payloads, turning = require "gif.optimising", require "gif.payloads", require "gif.turning"

return {
  open = document.open, read = document.read, new = document.new, join = joining.join,
  make_whole = composing.make_whole, make_deltas = composing.make_deltas, play = composing.play,
  optimise = optimising.smaller,
  crop = turning.crop, turn = turning.turn,
  resize = drawing.resize, caption = drawing.caption, overlay = drawing.overlay, redraw = drawing.redraw,
  payloads = payloads,
}
