// Instruction sets: a hot loop is compiled once for each level of them, and the level that runs is settled once, by the
// machine or by the environment variable PICTUREZVK_CPU. All forms of a kernel give the same bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "host/layers.h"

// Put before the definition of a function that may only be called at that level or above.
#define ZVK_TARGET_AVX2 [[gnu::target("avx2,fma,bmi,bmi2")]]
#define ZVK_TARGET_AVX512 [[gnu::target("avx2,fma,bmi,bmi2,avx512f,avx512bw,avx512dq,avx512vl")]]

namespace zvk::pixels {

// Each level has the instructions of those below it. AVX2 stands for what came with it too: FMA, BMI and BMI2. AVX512
// stands for F, BW, DQ and VL; a kernel that needs more of that family asks for it by itself.
enum class CpuLevel : uint8_t { Baseline, SSSE3, AVX2, AVX512 };
inline constexpr size_t kCpuLevels = 4;

// The highest level of this machine.
CpuLevel DetectedLevel();

// The level with that name in PICTUREZVK_CPU (baseline, ssse3, avx2, avx512), but none above the machine's. The
// machine's own for any other name, and for nil.
CpuLevel LevelNamed(const char *name, CpuLevel machine);

// The level that the library works on. The environment is read at the first call and never again; any thread may call.
CpuLevel ChosenLevel();

template <class Function>
class Kernel;

// One function in a form for each level. Called, it runs the form of the chosen level.
template <class Result, class... Args>
class Kernel<Result(Args...)> {
 public:
  using Form = Result (*)(Args...);

  // From Baseline to AVX512.
  constexpr explicit Kernel(const std::array<Form, kCpuLevels> &forms) : forms_(forms) {}

  // Must not be called above the machine's level.
  constexpr Form At(CpuLevel level) const { return forms_[static_cast<size_t>(level)]; }

  Result operator()(Args... args) const { return At(ChosenLevel())(std::forward<Args>(args)...); }

 private:
  std::array<Form, kCpuLevels> forms_;
};

// The forms that the compiler makes of one body, which must be an inline function marked always_inline. All that it
// calls becomes a part of each form as well.
template <auto kBody>
struct CompiledForms;
template <class Result, class... Args, Result (*kBody)(Args...)>
struct CompiledForms<kBody> {
  [[gnu::flatten]] static Result Baseline(Args... args) { return kBody(std::forward<Args>(args)...); }
  [[gnu::flatten]] ZVK_TARGET_AVX2 static Result AVX2(Args... args) { return kBody(std::forward<Args>(args)...); }
  [[gnu::flatten]] ZVK_TARGET_AVX512 static Result AVX512(Args... args) { return kBody(std::forward<Args>(args)...); }

  // SSSE3 runs the form of the baseline: one more of every kernel is not worth its bytes.
  static constexpr Kernel<Result(Args...)> kKernel{{Baseline, Baseline, AVX2, AVX512}};
  static constexpr Kernel<Result(Args...)> kKernelUpToAVX2{{Baseline, Baseline, AVX2, AVX2}};
};

// The kernel of a body.
template <auto kBody>
inline constexpr auto KernelOf = CompiledForms<kBody>::kKernel;

// The kernel of a body that the compiler makes slower for AVX-512, as measured: a loop over single samples. At that
// level it runs its form for AVX2.
template <auto kBody>
inline constexpr auto KernelUpToAVX2 = CompiledForms<kBody>::kKernelUpToAVX2;

// The kernel of a body that is written with vectors, of 16, 32 and 64 bytes.
template <auto kBody16, auto kBody32, auto kBody64>
inline constexpr decltype(CompiledForms<kBody16>::kKernel) KernelOfSizes{
    {CompiledForms<kBody16>::Baseline, CompiledForms<kBody16>::Baseline, CompiledForms<kBody32>::AVX2,
     CompiledForms<kBody64>::AVX512}};

}  // namespace zvk::pixels
