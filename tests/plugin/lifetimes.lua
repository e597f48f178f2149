-- Documents, views, clones and new objects are made, stored in each other and dropped in random orders. At every moment
-- there must be exactly the objects that a model of the references knows: a document goes when its last view goes.
--
--   gifhost lifetimes.lua SCRATCH_FILE [SEED [STEPS]]

local folder = arg[0]:gsub("[^/]*$", "")
local documents = dofile(folder .. "../support/documents.lua")
local path, seed, steps = arg[1], math.tointeger(arg[2] or 1), math.tointeger(arg[3] or 3000)
math.randomseed(seed)

-- What each class can hold: properties, and lists with their classes.
local children = {
  GIFZKV = { Screen = "GifScreenZKV" },
  GifBlockZKV = { Picture = "GifPictureZKV", Extension = "GifExtensionZKV" },
  GifPictureZKV = { Palette = "GifPaletteZKV" },
  GifScreenZKV = { Palette = "GifPaletteZKV" },
  GifExtensionZKV = {}, GifPaletteZKV = {}, GifDataZKV = {},
}
local lists = { GIFZKV = { "Block", "GifBlockZKV" }, GifExtensionZKV = { "Data", "GifDataZKV" } }

-- A node is what the model knows of an object: its class, the nodes that it refers to, and the object itself only
-- while the script holds it.
local held = {}

local function hold(node, object)
  node.object = object
  held[#held + 1] = node
  return node
end

local function new_node(class) return { class = class, stored = {}, items = {} } end

local function view_node(class, owner)
  local node = new_node(class)
  node.owner = owner
  return node
end

-- The nodes of a free-standing tree that nobody else refers to.
local function adopt(object)
  local node = new_node(host.class(object))
  for property in pairs(children[node.class]) do
    local child = object[property]
    node.stored[property] = child and adopt(child)
  end
  local list = lists[node.class]
  for i = 1, list and object.Count or 0 do
    local item = object[list[1]](object, i - 1)
    node.items[i] = item and adopt(item)
  end
  return node
end

local function reach(node, found)
  if not node or found[node] then return found end
  found[node] = true
  reach(node.owner, found)
  for _, child in pairs(node.stored) do reach(child, found) end
  for _, item in pairs(node.items) do reach(item, found) end
  return found
end

local function check()
  local expected, found = {}, {}
  for _, node in ipairs(held) do reach(node, found) end
  for node in pairs(found) do expected[node.class] = (expected[node.class] or 0) + 1 end
  collectgarbage()
  local live = host.live()
  for class in pairs(children) do
    if live[class] ~= expected[class] then
      error(("%s of %s alive, expected %s"):format(live[class], class, expected[class]))
    end
  end
end

local function pick() return held[math.random(#held)] end

-- Some other object of the class; nil when the one looked at is of another.
local function pick_class(class)
  local node = pick()
  return node.class == class and node or nil
end

local function is_view(node) return node.owner ~= nil or node.is_document end

local function look(node)
  local list = lists[node.class]
  if list and is_view(node) then
    local count = node.object.Count
    if count > 0 then
      local item = node.object[list[1]](node.object, math.random(0, count - 1))
      hold(view_node(list[2], node.owner or node), item)
    end
  end
  for property, class in pairs(children[node.class]) do
    local object = node.object[property]
    local has_child = node.class ~= "GifBlockZKV" or (property == "Picture") == (node.object.Intro == 0x2C)
    local stored = node.stored[property]
    if is_view(node) and has_child then
      assert(object)
      hold(view_node(class, node.owner or node), object)
    elseif stored then
      assert(not stored.object or stored.object == object)
    else
      assert(object == nil)
    end
  end
end

-- Nothing may come to hold itself, which no count of references survives.
local function store(node)
  for property, class in pairs(children[node.class]) do
    local other = pick_class(class)
    if not (other and reach(other, {})[node]) then
      node.object[property] = other and other.object
      node.stored[property] = other
    end
  end
end

local function add(node)
  local list = lists[node.class]
  if not list then return end
  local other = pick_class(list[2])
  if other and reach(other, {})[node] then return end
  node.object:Add(other and other.object)
  table.insert(node.items, other or false)
end

local actions = {
  look, look, store, add,
  function(node) if #held < 60 then local copy = node.object:Clone() hold(adopt(copy), copy) end end,
  function() hold(new_node("GIFZKV"), GifStringToGifZKV(documents[math.random(2)])).is_document = true end,
  function()
    local classes = { "GIFZKV", "GifBlockZKV", "GifPictureZKV", "GifExtensionZKV", "GifScreenZKV", "GifPaletteZKV" }
    local class = classes[math.random(#classes)]
    hold(new_node(class), _G[class]())
  end,
  function(node) if node.class == "GIFZKV" then assert(FolderItem(path):SaveAsGIFZKV(node.object)) end end,
}

actions[6]()
for step = 1, steps do
  actions[math.random(#actions)](pick())
  while #held > 1 and (#held > 80 or math.random(3) == 1) do
    table.remove(held, math.random(#held)).object = nil
  end
  if step % 10 == 0 then check() end
end
for _ = 1, #held do table.remove(held, math.random(#held)).object = nil check() end
assert(next(host.live()) == nil)
