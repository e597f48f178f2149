-- An animation drawn from nothing: a striped planet turning before the stars. The first image covers the screen; the
-- others hold only the square around the planet.

local planet = {}

local kWidth, kHeight = 160, 120
local kCentreX, kCentreY, kRadius = 80, 60, 45
local kFrames, kDelayCs = 24, 7 -- hundredths of a second
local kHues, kShades = 8, 8     -- the colour of hue h in shade s is h * kShades + s: 64 in all
local kKeep = 1 -- disposal: the next image is drawn over this one (GIF89a, section 23)

local sin, cos, pi, floor = math.sin, math.cos, math.pi, math.floor

-- Hues go from dusk to dawn and shades from night to day; hue 0 is the sky and its stars.
local function colour(hue, shade)
  local light = (shade / (kShades - 1)) ^ 1.3
  local turn = hue / (kHues - 1)
  local red, green, blue = 0.95 - 0.55 * turn, 0.35 + 0.45 * turn, 0.30 + 0.55 * turn ^ 2
  if hue == 0 then red, green, blue = 0.9, 0.92, 1 end
  local function component(strength, night) return floor(night + (255 - night) * strength * light + 0.5) end
  return component(red, 8) << 16 | component(green, 10) << 8 | component(blue, 28)
end

-- Thresholds that spread what lies between two colours over a square of pixels.
local kSpread = { { 0, 8, 2, 10 }, { 12, 4, 14, 6 }, { 3, 11, 1, 9 }, { 15, 7, 13, 5 } }

-- One of the numbers 0 to count - 1 for a value between 0 and 1.
local function step(value, count, x, y)
  local threshold = (kSpread[y % 4 + 1][x % 4 + 1] + 0.5) / 16
  return math.max(0, math.min(count - 1, floor(value * (count - 1) + threshold)))
end

local function sky(x, y)
  local star = (x * 7919 + y * 104729 + x * y * 31) % 401
  return star == 0 and 6 or star < 3 and 3 or 0
end

-- The planet's colour where it stands over a pixel; `turn` goes from 0 to 1 in a day.
local function surface(x, y, turn)
  local right, up = (x - kCentreX) / kRadius, (kCentreY - y) / kRadius
  local distance = right * right + up * up
  if distance >= 1 then return nil end
  local near = math.sqrt(1 - distance)
  local tilted_up, tilted_near = up * cos(0.4) - near * sin(0.4), up * sin(0.4) + near * cos(0.4)
  local longitude = math.atan(right, tilted_near) + 2 * pi * turn
  local latitude = math.asin(math.max(-1, math.min(1, tilted_up)))
  local stripes = sin(7 * latitude + 0.9 * sin(2 * longitude + 3 * latitude) + 0.4 * sin(5 * longitude))
  local light = math.max(0, -0.62 * right + 0.45 * up + 0.64 * near)
  return step((stripes + 1) / 2, kHues - 1, x, y) + 1, step(0.04 + 0.96 * light ^ 0.8, kShades, x + 2, y + 1)
end

-- The pixels of a frame as a MemoryBlock: rows from the top, one byte for each pixel.
local function draw(turn)
  local pixels = MemoryBlock(kWidth * kHeight)
  local at = 0
  for y = 0, kHeight - 1 do
    for x = 0, kWidth - 1 do
      local hue, shade = surface(x, y, turn)
      pixels[at] = hue and hue * kShades + shade or sky(x, y)
      at = at + 1
    end
  end
  return pixels
end

local function table_of_colours()
  local colours = {}
  for hue = 0, kHues - 1 do
    for shade = 0, kShades - 1 do colours[#colours + 1] = (">I3"):pack(colour(hue, shade)) end
  end
  return table.concat(colours)
end

-- The animation as build.lua puts it together: a film that is planned, and the delays of its frames. A delay of nil is
-- the planet's own.
function planet.animation(delay_cs)
  local film, frames, colours = Film(kWidth, kHeight), {}, table_of_colours()
  for i = 0, kFrames - 1 do
    film:Draw(draw(i / kFrames), colours, -1, 0, 0, kWidth, kHeight, kKeep)
    film:Keep()
    frames[#frames + 1] = { delay_cs = delay_cs or kDelayCs }
  end
  film:Plan(1 << 8, true)
  return {
    width = kWidth, height = kHeight, film = film, frames = frames,
    comment = "A turning planet, built by examples/build.lua" }
end

return planet
