// What the class tables say before they are fitted to a host, entry by entry against a list kept here.

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

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
#include "image/image_record.h"
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
#include "scaling/fast_scale.h"
#include "scaling/scale_engine.h"

namespace zvk::plugin {
namespace {

template <class Result, class... Arguments>
void *Address(Result (*function)(Arguments...)) {
  return reinterpret_cast<void *>(function);
}

// How a property is reached.
enum class Access { Field, ReadOnly, Setter, Getter };

struct ExpectedProperty {
  const char *name;
  const char *type;
  Access access;
  size_t position;
  uint32_t flags = 6;
  void *accessor = nullptr;  // the getter or setter
};

const std::vector<ExpectedProperty> kProperties = {
    {"YieldTicks", "Integer", Access::Field, 0},
    {"RedOffset", "Integer", Access::Setter, offsetof(ImageClassData, RedOffset), 6, Address(SetRedOffset)},
    {"GreenOffset", "Integer", Access::Setter, offsetof(ImageClassData, GreenOffset), 6, Address(SetGreenOffset)},
    {"BlueOffset", "Integer", Access::Setter, offsetof(ImageClassData, BlueOffset), 6, Address(SetBlueOffset)},
    {"GrayOffset", "Integer", Access::Setter, offsetof(ImageClassData, GrayOffset), 6, Address(SetGrayOffset)},
    {"AlphaOffset", "Integer", Access::Setter, offsetof(ImageClassData, AlphaOffset), 6, Address(SetAlphaOffset)},
    {"Width", "Integer", Access::ReadOnly, offsetof(ImageClassData, Width)},
    {"Height", "Integer", Access::ReadOnly, offsetof(ImageClassData, Height)},
    {"UnclippedHeight", "Integer", Access::ReadOnly, offsetof(ImageClassData, UnclippedHeight)},
    {"PixelSize", "Integer", Access::ReadOnly, offsetof(ImageClassData, PixelSize)},
    {"BitsPerComponent", "Integer", Access::ReadOnly, offsetof(ImageClassData, BitsPerComponent)},
    {"RowSize", "Integer", Access::ReadOnly, offsetof(ImageClassData, RowSize)},
    {"ImageFormat", "Integer", Access::ReadOnly, offsetof(ImageClassData, ImageFormat)},
    {"ImageFormatString", "String", Access::Getter, 0, 6, Address(GetImageFormatString)},
    {"MappingBlockSize", "Integer", Access::Setter, offsetof(ImageClassData, MappingBlockSize), 6,
     Address(SetMemBlockSize)},
    {"RowOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, RowOffset)},
    {"DebugPictureEnabled", "Boolean", Access::Field, offsetof(ImageClassData, DebugPictureEnabled), 0x40002},
    {"DebugPicture", "Picture", Access::Getter, 0, 0x40002, Address(GetDebugPicture)},
    {"IsGray", "Boolean", Access::ReadOnly, offsetof(ImageClassData, IsGray)},
    {"IsRGB", "Boolean", Access::ReadOnly, offsetof(ImageClassData, IsRGB)},
    {"HasGreen", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasGreen)},
    {"HasRed", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasRed)},
    {"HasBlue", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasBlue)},
    {"HasGray", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasGray)},
    {"HasAlpha", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasAlpha)},
    {"Valid", "Boolean", Access::ReadOnly, offsetof(ImageClassData, Valid)},
    {"IsMapping", "Boolean", Access::ReadOnly, offsetof(ImageClassData, IsMapping)},
    {"ChannelCount", "Integer", Access::ReadOnly, offsetof(ImageClassData, ChannelCount)},
    {"IsCMYK", "Boolean", Access::ReadOnly, offsetof(ImageClassData, IsCMYK)},
    {"HasCyan", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasCyan)},
    {"HasYellow", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasYellow)},
    {"HasMagenta", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasMagenta)},
    {"HasBlack", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasBlack)},
    {"CyanOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, CyanOffset)},
    {"YellowOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, YellowOffset)},
    {"MagentaOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, MagentaOffset)},
    {"BlackOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, BlackOffset)},
    {"Parent", "PictureZVK", Access::ReadOnly, offsetof(ImageClassData, Parent)},
    {"Factory", "PictureFactoryZVK", Access::Field, offsetof(ImageClassData, Factory)},
    {"Target", "Picture", Access::ReadOnly, offsetof(ImageClassData, Target), 0x40002},
    {"Memory", "Memoryblock", Access::Getter, 0, 6, Address(GetMemory)},
    {"MemoryTarget", "Memoryblock", Access::ReadOnly, offsetof(ImageClassData, MemoryTarget)},
    {"TotalSize", "Int64", Access::Getter, 0, 6, Address(GetTotalSizeInt64)},
};

struct ExpectedMethod {
  const char *declaration;
  void *handler;
  uint32_t flags = 4;
  void *setter = nullptr;
};

constexpr uint32_t kPicture = 0x40000;

const std::vector<ExpectedMethod> kMethods = {
    {"Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY "
     "As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As Integer, MaskColour As "
     "Integer) as boolean",
     Address(PictureCombine1), 0},
    {"Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY "
     "As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As Integer) as boolean",
     Address(PictureCombine2), 0},
    {"Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY "
     "As Integer, Width As Integer, Height As Integer, UseColours As Boolean) as boolean",
     Address(PictureCombine3), 0},
    {"Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY "
     "As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As color, MaskColour As "
     "color) as boolean",
     Address(PictureCombine1c), 0},
    {"Combine(Image As PictureZVK, Mask As PictureZVK, DestX As Integer, DestY As Integer, SourceX As Integer, SourceY "
     "As Integer, Width As Integer, Height As Integer, UseColours As Boolean, ForeColour As color) as boolean",
     Address(PictureCombine2c), 0},
    {"Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As "
     "Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, "
     "ForeColour As Integer, MaskColour As Integer) as boolean",
     Address(PictureCombine1pm), 0},
    {"Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As "
     "Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, "
     "ForeColour As Integer) as boolean",
     Address(PictureCombine2pm), 0},
    {"Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As "
     "Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean) as "
     "boolean",
     Address(PictureCombine3pm), 0},
    {"Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As "
     "Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, "
     "ForeColour As color, MaskColour As color) as boolean",
     Address(PictureCombine1pmc), 0},
    {"Combine(Image As PictureZVK, PreMultipliedSource as boolean, Mask As PictureZVK, DestX As Integer, DestY As "
     "Integer, SourceX As Integer, SourceY As Integer, Width As Integer, Height As Integer, UseColours As Boolean, "
     "ForeColour As color) as boolean",
     Address(PictureCombine2pmc), 0},
    {"CreatePictureZVK(width as integer, height as integer, ImageFormat as integer) as PictureZVK",
     Address(CreatePictureLocal)},
    {"ScaleFast(source as PictureZVK, width as integer, height as integer) as boolean", Address(ScalePictureFast)},
    {"Scale(source as PictureZVK, temp as PictureZVK, mode as integer, width as integer, height as integer) as boolean",
     Address(PictureScaleZVK)},
    {"ScaleMT(threads as integer, source as PictureZVK, temp as PictureZVK, mode as integer, width as integer, height "
     "as integer) as boolean",
     Address(PictureScaleZVKMT)},
    {"Constructor(width as integer, height as integer, ImageFormat as integer, BlockSize as integer, FilePath as "
     "folderitem)",
     Address(ImageConstructorFile)},
    {"Constructor(width as integer, height as integer, ImageFormat as integer)", Address(ImageConstructor)},
    {"Constructor(pic as picture, UseAlpha as boolean=false)", Address(ImageConstructorPicture), kPicture},
    {"Constructor(Buf as MemoryBlock, width as integer, height as integer, ImageFormat as integer, RowSize as integer)",
     Address(ImageConstructorMemory)},
    {"OilFilter(dest as PictureZVK, levels as integer, range as integer) as PictureZVK", Address(OilFilter)},
    {"DiffuseFilter(dest as PictureZVK, level as integer) as PictureZVK", Address(DifuseFilter)},
    {"EngraveFilter(dest as PictureZVK, level as integer) as PictureZVK", Address(EngraveFilter)},
    {"NeonFilter(dest as PictureZVK) as PictureZVK", Address(NeonFilter)},
    {"BoxBlurFilter(dest as PictureZVK, Radius as double, Vertical as boolean = true, Horizontal as boolean = true) as "
     "PictureZVK",
     Address(BoxBlurFilter)},
    {"BoxBlurFilter(dest as PictureZVK, Radius as double, Iterations as integer, Vertical as boolean = true, "
     "Horizontal as boolean = true) as PictureZVK",
     Address(BoxBlurFilter2)},
    {"BoxBlurFractionalFilter(dest as PictureZVK, Radius as double) as PictureZVK", Address(BoxBlurFractionalFilter)},
    {"SolarizeFilter(dest as PictureZVK) as PictureZVK", Address(SolarizeFilter)},
    {"GammaFilter(dest as PictureZVK, gamma as double) as PictureZVK", Address(GammaFilterG)},
    {"GammaFilter(dest as PictureZVK, gamma as double, alphaGamma as double) as PictureZVK", Address(GammaFilterGA)},
    {"GammaFilter(dest as PictureZVK, redGamma as double, greenGamma as double, blueGamma as double) as PictureZVK",
     Address(GammaFilterRGB)},
    {"GammaFilter(dest as PictureZVK, redGamma as double, greenGamma as double, blueGamma as double, alphaGamma as "
     "double) as PictureZVK",
     Address(GammaFilterRGBA)},
    {"DitherFilter(dest as PictureZVK, matrix as integer, levels as integer) as PictureZVK", Address(DitherFilter)},
    {"GainFilter(dest as PictureZVK, gain as double, bias as double) as PictureZVK", Address(GainFilter)},
    {"StampFilter(dest as PictureZVK, radius as double, threshold as double, softness as double, Black as Color, White "
     "as Color) as PictureZVK",
     Address(StampFilter)},
    {"TransferFilter(dest as PictureZVK, gray() as integer) as PictureZVK", Address(TransferFilterG)},
    {"TransferFilter(dest as PictureZVK, gray() as integer, alpha() as integer) as PictureZVK",
     Address(TransferFilterGA)},
    {"TransferFilter(dest as PictureZVK, red() as integer, green() as integer, blue() as integer) as PictureZVK",
     Address(TransferFilterRGB)},
    {"TransferFilter(dest as PictureZVK, red() as integer, green() as integer, blue() as integer, alpha() as integer) "
     "as PictureZVK",
     Address(TransferFilterRGBA)},
    {"UnsharpFilter(origpixels as PictureZVK, Amount as double, Threshold as integer) as boolean",
     Address(unsharpFilter)},
    {"AlphaChannel as PictureZVK", Address(AlphaChannel)},
    {"RedChannel as PictureZVK", Address(RedChannel)},
    {"GreenChannel as PictureZVK", Address(GreenChannel)},
    {"BlueChannel as PictureZVK", Address(BlueChannel)},
    {"GrayChannel as PictureZVK", Address(GrayChannel)},
    {"CyanChannel as PictureZVK", Address(CyanChannel)},
    {"MagentaChannel as PictureZVK", Address(MagentaChannel)},
    {"YellowChannel as PictureZVK", Address(YellowChannel)},
    {"BlackChannel as PictureZVK", Address(BlackChannel)},
    {"Channel(index as integer) as PictureZVK", Address(Channel)},
    {"RGBChannels as PictureZVK", Address(RGBChannel)},
    {"CMYKChannels as PictureZVK", Address(CMYKChannel)},
    {"MirroredView as PictureZVK", Address(GetMirroredView)},
    {"Close", Address(ImageDestructor)},
    {"HMirror", Address(HMirrorSelf)},
    {"VMirror", Address(VMirrorSelf)},
    {"Rotate180", Address(Rotate180Self)},
    {"Invert", Address(Invert1)},
    {"Invert(x as integer, y as integer, w as integer, h as integer)", Address(Invert5)},
    {"AutoLevel as boolean", Address(AutoLevel1)},
    {"AutoLevel(x as integer, y as integer, w as integer, h as integer) as boolean", Address(AutoLevel5)},
    {"CopyPictureWithMask(x as integer, y as integer, w as integer, h as integer) as picture",
     Address(rbCopyPictureWithMask), kPicture},
    {"CopyPictureWithMask as picture", Address(rbCopyPictureWithMaskAll), kPicture},
    {"CopyPicture(x as integer, y as integer, w as integer, h as integer) as picture", Address(rbCopyPicture),
     kPicture},
    {"CopyPicture as picture", Address(rbCopyPictureAll), kPicture},
    {"CopyMask(x as integer, y as integer, w as integer, h as integer) as picture", Address(rbCopyMask), kPicture},
    {"CopyMask as picture", Address(rbCopyMaskAll), kPicture},
    {"RawRow(index as integer) as memoryblock", Address(rbGetRow)},
    {"Row(index as integer) as memoryblock", Address(rbGetRowCopy), 4, Address(rbSetRow)},
    {"RowInFormat(index as integer, ImageFormat as integer) as memoryblock", Address(rbGetRowF), 4, Address(rbSetRowF)},
    {"RowInFormat(index as integer, ImageFormat as integer, InvertAlpha as boolean) as memoryblock",
     Address(rbGetRowFI), 4, Address(rbSetRowFI)},
    {"RowStringInFormat(index as integer, ImageFormat as integer) as string", Address(rbGetRowFS), 4,
     Address(rbSetRowFS)},
    {"DataStringInFormat(ImageFormat as integer) as string", Address(rbGetAllFS), 4, Address(rbSetAllFS)},
    {"Clone as PictureZVK", Address(Clone)},
    {"ClearRect", Address(ClearRect1)},
    {"ClearRect(x as integer, y as integer, width as integer, height as integer)", Address(ClearRect5)},
    {"CompareImages(other as PictureZVK) as Int64", Address(CompareImages)},
    {"FillRect(value as integer)", Address(FillRect1)},
    {"FillRect(x as integer, y as integer, width as integer, height as integer, value as integer)", Address(FillRect5)},
    {"FillRectRandom", Address(FillRectRandom1)},
    {"FillRectRandom(x as integer, y as integer, width as integer, height as integer)", Address(FillRectRandom5)},
    {"FillRectRGB(red as integer, green as integer, blue as integer)", Address(FillRectRGB1)},
    {"FillRectRGB(x as integer, y as integer, width as integer, height as integer, red as integer, green as integer, "
     "blue as integer)",
     Address(FillRectRGB5)},
    {"FillRectRGB(red as integer, green as integer, blue as integer, alpha as integer)", Address(FillRectRGBA1)},
    {"FillRectRGB(x as integer, y as integer, width as integer, height as integer, red as integer, green as integer, "
     "blue as integer, alpha as integer)",
     Address(FillRectRGBA5)},
    {"FillRectRGB(FillColor as color)", Address(FillRectRGBc1)},
    {"FillRectRGB(FillColor as color, alpha as integer)", Address(FillRectRGBcA1)},
    {"FillRectRGB(x as integer, y as integer, width as integer, height as integer, FillColor as color)",
     Address(FillRectRGBc5)},
    {"FillRectRGB(x as integer, y as integer, width as integer, height as integer, FillColor as color, alpha as "
     "integer)",
     Address(FillRectRGBcA5)},
    {"FillRectApply(red as integer, green as integer, blue as integer, alpha as integer) as boolean",
     Address(FillRectApplyRGBA1)},
    {"FillRectApply(x as integer, y as integer, width as integer, height as integer, red as integer, green as integer, "
     "blue as integer, alpha as integer) as boolean",
     Address(FillRectApplyRGBA5)},
    {"FillRectApply(FillColor as color, alpha as integer) as boolean", Address(FillRectApplyRGBcA1)},
    {"FillRectApply(x as integer, y as integer, width as integer, height as integer, FillColor as color, alpha as "
     "integer) as boolean",
     Address(FillRectApplyRGBcA5)},
    {"DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight "
     "as integer)",
     Address(rbDrawPictureRedToGrayChannel6), kPicture},
    {"DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight "
     "as integer, SourceX as integer, SourceY as integer)",
     Address(rbDrawPictureRedToGrayChannel8), kPicture},
    {"DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer)",
     Address(rbDrawPictureGreenToGrayChannel6), kPicture},
    {"DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer, SourceX as integer, SourceY as integer)",
     Address(rbDrawPictureGreenToGrayChannel8), kPicture},
    {"DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer)",
     Address(rbDrawPictureBlueToGrayChannel6), kPicture},
    {"DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer, SourceX as integer, SourceY as integer)",
     Address(rbDrawPictureBlueToGrayChannel8), kPicture},
    {"DrawPictureRGB(pic as picture)", Address(rbDrawPictureRGB2), kPicture},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer)", Address(rbDrawPictureRGB4), kPicture},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)",
     Address(rbDrawPictureRGB6), kPicture},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, "
     "SourceX as integer, SourceY as integer)",
     Address(rbDrawPictureRGB8), kPicture},
    {"DrawMaskedPictureRGB(pic as picture, InvertMask as boolean=False)", Address(rbDrawMaskedPictureRGB2), kPicture},
    {"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, InvertMask as boolean=False)",
     Address(rbDrawMaskedPictureRGB4), kPicture},
    {"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as "
     "integer, InvertMask as boolean=False)",
     Address(rbDrawMaskedPictureRGB6), kPicture},
    {"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as "
     "integer, SourceX as integer, SourceY as integer, InvertMask as boolean=False)",
     Address(rbDrawMaskedPictureRGB8), kPicture},
    {"DrawMaskedPictureApplyMaskRGB(pic as picture, InvertMask as boolean=False)", Address(rbDrawPictureApplyMaskRGB2),
     kPicture},
    {"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, InvertMask as boolean=False)",
     Address(rbDrawPictureApplyMaskRGB4), kPicture},
    {"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer, InvertMask as boolean=False)",
     Address(rbDrawPictureApplyMaskRGB6), kPicture},
    {"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer, SourceX as integer, SourceY as integer, InvertMask as boolean=False)",
     Address(rbDrawPictureApplyMaskRGB8), kPicture},
    {"CopyPixels(source as PictureZVK, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as "
     "integer, SourceX as integer, SourceY as integer) as boolean",
     Address(rbCopyPixels8)},
    {"CopyPixels(source as PictureZVK, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as "
     "integer) as boolean",
     Address(rbCopyPixels6)},
    {"CopyPixels(source as PictureZVK) as boolean", Address(rbCopyPixels2)},
    {"ClipImage as PictureZVK", Address(ClipImage1)},
    {"ClipImage(x as integer, y as integer, width as integer, height as integer) as PictureZVK", Address(ClipImage5)},
    {"Rotate180(dest as PictureZVK=nil) as PictureZVK", Address(Rotate180)},
    {"Rotate90(dest as PictureZVK=nil) as PictureZVK", Address(Rotate90fast)},
    {"Rotate90slow(dest as PictureZVK=nil) as PictureZVK", Address(Rotate90)},
    {"Rotate(angle as double, Red as integer = 0, Green as integer = 0, Blue as integer = 0, Alpha as integer = 0, "
     "Gray as integer = 0, Cyan as integer = 0, Magenta as integer = 0, Yellow as integer = 0, Black as integer = 0) "
     "as PictureZVK",
     Address(rbRotate)},
    {"Rotate270(dest as PictureZVK=nil) as PictureZVK", Address(Rotate270fast)},
    {"Rotate270slow(dest as PictureZVK=nil) as PictureZVK", Address(Rotate270)},
    {"ApplyMatrix(dest as PictureZVK, MatrixDimension as integer, matrix() as integer) as PictureZVK",
     Address(PictureMatrix3)},
    {"ApplyMatrix(dest as PictureZVK, MatrixDimension as integer, matrix() as integer, delta as integer) as PictureZVK",
     Address(PictureMatrix4)},
    {"ApplyMatrix(dest as PictureZVK, MatrixDimension as integer, matrix() as integer, delta as integer, ScaleFactor "
     "as double) as PictureZVK",
     Address(PictureMatrix5)},
    {"CopyGWorld as variant", Address(CopyGWorld)},
};

