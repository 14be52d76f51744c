-- Thumbnails of all pictures of a folder, each scaled with Lanczos to fit into 96 x 96 pixels.
-- zvk run examples/thumbnails.lua FOLDER OUT
local folder, out = FolderItem(arg[1] or "examples"), FolderItem(arg[2] or "build/thumbnails")
local side <const> = 96

out:CreateAsFolder()
for i = 1, folder.Count do
  local file = folder:Item(i)
  local known, picture = pcall(Picture.Open, file)
  if known then
    local image = PictureZVK(picture)
    local factor = math.min(side / image.Width, side / image.Height)
    local width = math.max(1, math.floor(image.Width * factor + 0.5))
    local height = math.max(1, math.floor(image.Height * factor + 0.5))
    local thumbnail = PictureZVK(width, height, PictureZVK.ImageFormatRGB)
    thumbnail:Scale(image, nil, PictureZVK.ScaleLanczos3, width, height)
    thumbnail:CopyPicture():Save(out:Child(file.Name:gsub("%.%w+$", "") .. ".png"))
  end
end
