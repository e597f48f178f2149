-- Films in few colours: what is shown stays near, still areas keep still, dithering mixes the colours that are missing,
-- and tables of their own go where they were asked for.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../../support/support.lua")

local kWidth <const>, kHeight <const>, kFrames <const> = 48, 32, 4
local kNone <const>, kDiffusion <const>, kOrdered <const> = 0, 1, 2
local kKeep <const>, kRestorePrevious <const> = 1, 3
local kOne <const>, kOwn <const>, kAuto <const> = 0, 1, 2

-- In the middle nothing moves, on both sides all does: images reach over it.
local function is_still(x) return x >= 12 and x < 36 end

-- Pictures of films: a colour for each place and frame.
local films = {
  moving = function(x, y, frame)
    return is_still(x) and { 4 * x, 5 * y, 60 } or { 4 * (x + frame) % 256, 90, 5 * y }
  end,
  gentle = function(x, y, frame)
    return is_still(x) and { 100 + x, 120, 90 + y } or { 100 + x // 2 + frame, 110 + y // 2, 90 }
  end,
  scenes = function(x, y, frame) -- each with colours of its own
    return is_still(x) and { 128, 128, 128 } or frame % 2 == 0 and { 100 + 2 * x, 2 * y, 0 } or { 0, 2 * y, 100 + 2 * x }
  end }

local function drawn(colour_of)
  local film, frames = Film(kWidth, kHeight), {}
  for frame = 0, kFrames - 1 do
    local picture, colours = Picture(kWidth, kHeight), {}
    for at = 0, kWidth * kHeight - 1 do
      local red, green, blue = table.unpack(colour_of(at % kWidth, at // kWidth, frame))
      colours[at] = { red, green, blue }
      picture:SetPixel(at % kWidth, at // kWidth, red << 16 | green << 8 | blue)
    end
    film:Show(picture)
    film:Keep()
    frames[#frames + 1] = colours
  end
  return film, frames
end

-- What is seen of a planned film, frame by frame, as it was drawn; how many images have tables of their own.
local function shown(film)
  local screen, frames, own = {}, {}, 0
  while film:Next() do
    local colours, pixels = film.Colors == "" and film.Table or film.Colors, film:Pixels()
    local before = table.move(screen, 0, kWidth * kHeight - 1, 0, {})
    own = own + (film.Colors == "" and 0 or 1)
    for i = 0, film.Width * film.Height - 1 do
      local at, index = (film.Top + i // film.Width) * kWidth + film.Left + i % film.Width, pixels[i]
      if index ~= film.Transparent then screen[at] = { colours:byte(3 * index + 1, 3 * index + 3) } end
    end
    frames[#frames + 1] = table.move(screen, 0, kWidth * kHeight - 1, 0, {})
    assert(film.Disposal == kKeep or film.Disposal == kRestorePrevious)
    if film.Disposal == kRestorePrevious then screen = before end
  end
  return frames, own
end

-- The mean squared distance of squares of that many pixels, each taken as one colour.
local function error_of(frames, wanted, side)
  local sum, count = 0, 0
  for number, frame in ipairs(frames) do
    for top = 0, kHeight - side, side do
      for left = 0, kWidth - side, side do
        local off = { 0, 0, 0 }
        for i = 0, side * side - 1 do
          local at = (top + i // side) * kWidth + left + i % side
          for k = 1, 3 do off[k] = off[k] + (frame[at][k] - wanted[number][at][k]) / (side * side) end
        end
        sum, count = sum + off[1] ^ 2 + off[2] ^ 2 + off[3] ^ 2, count + 1
      end
    end
  end
  return sum / count
end

local function moves(frames)
  for number = 2, #frames do
    for at = 0, kWidth * kHeight - 1 do
      for k = 1, 3 do
        if is_still(at % kWidth) and frames[number][at][k] ~= frames[number - 1][at][k] then return true end
      end
    end
  end
  return false
end

local function planned(name, ...)
  local film, wanted = drawn(films[name])
  assert(film:Plan(...))
  local frames, own = shown(film)
  t.expect(name .. ": frames", #frames, kFrames)
  t.expect(name .. ": what stands still moves", moves(frames), false)
  return { own = own, far = error_of(frames, wanted, 1), far_as_seen = error_of(frames, wanted, 8) }
end

-- film, colours, images that have a table of their own where that pays
for _, row in ipairs { { "gentle", 6, 3 }, { "gentle", 64, 0 }, { "moving", 8, 3 }, { "scenes", 8, 3 }, { "scenes", 32, 3 } } do
  local name, colours, own_where_it_pays = table.unpack(row)
  local results = {}
  for tables = kOne, kAuto do
    results[tables] = {}
    for dithering = kNone, kOrdered do
      local result <const> = planned(name, colours, false, tables, dithering)
      results[tables][dithering] = result
      local plain <const>, what <const> = results[tables][kNone], ("%s, %d colours, %d, %d"):format(name, colours, tables, dithering)
      if dithering ~= kNone then
        -- Pixels are further off; squares of them come nearer, where they are small beside the areas of one colour.
        local nearer <const> = result.far > plain.far and result.far_as_seen < plain.far_as_seen
        assert(nearer or name ~= "gentle" or colours > 8, what)
      end
      t.expect(what .. ": own tables", result.own, ({ [kOne] = 0, [kOwn] = kFrames, [kAuto] = own_where_it_pays })[tables])
    end
  end
  for dithering = kNone, kOrdered do
    local one <const>, own <const>, auto <const> = results[kOne][dithering], results[kOwn][dithering], results[kAuto][dithering]
    assert(own.far < one.far and (auto.far < one.far) == (own_where_it_pays > 0), name)
  end
end

-- By quality: the fewer colours the lower it is, or a refusal by a host that cannot.
local counts = {}
for _, quality in ipairs { 10, 60, 100 } do
  local film <const> = drawn(films.gentle)
  local planned_so, problem = pcall(film.Plan, film, 256, false, kOne, kNone, 0, quality)
  if planned_so then
    counts[#counts + 1] = #film.Table
  else
    assert(problem.message:find("libimagequant", 1, true), problem.message)
  end
end
assert(#counts == 0 or #counts == 3 and counts[1] < counts[2] and counts[2] < counts[3])
