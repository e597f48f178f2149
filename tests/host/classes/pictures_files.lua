-- Pictures saved as PNG and loaded again: with few colours and with many, with masks of several opacities. Their colours
-- reduced: each pixel gets the nearest, and where they are few enough, its own.

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
  local reduced = ColorTable(256)
  reduced:Add(picture)
  for i, index in ipairs { tostring(reduced:Indexes(picture)):byte(1, -1) } do
    local away = (reduced:Value(index) >> 8 & 0xFF) - (picture:Pixel((i - 1) % 80, (i - 1) // 80) >> 8 & 0xFF)
    assert(index == reduced.Transparent or math.abs(away) <= (colours <= 256 and 0 or 40), away)
  end
  assert(opacities == 0 or loaded.Mask:RGB() == picture.Mask:RGB(), opacities .. " opacities")
end
os.remove(path)
