-- Colour separation: a photograph as cyan, magenta, yellow and black plates, each seen through a view of its channel.
-- zvk run examples/separation.lua IN OUT.png
local photo = Picture.Open(arg[1] or "examples/coffee.png")
local out = arg[2] or "build/separation.png"
local width <const> = 200
local height <const> = photo.Height * width // photo.Width

local image = PictureZVK(width, height, PictureZVK.ImageFormatRGB)
image:Scale(PictureZVK(photo), nil, PictureZVK.ScaleBox, width, height)

-- Black is what all three inks have in common; what it prints need not be printed in colour.
local plates = PictureZVK(width, height, PictureZVK.ImageFormatCMYK)
for y = 0, height - 1 do
  local inks = {}
  local row = image:RowStringInFormat(y, PictureZVK.ImageFormatRGB)
  for x = 0, width - 1 do
    local red, green, blue = row:byte(3 * x + 1, 3 * x + 3)
    local most = math.max(red, green, blue)
    local function ink(sample) return most == 0 and 0 or 255 - sample * 255 // most end
    inks[x + 1] = string.char(ink(red), ink(green), ink(blue), 255 - most)
  end
  plates:SetRowStringInFormat(y, PictureZVK.ImageFormatCMYK, table.concat(inks))
end

-- The plates in a square, as dark as they print.
local sheet = PictureZVK(2 * width, 2 * height, PictureZVK.ImageFormatG)
for i, plate in ipairs{plates.CyanChannel, plates.MagentaChannel, plates.YellowChannel, plates.BlackChannel} do
  local column, row = (i - 1) % 2, (i - 1) // 2
  sheet:CopyPixels(plate(plates), column * width, row * height, width, height)
end
sheet:Invert()
sheet:CopyPicture():Save(out)
