-- Pictures saved as PNG and loaded again: with few colours and with many, with masks of several opacities.

local path = os.tmpname()
for _, row in ipairs { { 1, 0 }, { 255, 0 }, { 256, 0 }, { 257, 0 }, { 128, 2 }, { 64, 5 }, { 3000, 3 } } do
  local colours, opacities = table.unpack(row)
  local picture = Picture(80, 60)
  if opacities > 0 then picture.Mask = Picture(80, 60) end
  for i = 0, 80 * 60 - 1 do
    picture:SetPixel(i % 80, i // 80, i % colours * 5471)
    -- libgd keeps 128 steps of transparency, these among them.
    if opacities > 0 then picture.Mask:SetPixel(i % 80, i // 80, ({ 0, 255, 2, 129, 253 })[i % opacities + 1] * 0x010101) end
  end
  picture:SavePNG(path)
  local loaded = Picture(path)
  assert(loaded:RGB() == picture:RGB(), colours .. " colours")
  assert(opacities == 0 or loaded.Mask:RGB() == picture.Mask:RGB(), opacities .. " opacities")
end
os.remove(path)
