#include "scaling/short_kernels.h"

namespace zvk::scaling {

namespace {

// SSSE3 gains nothing that would be worth a form of its own.
template <class Form>
constexpr std::array<Form, kCpuLevels> Forms(Form baseline, Form avx2, Form avx512) {
  return {baseline, baseline, avx2, avx512};
}

using Baseline = ShortForms<CpuLevel::Baseline>;
using AVX2 = ShortForms<CpuLevel::AVX2>;
using AVX512 = ShortForms<CpuLevel::AVX512>;

}  // namespace

constinit const StageKernel StageRows(Forms(&Baseline::Stage, &AVX2::Stage, &AVX512::Stage));
constinit const TurnKernel TurnToRows(Forms(&Baseline::TurnBack, &AVX2::TurnBack, &AVX512::TurnBack));
constinit const MixKernel MixGray(Forms(&Baseline::Mix, &AVX2::Mix, &AVX512::Mix));
constinit const ColumnsKernel ShortColumnSums(Forms(&Baseline::SumColumns, &AVX2::SumColumns, &AVX512::SumColumns));
constinit const PlaneKernel StagePlane(Forms(&Baseline::StageOnePlane, &AVX2::StageOnePlane, &AVX512::StageOnePlane));
constinit const DotsKernel ShortDots(Forms(&Baseline::SumDots, &AVX2::SumDots, &AVX512::SumDots));
constinit const RowsKernel ShortRowSums(Forms(&Baseline::SumRows, &AVX2::SumRows, &AVX512::SumRows));
constinit const WordStageKernel StageWords(Forms(&Baseline::StageWideSamples, &AVX2::StageWideSamples,
                                                 &AVX512::StageWideSamples));
constinit const WordColumnsKernel SumWordColumns(Forms(&Baseline::SumWideColumns, &AVX2::SumWideColumns,
                                                       &AVX512::SumWideColumns));
constinit const WordTurnKernel TurnWordsToRows(Forms(&Baseline::TurnBackWords, &AVX2::TurnBackWords,
                                                     &AVX512::TurnBackWords));
constinit const WordRowsKernel SumWordRows(Forms(&Baseline::SumWideRows, &AVX2::SumWideRows, &AVX512::SumWideRows));

}  // namespace zvk::scaling
