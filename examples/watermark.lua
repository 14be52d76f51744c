-- A watermark through a mask: diagonal stripes, blended over a photograph where the mask is dark, and as far as it is.
-- zvk run examples/watermark.lua IN OUT.png
local photo = PictureZVK(Picture.Open(arg[1] or "examples/coffee.png"))
local out = arg[2] or "build/watermark.png"

local result = PictureZVK(photo.Width, photo.Height, PictureZVK.ImageFormatRGB)
result:CopyPixels(photo)
local mark = PictureZVK(photo.Width, photo.Height, PictureZVK.ImageFormatRGB)
mark:FillRectRGB(Color"#ffffff")

-- The mask keeps the photograph where it is white; stripes of 12 pixels let two fifths of the mark through.
local mask = PictureZVK(photo.Width, photo.Height, PictureZVK.ImageFormatG)
local stripes = {}
for x = 0, photo.Width + 47 do stripes[#stripes + 1] = x % 48 < 12 and "\x99" or "\xff" end
local pattern = table.concat(stripes)
for y = 0, photo.Height - 1 do
  mask:SetRowStringInFormat(y, PictureZVK.ImageFormatG, pattern:sub(y % 48 + 1, y % 48 + photo.Width))
end

result:Combine(mark, mask, 0, 0, 0, 0, photo.Width, photo.Height, false)
result:CopyPicture():Save(out)
