// Random mirrors and turns of random images, against the plain loops: every byte of every storage.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "geometry/mirror.h"
#include "geometry/turns.h"
#include "tests/geometry/turn_generators.h"
#include "tests/geometry/turn_testing.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;

class MovesProperty : public testing::Test {
 protected:
  StoredImage AnyStoredOf(Random &random, int32_t format) {
    const Kind kind = AnyKind(random);
    const int32_t width = random.Side(300);
    return AnyStored(random, host_, kind, width, random.Side(300), format);
  }
  StoredImage AnyImage(Random &random) { return AnyStoredOf(random, AnyMovedFormat(random)); }

  PluginHost host_{{.fenced = true}};
};

TEST_F(MovesProperty, AnyImageIsMirroredInPlaceAsThePlainLoopsSay) {
  CheckCases([this](Random &random) {
    const StoredImage storage = AnyImage(random);
    const auto image = AnyOddView(random, storage);
    const Bytes before = storage.Bytes();
    const int32_t move = random.Between(0, 2);
    (move == 0 ? HMirrorSelf : move == 1 ? VMirrorSelf : Rotate180Self)(image);
    const Bytes moved = storage.Bytes();
    storage.SetBytes(before);
    if (move == 0) {
      naive::HMirror(*RecordOf(image));
    } else {
      naive::ExchangeHalves(*RecordOf(image), move == 2);
    }
    RC_ASSERT(moved == storage.Bytes());
  });
}

struct AnyTurn {
  explicit AnyTurn(Random &random) : which(random.Between(0, 4)) {}

  REALobject operator()(REALobject source, REALobject dest) const {
    constexpr REALobject (*kTurns[])(REALobject, REALobject) = {Rotate180, Rotate90, Rotate90fast, Rotate270,
                                                                Rotate270fast};
    return kTurns[which](source, dest);
  }
  bool ExchangesSides() const { return which != 0; }
  void Naive(ImageClassData &source, ImageClassData &dest) const {
    if (which == 0) {
      naive::HalfTurn(source, dest);
    } else {
      naive::QuarterTurn(source, dest, which < 3, which % 2 == 0 ? naive::TileEdge(source, dest) : 0);
    }
  }

  int32_t which;
};

TEST_F(MovesProperty, AnyImageTurnedIntoAnyOtherGivesThePlainBytes) {
  CheckCases([this](Random &random) {
    const AnyTurn turn(random);
    const StoredImage from = AnyImage(random);
    const auto source = AnyOddView(random, from);
    const ImageClassData &record = *RecordOf(source);
    int32_t width = turn.ExchangesSides() ? record.Height : record.Width;
    int32_t height = turn.ExchangesSides() ? record.Width : record.Height;
    if (random.OneIn(3)) width += random.Between(0, 4);
    if (random.OneIn(3)) height += random.Between(0, 4);
    // A view may be too small: then all the bytes that its rows are said to have must be there.
    const bool isView = random.OneIn(2);
    const int32_t format = random.OneIn(2) ? from.Record().ImageFormat : AnyMovedFormat(random);
    const StoredImage to = AnyStored(random, host_, AnyKind(random), width, height, format, !isView);
    const auto dest = isView ? AnyOddView(random, to) : to.Image();
    const Bytes before = to.Bytes(), sourceBytes = from.Bytes();
    RC_ASSERT((Adopt(turn(source, dest)).Handle() == dest.Handle()));
    const Bytes turned = to.Bytes();
    RC_ASSERT(from.Bytes() == sourceBytes);
    to.SetBytes(before);
    turn.Naive(*RecordOf(source), *RecordOf(dest));
    RC_ASSERT(turned == to.Bytes());
  });
}

TEST_F(MovesProperty, AnyImageTurnedIntoANewOneGivesThePlainBytes) {
  CheckCases([this](Random &random) {
    const AnyTurn turn(random);
    const StoredImage from = AnyImage(random);
    const auto source = AnyOddView(random, from);
    ImageClassData &record = *RecordOf(source);
    const auto turned = Adopt(turn(source, nullptr));
    const auto expected = NewImage(host_, turn.ExchangesSides() ? record.Height : record.Width,
                                   turn.ExchangesSides() ? record.Width : record.Height, record.ImageFormat);
    turn.Naive(record, *RecordOf(expected));
    const ImageClassData &a = *RecordOf(turned), &b = *RecordOf(expected);
    RC_ASSERT(a.ImageFormat == b.ImageFormat && a.Width == b.Width && a.Height == b.Height);
    RC_ASSERT(std::equal(a.Buffer, a.Buffer + a.TotalSize, b.Buffer));
  });
}

