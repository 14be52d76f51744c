#include "filters/matrix_factors.h"

#include <algorithm>
#include <numeric>

namespace zvk::filters {

namespace {

using Terms = std::span<const MatrixTerm>;

// True if a times `timesA` is b times `timesB`, entry by entry.
bool AreProportional(Terms a, int64_t timesA, Terms b, int64_t timesB) {
  while (!a.empty() || !b.empty()) {
    const int32_t column = std::min(a.empty() ? INT32_MAX : a.front().column, b.empty() ? INT32_MAX : b.front().column);
    const auto take = [column](Terms &terms) -> int64_t {
      if (terms.empty() || terms.front().column != column) return 0;
      const int64_t weight = terms.front().weight;
      terms = terms.subspan(1);
      return weight;
    };
    if (take(a) * timesA != take(b) * timesB) return false;
  }
  return true;
}

int64_t WeightAt(Terms terms, int32_t column) {
  const auto found = std::ranges::find(terms, column, &MatrixTerm::column);
  return found != terms.end() ? found->weight : 0;
}

}  // namespace

std::optional<MatrixFactors> MatrixFactors::Of(const MatrixTerms &terms) {
  const auto pivot = std::ranges::find_if(terms.All(), [](const MatrixTerm &term) { return term.weight != 0; });
  if (pivot == terms.All().end()) return std::nullopt;

  MatrixFactors factors;
  const auto index = static_cast<size_t>(pivot - terms.All().begin());
  for (size_t behind = terms.OfRow(0).size(); behind <= index;) {
    behind += terms.OfRow(++factors.model_).size();
  }
  const Terms model = terms.OfRow(factors.model_);
  for (const MatrixTerm &term : model) factors.divisor_ = std::gcd(factors.divisor_, int64_t{term.weight});

  // Every row is a whole multiple of the model by its divisor, as the entries of that have no divisor in common.
  std::array<int64_t, MatrixTerms::kMostRows> multiples = {};
  for (int32_t i = 0; i < terms.RowCount(); ++i) {
    const int64_t weight = WeightAt(terms.OfRow(i), pivot->column);
    if (!AreProportional(terms.OfRow(i), pivot->weight, model, weight)) return std::nullopt;
    multiples[static_cast<size_t>(i)] = weight / (pivot->weight / factors.divisor_);
    factors.factor_ = std::gcd(factors.factor_, multiples[static_cast<size_t>(i)]);
  }
  for (size_t i = 0; i < multiples.size(); ++i) {
    factors.column_[i] = static_cast<int32_t>(multiples[i] / factors.factor_);
  }
  return factors;
}

}  // namespace zvk::filters
