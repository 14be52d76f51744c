#include "image/image_record.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/support/plugin_host.h"

namespace zvk::image {
namespace {

struct Field {
  const char *name;
  size_t position;
  size_t size;
  size_t alignment;
};

// A type as it is aligned in a record: in 32 bits an int64 stands on any fourth byte.
template <class T>
struct InRecord {
  T value;
};

TEST(ImageRecord, ItsFieldsFollowEachOtherInTheirNaturalLayout) {
  // clang-format off
#define FIELD(type, name) Field{#name, offsetof(ImageClassData, name), sizeof(type), alignof(InRecord<type>)}
  const std::vector<Field> fields = {
      FIELD(int32_t, Yield.YieldTicks),
      FIELD(int32_t, Yield.LastYieldTime),
      FIELD(void *, Factory),
      FIELD(void *, MemoryTarget),
      FIELD(uint8_t, DebugPictureEnabled),
      FIELD(int32_t, RedOffset),
      FIELD(uint8_t, HasRed),
      FIELD(int32_t, GreenOffset),
      FIELD(uint8_t, HasGreen),
      FIELD(int32_t, BlueOffset),
      FIELD(uint8_t, HasBlue),
      FIELD(int32_t, GrayOffset),
      FIELD(uint8_t, HasGray),
      FIELD(int32_t, AlphaOffset),
      FIELD(uint8_t, HasAlpha),
      FIELD(int32_t, CyanOffset),
      FIELD(uint8_t, HasCyan),
      FIELD(int32_t, MagentaOffset),
      FIELD(uint8_t, HasMagenta),
      FIELD(int32_t, YellowOffset),
      FIELD(uint8_t, HasYellow),
      FIELD(int32_t, BlackOffset),
      FIELD(uint8_t, HasBlack),
      FIELD(int32_t, Width),
      FIELD(uint8_t, IsGray),
      FIELD(int32_t, Height),
      FIELD(int32_t, UnclippedHeight),
      FIELD(uint8_t, IsRGB),
      FIELD(int32_t, RowSize),
      FIELD(uint8_t, IsCMYK),
      FIELD(int32_t, PixelSize),
      FIELD(int32_t, BitsPerComponent),
      FIELD(uint8_t, Valid),
      FIELD(int32_t, ImageFormat),
      FIELD(int32_t, RowOffset),
      FIELD(int32_t, ChannelCount),
      FIELD(int64_t, TotalSize),
      FIELD(int32_t[8], ChannelOffsets),
      FIELD(void *, Parent),
      FIELD(void *, FileItem),
      FIELD(void *, Target),
      FIELD(void *, FilePath),
      FIELD(uint8_t, OwnsBuffer),
      FIELD(uint8_t, IsAllocated),
      FIELD(void *, Buffer),
      FIELD(void *, MappingBase),
      FIELD(uint8_t, RemoveFile),
      FIELD(uint8_t, IsMapped),
      FIELD(int32_t, FileHandle),
      FIELD(uint8_t, IsMapping),
      FIELD(int32_t, MappingBlockSize),
      FIELD(void *, RowTable),
      FIELD(void *, GetRow),
      FIELD(int32_t, MappedFirstRow),
      FIELD(int32_t, MappedLastRow),
      FIELD(int32_t, MappedRowCount),
  };
#undef FIELD
  // clang-format on
  size_t end = 0;
  for (const Field &field : fields) {
    const size_t start = (end + field.alignment - 1) / field.alignment * field.alignment;
    EXPECT_EQ(field.position, start) << field.name;
    end = start + field.size;
  }
  EXPECT_EQ(sizeof(ImageClassData), (end + alignof(void *) - 1) / alignof(void *) * alignof(void *));
}

TEST(ImageRecord, ANewInstanceIsAllZero) {
  PluginHost host;
  const auto image = host.New("PictureZVK");
  const auto *bytes = reinterpret_cast<const uint8_t *>(RecordOf(image));
  for (size_t i = 0; i < sizeof(ImageClassData); ++i) ASSERT_EQ(bytes[i], 0) << i;
  EXPECT_FALSE(HasRows(*RecordOf(image)));
  EXPECT_FALSE(IsUsable(*RecordOf(image)));
}

TEST(ImageRecord, NoInstanceHasNoRecord) { EXPECT_EQ(RecordOf(nullptr), nullptr); }

}  // namespace
}  // namespace zvk::image
