-- Files and folders, with reasons when something fails. Whatever writes a file writes it here: the old one stays until
-- the new one is whole.

local comparing = require "gif.comparing"

local files = {}

-- A word that the shell takes as it stands.
function files.quoted(word) return "'" .. word:gsub("'", [['\'']]) .. "'" end

-- --- Reading -----------------------------------------------------------------------------------------------------------

-- The bytes of a file, a pipe or a device; nil and the reason.
function files.read(path)
  local file <close>, why = io.open(path, "rb")
  if not file then return nil, why end
  local bytes, problem = file:read("a")
  if not bytes then return nil, path .. ": " .. problem end
  return bytes
end

-- Opens a GIF. Gives the document and how many bytes it had; nil and the reason.
function files.open_gif(path)
  local facts, unknown = host.stat(path)
  if not facts then return nil, unknown end
  if facts.kind ~= "file" then -- it can be read once only
    local bytes, why = files.read(path)
    if not bytes then return nil, why end
    local gif = GifStringToGifZKV(bytes)
    if not gif then return nil, path .. ": no GIF file" end
    return gif, #bytes
  end
  local file <close>, why = io.open(path, "rb")
  if not file then return nil, why end
  local gif = FolderItem(path):OpenAsGIFZKV()
  if not gif then return nil, path .. ": no GIF file" end
  return gif, facts.size
end

-- Reads a PNG file as a picture; nil and the reason.
function files.load_png(path)
  local loaded, result = pcall(Picture, path)
  if loaded then return result end
  return nil, result.message
end

local copies = {} -- of what can be read once only, while the program runs

-- A path that can be read as often as one likes: that of a copy for pipes; nil and the reason.
function files.settled(path)
  local facts, unknown = host.stat(path)
  if not facts then return nil, unknown end
  if facts.kind == "file" or facts.kind == "folder" then return path end
  local bytes, why = files.read(path)
  if not bytes then return nil, why end
  local copy = OutputFile()
  local written, problem = pcall(copy.Write, copy, bytes)
  if not written then return nil, problem.message end
  copies[#copies + 1] = copy
  return copy.Path
end

-- Whether two paths lead to one file, by whatever names.
function files.same(path, other)
  local facts, other_facts = host.stat(path), host.stat(other)
  return facts ~= nil and other_facts ~= nil and facts.device == other_facts.device and facts.inode == other_facts.inode
end

-- --- Writing -----------------------------------------------------------------------------------------------------------

-- Calls fill(file) with a new OutputFile for the path, and keeps that when it gives true, only_new where nothing is
-- there yet; nil and the reason. fill gives "there" where the path needs nothing new.
local function replaced(path, fill, only_new)
  local started, file = pcall(OutputFile, path)
  if not started then return nil, file.message end
  local called, filled, why = pcall(fill, file)
  if called and filled then
    local finish = filled == "there" and file.Discard or only_new and file.KeepNew or file.Keep
    local kept, problem = pcall(finish, file)
    if kept then return true end
    why = problem.message
  end
  file:Discard()
  if not called and type(filled) == "string" then error(filled, 0) end
  return nil, why or filled.message
end

-- true; nil and the reason.
function files.write(path, bytes)
  return replaced(path, function(file)
    file:Write(bytes)
    return true
  end)
end

-- Saves a document, and reads back what was written: that a disk is full shows nowhere else. With
-- only_new nothing is replaced; with only_new "or equal" a file that is there may be the one that would be written. true;
-- nil and the reason.
function files.save_gif(gif, path, only_new)
  return replaced(path, function(file)
    if not FolderItem(file.Path):SaveAsGIFZKV(gif) then return nil, path .. ": cannot be written" end
    if only_new == "or equal" and files.read(path) == files.read(file.Path) then return "there" end
    local written = FolderItem(file.Path):OpenAsGIFZKV()
    local difference = not written and "it cannot be read back" or comparing.difference(gif, written)
    if not difference then return true end
    local refusal = file:Refusal()
    return nil, refusal ~= "" and refusal or ("%s: is not what was written: %s"):format(path, difference)
  end, only_new)
end

-- How many bytes a document takes.
function files.saved_size(gif)
  local file = OutputFile()
  FolderItem(file.Path):SaveAsGIFZKV(gif)
  local facts = host.stat(file.Path)
  file:Discard()
  return facts.size
end

-- Saves a picture as PNG; nil and the reason.
function files.save_png(picture, path)
  local saved, problem = pcall(picture.SavePNG, picture, path)
  if saved then return true end
  return nil, problem.message
end

-- Makes a folder and those it lies in; nil and the reason.
function files.make_folder(path)
  local there = host.stat(path)
  if there and there.kind == "folder" then return true end
  local pipe = io.popen("LC_ALL=C mkdir -p -- " .. files.quoted(path) .. " 2>&1")
  local said = pipe:read("a")
  if pipe:close() then return true end
  return nil, path .. ": " .. (said:match(": ([^:\n]*)\n?$") or "the folder can't be made")
end

return files
