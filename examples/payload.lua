-- What a GIF carries besides pictures: lists comments, XMP, ICC profiles and other data, takes them out, puts them in.
--
--   gifhost examples/payload.lua [OPTION...] IN.gif [OUT.gif]

local command, files, gif = require "gif.command", require "gif.files", require "gif"
local payloads, text = require "gif.payloads", require "gif.text"

local kKinds = table.concat(payloads.kinds, ", ")

local function is_kind(name)
  for _, kind in ipairs(payloads.kinds) do
    if kind == name then return true end
  end
  return false
end

-- "xmp=FILE"
local kind_and_file = {
  name = "KIND=FILE, the kind one of " .. kKinds,
  read = function(given)
    local kind, file = given:match("^(%w+)=(.+)$")
    if not kind or not is_kind(kind) then return nil end
    return { kind = kind, from = file == "-" and "/dev/stdin" or file, to = file == "-" and "/dev/stdout" or file }
  end }

local options, operands = command.parse {
  about = "Lists what a GIF carries besides pictures: comments, XMP, ICC profiles, other data; takes it out, puts it in.",
  operands = "IN.gif [OUT.gif]",
  options = {
    { "--get KIND=FILE", "write the first payload of that kind to a file: " .. kKinds, kind_and_file },
    { "--set KIND=FILE", "put a file's bytes in the place of those of that kind", kind_and_file },
    { "--remove KIND", "take out all of that kind, or of an application's name", command.text },
  },
  more = "--set and --remove need OUT.gif, which may be IN.gif; without options what there is is listed.",
}
local input, output = table.unpack(operands)
if (options.set or options.remove) and not output then command.reject("OUT.gif is missing") end
if output and not options.set and not options.remove then command.reject("OUT.gif without --set or --remove") end

local document, why = gif.open(input)
if not document then command.fail(why) end

local function require_done(done, problem)
  if not done then command.fail(problem) end
  return done
end

if not next(options) then
  for _, found in ipairs(payloads.all(document)) do
    print(("block %3d: %-12s %s, %s"):format(
      found.block, text.shown(found.kind), text.count(#found.bytes, "byte"), text.quoted(found.bytes, 60)))
  end
end
if options.get then
  local bytes = payloads.get(document, options.get.kind)
  if not bytes then command.fail(("%s: has no %s"):format(input, options.get.kind)) end
  require_done(files.write(options.get.to, bytes))
end
if options.remove then
  local removed = payloads.remove(document, options.remove)
  if removed == 0 then command.fail(("%s: has no %s"):format(input, options.remove)) end
  print(("%s: %s removed"):format(text.shown(output), text.count(removed, "block")))
end
if options.set then
  local bytes = require_done(files.read(options.set.from))
  local set, problem = payloads.set(document, options.set.kind, bytes)
  if not set then command.fail(options.set.from .. ": " .. problem) end
  print(("%s: %s of %s"):format(text.shown(output), text.count(#bytes, "byte"), options.set.kind))
end
if output then require_done(document:save(output)) end
