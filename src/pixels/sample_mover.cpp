#include "pixels/sample_mover.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "pixels/loop_steps.h"
#include "pixels/overlap.h"

namespace zvk::pixels {

// --- reach ---

int32_t PixelReach::PixelsPerShuffle(int32_t shuffleBytes) const {
  const int64_t span = offsets.Span();
  return span <= shuffleBytes ? static_cast<int32_t>(shuffleBytes - span) / pixelSize + 1 : 0;
}

int32_t PixelReach::LastShuffle(int32_t width) const {
  return width - 1 - (kShuffleBytes - static_cast<int32_t>(offsets.Span()) + pixelSize - 1) / pixelSize;
}

bool RowsOverlap(const uint8_t *row, const PixelReach &reach, const uint8_t *otherRow, const PixelReach &otherReach,
                 int32_t width) {
  return RunsOverlap(row + reach.First(), reach.Size(width), otherRow + otherReach.First(), otherReach.Size(width));
}

// --- settling ---

namespace {

PixelReach ReachOf(int32_t pixelSize, std::span<const SampleMove> moves, int32_t SampleMove::*offset) {
  std::array<int32_t, SampleMover::kMost> offsets{};
  std::ranges::transform(moves, offsets.begin(), offset);
  return {pixelSize, RangeOf(std::span(offsets).first(moves.size()))};
}

// True if the same is stored whatever the sample is.
bool IsConstant(const SampleMove &move) { return move.zero || move.full; }

// What is exclusive-ored with the sample, or with 0 in place of it.
uint8_t FlippedBits(const SampleMove &move) { return move.full || (move.complement && !move.zero) ? 0xFF : 0; }

}  // namespace

SampleMover::SampleMover(int32_t sourcePixelSize, int32_t destPixelSize, std::span<const SampleMove> moves,
                         int32_t shuffleBytes)
    : count_(moves.size()),
      source_(ReachOf(sourcePixelSize, moves, &SampleMove::from)),
      dest_(ReachOf(destPixelSize, moves, &SampleMove::to)) {
  std::ranges::copy(moves, moves_.begin());
  shuffle_ = MakeShuffle(shuffleBytes);
  wholePixels_ = MovesWholePixels();
}

SampleMover::Shuffle SampleMover::MakeShuffle(int32_t shuffleBytes) const {
  constexpr uint8_t kZero = 0x80;
  Shuffle shuffle;
  shuffle.bytes = shuffleBytes;
  shuffle.from.fill(kZero);
  shuffle.complement.fill(0);
  shuffle.keep.fill(0xFF);
  // Where a sample lies among those of the next pixel, only the plain order will do.
  const bool apart = PixelsAreApart(dest_.offsets, dest_.pixelSize);
  shuffle.pixels = apart ? std::min(source_.PixelsPerShuffle(shuffleBytes), dest_.PixelsPerShuffle(shuffleBytes)) : 0;
  for (int32_t pixel = 0; pixel < shuffle.pixels; ++pixel) {
    for (const SampleMove &move : std::span(moves_).first(count_)) {
      const auto byte = static_cast<size_t>(pixel * dest_.pixelSize + move.to - dest_.offsets.lowest);
      shuffle.from[byte] = IsConstant(move)
                               ? kZero
                               : static_cast<uint8_t>(pixel * source_.pixelSize + move.from - source_.offsets.lowest);
      shuffle.complement[byte] = FlippedBits(move);
      shuffle.keep[byte] = 0;
    }
  }
  const auto bytesOfPixels = static_cast<size_t>(shuffle.pixels) * dest_.pixelSize;
  shuffle.keepsNothing =
      dest_.offsets.Span() == dest_.pixelSize &&
      std::ranges::all_of(std::span(shuffle.keep).first(bytesOfPixels), [](uint8_t bits) { return bits == 0; });
  return shuffle;
}

// True if pixels without gaps are copied as they are.
bool SampleMover::MovesWholePixels() const {
  std::array<int32_t, kMost> written{};
  std::ranges::transform(moves_, written.begin(), &SampleMove::to);
  return source_.pixelSize == dest_.pixelSize && count_ == static_cast<size_t>(dest_.pixelSize) &&
         SamplesAreSideBySide(std::span(written).first(count_)) &&
         std::ranges::all_of(std::span(moves_).first(count_), [this](const SampleMove &move) {
           return move.from - source_.offsets.lowest == move.to - dest_.offsets.lowest && !move.complement &&
                  !IsConstant(move);
         });
}

// --- moving ---

void SampleMover::operator()(const uint8_t *source, uint8_t *dest, int32_t width) const {
  if (width < 1) return;
  if (RowsOverlap(source, source_, dest, dest_, width)) {
    MoveInOrder(source, dest, width);
  } else if (wholePixels_) {
    std::memcpy(dest + dest_.offsets.lowest, source + source_.offsets.lowest,
                static_cast<size_t>(width) * dest_.pixelSize);
  } else {
    const ptrdiff_t moved = MoveShuffled(source, dest, width);
    MoveInOrder(source + moved * source_.pixelSize, dest + moved * dest_.pixelSize, width - moved);
  }
}

template <size_t kCount>
void SampleMover::MoveCountInOrder(const uint8_t *source, uint8_t *dest, int32_t width) const {
  std::array<ptrdiff_t, kCount> from, to;
  std::array<uint8_t, kCount> kept, flipped;
  for (size_t i = 0; i < kCount; ++i) {
    from[i] = moves_[i].from;
    to[i] = moves_[i].to;
    kept[i] = IsConstant(moves_[i]) ? 0 : 0xFF;
    flipped[i] = FlippedBits(moves_[i]);
  }
  const ptrdiff_t sourcePixelSize = source_.pixelSize, destPixelSize = dest_.pixelSize;
  for (int32_t x = 0; x < width; ++x) {
    std::array<uint8_t, kCount> samples;
    for (size_t i = 0; i < kCount; ++i) samples[i] = (source[from[i]] & kept[i]) ^ flipped[i];
    for (size_t i = 0; i < kCount; ++i) dest[to[i]] = samples[i];
    source += sourcePixelSize;
    dest += destPixelSize;
    OneStepAtATime();  // the compiler cannot tell by addresses whether two mappings of a file overlap
  }
}

void SampleMover::MoveInOrder(const uint8_t *source, uint8_t *dest, int32_t width) const {
  switch (count_) {
    case 1:
      return MoveCountInOrder<1>(source, dest, width);
    case 2:
      return MoveCountInOrder<2>(source, dest, width);
    case 3:
      return MoveCountInOrder<3>(source, dest, width);
    case 4:
      return MoveCountInOrder<4>(source, dest, width);
    default:
      return MoveCountInOrder<5>(source, dest, width);
  }
}

int32_t SampleMover::MoveShuffled(const uint8_t *source, uint8_t *dest, int32_t width) const {
  if (shuffle_.pixels < 2) return 0;
  if (shuffle_.bytes == kWideShuffleBytes) {
    ShuffleWide(source + source_.offsets.lowest, dest + dest_.offsets.lowest, width);
    return width;
  }
  const int32_t last = std::min(source_.LastShuffle(width), dest_.LastShuffle(width));
  if (last < 0) return 0;
  const int32_t steps = last / shuffle_.pixels + 1;
  if (shuffle_.keepsNothing) {
    ShuffleOver(source + source_.offsets.lowest, dest + dest_.offsets.lowest, steps);
  } else {
    ShuffleInto(source + source_.offsets.lowest, dest + dest_.offsets.lowest, steps);
  }
  return steps * shuffle_.pixels;
}

// Writes all bytes of the pixels, and zeros behind the last pixel of a step: they lie in pixels that are still to come.
ZVK_BYTE_SHUFFLE void SampleMover::ShuffleOver(const uint8_t *source, uint8_t *dest, int32_t steps) const {
  const __m128i from = LoadBytes(shuffle_.from.data()), complement = LoadBytes(shuffle_.complement.data());
  const ptrdiff_t sourceStep = ptrdiff_t{source_.pixelSize} * shuffle_.pixels;
  const ptrdiff_t destStep = ptrdiff_t{dest_.pixelSize} * shuffle_.pixels;
  for (int32_t step = 0; step < steps; ++step) {
    StoreBytes(dest, _mm_xor_si128(_mm_shuffle_epi8(LoadBytes(source), from), complement));
    source += sourceStep;
    dest += destStep;
  }
}

// Writes some bytes of the pixels and leaves the others as they are.
ZVK_BYTE_SHUFFLE void SampleMover::ShuffleInto(const uint8_t *source, uint8_t *dest, int32_t steps) const {
  const __m128i from = LoadBytes(shuffle_.from.data()), complement = LoadBytes(shuffle_.complement.data());
  const __m128i keep = LoadBytes(shuffle_.keep.data());
  const ptrdiff_t sourceStep = ptrdiff_t{source_.pixelSize} * shuffle_.pixels;
  const ptrdiff_t destStep = ptrdiff_t{dest_.pixelSize} * shuffle_.pixels;
  // The old bytes are loaded a step ahead: a load that covers half of the store before it would have to wait for it.
  __m128i old = LoadBytes(dest);
  for (int32_t step = 1; step <= steps; ++step) {
    const __m128i moved = _mm_xor_si128(_mm_shuffle_epi8(LoadBytes(source), from), complement);
    const __m128i bytes = _mm_or_si128(moved, _mm_and_si128(old, keep));
    if (step < steps) old = LoadBytes(dest + destStep);
    StoreBytes(dest, bytes);
    source += sourceStep;
    dest += destStep;
  }
}

namespace {

// As many bits as there are bytes, up to 64, the lowest ones.
uint64_t LowestBits(ptrdiff_t count) { return count < 64 ? (uint64_t{1} << count) - 1 : ~uint64_t{0}; }

}  // namespace

// Reads and writes the bytes of whole pixels and no other, so it may go to the very end of a row. The last step ends
// there, over pixels that have been moved already.
ZVK_WIDE_SHUFFLE void SampleMover::ShuffleWide(const uint8_t *source, uint8_t *dest, int32_t width) const {
  const int32_t pixels = std::min(shuffle_.pixels, width);
  const __m512i from = _mm512_load_si512(shuffle_.from.data());
  const __m512i complement = _mm512_load_si512(shuffle_.complement.data());
  const __mmask64 read = LowestBits(source_.Size(pixels));
  const __mmask64 sampled = ~_mm512_movepi8_mask(from);
  const __mmask64 written =
      ~_mm512_movepi8_mask(_mm512_load_si512(shuffle_.keep.data())) & LowestBits(dest_.Size(pixels));
  const ptrdiff_t sourceStep = ptrdiff_t{source_.pixelSize} * pixels;
  const ptrdiff_t destStep = ptrdiff_t{dest_.pixelSize} * pixels;
  const uint8_t *const lastSource = source + ptrdiff_t{source_.pixelSize} * (width - pixels);
  uint8_t *const lastDest = dest + ptrdiff_t{dest_.pixelSize} * (width - pixels);
  for (int32_t steps = (width - 1) / pixels + 1; steps > 0; --steps) {
    const __m512i bytes = _mm512_maskz_loadu_epi8(read, source);
    const __m512i moved = _mm512_xor_si512(_mm512_maskz_permutexvar_epi8(sampled, from, bytes), complement);
    _mm512_mask_storeu_epi8(dest, written, moved);
    source = steps > 2 ? source + sourceStep : lastSource;
    dest = steps > 2 ? dest + destStep : lastDest;
  }
}

}  // namespace zvk::pixels
