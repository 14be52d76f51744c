// Random mirrors and turns of random images, against the plain loops: every byte of every storage.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdint>
#include <memory>
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
  std::unique_ptr<Storage> AnyStorage(Kind kind, int32_t width, int32_t height, int32_t format, int32_t gap) {
    return std::make_unique<Storage>(host_, kind, width, height, format, gap, OneIn(4),
                                     static_cast<uint32_t>(Any(0, 1000000)));
  }
  std::unique_ptr<Storage> AnyStorage() { return AnyStorage(AnyKind(), AnySide(), AnySide(), AnyFormat(), Any(0, 5)); }

  PluginHost host_{{.fenced = true}};
};

TEST_F(MovesProperty, AnyImageIsMirroredInPlaceAsThePlainLoopsSay) {
  EXPECT_TRUE(rc::check([this] {
    const auto storage = AnyStorage();
    const auto image = AnyView(storage->image);
    const Bytes before = storage->All();
    const int32_t move = Any(0, 2);
    (move == 0 ? HMirrorSelf : move == 1 ? VMirrorSelf : Rotate180Self)(image);
    const Bytes moved = storage->All();
    storage->Put(before);
    if (move == 0) {
      naive::HMirror(*RecordOf(image));
    } else {
      naive::ExchangeHalves(*RecordOf(image), move == 2);
    }
    RC_ASSERT(moved == storage->All());
  }));
}

struct AnyTurn {
  AnyTurn() : which(Any(0, 4)) {}

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
  EXPECT_TRUE(rc::check([this] {
    const AnyTurn turn;
    const auto from = AnyStorage();
    const auto source = AnyView(from->image);
    const ImageClassData &record = *RecordOf(source);
    int32_t width = turn.ExchangesSides() ? record.Height : record.Width;
    int32_t height = turn.ExchangesSides() ? record.Width : record.Height;
    if (OneIn(3)) width += Any(0, 4);
    if (OneIn(3)) height += Any(0, 4);
    // A view may be too small: then all the bytes that its rows are said to have must be there.
    const bool isView = OneIn(2);
    const auto to = AnyStorage(AnyKind(), width, height, OneIn(2) ? from->Record().ImageFormat : AnyFormat(),
                               isView ? 0 : Any(0, 5));
    const auto dest = isView ? AnyView(to->image) : to->image;
    const Bytes before = to->All(), sourceBytes = from->All();
    RC_ASSERT((Adopt(turn(source, dest)).Handle() == dest.Handle()));
    const Bytes turned = to->All();
    RC_ASSERT(from->All() == sourceBytes);
    to->Put(before);
    turn.Naive(*RecordOf(source), *RecordOf(dest));
    RC_ASSERT(turned == to->All());
  }));
}

TEST_F(MovesProperty, AnyImageTurnedIntoANewOneGivesThePlainBytes) {
  EXPECT_TRUE(rc::check([this] {
    const AnyTurn turn;
    const auto from = AnyStorage();
    const auto source = AnyView(from->image);
    ImageClassData &record = *RecordOf(source);
    const auto turned = Adopt(turn(source, nullptr));
    const auto expected = NewImage(host_, turn.ExchangesSides() ? record.Height : record.Width,
                                   turn.ExchangesSides() ? record.Width : record.Height, record.ImageFormat);
    turn.Naive(record, *RecordOf(expected));
    const ImageClassData &a = *RecordOf(turned), &b = *RecordOf(expected);
    RC_ASSERT(a.ImageFormat == b.ImageFormat && a.Width == b.Width && a.Height == b.Height);
    RC_ASSERT(std::equal(a.Buffer, a.Buffer + a.TotalSize, b.Buffer));
  }));
}

TEST_F(MovesProperty, ViewsOfOneStorageTurnedIntoEachOtherGiveThePlainBytes) {
  EXPECT_TRUE(rc::check([this] {
    const AnyTurn turn;
    const auto storage = AnyStorage(AnyKind(), Any(1, 14), Any(1, 14), AnyFormat(), 0);
    const auto source = AnyView(storage->image);
    const auto dest = OneIn(2) ? source : AnyView(storage->image);
    const Bytes before = storage->All();
    Adopt(turn(source, dest));
    const Bytes turned = storage->All();
    storage->Put(before);
    turn.Naive(*RecordOf(source), *RecordOf(dest));
    RC_ASSERT(turned == storage->All());
  }));
}

TEST_F(MovesProperty, ImagesOverTheSameBytesTurnedIntoEachOtherGiveThePlainBytes) {
  EXPECT_TRUE(rc::check([this] {
    const AnyTurn turn;
    const auto storage = AnyStorage(Kind::Block, Any(6, 30), Any(2, 20), ImageFormatRGBA, Any(0, 5));
    const auto source = AnyImageOver(host_, *storage), dest = AnyImageOver(host_, *storage);
    const Bytes before = storage->All();
    Adopt(turn(source, dest));
    const Bytes turned = storage->All();
    storage->Put(before);
    turn.Naive(*RecordOf(source), *RecordOf(dest));
    RC_ASSERT(turned == storage->All());
    storage->Put(before);
    const int32_t move = Any(0, 2);
    (move == 0 ? HMirrorSelf : move == 1 ? VMirrorSelf : Rotate180Self)(dest);
    const Bytes moved = storage->All();
    storage->Put(before);
    if (move == 0) {
      naive::HMirror(*RecordOf(dest));
    } else {
      naive::ExchangeHalves(*RecordOf(dest), move == 2);
    }
    RC_ASSERT(moved == storage->All());
  }));
}

TEST_F(MovesProperty, MovesThatUndoEachOtherGiveBackTheImage) {
  EXPECT_TRUE(rc::check([this] {
    const auto storage = AnyStorage(AnyKind(), AnySide(), AnySide(), AnyFamilyFormat(), Any(0, 5));
    RC_PRE(storage->Record().RowSize > 0);  // others are not mirrored top to bottom
    const Bytes before = storage->All();
    const auto samples = [](const Owned<Object> &image) {
      std::vector<std::vector<Bytes>> grids;
      for (const char letter : ChannelsOf(*RecordOf(image))) grids.push_back(Grid(image, letter));
      return grids;
    };
    const auto original = samples(storage->image);
    const auto left = Adopt((OneIn(2) ? Rotate90 : Rotate90fast)(storage->image, nullptr));
    RC_ASSERT(samples(Adopt((OneIn(2) ? Rotate270 : Rotate270fast)(left, nullptr))) == original);
    const auto half = Adopt(Rotate180(storage->image, nullptr));
    RC_ASSERT(samples(Adopt((OneIn(2) ? Rotate90 : Rotate90fast)(left, nullptr))) == samples(half));
    RC_ASSERT(samples(Adopt(Rotate180(half, nullptr))) == original);
    HMirrorSelf(storage->image);
    VMirrorSelf(storage->image);
    RC_ASSERT(samples(storage->image) == samples(half));
    HMirrorSelf(storage->image);
    VMirrorSelf(storage->image);
    RC_ASSERT(storage->All() == before);
  }));
}

}  // namespace
}  // namespace zvk::geometry
