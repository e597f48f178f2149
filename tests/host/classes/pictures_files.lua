-- Pictures saved as PNG and loaded again: with few colours and with many, with masks of several opacities. Their colours
-- reduced: each pixel gets one that is near, and where they are few enough, its own.

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
  local film = Film(80, 60)
  film:Show(picture)
  film:Keep()
  assert(film:Plan(256, false) and film:Next())
  local table, pixels = film.Colors == "" and film.Table or film.Colors, film:Pixels()
  for i = 0, film.Width * film.Height - 1 do
    local x, y, index = film.Left + i % film.Width, film.Top + i // film.Width, pixels[i]
    local see_through = opacities > 0 and picture.Mask:Pixel(x, y) & 0xFF >= 128
    assert((index == film.Transparent) == see_through, ("%d %d %d %s"):format(colours, i, index, see_through))
    local away = see_through and 0 or table:byte(3 * index + 2) - (picture:Pixel(x, y) >> 8 & 0xFF)
    assert(math.abs(away) <= (colours < 256 and 0 or 40), away)
  end
  assert(opacities == 0 or loaded.Mask:RGB() == picture.Mask:RGB(), opacities .. " opacities")
end
os.remove(path)
