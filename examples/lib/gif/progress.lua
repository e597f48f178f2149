-- A bar on standard error while work is long; nothing when that is no terminal.

local progress = {}

local kWidth = 32
local kPatience = 1 -- whole seconds before the first bar

local on_terminal, shown -- asked once; whether a bar stands there now

local function is_terminal()
  if on_terminal == nil then on_terminal = os.execute("test -t 2") == true end
  return on_terminal
end

-- Takes the bar away; what is written next stands in its place.
function progress.clear()
  if shown then io.stderr:write("\27[K") end
  shown = false
end

local function time(seconds)
  if seconds < 120 then return seconds .. " s" end
  return seconds < 7200 and seconds // 60 .. " min" or ("%d h %02d min"):format(seconds // 3600, seconds % 3600 // 60)
end

-- Starts a bar of so many steps; gives the function that takes one step.
function progress.start(total, noun)
  local started, done, drawn = os.time(), 0, 0
  return function()
    done = done + 1
    if done == total then return progress.clear() end
    local now = os.time()
    local passed = now - started
    if passed <= kPatience or now == drawn and shown or not is_terminal() then return end
    local filled = done * kWidth // total
    io.stderr:write(("\27[K[%s%s] %d of %d %s, %d a second, %s left\r"):format(
      ("#"):rep(filled), ("."):rep(kWidth - filled), done, total, noun, done // passed, time((total - done) * passed // done)))
    drawn, shown = now, true
  end
end

return progress
