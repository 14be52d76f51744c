-- A poster larger than a host picture can be, in an image whose pixels are in a file, of which one block is in memory.
-- zvk run examples/poster.lua IN OUT.png [WIDTH]
local photo = PictureZVK(Picture.Open(arg[1] or "examples/hubble_deep_field.jpg"))
local out, width = arg[2] or "build/poster.png", tonumber(arg[3] or 40000)
local height = photo.Height * width // photo.Width
local block <const> = 16 << 20

local function inFile(self, w, h, format)
  return PictureZVK(w, h, format, block, FolderItem(os.tmpname()))
end
local poster = inFile(nil, width, height, PictureZVK.ImageFormatRGB)
-- The intermediate image of the scaler is as wide as the poster; it goes into a file as well.
poster.Factory = PictureFactoryZVK{NewPictureZVK = inFile}
assert(poster:Scale(photo, nil, PictureZVK.ScaleCubic, width, height))

-- A look at the middle, pixel for pixel.
local side <const> = 256
poster:CopyPicture((width - side) // 2, (height - side) // 2, side, side):Save(out)
print(("%d x %d pixels, %d bytes in the file"):format(width, height, poster.TotalSize))
poster:Close()
