-- The gallery: a page that shows what each filter and each way of blending makes, beside the very call that made it.
-- zvk run --seed 1 examples/gallery.lua OUT, which gets gallery.html and the folder gallery with its pictures
-- With a second folder an excerpt goes there as well: gallery.md and the folder images/gallery.
local out <const>, excerptOut <const> = arg[1] or "build/gallery", arg[2]
local examples <const> = arg[0]:match("^.*/") or ""

-- The code on the page is strings that are both shown and run, in the order of the page. Their globals are in `world`.
local world = setmetatable({examples = examples}, {__index = _G})

local function run(code) return assert(load(code, "=" .. code, "t", world))() end

local start <const> = [[
-- A square of a picture file (`examples` is the folder of the script), scaled to another size.
function Square(name, x, y, side, size)
  local square = PictureZVK(side, side, PictureZVK.ImageFormatRGB)
  square:CopyPixels(PictureZVK(Picture.Open(examples .. name)), 0, 0, side, side, x, y)
  local image = PictureZVK(size, size, PictureZVK.ImageFormatRGB)
  image:Scale(square, nil, PictureZVK.ScaleLanczos3, size, size)
  return image
end

-- A gray image of what a function tells for each column and row.
function Gray(size, sample)
  local image = PictureZVK(size, size, PictureZVK.ImageFormatG)
  for y = 0, size - 1 do
    local row = {}
    for x = 0, size - 1 do row[x + 1] = string.char(math.floor(sample(x, y))) end
    image:SetRowStringInFormat(y, PictureZVK.ImageFormatG, table.concat(row))
  end
  return image
end

-- The same pixels in another format.
function In(format, image)
  local copy = PictureZVK(image.Width, image.Height, format)
  copy:CopyPixels(image)
  return copy
end

function Disc(x, y)  -- white in the middle, falling to black
  return math.max(0, 255 - ((x - 80)^2 + (y - 80)^2) / 24)
end

photo = Square("astronaut.png", 64, 0, 320, 160)
gray = In(PictureZVK.ImageFormatG, photo)
cup = Square("coffee.png", 80, 0, 400, 160)
rocket = Square("rocket.jpg", 120, 20, 400, 160)
disc = Gray(160, Disc)
discs = PictureZVK(160, 160, PictureZVK.ImageFormatRGB)
discs:RedChannel():CopyPixels(Gray(160, function(x, y) return Disc(x, y + 30) end))
discs:GreenChannel():CopyPixels(Gray(160, function(x, y) return Disc(x + 30, y - 20) end))
discs:BlueChannel():CopyPixels(Gray(160, function(x, y) return Disc(x - 30, y - 20) end))
card = In(PictureZVK.ImageFormatRGBA, photo)
card:AlphaChannel():CopyPixels(disc)]]

-- A picture for each of a list of constants and captions, the constant put into the call.
local function each(constants, name, call)
  local figures = {}
  for i, constant in ipairs(constants) do
    figures[i] = {name:format(constant[1]), constant[2], call:format("PictureZVK." .. constant[1])}
  end
  return figures
end

local function scalings(name, fast, call)
  local figures = each({
    {"ScaleBox", "box"}, {"ScaleTriangle", "triangle"}, {"ScaleMitchell", "Mitchell"}, {"ScaleCubic", "cubic"},
    {"ScalePoly3", "polynomial"}, {"ScaleLanczos3", "Lanczos, three lobes"}, {"ScaleLanczos8", "Lanczos, eight lobes"},
  }, name, call)
  table.insert(figures, 1, {name:format("ScaleFast"), "nearest pixels", fast})
  return figures
end

local enlargements <const> = scalings("Eye%s", "dest:ScaleFast(eye, 160, 160)", "dest:Scale(eye, nil, %s, 160, 160)")
table.insert(enlargements, {"EyeScaleMT", "Lanczos, three lobes, on two threads",
  "dest:ScaleMT(2, eye, nil, PictureZVK.ScaleLanczos3, 160, 160)"})

