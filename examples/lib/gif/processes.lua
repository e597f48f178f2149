-- Runs commands of the shell, several at a time.

local files = require "gif.files"

local processes = {}

-- How many processors there are.
function processes.count()
  local pipe <close> = io.popen("nproc 2>&-")
  return pipe:read("n") or 1
end

-- The words that start this program with the options it was given, as far as its script.
function processes.this_program()
  local words = {}
  for word in (files.read("/proc/self/cmdline")):gmatch("([^\0]*)\0") do words[#words + 1] = word end
  return table.move(words, 1, #words - #arg - 1, 1, {})
end

function processes.command(words)
  local quoted = {}
  for i, word in ipairs(words) do quoted[i] = files.quoted(word) end
  return table.concat(quoted, " ")
end

-- Runs the commands, at most so many at a time, and calls done(number, output, kind, status) for each in order: what it
-- wrote on both streams, and "exit" with its status or "signal" with its number.
function processes.run(commands, at_a_time, done)
  local running = {}
  for i = 1, #commands + at_a_time do
    local oldest = i - at_a_time
    if oldest >= 1 and running[oldest] then
      local output = running[oldest]:read("a")
      local _, kind, status = running[oldest]:close()
      running[oldest] = nil
      done(oldest, output, kind, status)
    end
    if commands[i] then running[i] = io.popen(commands[i] .. " 2>&1 <&-") end
  end
end

return processes
