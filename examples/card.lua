-- A picture as a card, turned on a clear ground: its edges are half clear, so it lies well on any other picture.
-- zvk run examples/card.lua IN OUT.png [ANGLE]
local photo = PictureZVK(Picture.Open(arg[1] or "examples/astronaut.png"))
local out, angle = arg[2] or "build/card.png", tonumber(arg[3] or 12)
local side <const>, border <const> = 160, 10

local card = PictureZVK(side + 2 * border, side + 2 * border, PictureZVK.ImageFormatRGBA)
card:FillRectRGB(Color"#ffffff", 255)
card:ClipImage(border, border, side, side):Scale(photo, nil, PictureZVK.ScaleLanczos3, side, side)
-- The scaler has given the clip the alpha of a picture without one.
card:AlphaChannel():FillRect(255)

-- Corners that the card does not cover get the background's alpha, which is 0.
local turned = card:Rotate(angle, 255, 255, 255, 0)
turned:CopyPictureWithMask():Save(out)