const std::vector<ExpectedMethod> kSharedMethods = {
    {"CalculateMemory(width as integer, height as integer, theImageFormat as integer) as Int64",
     Address(CalculateMemory)},
    {"CanAllocateImage(width as integer, height as integer, theImageFormat as integer) as boolean",
     Address(CanAllocateImage)},
    {"CreatePictureZVK(width as integer, height as integer, theImageFormat as integer) as PictureZVK",
     Address(CreatePictureGlobal)},
};

TEST(ClassTables, Properties) {
  ASSERT_EQ(PictureDefinition.propertyCount, kProperties.size());
  for (size_t i = 0; i < kProperties.size(); ++i) {
    const REALproperty &property = PictureDefinition.properties[i];
    const ExpectedProperty &expected = kProperties[i];
    SCOPED_TRACE(expected.name);
    EXPECT_STREQ(property.name, expected.name);
    EXPECT_STREQ(property.type, expected.type);
    EXPECT_STREQ(property.group, "");
    EXPECT_EQ(property.editor, nullptr);
    EXPECT_EQ(property.flags, expected.flags);
    EXPECT_EQ(property.param, static_cast<int32_t>(expected.position));
    EXPECT_EQ(property.getter, expected.access == Access::Getter ? expected.accessor : REALstandardAccessor);
    EXPECT_EQ(property.setter, expected.access == Access::Field    ? REALstandardAccessor
                               : expected.access == Access::Setter ? expected.accessor
                                                                   : nullptr);
    EXPECT_EQ(property.enumCount + property.attributeCount, 0u);
  }
}

