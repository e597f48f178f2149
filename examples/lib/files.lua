-- Files and folders, with reasons when something fails.

local files = {}

-- A word that the shell takes as it stands.
function files.quoted(word) return "'" .. word:gsub("'", [['\'']]) .. "'" end

-- The bytes of a file; nil and the reason.
function files.read(path)
  local file <close>, why = io.open(path, "rb")
  if not file then return nil, why end
  local bytes, problem = file:read("a")
  if not bytes then return nil, path .. ": " .. problem end
  return bytes
end

-- true; nil and the reason.
function files.write(path, bytes)
  local file, why = io.open(path, "wb")
  if not file then return nil, why end
  local written, problem = file:write(bytes)
  local closed, late_problem = file:close() -- a full disk may show only now
  if written and closed then return true end
  return nil, path .. ": " .. (problem or late_problem)
end

-- Makes a folder and those it lies in; nil and the reason.
function files.make_folder(path)
  if os.execute("mkdir -p -- " .. files.quoted(path) .. " 2>&-") then return true end
  return nil, path .. ": the folder can't be made"
end

-- Opens a GIF; nil and the reason.
function files.open_gif(path)
  local file <close>, why = io.open(path, "rb")
  if not file then return nil, why end
  local _, problem = file:read(0)
  if problem then return nil, path .. ": " .. problem end
  local gif = FolderItem(path):OpenAsGIFZKV()
  if not gif then return nil, path .. ": no GIF file" end
  return gif
end

-- Reads a PNG file as a picture; nil and the reason.
function files.load_png(path)
  local loaded, result = pcall(Picture, path)
  if loaded then return result end
  return nil, result.message
end

-- Saves a picture as PNG; nil and the reason.
function files.save_png(picture, path)
  local saved, problem = pcall(picture.SavePNG, picture, path)
  if saved then return true end
  return nil, problem.message
end

return files