TEST_F(MovesProperty, ViewsOfOneStorageTurnedIntoEachOtherGiveThePlainBytes) {
  CheckCases([this](Random &random) {
    const AnyTurn turn(random);
    const int32_t width = random.Between(1, 14), height = random.Between(1, 14);
    const StoredImage storage = AnyStored(random, host_, AnyKind(random), width, height, AnyMovedFormat(random), false);
    const auto source = AnyOddView(random, storage);
    const auto dest = random.OneIn(2) ? source : AnyOddView(random, storage);
    const Bytes before = storage.Bytes();
    Adopt(turn(source, dest));
    const Bytes turned = storage.Bytes();
    storage.SetBytes(before);
    turn.Naive(*RecordOf(source), *RecordOf(dest));
    RC_ASSERT(turned == storage.Bytes());
  });
}

TEST_F(MovesProperty, ImagesOverTheSameBytesTurnedIntoEachOtherGiveThePlainBytes) {
  CheckCases([this](Random &random) {
    const AnyTurn turn(random);
    const int32_t width = random.Between(6, 30), height = random.Between(2, 20);
    const StoredImage storage = AnyStored(random, host_, Kind::Block, width, height, ImageFormatRGBA);
    const auto source = AnyImageOver(random, host_, storage), dest = AnyImageOver(random, host_, storage);
    const Bytes before = storage.Bytes();
    Adopt(turn(source, dest));
    const Bytes turned = storage.Bytes();
    storage.SetBytes(before);
    turn.Naive(*RecordOf(source), *RecordOf(dest));
    RC_ASSERT(turned == storage.Bytes());
    storage.SetBytes(before);
    const int32_t move = random.Between(0, 2);
    (move == 0 ? HMirrorSelf : move == 1 ? VMirrorSelf : Rotate180Self)(dest);
    const Bytes moved = storage.Bytes();
    storage.SetBytes(before);
    if (move == 0) {
      naive::HMirror(*RecordOf(dest));
    } else {
      naive::ExchangeHalves(*RecordOf(dest), move == 2);
    }
    RC_ASSERT(moved == storage.Bytes());
  });
}

TEST_F(MovesProperty, MovesThatUndoEachOtherGiveBackTheImage) {
  CheckCases([this](Random &random) {
    const StoredImage storage = AnyStoredOf(random, random.Of(kFamilyFormats));
    RC_PRE(storage.Record().RowSize > 0);  // others are not mirrored top to bottom
    const Bytes before = storage.Bytes();
    const auto samples = [](const Owned<Object> &image) {
      std::vector<std::vector<Bytes>> grids;
      for (const char letter : ChannelsOf(*RecordOf(image))) grids.push_back(Grid(image, letter));
      return grids;
    };
    const auto original = samples(storage.Image());
    const auto left = Adopt((random.OneIn(2) ? Rotate90 : Rotate90fast)(storage.Image(), nullptr));
    RC_ASSERT(samples(Adopt((random.OneIn(2) ? Rotate270 : Rotate270fast)(left, nullptr))) == original);
    const auto half = Adopt(Rotate180(storage.Image(), nullptr));
    RC_ASSERT(samples(Adopt((random.OneIn(2) ? Rotate90 : Rotate90fast)(left, nullptr))) == samples(half));
    RC_ASSERT(samples(Adopt(Rotate180(half, nullptr))) == original);
    HMirrorSelf(storage.Image());
    VMirrorSelf(storage.Image());
    RC_ASSERT(samples(storage.Image()) == samples(half));
    HMirrorSelf(storage.Image());
    VMirrorSelf(storage.Image());
    RC_ASSERT(storage.Bytes() == before);
  });
}

}  // namespace
}  // namespace zvk::geometry
