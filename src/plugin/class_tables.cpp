// The public interface, read from top to bottom: properties, methods, constants and shared methods of "PictureZVK",
// then "PictureFactoryZVK". A line an entry, in table order, written for the newest host.

#include <cstddef>
#include <iterator>
#include <type_traits>

#include "compositing/combine.h"
#include "compositing/copy_pixels.h"
#include "exchange/raw_rows.h"
#include "exchange/row_conversion.h"
#include "exchange/row_strings.h"
#include "filters/box_blur.h"
#include "filters/diffuse_filter.h"
#include "filters/dither.h"
#include "filters/engrave_filter.h"
#include "filters/fractional_blur.h"
#include "filters/matrix_filter.h"
#include "filters/neon_filter.h"
#include "filters/oil_filter.h"
#include "filters/stamp_filter.h"
#include "filters/tone_filters.h"
#include "filters/unsharp.h"
#include "geometry/mirror.h"
#include "geometry/rotate.h"
#include "geometry/turns.h"
#include "image/file_storage.h"
#include "image/image_factory.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "levels/auto_level.h"
#include "levels/compare_images.h"
#include "levels/fill.h"
#include "levels/fill_apply.h"
#include "levels/invert.h"
#include "pictures/gworld_export.h"
#include "pictures/masked_drawing.h"
#include "pictures/picture_export.h"
#include "pictures/picture_import.h"
#include "plugin/registration.h"
#include "scaling/fast_scale.h"
#include "scaling/scale_engine.h"

