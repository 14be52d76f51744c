#include "filters/matrix_line_sums.h"

#include <algorithm>

namespace zvk::filters {

namespace {

// What the sum of samples may be.
struct Range {
  int64_t lowest = 0;
  int64_t highest = 0;

  void Add(int32_t weight) { (weight < 0 ? lowest : highest) += int64_t{255} * weight; }
  // 16 bits tell all values apart.
  bool IsNarrow() const { return highest - lowest < 65536; }
};

Range RangeOf(const MatrixTerms &terms) {
  Range range;
  for (const MatrixTerm &term : terms.All()) range.Add(term.weight);
  return range;
}

Range RangeOfColumn(const MatrixTerms &terms, const MatrixFactors &factors) {
  Range range;
  for (int32_t i = 0; i < terms.RowCount(); ++i) range.Add(factors.ColumnWeight(i));
  return range;
}

// A weight is 65536 x its upper part and the lower one, which has a sign.
constexpr int32_t LowerPart(int32_t weight) { return static_cast<int16_t>(weight); }
constexpr int32_t UpperPart(int32_t weight) { return (weight - LowerPart(weight)) >> 16; }

}  // namespace

LineSums::LineSums(const MatrixTerms &terms, const MatrixResult &result, const LineShape &shape, int64_t count,
                   int32_t slots)
    : terms_(terms),
      shape_(shape),
      count_(count),
      factors_(MatrixFactors::Of(terms)),
      form_(FormOf()),
      scaling_(result, RangeOf(terms).lowest, RangeOf(terms).highest, form_ == Form::Words),
      stride_(shape.length + kPairsBehind),
      weighted_(std::max<int64_t>(static_cast<int64_t>(terms.All().size()), 1)) {
  if (form_ == Form::Words) return;
  const auto termCount = std::max<int64_t>(static_cast<int64_t>(terms.All().size()), 1);
  entries_ = ZeroedBuffer<PairEntry>(termCount);
  high_ = ZeroedBuffer<WeightedPairs>(2 * termCount);
  low_ = ZeroedBuffer<WeightedPairs>(termCount);
  rows_ = ZeroedBuffer<int32_t>(slots);
  pairs_ = ZeroedBuffer<Pair>((form_ == Form::Pairs ? slots : 2) * stride_);
  if (form_ == Form::NarrowColumns) words_ = ZeroedBuffer<uint16_t>(shape.length);
  if (form_ == Form::Columns) sums_ = ZeroedBuffer<int32_t>(shape.length);
  if (!*this) return;

  if (form_ == Form::Pairs) {
    for (int32_t i = 0; i < terms.RowCount(); ++i) ListPairs(i);
    return;
  }
  ListPairs(factors_->Model());
  columnStart_ = static_cast<uint16_t>(form_ == Form::NarrowColumns ? -RangeOfColumn(terms, *factors_).lowest : 0);
  // Pairs of sums along columns are less by 32768.
  for (const MatrixTerm &term : terms.OfRow(factors_->Model())) {
    start_ += factors_->RowWeight(term.weight) * (32768 - columnStart_);
  }
}

LineSums::operator bool() const {
  if (!weighted_) return false;
  if (form_ == Form::Words) return true;
  return entries_ && high_ && low_ && rows_ && pairs_ && (words_ || form_ != Form::NarrowColumns) &&
         (sums_ || form_ != Form::Columns);
}

LineSums::Form LineSums::FormOf() const {
  const bool narrow = RangeOf(terms_).IsNarrow();
  if (factors_) {
    // As measured: an entry of a pair, or of narrow sums, costs one, and what comes with a second sum costs eight.
    constexpr size_t kSecondSum = 8;
    size_t entries = terms_.OfRow(factors_->Model()).size() + kSecondSum;
    for (int32_t i = 0; i < terms_.RowCount(); ++i) entries += factors_->ColumnWeight(i) != 0 ? 1 : 0;
    if (entries < terms_.All().size()) {
      return RangeOfColumn(terms_, *factors_).IsNarrow() ? Form::NarrowColumns : Form::Columns;
    }
  }
  return narrow ? Form::Words : Form::Pairs;
}

void LineSums::ListPairs(int32_t matrixRow) {
  const auto terms = terms_.OfRow(matrixRow);
  const auto weightOf = [&](const MatrixTerm &term) {
    return form_ == Form::Pairs ? term.weight : factors_->RowWeight(term.weight);
  };
  for (size_t i = 0; i < terms.size(); ++i) {
    const int32_t column = terms[i].column;
    const int32_t first = weightOf(terms[i]);
    const bool isPair = i + 1 < terms.size() && terms[i + 1].column == column + 1;
    const int32_t second = isPair ? weightOf(terms[++i]) : 0;
    entries_[entryCount_++] = {matrixRow, OffsetOf(column), PairOf(LowerPart(first), LowerPart(second)),
                               PairOf(UpperPart(first), UpperPart(second))};
  }
}

std::span<const WeightedLine> LineSums::WeightedLines(std::span<const SourceLine> lines) const {
  size_t used = 0;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].samples == nullptr) continue;
    for (const MatrixTerm &term : terms_.OfRow(static_cast<int32_t>(i))) {
      weighted_[static_cast<ptrdiff_t>(used++)] = {lines[i].samples + OffsetOf(term.column), term.weight};
    }
  }
  return {weighted_.Get(), used};
}

