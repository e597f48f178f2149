-- The command line of a script: what it takes, its --help, its errors and exit statuses.

local files, progress, text = require "gif.files", require "gif.progress", require "gif.text"

local command = {}

local kFailed, kWrongUsage = 1, 2

-- What there is beside the plugin that a script uses by itself.
local kPlugins = {
  ["tolerant"] = "see files as browsers do: codes go on with a full table, and indexes beyond the colours are kept",
  ["as-designed"] = "see files as other hosts do: a row ends where a full code table is used without clearing it",
}

-- Says what went wrong and goes on.
function command.complain(message)
  progress.clear()
  io.stderr:write(arg[0]:match("[^/]*$"), ": ", text.shown(message), "\n")
end

local function stop(status, message)
  command.complain(message)
  os.exit(status, true)
end

-- While command.attempt() runs it is that which fails, not the program.
local attempts = 0
function command.fail(message)
  if attempts > 0 then error(setmetatable({ message = message }, { __tostring = function(self) return self.message end })) end
  stop(kFailed, message)
end

-- Calls f. Gives what it gives; nil and the reason when it fails.
function command.attempt(f, ...)
  attempts = attempts + 1
  local results = table.pack(pcall(f, ...))
  attempts = attempts - 1
  if results[1] then return table.unpack(results, 2, results.n) end
  return nil, tostring(results[2])
end

function command.reject(message) stop(kWrongUsage, message .. "; --help tells more") end
local reject = command.reject

local function print_help(wanted)
  local rows, longest = { table.unpack(wanted.options) }, 0
  rows[#rows + 1] = { "--help", "this text" }
  for _, row in ipairs(rows) do longest = math.max(longest, #row[1]) end
  print(("Usage: gifhost %s %s%s"):format(arg[0], #wanted.options > 0 and "[OPTION...] " or "", wanted.operands))
  for name, names in pairs(wanted.operands_with or {}) do
    print(("       gifhost %s --%s ... [OPTION...] %s"):format(arg[0], name, names))
  end
  print(wanted.about .. "\n")
  for _, row in ipairs(rows) do print(("  %-" .. longest .. "s  %s"):format(row[1], row[2])) end
  if wanted.more then print("\n" .. wanted.more) end
  if wanted.operands:find("IN") or wanted.operands:find("PATH") then
    print("\n- in place of a file is standard input" .. (wanted.operands:find("OUT%.") and " or output" or "") .. "; ./- a file of that name.")
  end
  print("\nExit status: 0; 1 something failed; 2 wrong usage.")
end

-- Kinds of values that options take: what people call them, and what reads one from text or gives nil.

function command.whole(least, most)
  return {
    name = "a whole number from " .. least .. (most and " to " .. most or ""),
    read = function(text)
      local number = math.tointeger(tonumber(text))
      return number and number >= least and number <= (most or number) and number or nil
    end }
end

command.text = { name = "a text", read = function(text) return text end }

-- Read as hundredths of a second, as GIF files have them.
command.seconds = {
  name = "seconds, 0 to 655.35",
  read = function(text)
    local number = tonumber(text)
    return number and number >= 0 and number <= 655.35 and math.floor(number * 100 + 0.5) or nil
  end }

-- Takes "--jobs 4", "--jobs=4" or "--json" at a place in the arguments; gives the place after it.
local function take_option(wanted, options, place)
  local given, value = arg[place]:match("^([^=]*)=?(.*)$")
  for _, option in ipairs(wanted.options) do
    local name, takes_value = option[1]:match("^(%S+)(.*)$")
    if name == given then
      local has_value = arg[place]:find("=", 1, true)
      if takes_value == "" then
        if has_value then reject(name .. " takes no value") end
        options[name:sub(3)] = true
        return place + 1
      end
      local kind, text = option[3], has_value and value or arg[place + 1]
      local read = text and kind.read(text)
      if read == nil then reject(name .. " takes " .. kind.name) end
      options[name:sub(3)] = read
      return place + (has_value and 1 or 2)
    end
  end
  reject("unknown option " .. given)
end

-- Operands in brackets may be missing, those with dots be many.
local function check_count(wanted, count)
  local _, names = wanted.operands:gsub("%S+", "")
  local _, optional = wanted.operands:gsub("%[", "")
  local many = wanted.operands:find("...", 1, true)
  if count < names - optional or count > names and not many then reject("expected " .. wanted.operands) end
end

-- "-" is standard input, as OUT standard output.
local function resolve_streams(wanted, operands)
  local inputs, has_output = 0, wanted.operands:find("OUT%.%a+$") or wanted.operands:find("OUT%.%a+%]$") and #operands > 1
  for i, operand in ipairs(operands) do
    local is_output = has_output and i == #operands
    if operand == "-" then
      operands[i] = is_output and "/dev/stdout" or "/dev/stdin"
      if not is_output then inputs = inputs + 1 end
    end
  end
  if inputs > 1 then reject("- is standard input, which can be read once") end
end

-- A picture or a page written over what it is made of is a slip; a GIF may take its own place.
local function check_output(wanted, operands)
  local kind = wanted.operands:match(" OUT%.(%a+)$")
  local output = operands[#operands]
  if not kind then return end
  for i = 1, #operands - 1 do
    local same_kind = wanted.operands:find("IN." .. kind, 1, true)
    if not same_kind and files.same(operands[i], output) then
      reject(("OUT.%s would replace %s"):format(kind, operands[i]))
    end
  end
  -- What goes to standard output is the result alone.
  if files.same(output, "/dev/stdout") then
    function print(...) io.stderr:write(table.concat({ ... }, "\t"), "\n") end
  end
end

-- wanted: about, what the script does; operands, their names ("IN.gif OUT.png", "FILE...", "[FILE...] OUT"); options,
-- rows of a name, what it does and the kind of its value ("--json", or "--jobs N" with command.whole(1)); more, what
-- the help says after them; operands_with, other operands for when that option is given; plugin, "designed" for scripts
-- that tell what other hosts get (with --tolerant what browsers show; for other scripts it is the other way round).
-- Gives the options by name and the list of operands, or ends the program: with the help, or saying what is wrong.
function command.parse(wanted)
  local options, operands, place = {}, {}, 1
  local other = wanted.plugin == "designed" and "tolerant" or "as-designed"
  wanted.options = table.move(wanted.options or {}, 1, #(wanted.options or {}), 1, {})
  table.insert(wanted.options, { "--" .. other, kPlugins[other] })
  while place <= #arg do
    local argument = arg[place]
    if argument == "--help" or argument == "-h" then
      print_help(wanted)
      os.exit(0, true)
    elseif argument == "--" then
      table.move(arg, place + 1, #arg, #operands + 1, operands)
      break
    elseif argument:find("^%-.") then
      place = take_option(wanted, options, place)
    else
      operands[#operands + 1] = argument
      place = place + 1
    end
  end
  for name, names in pairs(wanted.operands_with or {}) do
    if options[name] then wanted.operands = names end
  end
  check_count(wanted, #operands)
  resolve_streams(wanted, operands)
  check_output(wanted, operands)
  host.use((options[other] ~= nil) == (other == "tolerant") and "tolerant" or "designed")
  options[other] = nil
  return options, operands
end

return command
