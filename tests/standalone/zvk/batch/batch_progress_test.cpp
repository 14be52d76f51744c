#include "standalone/zvk/batch/batch_progress.h"

#include <gtest/gtest.h>

namespace standalone {
namespace {

TEST(BatchProgress, TellsTheCountAloneUntilAFileHasEnded) {
  EXPECT_EQ(BatchProgress(0, 0, 40, 0), "[--------------------] 0 of 40");
  EXPECT_EQ(BatchProgress(0, 0, 40, 12.5), "[--------------------] 0 of 40");
  EXPECT_EQ(BatchProgress(1, 0, 40, 0), "[--------------------] 1 of 40");
}

TEST(BatchProgress, TellsTheMeanRateAndTheTimeThatTheRestTakesAtIt) {
  EXPECT_EQ(BatchProgress(10, 0, 40, 4), "[#####---------------] 10 of 40, 2.5 a second, 12 s left");
  EXPECT_EQ(BatchProgress(39, 0, 40, 39), "[###################-] 39 of 40, 1.0 a second, 1 s left");
  EXPECT_EQ(BatchProgress(40, 0, 40, 40), "[####################] 40 of 40, 1.0 a second, 0 s left");
}

TEST(BatchProgress, TellsHowManyHaveFailed) {
  EXPECT_EQ(BatchProgress(10, 1, 40, 4), "[#####---------------] 10 of 40, 1 failed, 2.5 a second, 12 s left");
}

TEST(BatchProgress, ChoosesTheUnitOfTheRate) {
  EXPECT_EQ(BatchProgress(5, 0, 10, 20), "[##########----------] 5 of 10, 15.0 a minute, 20 s left");
  EXPECT_EQ(BatchProgress(1, 0, 2, 60), "[##########----------] 1 of 2, 1.0 a minute, 1 min 0 s left");
  EXPECT_EQ(BatchProgress(1, 0, 2, 150), "[##########----------] 1 of 2, 24.0 an hour, 2 min 30 s left");
  EXPECT_EQ(BatchProgress(1, 0, 2, 14400), "[##########----------] 1 of 2, 0.2 an hour, 4 h 0 min left");
}

TEST(BatchProgress, ChoosesTheUnitsOfTheTimeLeft) {
  EXPECT_EQ(BatchProgress(1, 0, 60, 1), "[--------------------] 1 of 60, 1.0 a second, 59 s left");
  EXPECT_EQ(BatchProgress(1, 0, 61, 1), "[--------------------] 1 of 61, 1.0 a second, 1 min 0 s left");
  EXPECT_EQ(BatchProgress(1, 0, 3600, 1), "[--------------------] 1 of 3600, 1.0 a second, 59 min 59 s left");
  EXPECT_EQ(BatchProgress(1, 0, 3601, 1), "[--------------------] 1 of 3601, 1.0 a second, 1 h 0 min left");
  EXPECT_EQ(BatchProgress(1, 0, 100'001, 1), "[--------------------] 1 of 100001, 1.0 a second, 27 h 46 min left");
  EXPECT_EQ(BatchProgress(3, 0, 4, 10), "[###############-----] 3 of 4, 18.0 a minute, 4 s left");
}

}  // namespace
}  // namespace standalone