TEST(ClassTables, Methods) {
  ASSERT_EQ(PictureDefinition.methodCount, kMethods.size());
  for (size_t i = 0; i < kMethods.size(); ++i) {
    const REALmethodDefinition &method = PictureDefinition.methods[i];
    EXPECT_STREQ(method.declaration, kMethods[i].declaration);
    EXPECT_EQ(method.flags, kMethods[i].flags) << method.declaration;
    EXPECT_EQ(method.function, kMethods[i].handler) << method.declaration;
    EXPECT_EQ(method.setterFunction, kMethods[i].setter) << method.declaration;
  }
}

TEST(ClassTables, SharedMethods) {
  ASSERT_EQ(PictureDefinition.sharedMethodCount, kSharedMethods.size());
  for (size_t i = 0; i < kSharedMethods.size(); ++i) {
    const REALmethodDefinition &method = PictureDefinition.sharedMethods[i];
    EXPECT_STREQ(method.declaration, kSharedMethods[i].declaration);
    EXPECT_EQ(method.function, kSharedMethods[i].handler) << method.declaration;
    EXPECT_EQ(method.setterFunction, nullptr) << method.declaration;
    EXPECT_EQ(method.flags, 4u) << method.declaration;
  }
  ASSERT_EQ(PictureFactoryDefinition.sharedMethodCount, 1u);
  EXPECT_STREQ(PictureFactoryDefinition.sharedMethods[0].declaration, "SetFactory(factory as PictureFactoryZVK)");
  EXPECT_EQ(PictureFactoryDefinition.sharedMethods[0].function, Address(SetFactory));
  EXPECT_EQ(PictureFactoryDefinition.sharedMethods[0].flags, 4u);
}