namespace zvk::plugin {

namespace {

constexpr uint32_t kProperty = kFlagPropertyDefault | kFlagConsole;
constexpr uint32_t kPictureProperty = kFlagPropertyDefault | kFlagNewConsole;
constexpr uint32_t kMethod = kFlagConsole;
constexpr uint32_t kPictureMethod = kFlagNewConsole;
constexpr uint32_t kNoFlags = 0;

template <class Result, class... Arguments>
void *Address(Result (*function)(Arguments...)) {
  return reinterpret_cast<void *>(function);
}

// --- kinds of property; a position is that of the field in ImageClassData ---

REALproperty Property(const char *name, const char *type, void *getter, void *setter, size_t position, uint32_t flags) {
  return {"", name, type, flags, getter, setter, static_cast<int32_t>(position), nullptr, 0, nullptr, 0, nullptr};
}

// A field that the host reads and writes itself.
REALproperty Field(const char *name, const char *type, size_t position, uint32_t flags = kProperty) {
  return Property(name, type, REALstandardAccessor, REALstandardAccessor, position, flags);
}

// A field that the host reads itself and nobody may write.
REALproperty ReadOnly(const char *name, const char *type, size_t position, uint32_t flags = kProperty) {
  return Property(name, type, REALstandardAccessor, nullptr, position, flags);
}

// A field that the host reads itself and writes through `setter`.
REALproperty Checked(const char *name, size_t position, void (*setter)(REALobject, int32_t, int32_t)) {
  return Property(name, "Integer", REALstandardAccessor, Address(setter), position, kProperty);
}

// A read-only value that no single field holds, or that the host cannot read by itself.
template <class Result>
REALproperty Computed(const char *name, const char *type, Result (*getter)(REALobject, int32_t),
                      uint32_t flags = kProperty) {
  return Property(name, type, Address(getter), nullptr, 0, flags);
}

template <class Result, class... Arguments>
REALmethodDefinition Method(Result (*handler)(Arguments...), const char *declaration, uint32_t flags = kMethod) {
  return {Address(handler), nullptr, declaration, flags, 0, nullptr};
}

// A method that can be assigned to: the setter takes the arguments, then the value.
template <class Value, class... Arguments>
REALmethodDefinition Assignable(Value (*handler)(Arguments...),
                                std::type_identity_t<void (*)(Arguments..., Value)> setter, const char *declaration) {
  return {Address(handler), Address(setter), declaration, kMethod, 0, nullptr};
}

REALconstant Constant(const char *name, int32_t number) {
  return {name, static_cast<uintptr_t>(number), 0, 0, nullptr};
}

// clang-format off

#define AT(field) offsetof(ImageClassData, field)

REALproperty pictureProperties[] = {
    Field("YieldTicks", "Integer", AT(Yield.YieldTicks)),
    Checked("RedOffset", AT(RedOffset), SetRedOffset),
    Checked("GreenOffset", AT(GreenOffset), SetGreenOffset),
    Checked("BlueOffset", AT(BlueOffset), SetBlueOffset),
    Checked("GrayOffset", AT(GrayOffset), SetGrayOffset),
    Checked("AlphaOffset", AT(AlphaOffset), SetAlphaOffset),
    ReadOnly("Width", "Integer", AT(Width)),
    ReadOnly("Height", "Integer", AT(Height)),
    ReadOnly("UnclippedHeight", "Integer", AT(UnclippedHeight)),
    ReadOnly("PixelSize", "Integer", AT(PixelSize)),
    ReadOnly("BitsPerComponent", "Integer", AT(BitsPerComponent)),
    ReadOnly("RowSize", "Integer", AT(RowSize)),
    ReadOnly("ImageFormat", "Integer", AT(ImageFormat)),
    Computed("ImageFormatString", "String", GetImageFormatString),
    Checked("MappingBlockSize", AT(MappingBlockSize), SetMemBlockSize),
    ReadOnly("RowOffset", "Integer", AT(RowOffset)),
    Field("DebugPictureEnabled", "Boolean", AT(DebugPictureEnabled), kPictureProperty),
    Computed("DebugPicture", "Picture", GetDebugPicture, kPictureProperty),
    ReadOnly("IsGray", "Boolean", AT(IsGray)),
    ReadOnly("IsRGB", "Boolean", AT(IsRGB)),
    ReadOnly("HasGreen", "Boolean", AT(HasGreen)),
    ReadOnly("HasRed", "Boolean", AT(HasRed)),
    ReadOnly("HasBlue", "Boolean", AT(HasBlue)),
    ReadOnly("HasGray", "Boolean", AT(HasGray)),
    ReadOnly("HasAlpha", "Boolean", AT(HasAlpha)),
    ReadOnly("Valid", "Boolean", AT(Valid)),
    ReadOnly("IsMapping", "Boolean", AT(IsMapping)),
    ReadOnly("ChannelCount", "Integer", AT(ChannelCount)),
    ReadOnly("IsCMYK", "Boolean", AT(IsCMYK)),
    ReadOnly("HasCyan", "Boolean", AT(HasCyan)),
    ReadOnly("HasYellow", "Boolean", AT(HasYellow)),
    ReadOnly("HasMagenta", "Boolean", AT(HasMagenta)),
    ReadOnly("HasBlack", "Boolean", AT(HasBlack)),
    // The four inks can be read and not set; there is no setter for them, unlike for the channels above.
    ReadOnly("CyanOffset", "Integer", AT(CyanOffset)),
    ReadOnly("YellowOffset", "Integer", AT(YellowOffset)),
    ReadOnly("MagentaOffset", "Integer", AT(MagentaOffset)),
    ReadOnly("BlackOffset", "Integer", AT(BlackOffset)),
    ReadOnly("Parent", "PictureZVK", AT(Parent)),
    Field("Factory", "PictureFactoryZVK", AT(Factory)),
    ReadOnly("Target", "Picture", AT(Target), kPictureProperty),
    Computed("Memory", "Memoryblock", GetMemory),
    ReadOnly("MemoryTarget", "Memoryblock", AT(MemoryTarget)),
    Computed("TotalSize", "Int64", GetTotalSizeInt64),
};

#undef AT

REALmethodDefinition pictureMethods[] = {
    Method(PictureCombine1, "Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As Integer, MaskColour As Integer) as boolean", kNoFlags),
    Method(PictureCombine2, "Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As Integer) as boolean", kNoFlags),
    Method(PictureCombine3, "Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean) as boolean", kNoFlags),
    Method(PictureCombine1c, "Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As color, MaskColour As color) as boolean", kNoFlags),
    Method(PictureCombine2c, "Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As color) as boolean", kNoFlags),
    Method(PictureCombine1pm, "Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As Integer, MaskColour As Integer) as boolean", kNoFlags),
    Method(PictureCombine2pm, "Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As Integer) as boolean", kNoFlags),
    Method(PictureCombine3pm, "Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean) as boolean", kNoFlags),
    Method(PictureCombine1pmc, "Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As color, MaskColour As color) as boolean", kNoFlags),
    Method(PictureCombine2pmc, "Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As color) as boolean", kNoFlags),
    Method(CreatePictureLocal, "CreatePictureZVK(width as integer, height as integer, ImageFormat as integer) as PictureZVK"),
    Method(ScalePictureFast, "ScaleFast(source as PictureZVK, width as integer, height as integer) as boolean"),
    Method(PictureScaleZVK, "Scale(source as PictureZVK, temp as PictureZVK, mode as integer, width as integer, height as integer) as boolean"),
    Method(PictureScaleZVKMT, "ScaleMT(threads as integer, source as PictureZVK, temp as PictureZVK, mode as integer, width as integer, height as integer) as boolean"),
    Method(ImageConstructorFile, "Constructor(width as integer, height as integer, ImageFormat as integer, BlockSize as integer, FilePath as folderitem)"),
    Method(ImageConstructor, "Constructor(width as integer, height as integer, ImageFormat as integer)"),
    Method(ImageConstructorPicture, "Constructor(pic as picture, UseAlpha as boolean=false)", kPictureMethod),
    Method(ImageConstructorMemory, "Constructor(Buf as MemoryBlock, width as integer, height as integer, ImageFormat as integer, RowSize as integer)"),
    Method(OilFilter, "OilFilter(dest as PictureZVK, levels as integer, range as integer) as PictureZVK"),
    Method(DifuseFilter, "DiffuseFilter(dest as PictureZVK, level as integer) as PictureZVK"),
    Method(EngraveFilter, "EngraveFilter(dest as PictureZVK, level as integer) as PictureZVK"),
    Method(NeonFilter, "NeonFilter(dest as PictureZVK) as PictureZVK"),
    Method(BoxBlurFilter, "BoxBlurFilter(dest as PictureZVK, Radius as double, Vertical as boolean = true, Horizontal as boolean = true) as PictureZVK"),
    Method(BoxBlurFilter2, "BoxBlurFilter(dest as PictureZVK, Radius as double, Iterations as integer, Vertical as boolean = true, Horizontal as boolean = true) as PictureZVK"),
    Method(BoxBlurFractionalFilter, "BoxBlurFractionalFilter(dest as PictureZVK, Radius as double) as PictureZVK"),
    Method(SolarizeFilter, "SolarizeFilter(dest as PictureZVK) as PictureZVK"),
    Method(GammaFilterG, "GammaFilter(dest as PictureZVK, gamma as double) as PictureZVK"),
    Method(GammaFilterGA, "GammaFilter(dest as PictureZVK, gamma as double, alphaGamma as double) as PictureZVK"),
    Method(GammaFilterRGB, "GammaFilter(dest as PictureZVK, redGamma as double, greenGamma as double, blueGamma as double) as PictureZVK"),
    Method(GammaFilterRGBA, "GammaFilter(dest as PictureZVK, redGamma as double, greenGamma as double, blueGamma as double, alphaGamma as double) as PictureZVK"),
    Method(DitherFilter, "DitherFilter(dest as PictureZVK, matrix as integer, levels as integer) as PictureZVK"),
    Method(GainFilter, "GainFilter(dest as PictureZVK, gain as double, bias as double) as PictureZVK"),
    Method(StampFilter, "StampFilter(dest as PictureZVK, radius as double, threshold as double, softness as double, Black as Color, White as Color) as PictureZVK"),
    Method(TransferFilterG, "TransferFilter(dest as PictureZVK, gray() as integer) as PictureZVK"),
    Method(TransferFilterGA, "TransferFilter(dest as PictureZVK, gray() as integer, alpha() as integer) as PictureZVK"),
    Method(TransferFilterRGB, "TransferFilter(dest as PictureZVK, red() as integer, green() as integer, blue() as integer) as PictureZVK"),
    Method(TransferFilterRGBA, "TransferFilter(dest as PictureZVK, red() as integer, green() as integer, blue() as integer, alpha() as integer) as PictureZVK"),
    Method(unsharpFilter, "UnsharpFilter(origpixels as PictureZVK, Amount as double, Threshold as integer) as boolean"),
    Method(AlphaChannel, "AlphaChannel as PictureZVK"),
    Method(RedChannel, "RedChannel as PictureZVK"),
    Method(GreenChannel, "GreenChannel as PictureZVK"),
    Method(BlueChannel, "BlueChannel as PictureZVK"),
    Method(GrayChannel, "GrayChannel as PictureZVK"),
    Method(CyanChannel, "CyanChannel as PictureZVK"),
    Method(MagentaChannel, "MagentaChannel as PictureZVK"),
    Method(YellowChannel, "YellowChannel as PictureZVK"),
    Method(BlackChannel, "BlackChannel as PictureZVK"),
    Method(Channel, "Channel(index as integer) as PictureZVK"),
    Method(RGBChannel, "RGBChannels as PictureZVK"),
    Method(CMYKChannel, "CMYKChannels as PictureZVK"),
    Method(GetMirroredView, "MirroredView as PictureZVK"),
    Method(ImageDestructor, "Close"),
    Method(HMirrorSelf, "HMirror"),
    Method(VMirrorSelf, "VMirror"),
    Method(Rotate180Self, "Rotate180"),
    Method(Invert1, "Invert"),
    Method(Invert5, "Invert(x as integer, y as integer, w as integer, h as integer)"),
    Method(AutoLevel1, "AutoLevel as boolean"),
    Method(AutoLevel5, "AutoLevel(x as integer, y as integer, w as integer, h as integer) as boolean"),
    Method(rbCopyPictureWithMask, "CopyPictureWithMask(x as integer, y as integer, w as integer, h as integer) as picture", kPictureMethod),
    Method(rbCopyPictureWithMaskAll, "CopyPictureWithMask as picture", kPictureMethod),
    Method(rbCopyPicture, "CopyPicture(x as integer, y as integer, w as integer, h as integer) as picture", kPictureMethod),
    Method(rbCopyPictureAll, "CopyPicture as picture", kPictureMethod),
    Method(rbCopyMask, "CopyMask(x as integer, y as integer, w as integer, h as integer) as picture", kPictureMethod),
    Method(rbCopyMaskAll, "CopyMask as picture", kPictureMethod),
    Method(rbGetRow, "RawRow(index as integer) as memoryblock"),
    Assignable(rbGetRowCopy, rbSetRow, "Row(index as integer) as memoryblock"),
    Assignable(rbGetRowF, rbSetRowF, "RowInFormat(index as integer, ImageFormat as integer) as memoryblock"),
    Assignable(rbGetRowFI, rbSetRowFI, "RowInFormat(index as integer, ImageFormat as integer, InvertAlpha as boolean) as memoryblock"),
    Assignable(rbGetRowFS, rbSetRowFS, "RowStringInFormat(index as integer, ImageFormat as integer) as string"),
    Assignable(rbGetAllFS, rbSetAllFS, "DataStringInFormat(ImageFormat as integer) as string"),
    Method(Clone, "Clone as PictureZVK"),
    Method(ClearRect1, "ClearRect"),
    Method(ClearRect5, "ClearRect(x as integer, y as integer, width as integer, height as integer)"),
    Method(CompareImages, "CompareImages(other as PictureZVK) as Int64"),
    Method(FillRect1, "FillRect(value as integer)"),
    Method(FillRect5, "FillRect(x as integer, y as integer, width as integer, height as integer, value as integer)"),
    Method(FillRectRandom1, "FillRectRandom"),
    Method(FillRectRandom5, "FillRectRandom(x as integer, y as integer, width as integer, height as integer)"),
    Method(FillRectRGB1, "FillRectRGB(red as integer, green as integer, blue as integer)"),
    Method(FillRectRGB5, "FillRectRGB(x as integer, y as integer, width as integer, height as integer, red as integer, green as integer, blue as integer)"),
    Method(FillRectRGBA1, "FillRectRGB(red as integer, green as integer, blue as integer, alpha as integer)"),
    Method(FillRectRGBA5, "FillRectRGB(x as integer, y as integer, width as integer, height as integer, red as integer, green as integer, blue as integer, alpha as integer)"),
    Method(FillRectRGBc1, "FillRectRGB(FillColor as color)"),
    Method(FillRectRGBcA1, "FillRectRGB(FillColor as color, alpha as integer)"),
    Method(FillRectRGBc5, "FillRectRGB(x as integer, y as integer, width as integer, height as integer, FillColor as color)"),
    Method(FillRectRGBcA5, "FillRectRGB(x as integer, y as integer, width as integer, height as integer, FillColor as color, alpha as integer)"),
    Method(FillRectApplyRGBA1, "FillRectApply(red as integer, green as integer, blue as integer, alpha as integer) as boolean"),
    Method(FillRectApplyRGBA5, "FillRectApply(x as integer, y as integer, width as integer, height as integer, red as integer, green as integer, blue as integer, alpha as integer) as boolean"),
    Method(FillRectApplyRGBcA1, "FillRectApply(FillColor as color, alpha as integer) as boolean"),
    Method(FillRectApplyRGBcA5, "FillRectApply(x as integer, y as integer, width as integer, height as integer, FillColor as color, alpha as integer) as boolean"),
    Method(rbDrawPictureRedToGrayChannel6, "DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", kPictureMethod),
    Method(rbDrawPictureRedToGrayChannel8, "DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", kPictureMethod),
    Method(rbDrawPictureGreenToGrayChannel6, "DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", kPictureMethod),
    Method(rbDrawPictureGreenToGrayChannel8, "DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", kPictureMethod),
    Method(rbDrawPictureBlueToGrayChannel6, "DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", kPictureMethod),
    Method(rbDrawPictureBlueToGrayChannel8, "DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", kPictureMethod),
    Method(rbDrawPictureRGB2, "DrawPictureRGB(pic as picture)", kPictureMethod),
    Method(rbDrawPictureRGB4, "DrawPictureRGB(pic as picture, DestX as integer, DestY as integer)", kPictureMethod),
    Method(rbDrawPictureRGB6, "DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", kPictureMethod),
    Method(rbDrawPictureRGB8, "DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", kPictureMethod),
    Method(rbDrawMaskedPictureRGB2, "DrawMaskedPictureRGB(pic as picture, InvertMask as boolean=False)", kPictureMethod),
    Method(rbDrawMaskedPictureRGB4, "DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, InvertMask as boolean=False)", kPictureMethod),
    Method(rbDrawMaskedPictureRGB6, "DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, InvertMask as boolean=False)", kPictureMethod),
    Method(rbDrawMaskedPictureRGB8, "DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer, InvertMask as boolean=False)", kPictureMethod),
    Method(rbDrawPictureApplyMaskRGB2, "DrawMaskedPictureApplyMaskRGB(pic as picture, InvertMask as boolean=False)", kPictureMethod),
    Method(rbDrawPictureApplyMaskRGB4, "DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, InvertMask as boolean=False)", kPictureMethod),
    Method(rbDrawPictureApplyMaskRGB6, "DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, InvertMask as boolean=False)", kPictureMethod),
    Method(rbDrawPictureApplyMaskRGB8, "DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer, InvertMask as boolean=False)", kPictureMethod),
    Method(rbCopyPixels8, "CopyPixels(source as PictureZVK, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer) as boolean"),
    Method(rbCopyPixels6, "CopyPixels(source as PictureZVK, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer) as boolean"),
    Method(rbCopyPixels2, "CopyPixels(source as PictureZVK) as boolean"),
    Method(ClipImage1, "ClipImage as PictureZVK"),
    Method(ClipImage5, "ClipImage(x as integer, y as integer, width as integer, height as integer) as PictureZVK"),
    Method(Rotate180, "Rotate180(dest as PictureZVK=nil) as PictureZVK"),
    // What the host calls plain is the tiled form here, and what it calls slow the plain one.
    Method(Rotate90fast, "Rotate90(dest as PictureZVK=nil) as PictureZVK"),
    Method(Rotate90, "Rotate90slow(dest as PictureZVK=nil) as PictureZVK"),
    Method(rbRotate, "Rotate(angle as double, Red as integer = 0, Green as integer = 0, Blue as integer = 0, Alpha as integer = 0, Gray as integer = 0, Cyan as integer = 0, Magenta as integer = 0, Yellow as integer = 0, Black as integer = 0) as PictureZVK"),
    Method(Rotate270fast, "Rotate270(dest as PictureZVK=nil) as PictureZVK"),
    Method(Rotate270, "Rotate270slow(dest as PictureZVK=nil) as PictureZVK"),
    Method(PictureMatrix3, "ApplyMatrix(dest as PictureZVK, MatrixDimension as integer, matrix() as integer) as PictureZVK"),
    Method(PictureMatrix4, "ApplyMatrix(dest as PictureZVK, MatrixDimension as integer, matrix() as integer, delta as integer) as PictureZVK"),
    Method(PictureMatrix5, "ApplyMatrix(dest as PictureZVK, MatrixDimension as integer, matrix() as integer, delta as integer, ScaleFactor as double) as PictureZVK"),
    Method(CopyGWorld, "CopyGWorld as variant"),
};

REALconstant pictureConstants[] = {
    Constant("ImageFormatUnknown", 0),
    Constant("ImageFormatRGB", 1),
    Constant("ImageFormatRGBA", 2),
    Constant("ImageFormatRGBX", 3),
    Constant("ImageFormatARGB", 4),
    Constant("ImageFormatXRGB", 5),
    Constant("ImageFormatBGR", 6),
    Constant("ImageFormatBGRA", 7),
    Constant("ImageFormatBGRX", 8),
    Constant("ImageFormatABGR", 9),
    Constant("ImageFormatXBGR", 10),
    Constant("ImageFormatG", 11),
    Constant("ImageFormatGray16", 41),
    Constant("ImageFormatGA", 12),
    Constant("ImageFormatAG", 13),
    Constant("ImageFormatScaling1", 33),
    Constant("ImageFormatScaling2", 34),
    Constant("ImageFormatScaling3", 35),
    Constant("ImageFormatScaling4", 36),
    Constant("ImageFormatScaling5", 37),
    Constant("ImageFormatScaling6", 38),
    Constant("ImageFormatScaling7", 39),
    Constant("ImageFormatScaling8", 40),
    Constant("ImageFormatBuffer", 22),
    Constant("ImageFormat1of3", 15),
    Constant("ImageFormat2of3", 16),
    Constant("ImageFormat3of3", 17),
    Constant("ImageFormat1of4", 18),
    Constant("ImageFormat2of4", 19),
    Constant("ImageFormat3of4", 20),
    Constant("ImageFormat4of4", 21),
    Constant("ImageFormatRofRGB", 15),
    Constant("ImageFormatGofRGB", 16),
    Constant("ImageFormatBofRGB", 17),
    Constant("ImageFormatRofRGBA", 18),
    Constant("ImageFormatGofRGBA", 19),
    Constant("ImageFormatBofRGBA", 20),
    Constant("ImageFormatAofRGBA", 21),
    Constant("ImageFormatRofARGB", 19),
    Constant("ImageFormatGofARGB", 20),
    Constant("ImageFormatBofARGB", 21),
    Constant("ImageFormatAofARGB", 18),
    Constant("ImageFormatRofBGR", 17),
    Constant("ImageFormatGofBGR", 16),
    Constant("ImageFormatBofBGR", 15),
    Constant("ImageFormatRofBGRA", 20),
    Constant("ImageFormatGofBGRA", 19),
    Constant("ImageFormatBofBGRA", 18),
    Constant("ImageFormatAofBGRA", 21),
    Constant("ImageFormatRofABGR", 21),
    Constant("ImageFormatGofABGR", 20),
    Constant("ImageFormatBofABGR", 19),
    Constant("ImageFormatAofABGR", 18),
    Constant("ImageFormatCMYK", 23),
    Constant("ImageFormatCMYKA", 24),
    Constant("ImageFormatACMYK", 25),
    Constant("ImageFormatCMYKX", 26),
    Constant("ImageFormatXCMYK", 27),
    Constant("ImageFormatKYMC", 28),
    Constant("ImageFormatKYMCA", 29),
    Constant("ImageFormatAKYMC", 30),
    Constant("ImageFormatKYMCX", 31),
    Constant("ImageFormatXKYMC", 32),
    Constant("ScaleTriangle", 1),
    Constant("ScaleBox", 2),
    Constant("ScaleLanczos3", 3),
    Constant("ScaleLanczos8", 4),
    Constant("ScaleMitchell", 5),
    Constant("ScalePoly3", 6),
    Constant("ScaleCubic", 7),
    Constant("DitherMagic2x2Matrix", 1),
    Constant("DitherMagic4x4Matrix", 2),
    Constant("DitherOrdered4x4Matrix", 3),
    Constant("DitherLines4x4Matrix", 4),
    Constant("Dither90Halftone6x6Matrix", 5),
    Constant("DitherOrdered6x6Matrix", 6),
    Constant("DitherOrdered8x8Matrix", 7),
    Constant("DitherCluster3Matrix", 8),
    Constant("DitherCluster4Matrix", 9),
    Constant("DitherCluster8Matrix", 10),
};

REALmethodDefinition pictureSharedMethods[] = {
    Method(CalculateMemory, "CalculateMemory(width as integer, height as integer, theImageFormat as integer) as Int64"),
    Method(CanAllocateImage, "CanAllocateImage(width as integer, height as integer, theImageFormat as integer) as boolean"),
    Method(CreatePictureGlobal, "CreatePictureZVK(width as integer, height as integer, theImageFormat as integer) as PictureZVK"),
};

REALmethodDefinition factorySharedMethods[] = {
    Method(SetFactory, "SetFactory(factory as PictureFactoryZVK)"),
};

// clang-format on

REALclassDefinition Class(const char *name) {
  REALclassDefinition definition{};
  definition.version = 12;
  definition.name = name;
  definition.flags = kFlagConsole;
  return definition;
}

REALclassDefinition PictureClass() {
  REALclassDefinition definition = Class("PictureZVK");
  definition.dataSize = sizeof(ImageClassData);
  definition.destructor = Address(ImageDestructor);
  definition.properties = pictureProperties;
  definition.propertyCount = std::size(pictureProperties);
  definition.methods = pictureMethods;
  definition.methodCount = std::size(pictureMethods);
  definition.constants = pictureConstants;
  definition.constantCount = std::size(pictureConstants);
  definition.sharedMethods = pictureSharedMethods;
  definition.sharedMethodCount = std::size(pictureSharedMethods);
  return definition;
}

REALclassDefinition PictureFactoryClass() {
  REALclassDefinition definition = Class("PictureFactoryZVK");
  definition.events = &NewPictureEvent;
  definition.eventCount = 1;
  definition.sharedMethods = factorySharedMethods;
  definition.sharedMethodCount = std::size(factorySharedMethods);
  return definition;
}

}  // namespace

}  // namespace zvk::plugin

// The record and the factories know the classes and the event by name; what they are is told here.
REALevent zvk::image::NewPictureEvent{
    "NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK", 0, 0, nullptr};
REALclassDefinition zvk::image::PictureDefinition = zvk::plugin::PictureClass();
REALclassDefinition zvk::image::PictureFactoryDefinition = zvk::plugin::PictureFactoryClass();
