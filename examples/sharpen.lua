-- Sharpening by unsharp mask: what a blurred copy has lost is added to the picture once more.
-- zvk run examples/sharpen.lua IN OUT.png [AMOUNT]
local image = PictureZVK(Picture.Open(arg[1] or "examples/moon.png"))
local out, amount = arg[2] or "build/sharpen.png", tonumber(arg[3] or 0.5)

local sharp = PictureZVK(image.Width, image.Height, PictureZVK.ImageFormatRGB)
sharp:CopyPixels(image)
local blurred = sharp:BoxBlurFilter(nil, 2.0, 2)
-- A difference below 4 is noise and stays as it is.
assert(sharp:UnsharpFilter(blurred, amount, 4))
sharp:CopyPicture():Save(out)
