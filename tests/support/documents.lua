-- Small documents that between them hold everything.

local make_gif = dofile(debug.getinfo(1, "S").source:match("@(.*/)") .. "make_gif.lua")

local control, comment = { 0xF9, "\1\5\0\2" }, { 0xFE, "first", ("second"):rep(8), "x" }
local image = { width = 3, height = 9, pixels = "\0\1\2\3\2\1\1\1\1\3\0\2\2\0\3\1\0\0\2\3\3\1\3\2\1\0\1", interlaced = true }
local own_table = { width = 4, height = 2, pixels = "\1\0\1\0\0\1\1\1", palette = { 0x102030, 0xFFEEDD } }
local colours = { 0x000000, 0xFF0000, 0x00FF00, 0x0000FF }
return {
  make_gif(5, 9, colours, control, image, comment, own_table),
  make_gif(1, 1, nil, own_table, control, own_table, own_table, own_table, comment),
  make_gif(2, 2, colours),
  "GIF89a" .. ("\xFF"):rep(30),
}