// Names that share one list of numbers, in table order.
struct ConstantRun {
  std::string names;  // separated by blanks
  std::string prefix;
  std::string suffix;
  std::vector<uintptr_t> numbers;
};

const std::vector<ConstantRun> kConstants = {
    {"Unknown RGB RGBA RGBX ARGB XRGB BGR BGRA BGRX ABGR XBGR G",
     "ImageFormat",
     "",
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
    {"Gray16 GA AG", "ImageFormat", "", {41, 12, 13}},
    {"1 2 3 4 5 6 7 8", "ImageFormatScaling", "", {33, 34, 35, 36, 37, 38, 39, 40}},
    {"Buffer 1of3 2of3 3of3 1of4 2of4 3of4 4of4", "ImageFormat", "", {22, 15, 16, 17, 18, 19, 20, 21}},
    {"R G B", "ImageFormat", "ofRGB", {15, 16, 17}},
    {"R G B A", "ImageFormat", "ofRGBA", {18, 19, 20, 21}},
    {"R G B A", "ImageFormat", "ofARGB", {19, 20, 21, 18}},
    {"R G B", "ImageFormat", "ofBGR", {17, 16, 15}},
    {"R G B A", "ImageFormat", "ofBGRA", {20, 19, 18, 21}},
    {"R G B A", "ImageFormat", "ofABGR", {21, 20, 19, 18}},
    {"CMYK CMYKA ACMYK CMYKX XCMYK KYMC KYMCA AKYMC KYMCX XKYMC",
     "ImageFormat",
     "",
     {23, 24, 25, 26, 27, 28, 29, 30, 31, 32}},
    {"Triangle Box Lanczos3 Lanczos8 Mitchell Poly3 Cubic", "Scale", "", {1, 2, 3, 4, 5, 6, 7}},
    {"Magic2x2 Magic4x4 Ordered4x4 Lines4x4 90Halftone6x6 Ordered6x6 Ordered8x8 Cluster3 Cluster4 Cluster8",
     "Dither",
     "Matrix",
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}},
};

