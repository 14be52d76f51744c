-- A contact sheet: the pictures of a folder, three in a row, each in the middle of its cell on a gray ground.
-- zvk run examples/contact_sheet.lua FOLDER OUT.png
local folder, out = FolderItem(arg[1] or "examples"), arg[2] or "build/contact_sheet.png"
local cell <const>, gap <const>, columns <const> = 120, 8, 3

local pictures = {}
for i = 1, folder.Count do
  local known, picture = pcall(Picture.Open, folder:Item(i))
  if known then pictures[#pictures + 1] = picture end
end

local rows = (#pictures + columns - 1) // columns
local sheet = PictureZVK(columns * (cell + gap) + gap, rows * (cell + gap) + gap, PictureZVK.ImageFormatRGB)
sheet:FillRectRGB(Color"#404040")
for i, picture in ipairs(pictures) do
  local image = PictureZVK(picture)
  local factor = math.min(cell / image.Width, cell / image.Height)
  local width, height = math.floor(image.Width * factor), math.floor(image.Height * factor)
  -- A clip is a view: what is scaled into it is in the sheet.
  local left = gap + (i - 1) % columns * (cell + gap) + (cell - width) // 2
  local top = gap + (i - 1) // columns * (cell + gap) + (cell - height) // 2
  sheet:ClipImage(left, top, width, height):Scale(image, nil, PictureZVK.ScaleMitchell, width, height)
end
sheet:CopyPicture():Save(out)
