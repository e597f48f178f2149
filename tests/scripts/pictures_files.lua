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
  local indexes, wrong = reduced:Indexes(picture), 0
  for i = 0, #indexes - 1 do
    local away = (reduced:Value(indexes[i]) & 0xFF00) - (picture:Pixel(i % 80, i // 80) & 0xFF00)
    if indexes[i] ~= reduced.Transparent then wrong = math.max(wrong, math.abs(away) >> 8) end
  end
  assert(reduced.Count <= 256 and wrong <= (colours <= 256 and 0 or 40), wrong)
  assert(opacities == 0 or loaded.Mask:RGB() == picture.Mask:RGB(), opacities .. " opacities")
end
os.remove(path)
