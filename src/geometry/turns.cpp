#include "geometry/turns.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "geometry/pixel_access.h"
#include "geometry/pixel_mover.h"
#include "image/file_storage.h"
#include "image/image_storage.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"

namespace zvk::geometry {

namespace {

using enum ColourFamily;

// Indices from first up to, not including, end.
struct Range {
  int32_t first;
  int32_t end;

  Range CutTo(const Range &other) const { return {std::max(first, other.first), std::min(end, other.end)}; }
};

// Where the columns or the rows of the source go: to the same places along a side of dest, or to those in reverse.
struct Course {
  int32_t count;
  bool reversed;

  int32_t operator()(int32_t i) const { return reversed ? count - 1 - i : i; }
  // The indices that go to places from 0 to limit - 1.
  Range Landing(int32_t limit) const {
    return reversed ? Range{std::max(0, count - limit), count} : Range{0, std::min(count, limit)};
  }
};

// --- a dest that is too small ---

// Nobody checks the size of a dest: what is moved beyond its sides goes into the image behind it, if it is a part of
// one. Only where there is no storage any more it is left out. So many columns and rows there are from its upper left
// pixel on: at least its own, then those whose samples lie within RowSize, and the rows of the storage.

template <class L>
int32_t StoredColumns(const ImageClassData &dest) {
  const int64_t room = std::abs(int64_t{dest.RowSize}) - 1 - RangeOf(L::OffsetsOf(dest)).highest;
  return room < 0 ? dest.Width : static_cast<int32_t>(std::max<int64_t>(dest.Width, room / dest.PixelSize + 1));
}

int32_t StoredRows(const ImageClassData &dest) {
  if (dest.RowTable != nullptr) return dest.Height;
  const bool mirrored = dest.GetRow == GetRowLinearMirrored || dest.GetRow == GetRowMappingMirrored;
  const int64_t rows =
      mirrored ? int64_t{dest.RowOffset} + dest.Height : int64_t{dest.UnclippedHeight} - dest.RowOffset;
  return static_cast<int32_t>(std::max<int64_t>(dest.Height, rows));
}

// True if pixels may be moved by runs and in any order, to `columns` and `rows` of dest.
template <class L>
bool MayMoveRuns(const ImageClassData &source, const ImageClassData &dest, int32_t columns, int32_t rows) {
  return PixelsAreApart<L>(source) && OrderIsUnobservable<L>(source, dest, columns, rows);
}

// --- half a turn ---

// Rows of which both images hold so many at a time: where the one walks down its file the other walks up, and a block
// is best moved for many rows at once.
constexpr int32_t kHeldRows = 64;

template <class L>
void HalfTurn(ImageClassData &source, ImageClassData &dest) {
  const Course destColumnOf{source.Width, true};
  const Course destRowOf{source.Height, true};
  const Range columns = destColumnOf.Landing(StoredColumns<L>(dest));
  const Range rows = destRowOf.Landing(StoredRows(dest));
  const PixelMover mover(L{}, source, dest);
  const auto from = AccessTo<L>(source);
  const auto to = AccessTo<L>(dest);
  const auto moveByPixels = [&](const Range &part) {
    for (int32_t y = part.first; y < part.end; ++y) {
      HeldRow sourceRow(source, y, dest), destRow(dest, destRowOf(y), source);
      if (!sourceRow || !destRow) continue;
      for (int32_t x = columns.end - 1; x >= columns.first; --x) {
        if (sourceRow.Again() == nullptr) break;
        const auto samples = from.Read(sourceRow.Get(), x);
        if (destRow.Again() == nullptr) break;
        to.Write(destRow.Get(), destColumnOf(x), samples);
      }
    }
  };
  if (!MayMoveRuns<L>(source, dest, source.Width, source.Height)) return moveByPixels(rows);

  const int32_t most = std::min({kHeldRows, RowsAtATime(source), RowsAtATime(dest)});
  for (int32_t y = rows.first, count = 0; y < rows.end; y += count) {
    count = std::min(most, rows.end - y);
    uint8_t *sourceRows[kHeldRows], *destRows[kHeldRows];
    if (!FetchRows(source, y, count, sourceRows) || !FetchRows(dest, destRowOf(y + count - 1), count, destRows)) {
      moveByPixels({y, y + count});
      continue;
    }
    for (int32_t i = 0; i < count; ++i) {
      mover.Reverse(mover.SourceAt(sourceRows[i], 0), mover.DestAt(destRows[count - 1 - i], 0), source.Width);
    }
  }
}

// --- quarter turns ---

enum class Direction : uint8_t { Left, Right };

// A part of the source.
struct Tile {
  Range columns;
  Range rows;
};

template <class L>
class QuarterTurn {
 public:
  QuarterTurn(ImageClassData &source, ImageClassData &dest, Direction direction)
      : source_(source),
        dest_(dest),
        from_(AccessTo<L>(source)),
        to_(AccessTo<L>(dest)),
        destRowOf_{source.Width, direction == Direction::Left},
        destColumnOf_{source.Height, direction == Direction::Right},
        landing_{destRowOf_.Landing(StoredRows(dest)), destColumnOf_.Landing(StoredColumns<L>(dest))} {}

