-- An animation of PNG files: their colours reduced, and of each picture no more stored than what is new in it.

local command, composing, files = require "gif.command", require "gif.composing", require "gif.files"
local optimising, progress = require "gif.optimising", require "gif.progress"

local pictures = {}

local kTables = { one = 0, own = 1, auto = 2 } -- as Film:Plan takes them
local kDithering = { none = 0, diffusion = 1, ordered = 2 }

local function load(path)
  local picture, why = files.load_png(path)
  if not picture then command.fail(why) end
  composing.sweep(8 * picture.Width * picture.Height)
  return picture
end

-- The largest width and height of the files; 0 of those that are no PNG files.
local function screen_size(paths)
  local width, height = 0, 0
  for _, path in ipairs(paths) do
    local file <close> = io.open(path, "rb")
    local start = file and file:read(24) or ""
    if #start == 24 and start:sub(1, 4) == "\x89PNG" then
      local its_width, its_height = (">I4I4"):unpack(start, 17)
      width, height = math.max(width, its_width), math.max(height, its_height)
    end
  end
  return width, height
end

-- The files' animation as build.lua puts it together. Pictures stand in the middle of the largest one's screen.
-- wanted: colours, at most, of each table; tables, dithering, as above; tolerance; quality; delay_cs.
function pictures.animation(paths, wanted)
  local step = progress.start(#paths, "pictures")
  local width, height = screen_size(paths)
  if width == 0 then load(paths[1]) end -- it says why not
  local film, frames = Film(width, height), {}
  for _, path in ipairs(paths) do
    local picture <const> = load(path)
    local frame = { delay_cs = wanted.delay_cs }
    film:Show(picture, (width - picture.Width) // 2, (height - picture.Height) // 2)
    if #frames == 0 or film.Changed or not optimising.can_join(frames[#frames], frame) then
      film:Keep()
      frames[#frames + 1] = frame
    else
      frames[#frames].delay_cs = frames[#frames].delay_cs + frame.delay_cs
    end
    step()
  end
  local planned, problem = pcall(film.Plan, film, wanted.colours, false, kTables[wanted.tables or "one"],
    kDithering[wanted.dithering or "none"], wanted.tolerance or 0, wanted.quality or 0)
  if not planned then command.fail(problem.message) end
  return { width = width, height = height, film = film, frames = frames }
end

return pictures