TEST(ClassTables, Constants) {
  ASSERT_EQ(PictureDefinition.constantCount, 80u);
  size_t position = 0;
  for (const ConstantRun &run : kConstants) {
    std::istringstream names(run.names);
    for (const uintptr_t number : run.numbers) {
      std::string name;
      ASSERT_TRUE(names >> name);
      ASSERT_LT(position, 80u);
      const REALconstant &constant = PictureDefinition.constants[position++];
      EXPECT_EQ(constant.declaration, run.prefix + name + run.suffix);
      EXPECT_EQ(constant.reserved, number) << name;
      EXPECT_EQ(constant.flags, 0u) << name;
    }
  }
  EXPECT_EQ(position, 80u);
}

TEST(ClassTables, TheTwoClasses) {
  EXPECT_STREQ(PictureDefinition.name, "PictureZVK");
  EXPECT_EQ(PictureDefinition.superName, nullptr);
  EXPECT_EQ(PictureDefinition.dataSize, sizeof(ImageClassData));
  EXPECT_EQ(PictureDefinition.constructor, nullptr);
  EXPECT_EQ(PictureDefinition.destructor, Address(ImageDestructor));
  EXPECT_EQ(PictureDefinition.flags, 4u);
  EXPECT_EQ(PictureDefinition.eventCount, 0u);
  EXPECT_EQ(PictureDefinition.sharedPropertyCount, 0u);
  EXPECT_EQ(PictureDefinition.forSystemUse, 0u);

  EXPECT_STREQ(PictureFactoryDefinition.name, "PictureFactoryZVK");
  EXPECT_EQ(PictureFactoryDefinition.superName, nullptr);
  EXPECT_EQ(PictureFactoryDefinition.dataSize, 0u);
  EXPECT_EQ(PictureFactoryDefinition.destructor, nullptr);
  EXPECT_EQ(PictureFactoryDefinition.flags, 4u);
  EXPECT_EQ(PictureFactoryDefinition.propertyCount, 0u);
  EXPECT_EQ(PictureFactoryDefinition.methodCount, 0u);
  EXPECT_EQ(PictureFactoryDefinition.constantCount, 0u);
  ASSERT_EQ(PictureFactoryDefinition.eventCount, 1u);
  EXPECT_EQ(PictureFactoryDefinition.events, &NewPictureEvent);
  EXPECT_STREQ(NewPictureEvent.declaration,
               "NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK");
}

}  // namespace
}  // namespace zvk::plugin
