-- On a host whose pictures cannot be written to: nil from every member that returns a picture, and nothing left over.

local make_gif = dofile(arg[0]:gsub("[^/]*$", "") .. "../support/make_gif.lua")

local bytes = make_gif(2, 1, { 0, 0xFFFFFF }, { width = 2, height = 1, pixels = "\0\1" })
local gif = GifStringToGifZKV(bytes)
local image = gif.FirstBlock.Picture
assert(image.Width == 2)
for _ = 1, 2 do
  assert(image:MakePicture() == nil and image:MakeMask() == nil and image:MakeMask(1) == nil)
  assert(gif:MakeFirstPicture() == nil and gif:MakeFirstMask() == nil and gif:MakeFirstPictureWithMask() == nil)
  assert(GifStringToPictureZKV(bytes) == nil)
end
