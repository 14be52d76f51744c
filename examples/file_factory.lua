-- A factory that keeps every intermediate image in a file, here for a rotation with its three shears, and counts them.
-- zvk run examples/file_factory.lua IN OUT.png [ANGLE]
local photo = PictureZVK(Picture.Open(arg[1] or "examples/astronaut.png"))
local out, angle = arg[2] or "build/file_factory.png", tonumber(arg[3] or 20)
local block <const> = 1 << 20

local made = 0
PictureFactoryZVK.SetFactory(PictureFactoryZVK{
  NewPictureZVK = function(self, width, height, format)
    made = made + 1
    return PictureZVK(width, height, format, block, FolderItem(os.tmpname()))
  end
})
local rotated = photo:Rotate(angle, 32, 32, 32)
PictureFactoryZVK.SetFactory(nil)

print(made .. " images in files; the result is in one: " .. tostring(rotated.IsMapping))
rotated:CopyPicture():Save(out)
rotated:Close()
