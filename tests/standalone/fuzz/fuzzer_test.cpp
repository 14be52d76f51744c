#include "standalone/fuzz/fuzzer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "standalone/binding/class_binding.h"
#include "standalone/fuzz/random_source.h"
#include "standalone/runtime/host.h"

namespace standalone {
namespace {

using testing::HasSubstr;

struct FuzzChoice {
  const char *name;
  HostOptions options;
  uint64_t seed;

  friend void PrintTo(const FuzzChoice &choice, std::ostream *stream) { *stream << choice.name; }
};

std::string TraceOf(const FuzzOptions &wanted) {
  std::ostringstream trace;
  FuzzOptions options = wanted;
  options.trace = &trace;
  Fuzz(options);
  return trace.str();
}

class FuzzerTest : public testing::TestWithParam<FuzzChoice> {
 protected:
  FuzzerTest() { host_.Load(PICTUREZVK_LIBRARY); }

  Host host_{GetParam().options};
  Bindings bindings_;
};

TEST_P(FuzzerTest, RandomCallsDoNoHarm) {
  const FuzzReport report = Fuzz({.seed = GetParam().seed, .calls = 50'000});
  EXPECT_EQ(report.calls, 50'000);
  // Every method is called but Clone; an assignable one is assigned to as well.
  for (const BoundMethod &method : ClassNamed("PictureZVK").Methods()) {
    const std::string &name = method.declaration.name;
    EXPECT_EQ(report.members.contains(name), name != "Clone") << name;
    EXPECT_EQ(report.members.contains(name + " ="), method.setter != nullptr) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Hosts, FuzzerTest,
    testing::Values(FuzzChoice{"Console", {.fenced = true}, 1}, FuzzChoice{"Console2009", {.version = 2009.0}, 2},
                    FuzzChoice{"Desktop", {.kind = HostKind::Desktop, .fenced = true}, 3},
                    FuzzChoice{"DesktopAlpha", {.kind = HostKind::Desktop, .newPictureLayout = {.alphaInfo = 1}}, 4}),
    [](const auto &info) { return std::string(info.param.name); });

class FuzzerCasesTest : public testing::Test {
 protected:
  FuzzerCasesTest() { host_.Load(PICTUREZVK_LIBRARY); }

  Host host_;
  Bindings bindings_;
};

TEST_F(FuzzerCasesTest, ACaseDependsOnNothingButItsNumberAndTheSeed) {
  const std::string all = TraceOf({.seed = 5, .calls = 400});
  const std::string third = TraceOf({.seed = 5, .calls = 400, .onlyCase = 2});
  EXPECT_THAT(all, HasSubstr(third));
  EXPECT_THAT(third, testing::StartsWith("case 2\n"));
  EXPECT_EQ(all, TraceOf({.seed = 5, .calls = 400}));
  EXPECT_NE(all, TraceOf({.seed = 6, .calls = 400}));
}

TEST_F(FuzzerCasesTest, AMisdeedIsToldWithTheCase) {
  host_.AddMisdeed("something was given back twice");
  try {
    Fuzz({.seed = 9, .calls = 10});
    FAIL();
  } catch (const FuzzError &error) {
    EXPECT_STREQ(error.what(), "something was given back twice in case 0; repeat it with --seed 9 --case 0");
  }
}

TEST_F(FuzzerCasesTest, AReferenceThatIsKeptIsToldWithTheCase) {
  host_.onYield = [] { new ExceptionObject(Host::Current().Classes().Get("RuntimeException")); };
  EXPECT_THROW(Fuzz({.seed = 9, .calls = 20'000}), FuzzError);
}

TEST(RandomSource, NumbersAreInTheirRangeAndReachItsEnds) {
  RandomSource random(1);
  bool hasLowest = false;
  bool hasHighest = false;
  for (int i = 0; i < 1000; ++i) {
    const int64_t number = random.Between(-2, 3);
    ASSERT_GE(number, -2);
    ASSERT_LE(number, 3);
    hasLowest = hasLowest || number == -2;
    hasHighest = hasHighest || number == 3;
  }
  EXPECT_TRUE(hasLowest && hasHighest);
}

}  // namespace
}  // namespace standalone
