-- Writes a page about a GIF file, to look at in any browser: facts and warnings, the animation frame by frame, every
-- image with its place and mask, the colours and how often each is used, the bytes of every extension.
--
--   gifhost examples/report.lua [--full] IN.gif OUT.html
--
-- The page is one file that needs nothing else. What it looks like and does is in the folder report/.

local here = arg[0]:gsub("[^/]*$", "")
local command, composing, extensions = require "gif.command", require "gif.composing", require "gif.extensions"
local files, html, progress = require "gif.files", require "gif.html", require "gif.progress"
local survey, text, warnings = require "gif.survey", require "gif.text", require "gif.warnings"

-- Of a page that does not hold everything: pixels of all pictures together and of the largest, more being scaled down;
-- bytes of these, frames, rows of blocks, comments, seconds of drawing.
local kModest = { pixels = 1 << 25, largest = 1 << 23, bytes = 20 << 20, frames = 1000, rows = 4000, comments = 100, seconds = 5 }
local kFull = { pixels = 1 << 27, largest = 1 << 26, bytes = math.huge, frames = math.huge, rows = math.huge, comments = math.huge, seconds = math.huge }
local kLeastSide = 480 -- tiny animations are enlarged by a whole number up to about this
local kCardBox, kStripBox = { 138, 96 }, { 224, 72 } -- pixels that small pictures may take
local kMostHexBytes = 1024
local kLongestComment = 4000 -- bytes that are shown

local function require_done(done, why)
  if not done then command.fail(why) end
  return done
end

-- --- Facts -------------------------------------------------------------------------------------------------------------