  // The whole image in the given order of tiles, which are squares of edge `edge`, or one tile for 0.
  void Move(int32_t edge) {
    if (MayMoveRuns<L>(source_, dest_, source_.Height, source_.Width)) {
      MoveInBlocks();
    } else if (edge > 0) {
      MoveInTiles(edge);
    } else {
      MoveTile(landing_);
    }
  }

 private:
  // Row by row and pixel by pixel, the dest row fetched for every pixel.
  void MoveTile(const Tile &tile) {
    for (int32_t y = tile.rows.first; y < tile.rows.end; ++y) {
      HeldRow sourceRow(source_, y, dest_);
      for (int32_t x = tile.columns.first; x < tile.columns.end; ++x) {
        if (sourceRow.Again() == nullptr) break;
        const auto samples = from_.Read(sourceRow.Get(), x);
        uint8_t *destRow = FetchRow(dest_, destRowOf_(x));
        if (destRow != nullptr) to_.Write(destRow, destColumnOf_(y), samples);
      }
    }
  }

  void MoveInTiles(int32_t edge) {
    for (int64_t top = 0; top < source_.Height; top += edge) {
      for (int64_t left = 0; left < source_.Width; left += edge) {
        MoveTile({TilePart(left, edge, source_.Width).CutTo(landing_.columns),
                  TilePart(top, edge, source_.Height).CutTo(landing_.rows)});
      }
    }
  }

  static Range TilePart(int64_t first, int32_t edge, int32_t size) {
    return {static_cast<int32_t>(first), static_cast<int32_t>(std::min<int64_t>(first + edge, size))};
  }

  // In any order. The whole image at once where rows stay where they are; in a file, tiles of which the rows of either
  // side are mapped at the same time.
  void MoveInBlocks() {
    const PixelMover mover(L{}, source_, dest_);
    const auto [columns, rows] = landing_;
    const int32_t sourceRows = RowsAtATime(source_), destRows = RowsAtATime(dest_);
    for (int64_t left = columns.first; left < columns.end; left += destRows) {
      for (int64_t top = rows.first; top < rows.end; top += sourceRows) {
        const Tile tile{TilePart(left, destRows, columns.end), TilePart(top, sourceRows, rows.end)};
        GatherRows(source_, tile.rows.first, tile.rows.end - tile.rows.first);
        GatherRows(dest_, FirstOf(destRowOf_, tile.columns), tile.columns.end - tile.columns.first);
        MoveInBlocks(mover, tile);
      }
    }
  }

  // Blocks of which both sides lie in the cache, one below the other.
  void MoveInBlocks(const PixelMover &mover, const Tile &whole) {
    constexpr int32_t kEdge = PixelMover::kBlockEdge;
    const auto [columns, rows] = whole;
    for (int64_t left = columns.first; left < columns.end; left += kEdge) {
      for (int64_t top = rows.first; top < rows.end; top += kEdge) {
        const Tile tile{TilePart(left, kEdge, columns.end), TilePart(top, kEdge, rows.end)};
        if (!MoveBlock(mover, tile)) MoveTile(tile);
      }
    }
  }

