-- A duotone: the brightness of a picture, printed in two inks. Three transfer tables lead from one ink to the other.
-- zvk run examples/duotone.lua IN OUT.png
local photo = PictureZVK(Picture.Open(arg[1] or "examples/rocket.jpg"))
local out = arg[2] or "build/duotone.png"
local dark, light = Color"#1b1464", Color"#ffe6a7"

local function ramp(from, to)
  local entries = {}
  for i = 0, 255 do entries[i + 1] = from + (to - from) * i // 255 end
  return entries
end

local gray = PictureZVK(photo.Width, photo.Height, PictureZVK.ImageFormatG)
gray:CopyPixels(photo)
local result = PictureZVK(photo.Width, photo.Height, PictureZVK.ImageFormatRGB)
result:CopyPixels(gray)
-- Into itself: a table needs a pixel no longer once it has been read.
result:TransferFilter(result, ramp(dark.Red, light.Red), ramp(dark.Green, light.Green), ramp(dark.Blue, light.Blue))
result:CopyPicture():Save(out)