std::span<const WeightedLine> LineSums::WeightedColumn(std::span<const SourceLine> lines) const {
  size_t used = 0;
  for (size_t i = 0; i < lines.size(); ++i) {
    const int32_t weight = factors_->ColumnWeight(static_cast<int32_t>(i));
    if (weight == 0 || lines[i].samples == nullptr) continue;
    weighted_[static_cast<ptrdiff_t>(used++)] = {lines[i].samples, weight};
  }
  return {weighted_.Get(), used};
}

// The pairs of a row are made when it is first met.
const Pair *LineSums::PairsOf(const SourceLine &line) const {
  Pair *pairs = pairs_.Get() + line.slot * stride_;
  if (rows_[line.slot] != line.row + 1) PairSamples(line.samples, shape_.channels, shape_.length, pairs);
  rows_[line.slot] = line.row + 1;
  return pairs;
}

void LineSums::SumAlongColumns(std::span<const SourceLine> lines) const {
  const auto column = WeightedColumn(lines);
  if (form_ == Form::NarrowColumns) {
    SumNarrowColumns(column.data(), column.size(), columnStart_, shape_.length, words_.Get());
    PairSums(words_.Get(), shape_.channels, shape_.length, pairs_.Get());
  } else {
    SumColumns(column.data(), column.size(), 0, shape_.length, sums_.Get());
    PairHalves(sums_.Get(), shape_.channels, shape_.length, pairs_.Get(), pairs_.Get() + stride_);
  }
}

void LineSums::operator()(std::span<const SourceLine> lines, uint8_t *bytes) const {
  if (form_ == Form::Words) {
    const auto weighted = WeightedLines(lines);
    return SumLines(scaling_.way)(weighted.data(), weighted.size(), scaling_, count_, bytes);
  }
  if (form_ != Form::Pairs) SumAlongColumns(lines);
  size_t highCount = 0;
  size_t lowCount = 0;
  const auto addHigh = [&](const Pair *pairs, Pair weights) {
    if (weights != 0) high_[static_cast<ptrdiff_t>(highCount++)] = {pairs, weights};
  };
  for (const PairEntry &entry : std::span(entries_.Get(), static_cast<size_t>(entryCount_))) {
    const Pair *pairs = pairs_.Get();
    if (form_ == Form::Pairs) {
      const SourceLine &line = lines[static_cast<size_t>(entry.matrixRow)];
      if (line.samples == nullptr) continue;
      pairs = PairsOf(line);
    }
    pairs += entry.offset;
    addHigh(pairs, entry.high);
    if (form_ == Form::Columns) addHigh(pairs + stride_, entry.low);
    low_[static_cast<ptrdiff_t>(lowCount++)] = {pairs, entry.low};
  }
  SumPairs(scaling_.way)({{high_.Get(), highCount}, {low_.Get(), lowCount}, start_}, scaling_, count_, bytes);
}

}  // namespace zvk::filters