  // The lowest of the places to which a part of the columns or rows goes.
  static int32_t FirstOf(const Course &course, const Range &part) {
    return std::min(course(part.first), course(part.end - 1));
  }

  // False, with nothing done, if one of the rows cannot be had.
  bool MoveBlock(const PixelMover &mover, const Tile &tile) {
    const auto [columns, rows] = tile;
    const int32_t height = rows.end - rows.first, width = columns.end - columns.first;
    const int32_t firstRow = FirstOf(destRowOf_, columns), firstColumn = FirstOf(destColumnOf_, rows);
    uint8_t *fetchedSource[PixelMover::kBlockEdge], *fetchedDest[PixelMover::kBlockEdge];
    if (!FetchRows(source_, rows.first, height, fetchedSource) || !FetchRows(dest_, firstRow, width, fetchedDest)) {
      return false;
    }
    // In the order of their columns in dest.
    const uint8_t *sourceRows[PixelMover::kBlockEdge] = {};
    uint8_t *destRows[PixelMover::kBlockEdge] = {};
    for (int32_t i = 0; i < height; ++i) {
      sourceRows[destColumnOf_(rows.first + i) - firstColumn] = mover.SourceAt(fetchedSource[i], columns.first);
    }
    for (int32_t i = 0; i < width; ++i) {
      destRows[i] = mover.DestAt(fetchedDest[destRowOf_(columns.first + i) - firstRow], firstColumn);
    }
    mover.Transpose({sourceRows, destRows, width, height});
    return true;
  }

  ImageClassData &source_;
  ImageClassData &dest_;
  PixelAccess<L::channelCount> from_;
  PixelAccess<L::channelCount> to_;
  Course destRowOf_;
  Course destColumnOf_;
  Tile landing_;
};

enum class Form : uint8_t { Plain, Tiled };

template <Direction kDirection, Form kForm>
REALobject TurnQuarter(REALobject instance, REALobject dest) {
  return RunFilter(instance, dest, NewDest::ExchangedSides, [](ImageClassData &source, ImageClassData &target) {
    int32_t edge = 0;
    if constexpr (kForm == Form::Tiled) {
      // Makes sure that both have a block.
      FetchRow(target, 0);
      FetchRow(source, 0);
      // With 2 rows less than a block, the rows that the mapping puts in front of a fetched one find room as well. At
      // or below 0, for low images and for views in memory, there is no tile that would get anywhere: the edge is that
      // of the plain form.
      edge = std::max(std::min(source.MappedRowCount, target.MappedRowCount) - 2, 0);
    }
    VisitLayout<Gray, RGB, CMYK>(source, [&]<class L>(L) { QuarterTurn<L>(source, target, kDirection).Move(edge); });
  });
}

}  // namespace

REALobject Rotate180(REALobject instance, REALobject dest) {
  return RunFilter(instance, dest, NewDest::SameSize, [](ImageClassData &source, ImageClassData &target) {
    VisitLayout<Gray, RGB, CMYK>(source, [&]<class L>(L) { HalfTurn<L>(source, target); });
  });
}

// The names cross on purpose: what the host calls "Rotate90" is the tiled form, and the plain one is "Rotate90slow".
REALobject Rotate90fast(REALobject instance, REALobject dest) {
  return TurnQuarter<Direction::Left, Form::Tiled>(instance, dest);
}
REALobject Rotate90(REALobject instance, REALobject dest) {
  return TurnQuarter<Direction::Left, Form::Plain>(instance, dest);
}
REALobject Rotate270fast(REALobject instance, REALobject dest) {
  return TurnQuarter<Direction::Right, Form::Tiled>(instance, dest);
}
REALobject Rotate270(REALobject instance, REALobject dest) {
  return TurnQuarter<Direction::Right, Form::Plain>(instance, dest);
}

}  // namespace zvk::geometry