-- The style that makes something as large as fits into a box.
local function fitted(width, height, box_width, box_height)
  local scale = math.min(box_width / math.max(width, 1), box_height / math.max(height, 1))
  return ("width:%dpx;height:%dpx"):format(math.max(1, width * scale // 1), math.max(1, height * scale // 1))
end

local function size(width, height) return ("%d × %d"):format(width, height) end

local function loops_meaning(loops, frames)
  if frames < 2 then return "a still picture" end
  if not loops then return "plays once (it says nothing of loops)" end
  if loops == 0 then return "repeats for ever (loop count 0)" end
  return ("repeats %s: plays %s in all (loop count %d)"):format(
    text.count(loops, "time"), text.count(loops + 1, "time"), loops)
end

local function facts(found)
  local frames = #found.frames
  local parts = {
    found.version, size(found.screen_width, found.screen_height) .. " pixels", text.count(found.bytes, "byte"),
    text.count(frames, "image"), frames > 1 and text.seconds(found.sums.delay_cs) or "",
    frames > 0 and loops_meaning(found.sums.loops, frames) or "" }
  for i, part in ipairs(parts) do
    if part ~= "" then parts[i] = "<li>" .. html.escape(part) .. "</li>" end
  end
  return table.concat(parts)
end

local function comments(found, most)
  local quotes = {}
  for i, comment in ipairs(found.comments) do
    if i > most then break end
    local shown = comment:sub(1, kLongestComment) .. (#comment > kLongestComment and " …" or "")
    quotes[i] = html.fill('<blockquote dir="auto">$comment</blockquote>', { comment = shown })
  end
  return table.concat(quotes, "\n")
end

local function warning_list(found, left_out)
  local sentences = warnings.of(found)
  for _, sentence in ipairs(left_out) do table.insert(sentences, 1, sentence) end
  for i, sentence in ipairs(sentences) do sentences[i] = "<li>" .. html.escape(sentence) .. "</li>" end
  if #sentences == 0 then return '<p class="quiet">Nothing to warn about.</p>' end
  return '<ul class="warnings">' .. table.concat(sentences) .. "</ul>"
end

-- --- Colours -----------------------------------------------------------------------------------------------------------

-- A table of colours, which the page's script shows as swatches.
local function palette(colours, counts, marks)
  local values, uses = {}, {}
  for i, colour in ipairs(colours) do
    values[i], uses[i] = ("%06x"):format(colour), counts and counts[i - 1] or 0
  end
  return html.fill('<div class="palette" data-colours="$colours" data-uses="$uses" data-marks="$marks"></div>', {
    colours = table.concat(values, " "), uses = counts and table.concat(uses, " ") or "", marks = marks })
end

local function used(colours, counts)
  if not counts then return text.count(#colours, "colour") end
  local number = 0
  for i = 0, #colours - 1 do number = number + (counts[i] > 0 and 1 or 0) end
  return ("%d of %s used"):format(number, text.count(#colours, "colour"))
end

local function global_colours(found)
  if #found.colours == 0 then return '<p class="quiet">The file has no global table.</p>' end
  return ('<p>%s by images without a table of their own.</p>\n%s'):format(
    html.escape(used(found.colours, found.counts)),
    palette(found.colours, found.counts, found.background .. " background"))
end

-- --- Images ------------------------------------------------------------------------------------------------------------

-- Where the image lies on the logical screen, as a drawing.
local kPlace = [[
<svg viewBox="$left $top $width $height" style="$style" role="img" aria-label="place on the screen">
<rect class="screen" x="0" y="0" width="$screen_width" height="$screen_height"/>
<rect class="place" x="$x" y="$y" width="$image_width" height="$image_height"/></svg>]]

local function place(frame, found)
  local right = math.max(found.width, frame.left + frame.width, 1)
  local bottom = math.max(found.height, frame.top + frame.height, 1)
  local margin = math.max(right, bottom) / 100
  return html.fill(kPlace, {
    style = fitted(right, bottom, kCardBox[1], kCardBox[2]), left = -margin, top = -margin, width = right + 2 * margin, height = bottom + 2 * margin,
    screen_width = found.width, screen_height = found.height,
    x = frame.left, y = frame.top, image_width = frame.width, image_height = frame.height })
end

local function transparent_pixels(frame) return frame.transparent and frame.counts and frame.counts[frame.transparent] or 0 end

local kPicture = [[
<figure><img class="check" $!source style="$style" alt="image $number"><figcaption>Image</figcaption></figure>]]
local kMask = [[
<figure class="mask"><span><img style="$style" alt="mask of image $number"></span>
<figcaption>Mask</figcaption></figure>]]

-- Whether the image is all that is seen when it is drawn: the page holds it once then.
local function is_whole_frame(frame, found)
  return not frame.transparent and frame.left == 0 and frame.top == 0 and
    frame.width == found.width and frame.height == found.height
end

-- The address is nil for an image that can't be shown, empty for one that the page takes from the timeline.
local function views(frame, address)
  if not address then return '<p class="quiet">It can’t be shown.</p>' end
  local values = {
    number = frame.number, style = fitted(frame.width, frame.height, kCardBox[1], kCardBox[2]),
    source = address == "" and ('data-frame="%d"'):format(frame.number) or ('src="%s"'):format(address) }
  return html.fill(kPicture, values) .. (transparent_pixels(frame) > 0 and html.fill(kMask, values) or "")
end

local kImage = [[
<article id="image-$number">
<h3>Image $number <small>block $block</small></h3>
<div class="views"><figure>$!place<figcaption>Place</figcaption></figure>$!views</div>
<p>$facts</p>
<details><summary>$used</summary>$!palette</details>
</article>]]

local function image_card(frame, found, address)
  local transparent = transparent_pixels(frame)
  return html.fill(kImage, {
    number = frame.number, block = frame.block, place = place(frame, found), views = views(frame, address),
    facts = text.list({
      ("%s at (%d, %d)"):format(size(frame.width, frame.height), frame.left, frame.top),
      frame.interlaced and "interlaced" or "", extensions.describe_control(frame, " · "),
      transparent > 0 and text.count(transparent, "transparent pixel") or "" }, " · "),
    used = ("%s table: %s"):format(frame.own_colours and "Its own" or "Global", used(frame.colours, frame.counts)),
    palette = palette(frame.colours, frame.counts, (frame.transparent or -1) .. " transparent") })
end

-- --- The animation -------------------------------------------------------------------------------------------------------

local kFrame = [[
<li><button type="button" tabindex="-1" data-delay="$delay_cs" style="--share:$share">
<img class="check" src="$!address" style="$style" alt="" decoding="async"><b>$number</b> <span>$delay</span></button></li>]]

local function frame_item(frame, found, address, longest_cs)
  return html.fill(kFrame, {
    style = fitted(found.width, found.height, kStripBox[1], kStripBox[2]),
    number = frame.number, delay = text.seconds(frame.delay_cs), delay_cs = frame.delay_cs,
    address = address, share = longest_cs > 0 and ("%.3f"):format(frame.delay_cs / longest_cs) or 0 })
end

-- The items of the timeline and the cards of the images, in one go. There is no timeline of what can't be drawn. Gives
-- both and how many frames there was no room for.
local function draw(found, limits)
  local items, cards, longest_cs, bytes, started = {}, {}, 1, 0, os.clock()
  for _, frame in ipairs(found.frames) do longest_cs = math.max(longest_cs, frame.delay_cs) end
  local drawn, wanted = composing.can_draw(found.width, found.height), math.min(#found.frames, limits.frames)
  local pixels, largest = 0, drawn and found.width * found.height or 0
  for i = 1, wanted do
    local own = math.max(0, found.frames[i].width * found.frames[i].height)
    pixels, largest = pixels + own + (drawn and found.width * found.height or 0), math.max(largest, own)
  end
  local scale = math.sqrt(math.min(1, limits.pixels / math.max(1, pixels), limits.largest / math.max(1, largest)))
  local step = progress.start(wanted, "frames")
  local function address(picture)
    local made = picture and html.picture_address(picture)
    bytes = bytes + #(made or "")
    return made
  end
  local function has_room() return #cards < wanted and bytes < limits.bytes and os.clock() - started < limits.seconds end
  local function add_card(frame)
    local is_on_timeline = drawn and #frame.colours > 0 and is_whole_frame(frame, found)
    cards[#cards + 1] = image_card(frame, found,
      is_on_timeline and "" or address(composing.picture_of(frame, frame.colours, scale)))
    step()
  end
  if drawn then
    local function shown(size) return math.max(1, math.floor(size * scale)) end
    composing.play(found.document, { width = shown(found.width), height = shown(found.height), needed = has_room },
      function(frame, canvas)
        items[#items + 1] = frame_item(frame, found, address(composing.seen(canvas)), longest_cs)
        add_card(frame)
      end)
  else
    for _, frame in ipairs(found.frames) do
      if not has_room() then break end
      add_card(frame)
    end
  end
  return items, cards, #found.frames - #cards
end

-- --- Blocks --------------------------------------------------------------------------------------------------------------

local function sub_blocks(extension)
  if #extension.sub_blocks == 0 then return '<span class="quiet">no bytes</span>' end
  return html.fill("<details><summary>$sizes</summary><pre>$hex</pre></details>", {
    sizes = ("%s in %s"):format(text.count(extension.bytes, "byte"), text.count(#extension.sub_blocks, "sub-block")),
    hex = text.hex(table.concat(extension.sub_blocks), kMostHexBytes) })
end

local function block_rows(found, most)
  local rows, image = {}, 0
  for i, block in ipairs(found.blocks) do
    if i > most then break end
    local row = { index = block.index, type = "nothing", says = "", bytes = "" }
    if block.image then
      row.type, row.says = "image", html.fill('<a href="#image-$number">image $number</a>', { number = image })
      image = image + 1
    elseif block.extension then
      row.type, row.says = extensions.name(block.extension), html.escape(extensions.describe(block.extension))
      row.bytes = sub_blocks(block.extension)
    end
    rows[i] = html.fill("<tr><td>$index</td><td>$type</td><td>$!says</td><td>$!bytes</td></tr>", row)
  end
  return table.concat(rows, "\n")
end

-- --- The page -------------------------------------------------------------------------------------------------------------

local function page(found, limits)
  local items, cards, frames_left_out = draw(found, limits)
  local left_out = {}
  local function leave_out(count, noun)
    if count <= 0 then return end
    left_out[#left_out + 1] = ("The last %s are left out of this page; --full shows them."):format(text.count(count, noun))
  end
  leave_out(#found.comments - limits.comments, "comment")
  leave_out(#found.blocks - limits.rows, "block")
  leave_out(frames_left_out, "image")
  local longest = math.max(found.width, found.height, 1)
  local function part(name) return require_done(files.read(here .. "report/page." .. name)) end
  return html.fill(part("html"), {
    name = found.path:match("[^/]*$"), style = part("css"), script = part("js"),
    facts = facts(found), comments = comments(found, limits.comments), warnings = warning_list(found, left_out),
    shown_as = #found.frames < 2 and "Picture" or "Animation",
    plays = #found.frames < 2 and 1 or found.sums.loops == 0 and 0 or (found.sums.loops or 0) + 1,
    width_px = found.width * math.max(1, kLeastSide // longest) .. "px", has_frames = #items > 0 and "" or "hidden",
    frames = table.concat(items, "\n"), images = table.concat(cards, "\n"), has_images = #cards > 0 and "" or "hidden",
    colours = global_colours(found), blocks = block_rows(found, limits.rows), has_blocks = #found.blocks > 0 and "" or "hidden" })
end

local options, operands = command.parse {
  about = "Writes a page about a GIF file, to look at in any browser. The page is one file that needs nothing else.",
  operands = "IN.gif OUT.html",
  options = { { "--full", "all images and blocks of very large files, however long that takes and large it gets" } },
}
local input, output = table.unpack(operands)
local limits = options.full and kFull or kModest
local found = require_done(survey.of(input, progress.start, limits.frames))
local bytes = page(found, limits)
require_done(files.write(output, bytes))
print(("%s: %s, %s"):format(text.shown(output), text.count(#bytes, "byte"), text.count(#found.frames, "frame")))
