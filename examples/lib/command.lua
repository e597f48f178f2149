-- The command line of a script: what it takes, its --help, its errors and exit statuses.

local progress = require "progress"

local command = {}

local kFailed, kWrongUsage = 1, 2

-- Says what went wrong and goes on.
function command.complain(message)
  progress.clear()
  io.stderr:write(arg[0]:match("[^/]*$"), ": ", message, "\n")
end

local function stop(status, message)
  command.complain(message)
  os.exit(status, true)
end

function command.fail(message) stop(kFailed, message) end

local function reject(message) stop(kWrongUsage, message .. "; --help tells more") end

local function print_help(wanted)
  local function two_columns(rows)
    for _, row in ipairs(rows) do print(("  %-12s %s"):format(row[1], row[2])) end
  end
  print(("Usage: gifhost %s %s%s"):format(arg[0], #wanted.options > 0 and "[OPTION...] " or "", wanted.operands))
  print(wanted.about .. "\n")
  two_columns(wanted.options)
  two_columns { { "--help", "this text" } }
  print("\nExit status: 0; 1 something failed; 2 wrong usage.")
end

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
      local number = math.tointeger(tonumber(has_value and value or arg[place + 1]))
      if not number or number < 1 then reject(name .. " takes a whole number from 1") end
      options[name:sub(3)] = number
      return place + (has_value and 1 or 2)
    end
  end
  reject("unknown option " .. given)
end

local function check_count(wanted, count)
  local names, repeats = wanted.operands:gsub("%.%.%.$", "")
  local _, least = names:gsub("%S+", "")
  if count < least or count > least and repeats == 0 then reject("expected " .. wanted.operands) end
end

-- wanted: about, what the script does; operands, their names ("IN.gif OUT.png", "FILE..." for one or more); options,
-- rows of a name and what it does ("--json", or "--jobs N" for a number from 1).
-- Gives the options by name and the list of operands, or ends the program: with the help, or saying what is wrong.
function command.parse(wanted)
  local options, operands, place = {}, {}, 1
  wanted.options = wanted.options or {}
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
  check_count(wanted, #operands)
  return options, operands
end

return command
