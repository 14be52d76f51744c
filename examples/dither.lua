-- Ordered dithering: a photograph in gray, reduced to two levels by a matrix of the ten that there are.
-- zvk run examples/dither.lua IN OUT.png [MATRIX]
local photo = PictureZVK(Picture.Open(arg[1] or "examples/rocket.jpg"))
local out, matrix = arg[2] or "build/dither.png", arg[3] or "DitherMagic4x4Matrix"

local gray = PictureZVK(photo.Width, photo.Height, PictureZVK.ImageFormatG)
gray:CopyPixels(photo)
local dithered = gray:DitherFilter(nil, PictureZVK[matrix], 2)
-- Two levels come out as a negative.
dithered:Invert()
dithered:CopyPicture():Save(out)
