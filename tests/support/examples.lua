-- Runs the example scripts as people do: each in a process of its own.

local here = debug.getinfo(1, "S").source:match("@(.*/)")
local sources = here .. "../../examples/"
local processes = require "gif.processes"

local examples = {}

-- Gives the exit status, standard output and standard error.
function examples.run(script, ...)
  local words = processes.this_program()
  table.move({ sources .. script .. ".lua", ... }, 1, 1 + select("#", ...), #words + 1, words)
  local errors = os.tmpname()
  local pipe = io.popen(processes.command(words) .. " 2>" .. errors)
  local output = pipe:read("a")
  local _, _, status = pipe:close()
  local file <close> = io.open(errors)
  os.remove(errors)
  return status, output, file:read("a")
end

-- Calls f with the path of a new folder, and removes that.
function examples.with_folder(f)
  local folder = os.tmpname()
  os.remove(folder)
  assert(os.execute("mkdir " .. folder))
  local succeeded, message = pcall(f, folder)
  os.execute("rm -r " .. folder)
  assert(succeeded, message)
end

function examples.write(path, bytes)
  local file <close> = assert(io.open(path, "wb"))
  file:write(bytes)
  return path
end

function examples.read(path)
  local file <close> = assert(io.open(path, "rb"))
  return file:read("a")
end

return examples