local matrices <const> = {
  {"DitherMagic2x2Matrix", "2 x 2"}, {"DitherMagic4x4Matrix", "4 x 4, a magic square"},
  {"DitherOrdered4x4Matrix", "4 x 4"}, {"DitherLines4x4Matrix", "4 x 4, lines"},
  {"Dither90Halftone6x6Matrix", "6 x 6, upright dots"}, {"DitherOrdered6x6Matrix", "6 x 6"},
  {"DitherOrdered8x8Matrix", "8 x 8"}, {"DitherCluster3Matrix", "slanting dots of 3"},
  {"DitherCluster4Matrix", "slanting dots of 4"}, {"DitherCluster8Matrix", "slanting dots of 8"},
}

-- A section has a title, a text, the code that runs at its start and the code that runs before each picture, and for
-- each picture the name of its file, a caption and the call. The picture is the value of the call, or where that is no
-- image, the image that was called. `zoom` is how many pixels of the screen a pixel takes.
local sections <const> = {
  {
    title = "The pictures to start from", format = "jpg",
    text = "Most pictures below are made of these.",
    start = start,
    figures = {
      {"photo", "a portrait", "photo"},
      {"cup", "a cup", "cup"},
      {"rocket", "a rocket", "rocket"},
      {"gray", "the portrait in gray", "gray"},
      {"disc", "a gray disc", "disc"},
      {"discs", "a disc in each colour", "discs"},
      {"card", "the portrait, its alpha the disc", "card", format = "png"},
    },
  },
  {
    title = "Enlarging", format = "png",
    text = "An eye of 20 x 20 pixels, eight times as wide and high.",
    start = 'eye = Square("astronaut.png", 182, 84, 40, 20)',
    before = "dest = PictureZVK(160, 160, PictureZVK.ImageFormatRGB)",
    figures = enlargements,
  },
  {
    title = "Reducing rings", format = "png",
    text = "Rings that grow finer outwards, at half their size. In the outer part they are finer than pixels can tell: "
      .. "whatever is not an even gray there is made up.",
    start = [[
function Ring(x, y) return 127.5 + 127.5 * math.cos(math.pi * ((x - 160)^2 + (y - 160)^2) / 480) end
rings = Gray(320, Ring)]],
    before = "dest = PictureZVK(160, 160, PictureZVK.ImageFormatG)",
    figures = scalings("Rings%s", "dest:ScaleFast(rings, 160, 160)", "dest:Scale(rings, nil, %s, 160, 160)"),
  },
  {
    title = "Reducing a photograph", format = "png", zoom = 2,
    text = "The portrait at half its size; each pixel is shown as four.",
    before = "dest = PictureZVK(80, 80, PictureZVK.ImageFormatRGB)",
    figures = scalings("Photo%s", "dest:ScaleFast(photo, 80, 80)", "dest:Scale(photo, nil, %s, 80, 80)"),
  },
  {
    title = "Dithering gray", format = "png",
    text = "Two levels come out as a negative, so a negative goes in. Two of the matrices have thresholds "
      .. "beyond the number of their cells, and come out bright.",
    start = "negative = In(PictureZVK.ImageFormatG, gray)\nnegative:Invert()",
    figures = each(matrices, "Gray%s", "negative:DitherFilter(nil, %s, 2)"),
  },
  {
    title = "Dithering colours", format = "png",
    text = "Four levels of red, green and blue each.",
    figures = each(matrices, "Colours%s", "photo:DitherFilter(nil, %s, 4)"),
  },
  {
    title = "Tone", format = "jpg",
    text = "Each sample goes through a table of 256 entries.",
    start = [[
function Table(entry)
  local entries = {}
  for i = 0, 255 do entries[i + 1] = math.floor(entry(i)) end
  return entries
end
falling = Table(function(i) return 255 - i end)
steps = Table(function(i) return i // 64 * 85 end)
dark = Table(function(i) return i / 2 end)]],
    before = "dest = In(PictureZVK.ImageFormatRGB, photo)",
    figures = {
      {"SolarizeFilter", "dark and bright are bright", "photo:SolarizeFilter(nil)"},
      {"GammaFilter_bright", "brighter", "photo:GammaFilter(nil, 1.8)"},
      {"GammaFilter_dark", "darker", "photo:GammaFilter(nil, 0.5)"},
      {"GammaFilter_colours", "a gamma for each colour", "photo:GammaFilter(nil, 0.7, 1, 1.6)"},
      {"GammaFilter_alpha", "alpha alone", "card:GammaFilter(nil, 1, 3)", format = "png"},
      {"GammaFilter_all", "colours and alpha", "card:GammaFilter(nil, 1.6, 1, 0.7, 0.3)", format = "png"},
      {"GainFilter_hard", "more contrast", "photo:GainFilter(nil, 0.8, 0.5)"},
      {"GainFilter_soft", "less contrast", "photo:GainFilter(nil, 0.25, 0.5)"},
      {"GainFilter_bias", "brighter middle tones", "photo:GainFilter(nil, 0.5, 0.7)"},
      {"TransferFilter_steps", "four steps", "photo:TransferFilter(nil, steps)"},
      {"TransferFilter_colours", "a table for each colour", "photo:TransferFilter(nil, dark, steps, falling)"},
      {"TransferFilter_alpha", "a negative, alpha in steps",
        "card:TransferFilter(nil, falling, steps)", format = "png"},
      {"TransferFilter_all", "four tables", "card:TransferFilter(nil, steps, steps, dark, falling)", format = "png"},
      {"Invert", "a negative", "dest:Invert()"},
      {"Invert_part", "a negative of a part", "dest:Invert(40, 20, 80, 80)"},
      {"AutoLevel", "levels stretched", "dest:AutoLevel()"},
      {"AutoLevel_part", "levels stretched in a part", "dest:AutoLevel(80, 0, 80, 160)"},
    },
  },
  {
    title = "Art", format = "jpg",
    text = "<code>DiffuseFilter</code> throws dice; <code>zvk run --seed</code> makes them fall the same way again.",
    figures = {
      {"OilFilter", "oil", "photo:OilFilter(nil, 24, 3)"},
      {"OilFilter_few", "few levels, a broad brush", "photo:OilFilter(nil, 8, 5)"},
      {"DiffuseFilter", "a little diffuse", "photo:DiffuseFilter(nil, 1)"},
      {"DiffuseFilter_wide", "very diffuse", "photo:DiffuseFilter(nil, 4)"},
      {"EngraveFilter", "engraved", "photo:EngraveFilter(nil, 2)"},
      {"EngraveFilter_up", "embossed", "gray:EngraveFilter(nil, -1)"},
      {"NeonFilter", "neon", "photo:NeonFilter(nil)"},
      {"StampFilter", "a stamp", 'gray:StampFilter(nil, 3, 0.45, 0.2, Color"#000000", Color"#ffffff")'},
      {"StampFilter_colours", "a stamp in each colour",
        'photo:StampFilter(nil, 3, 0.4, 0.1, Color"#203060", Color"#fff0d0")'},
    },
  },
  {
    title = "Blur and sharpness", format = "jpg",
    text = "An unsharp mask takes a blurred copy, and changes the image itself.",
    start = "blurred = photo:BoxBlurFilter(nil, 2)",
    before = "dest = In(PictureZVK.ImageFormatRGB, photo)",
    figures = {
      {"BoxBlurFilter", "a box", "photo:BoxBlurFilter(nil, 4)"},
      {"BoxBlurFilter_upright", "up and down alone", "photo:BoxBlurFilter(nil, 6, true, false)"},
      {"BoxBlurFilter_level", "left and right alone", "photo:BoxBlurFilter(nil, 6, false, true)"},
      {"BoxBlurFilter_thrice", "three times, nearly a bell curve", "photo:BoxBlurFilter(nil, 3.0, 3)"},
      {"BoxBlurFractionalFilter", "less than a pixel", "photo:BoxBlurFractionalFilter(nil, 0.9)"},
      {"UnsharpFilter", "sharpened", "dest:UnsharpFilter(blurred, 0.2, 0)"},
      {"UnsharpFilter_strong", "sharpened beyond", "dest:UnsharpFilter(blurred, 1, 0)"},
      {"UnsharpFilter_threshold", "large differences alone", "dest:UnsharpFilter(blurred, 1, 24)"},
    },
  },
  {
    title = "Matrices", format = "jpg",
    text = "Convolution with a square matrix of whole numbers, then a number to add and a factor.",
    start = [[
bell = {1, 4, 7, 4, 1, 4, 16, 26, 16, 4, 7, 26, 41, 26, 7, 4, 16, 26, 16, 4, 1, 4, 7, 4, 1}
slant = {1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}]],
    figures = {
      {"ApplyMatrix_sharpen", "sharpen", "photo:ApplyMatrix(nil, 3, {0, -1, 0, -1, 5, -1, 0, -1, 0})"},
      {"ApplyMatrix_emboss", "emboss", "photo:ApplyMatrix(nil, 3, {-2, -1, 0, -1, 1, 1, 0, 1, 2})"},
      {"ApplyMatrix_edges", "edges", "photo:ApplyMatrix(nil, 3, {-1, -1, -1, -1, 8, -1, -1, -1, -1})"},
      {"ApplyMatrix_relief", "relief, around a middle gray",
        "gray:ApplyMatrix(nil, 3, {-1, -1, 0, -1, 0, 1, 0, 1, 1}, 128)"},
      {"ApplyMatrix_bell", "a bell curve", "photo:ApplyMatrix(nil, 5, bell, 0, 1 / 273)"},
      {"ApplyMatrix_slant", "a slanting move", "photo:ApplyMatrix(nil, 5, slant, 0, 0.2)"},
    },
  },
  {
    title = "Turns and mirrors", format = "jpg",
    text = "<code>Rotate90</code> and <code>Rotate270</code> work in tiles.",
    start = [[
small = Square("astronaut.png", 64, 0, 320, 112)
clear = In(PictureZVK.ImageFormatRGBA, small)
clear:AlphaChannel():FillRect(255)]],
    before = "dest = In(PictureZVK.ImageFormatRGB, photo)",
    figures = {
      {"HMirror", "left and right exchanged", "dest:HMirror()"},
      {"VMirror", "top and bottom exchanged", "dest:VMirror()"},
      {"Rotate180", "half a turn, in place", "dest:Rotate180()"},
      {"Rotate180_new", "half a turn, into a new image", "photo:Rotate180(nil)"},
      {"Rotate90", "a quarter turn", "photo:Rotate90()"},
      {"Rotate90slow", "the same, row by row", "photo:Rotate90slow()"},
      {"Rotate270", "a quarter turn the other way", "photo:Rotate270()"},
      {"Rotate270slow", "the same, row by row", "photo:Rotate270slow()"},
      {"Rotate", "a small turn", "small:Rotate(15)"},
      {"Rotate_background", "with a background", "small:Rotate(-30, 255, 230, 167)"},
      {"Rotate_alpha", "with clear corners", "clear:Rotate(45)", format = "png"},
    },
  },
  {
    title = "Views and channels", format = "jpg",
    text = "Views share the pixels of their image. <code>Channel</code> counts the samples of a pixel from 0.",
    figures = {
      {"RedChannel", "red", "photo:RedChannel()"},
      {"GreenChannel", "green", "photo:GreenChannel()"},
      {"BlueChannel", "blue", "photo:BlueChannel()"},
      {"AlphaChannel", "alpha", "card:AlphaChannel()"},
      {"GrayChannel", "gray", "gray:GrayChannel()"},
      {"Channel", "the second sample", "photo:Channel(1)"},
      {"RGBChannels", "colours without their alpha", "card:RGBChannels()"},
      {"MirroredView", "from the last row up", "photo:MirroredView()"},
      {"ClipImage", "a part", "photo:ClipImage(40, 20, 80, 80)"},
      {"ClipImage_blurred", "a part worked on", "photo:ClipImage(40, 20, 80, 80):NeonFilter(nil)"},
    },
  },
  {
    title = "Separation into inks", format = "jpg",
    text = "Black is what all three inks have in common; the plates are shown in the colours they print.",
    start = [[
plates = PictureZVK(160, 160, PictureZVK.ImageFormatCMYK)
for y = 0, 159 do
  local inks, row = {}, rocket:RowStringInFormat(y, PictureZVK.ImageFormatRGB)
  for x = 0, 159 do
    local red, green, blue = row:byte(3 * x + 1, 3 * x + 3)
    local most = math.max(red, green, blue, 1)
    local function ink(sample) return 255 - sample * 255 // most end
    inks[x + 1] = string.char(ink(red), ink(green), ink(blue), 255 - most)
  end
  plates:SetRowStringInFormat(y, PictureZVK.ImageFormatCMYK, table.concat(inks))
end

function Print(plate, red, green, blue)
  local function ramp(ink)
    local entries = {}
    for i = 0, 255 do entries[i + 1] = 255 - (255 - ink) * i // 255 end
    return entries
  end
  return In(PictureZVK.ImageFormatRGB, plate):TransferFilter(nil, ramp(red), ramp(green), ramp(blue))
end]],
    figures = {
      {"CyanChannel", "cyan", "Print(plates:CyanChannel(), 0, 255, 255)"},
      {"MagentaChannel", "magenta", "Print(plates:MagentaChannel(), 255, 0, 255)"},
      {"YellowChannel", "yellow", "Print(plates:YellowChannel(), 255, 255, 0)"},
      {"BlackChannel", "black", "Print(plates:BlackChannel(), 0, 0, 0)"},
      {"CMYKChannels", "all four", "plates:CMYKChannels()"},
    },
  },
  {
    title = "Fills", format = "jpg",
    before = "dest = In(PictureZVK.ImageFormatRGBX, cup)",
    text = "In place, whole or in a rectangle.",
    figures = {
      {"FillRect", "one number in all channels", "dest:FillRect(40, 40, 80, 80, 128)"},
      {"FillRectRGB", "a colour", 'dest:FillRectRGB(40, 40, 80, 80, Color"#c02020")'},
      {"FillRectApply", "a colour blended in", 'dest:FillRectApply(40, 40, 80, 80, Color"#c02020", 128)'},
      {"FillRectRandom", "random numbers", "dest:FillRectRandom(40, 40, 80, 80)"},
      {"ClearRect", "nothing", "dest:ClearRect(40, 40, 80, 80)"},
    },
  },
  {
    title = "Host pictures", format = "jpg",
    text = "A picture of the host, with a mask, drawn into an image.",
    start = "picture = card:CopyPictureWithMask()",
    before = [[
dest = In(PictureZVK.ImageFormatRGB, cup)
clear = PictureZVK(160, 160, PictureZVK.ImageFormatRGBA)
plane = PictureZVK(160, 160, PictureZVK.ImageFormatG)]],
    figures = {
      {"DrawPictureRGB", "its colours", "dest:DrawPictureRGB(picture)"},
      {"DrawMaskedPictureRGB", "its mask as alpha", "clear:DrawMaskedPictureRGB(picture)", format = "png"},
      {"DrawMaskedPictureRGB_inverted", "its mask inverted",
        "clear:DrawMaskedPictureRGB(picture, true)", format = "png"},
      {"ApplyMask", "blended, black lets through", "dest:DrawMaskedPictureApplyMaskRGB(picture)"},
      {"ApplyMask_inverted", "blended, white lets through", "dest:DrawMaskedPictureApplyMaskRGB(picture, true)"},
      {"DrawPictureRed", "its red", "plane:DrawPictureRedToGrayChannel(picture, 0, 0, 160, 160)"},
      {"DrawPictureGreen", "its green", "plane:DrawPictureGreenToGrayChannel(picture, 0, 0, 160, 160)"},
      {"DrawPictureBlue", "its blue", "plane:DrawPictureBlueToGrayChannel(picture, 0, 0, 160, 160)"},
    },
  },
  {
    title = "Blending through a mask", format = "jpg",
    text = "Where the mask is white the cup stays, where it is black the rocket comes. A mask in colours works for "
      .. "each colour by itself.",
    before = [[
dest = In(PictureZVK.ImageFormatRGBX, cup)
plane = In(PictureZVK.ImageFormatG, cup)]],
    figures = {
      {"Combine", "through gray", "dest:Combine(rocket, disc, 0, 0, 0, 0, 160, 160, false)"},
      {"Combine_colours", "through colours", "dest:Combine(rocket, discs, 0, 0, 0, 0, 160, 160, false)"},
      {"Combine_gray", "gray through gray", "plane:Combine(rocket, disc, 0, 0, 0, 0, 160, 160, false)"},
      {"Combine_part", "a part", "dest:Combine(rocket, disc, 20, 20, 60, 20, 60, 120, false)"},
      {"Combine_copy", "without a mask, a copy", "dest:Combine(rocket, nil, 40, 20, 40, 20, 80, 120, false)"},
      {"CopyPixels", "the same", "dest:CopyPixels(rocket, 40, 20, 80, 120, 40, 20)"},
    },
  },
  {
    title = "Flat colours", format = "jpg",
    text = "Without a mask image one of two colours takes part: the fore colour is laid on through the image, or the "
      .. "image through the mask colour. What has been multiplied by its coverage beforehand (<code>true</code>) is "
      .. "only added, so the images are darker here.",
    start = [[
function Darker(image) return image:TransferFilter(nil, dark) end
veil, veils, faint = Darker(disc), Darker(discs), Darker(rocket)
faintGray = In(PictureZVK.ImageFormatG, faint)
fore, mask, none = Color"#c04020", Color"#50a0f0", Color"#000000"]],
    before = [[
dest = In(PictureZVK.ImageFormatRGB, cup)
plane = In(PictureZVK.ImageFormatG, cup)]],
    figures = {
      {"Fore_gray", "the fore colour, through gray",
        "dest:Combine(disc, false, nil, 0, 0, 0, 0, 160, 160, false, fore)"},
      {"Fore_colours", "the fore colour, through colours",
        "dest:Combine(discs, false, nil, 0, 0, 0, 0, 160, 160, false, fore)"},
      {"Fore_gray_added", "the fore colour added, through gray",
        "dest:Combine(veil, true, nil, 0, 0, 0, 0, 160, 160, false, 0x402010)"},
      {"Fore_colours_added", "the fore colour added, through colours",
        "dest:Combine(veils, true, nil, 0, 0, 0, 0, 160, 160, false, 0x402010)"},
      {"Fore_on_gray_gray", "the fore colour on gray, through gray",
        "plane:Combine(disc, false, nil, 0, 0, 0, 0, 160, 160, false, fore)"},
      {"Fore_on_gray_colours", "the fore colour on gray, through colours",
        "plane:Combine(discs, false, nil, 0, 0, 0, 0, 160, 160, false, fore)"},
      {"Fore_on_gray_gray_added", "the fore colour added on gray, through gray",
        "plane:Combine(veil, true, nil, 0, 0, 0, 0, 160, 160, false, 0x402010)"},
      {"Fore_on_gray_colours_added", "the fore colour added on gray, through colours",
        "plane:Combine(veils, true, nil, 0, 0, 0, 0, 160, 160, false, 0x402010)"},
      {"Mask_gray", "a gray image through the mask colour",
        "dest:Combine(gray, false, nil, 0, 0, 0, 0, 160, 160, true, none, mask)"},
      {"Mask_colours", "an RGB image through the mask colour",
        "dest:Combine(rocket, false, nil, 0, 0, 0, 0, 160, 160, true, none, mask)"},
      {"Mask_gray_added", "a gray image added",
        "dest:Combine(faintGray, true, nil, 0, 0, 0, 0, 160, 160, true, -1, 0x808080)"},
      {"Mask_colours_added", "an RGB image added",
        "dest:Combine(faint, true, nil, 0, 0, 0, 0, 160, 160, true, -1, 0x808080)"},
      {"Mask_on_gray_gray", "a gray image on gray through the mask colour",
        "plane:Combine(gray, false, nil, 0, 0, 0, 0, 160, 160, true, none, mask)"},
      {"Mask_on_gray_colours", "an RGB image on gray through the mask colour",
        "plane:Combine(rocket, false, nil, 0, 0, 0, 0, 160, 160, true, none, mask)"},
      {"Mask_on_gray_gray_added", "a gray image added on gray",
        "plane:Combine(faintGray, true, nil, 0, 0, 0, 0, 160, 160, true, -1, 0x808080)"},
      {"Mask_on_gray_colours_added", "an RGB image added on gray",
        "plane:Combine(faint, true, nil, 0, 0, 0, 0, 160, 160, true, -1, 0x808080)"},
      {"Mask_unused", "without the use of colours, the image",
        "dest:Combine(rocket, false, nil, 0, 0, 0, 0, 160, 160, false, none, mask)"},
    },
  },
  {
    title = "All 128 blends", format = "png", zoom = 2,
    text = "Each picture is a table of 16: across, the image in gray, gray with alpha, RGB and RGB with alpha; down, "
      .. "the mask in the same. With <code>true</code> the image counts as multiplied beforehand: samples are added, "
      .. "and those beyond 255 start again at 0.",
    start = [[
formats = {PictureZVK.ImageFormatG, PictureZVK.ImageFormatGA, PictureZVK.ImageFormatRGB, PictureZVK.ImageFormatRGBA}

-- Parts of pictures with alpha, as small as a cell of the tables.
function Tile(picture, alpha)
  local tile = PictureZVK(40, 40, PictureZVK.ImageFormatRGBA)
  tile:Scale(In(PictureZVK.ImageFormatRGBA, picture), nil, PictureZVK.ScaleBox, 40, 40)
  tile:AlphaChannel():CopyPixels(Gray(40, alpha))
  return tile
end
ground = Tile(cup, function(x, y) return 255 - 3 * x end)
image = Tile(Darker(photo), function(x, y) return 255 - 6 * y end)
mask = Tile(veils, function(x, y) return 6 * x end)

function Blends(format, premultiplied)
  local sheet
  for row, maskFormat in ipairs(formats) do
    for column, imageFormat in ipairs(formats) do
      local cell = In(format, ground)
      cell:Combine(In(imageFormat, image), premultiplied, In(maskFormat, mask), 0, 0, 0, 0, 40, 40, false)
      sheet = sheet or PictureZVK(160, 160, format)
      sheet:ClipImage(40 * column - 40, 40 * row - 40, 40, 40):CopyPixels(cell)
    end
  end
  return sheet
end]],
    figures = {
      {"Blends_G", "on gray", "Blends(PictureZVK.ImageFormatG, false)"},
      {"Blends_GA", "on gray with alpha", "Blends(PictureZVK.ImageFormatGA, false)"},
      {"Blends_RGB", "on RGB", "Blends(PictureZVK.ImageFormatRGB, false)"},
      {"Blends_RGBA", "on RGB with alpha", "Blends(PictureZVK.ImageFormatRGBA, false)"},
      {"Added_G", "added on gray", "Blends(PictureZVK.ImageFormatG, true)"},
      {"Added_GA", "added on gray with alpha", "Blends(PictureZVK.ImageFormatGA, true)"},
      {"Added_RGB", "added on RGB", "Blends(PictureZVK.ImageFormatRGB, true)"},
      {"Added_RGBA", "added on RGB with alpha", "Blends(PictureZVK.ImageFormatRGBA, true)"},
    },
  },
}

-- What the excerpt shows, by the names of the pictures.
local excerpt <const> = {
  "photo", "OilFilter", "StampFilter_colours", "NeonFilter", "EngraveFilter_up", "GammaFilter_colours",
  "GrayDitherCluster8Matrix", "EyeScaleFast", "EyeScaleLanczos3", "Combine", "Rotate_background", "ApplyMask",
}

local page <const> = {}
local function put(text, ...) page[#page + 1] = text:format(...) end

local function escaped(text)
  return (text:gsub("[&<>\"]", {["&"] = "&amp;", ["<"] = "&lt;", [">"] = "&gt;", ['"'] = "&quot;"}))
end

-- Code that may go on in a new line where a name begins.
local function broken(code) return (code:gsub("([.:(])(%a)", "%1<wbr>%2")) end

local function putCode(summary, code)
  put("<details>\n<summary>%s</summary>\n<pre><code>%s</code></pre>\n</details>", summary, escaped(code))
end

local folder <const> = FolderItem(out):Child("gallery")
folder:CreateAsFolder()

-- The figures on the page by name: file, caption and call.
local shown <const> = {}

-- Runs a call, saves its picture, and puts both on the page.
local function show(section, figure)
  local name, caption, call = table.unpack(figure)
  if section.before then run(section.before) end
  local image = run("return " .. call)
  assert(image ~= false, call)
  if type(image) ~= "userdata" then image = world[call:match("^%a+")] end
  local file = name .. "." .. (figure.format or section.format)
  local picture = image.HasAlpha and image:CopyPictureWithMask() or image:CopyPicture()
  picture:Save(folder:Child(file), 85)
  local zoom = section.zoom or 1
  local width, height = zoom * image.Width, zoom * image.Height
  put('<figure%s><img src="gallery/%s" alt="%s" width="%d" height="%d"%s>', width > 160 and ' class="wide"' or "", file,
    escaped(section.title .. ": " .. caption), width, height, image.HasAlpha and ' class="clear"' or "")
  put("<figcaption>%s <code>%s</code></figcaption></figure>", escaped(caption), broken(escaped(call)))
  shown[name] = {file = file, caption = section.title .. ": " .. caption, call = call}
end

put("%s", [[
<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>PictureZVK: the gallery</title>
<style>
:root { color-scheme: light dark; --ground: #fff; --text: #1c1c1e; --quiet: #5c5c63; --code: #f2f2f4; --line: #d8d8dc;
  --link: #0a58ca; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #17171a; --text: #e8e8ea; --quiet: #a5a5ad; --code: #232328; --line: #3a3a40; --link: #7fb2ff; }
}
body { margin: 0 auto; max-width: 76rem; padding: 1rem; background: var(--ground); color: var(--text);
  font: 1rem/1.5 system-ui, sans-serif; }
h1 { font-size: 1.75rem; margin: 1rem 0 0; }
h2 { font-size: 1.25rem; margin: 2.5rem 0 0; border-top: 1px solid var(--line); padding-top: 1rem; }
p { margin: .5rem 0; max-width: 44rem; }
a { color: var(--link); }
nav ul { list-style: none; margin: 1rem 0; padding: 0; display: flex; flex-wrap: wrap; gap: .25rem 1rem; }
summary { color: var(--quiet); font-size: .875rem; cursor: pointer; }
pre, code { font: .6875rem/1.45 ui-monospace, monospace; }
pre { background: var(--code); margin: .5rem 0; padding: .75rem; overflow-x: auto; border-radius: 4px; }
p code { font-size: .875rem; }
.pictures { display: grid; grid-template-columns: repeat(auto-fill, minmax(11rem, 1fr)); gap: 1.25rem 1rem;
  margin: 1rem 0; }
@media (max-width: 30rem) {
  body { padding: .5rem; }
  .pictures { grid-template-columns: 1fr 1fr; gap: 1.25rem .75rem; }
}
figure { margin: 0; }
.wide { grid-column: span 2; }
img { display: block; max-width: 100%; height: auto; }
img[src$=".png"] { image-rendering: pixelated; }
.clear { background: repeating-conic-gradient(#bbb 0 25%, #fff 0 50%) 0 0 / 16px 16px; }
figcaption { margin-top: .375rem; font-size: .875rem; line-height: 1.35; }
figcaption code { display: block; margin-top: .125rem; color: var(--quiet); overflow-wrap: anywhere; }
</style>
</head>
<body>
<header>
<h1>The gallery</h1>
<p>What PictureZVK makes of a picture, and under it the call that made it, in Lua. The page and its pictures are what
<code>zvk run --seed 1 examples/gallery.lua OUT</code> writes into the folder <code>OUT</code>.</p>
<nav><ul>]])
local function anchor(title) return (title:lower():gsub(" ", "-")) end
for _, section in ipairs(sections) do put('<li><a href="#%s">%s</a></li>', anchor(section.title), section.title) end
put("</ul></nav>\n</header>\n<main>")
for _, section in ipairs(sections) do
  if section.start then run(section.start) end
  put('<section id="%s">\n<h2>%s</h2>\n<p>%s</p>', anchor(section.title), section.title, section.text)
  if section.start then putCode("At the start of the section", section.start) end
  if section.before then putCode("Before each picture", section.before) end
  put('<div class="pictures">')
  for _, figure in ipairs(section.figures) do show(section, figure) end
  put("</div>\n</section>")
end
put("</main>\n</body>\n</html>\n")

local function write(path, text)
  local file <close> = assert(io.open(path, "wb"))
  assert(file:write(text))
end

write(out .. "/gallery.html", table.concat(page, "\n"))
if not excerptOut then return end

local excerptFolder <const> = FolderItem(excerptOut):Child("images"):Child("gallery")
excerptFolder:CreateAsFolder()
local lines <const> = {[[
# The gallery

Some of what PictureZVK makes of a picture, and the call that made it, in Lua. The whole gallery shows every filter,
dither matrix, turn and way of blending, and the code that makes the images of the calls. `./run docs` makes it, and
this page as well; the whole is then `build/docs/gallery.html`. Where only the program is installed,

    zvk run --seed 1 examples/gallery.lua OUT

makes it in the folder `OUT`.

| Picture | What it is | Call |
|---|---|---|]]}
for _, name in ipairs(excerpt) do
  local figure <const> = shown[name]
  local picture <close> = assert(io.open(out .. "/gallery/" .. figure.file, "rb"))
  write(excerptOut .. "/images/gallery/" .. figure.file, picture:read("a"))
  lines[#lines + 1] = ("| ![%s](images/gallery/%s) | %s | `%s` |"):format(figure.caption, figure.file, figure.caption,
    figure.call)
end
write(excerptOut .. "/gallery.md", table.concat(lines, "\n") .. "\n")
