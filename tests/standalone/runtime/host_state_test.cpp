#include "standalone/runtime/host_state.h"

#include <gtest/gtest.h>

#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/exceptions.h"
#include "standalone/runtime/own_classes.h"
#include "standalone/runtime/picture_storage.h"

namespace standalone {
namespace {

// A state without the host above it.
class BareState : public HostState {
 public:
  explicit BareState(HostOptions options = {}) : HostState(std::move(options), classes_) {
    DefineOwnClasses(classes_, Options().missingClasses);
  }

  using HostState::HasClock;
  using HostState::PutClock;

 private:
  ClassRegistry classes_;
};

TEST(HostState, IsTheCurrentOneFromItsMakingToItsEnd) {
  EXPECT_FALSE(HostState::IsRunning());
  {
    BareState state;
    EXPECT_TRUE(HostState::IsRunning());
    EXPECT_EQ(&HostState::Current(), &state);
  }
  EXPECT_FALSE(HostState::IsRunning());
}

TEST(HostState, ARefusedSecondOneLeavesTheFirstRunning) {
  BareState state;
  EXPECT_THROW(BareState another, HostError);
  ASSERT_TRUE(HostState::IsRunning());
  EXPECT_EQ(&HostState::Current(), &state);
}

TEST(HostState, TellsItsOptions) {
  const BareState state({.version = 2012.5, .inRuntime = false, .missingClasses = {"Graphics"}, .fenced = true});
  EXPECT_EQ(state.Version(), 2012.5);
  EXPECT_FALSE(state.Options().inRuntime);
  EXPECT_EQ(state.Options().missingClasses, std::set<std::string>{"Graphics"});
  EXPECT_TRUE(state.Options().fenced);
}

TEST(HostState, AHostThatReportsNoVersionHasTheVersionZero) {
  const BareState state({.version = std::nullopt});
  EXPECT_EQ(state.Version(), 0);
}

TEST(HostState, DrawsPicturesOnADesktopUnlessToldOtherwise) {
  EXPECT_FALSE(BareState({.kind = HostKind::Console}).DrawsPictures());
  EXPECT_TRUE(BareState({.kind = HostKind::Desktop}).DrawsPictures());
  EXPECT_TRUE(BareState({.kind = HostKind::Console, .drawsPictures = true}).DrawsPictures());
  EXPECT_FALSE(BareState({.kind = HostKind::Desktop, .drawsPictures = false}).DrawsPictures());
}

TEST(HostState, WithholdsByNameUntilItIsOffered) {
  BareState state({.withheld = {"LenB"}});
  EXPECT_TRUE(state.IsWithheld("LenB"));
  EXPECT_FALSE(state.IsWithheld("lenb"));
  state.Withhold("DrawPicture");
  state.Offer("LenB");
  EXPECT_TRUE(state.IsWithheld("DrawPicture"));
  EXPECT_FALSE(state.IsWithheld("LenB"));
}

TEST(HostState, TheClocksStandWhereTheyArePut) {
  BareState state;
  EXPECT_FALSE(state.HasClock());
  HostClock &clock = state.PutClock({.ticks = 60, .nanoseconds = 1000000000});
  EXPECT_TRUE(state.HasClock());
  EXPECT_EQ(state.Clock().ticks, 60u);
  EXPECT_EQ(state.Clock().nanoseconds, 1000000000u);
  clock.ticks = 61;
  EXPECT_EQ(state.Clock().ticks, 61u);
}

TEST(HostState, KeepsMisdeedsInOrderUntilTheyAreCleared) {
  BareState state;
  state.AddMisdeed("first");
  state.AddMisdeed("second");
  EXPECT_EQ(state.Misdeeds(), (std::vector<std::string>{"first", "second"}));
  state.ClearMisdeeds();
  EXPECT_TRUE(state.Misdeeds().empty());
}

TEST(HostState, ThePictureFactoryIsTheOneThatWasSetLast) {
  BareState state;
  EXPECT_FALSE(state.PictureFactory());
  state.SetPictureFactory([](int32_t width, int32_t height) { return std::make_unique<GDStorage>(width, height); });
  state.SetPictureFactory([](int32_t width, int32_t height) { return std::make_unique<DrawnStorage>(height, width); });
  const std::unique_ptr<PictureStorage> made = state.PictureFactory()(3, 2);
  EXPECT_EQ(made->Width(), 2);
  EXPECT_EQ(made->Height(), 3);
}

// An exception, and the number of references to it that have been given back.
struct Watched {
  explicit Watched(const HostState &state)
      : exception(Owned<ExceptionObject>::Adopt(new ExceptionObject(state.Classes().Get("RuntimeException")))) {}

  HostState::PendingException Pending() {
    return {exception.Get(), [this](ExceptionObject *) { ++givenBack; }};
  }

  Owned<ExceptionObject> exception;
  int givenBack = 0;
};

TEST(HostState, TheExceptionIsPendingUntilItIsTaken) {
  BareState state;
  Watched watched(state);
  EXPECT_FALSE(state.HasPendingException());
  EXPECT_EQ(state.TakePending(), nullptr);
  state.SetPending(watched.Pending());
  EXPECT_TRUE(state.HasPendingException());
  {
    const HostState::PendingException taken = state.TakePending();
    EXPECT_EQ(taken.get(), watched.exception.Get());
    EXPECT_FALSE(state.HasPendingException());
    EXPECT_EQ(watched.givenBack, 0);
  }
  EXPECT_EQ(watched.givenBack, 1);
}

TEST(HostState, APendingExceptionThatIsReplacedIsGivenBack) {
  BareState state;
  Watched first(state);
  Watched second(state);
  state.SetPending(first.Pending());
  state.SetPending(second.Pending());
  EXPECT_EQ(first.givenBack, 1);
  EXPECT_EQ(second.givenBack, 0);
  EXPECT_EQ(state.TakePending().get(), second.exception.Get());
}

TEST(HostState, GivesBackWhatIsPendingAtItsEnd) {
  std::optional<Watched> watched;
  {
    BareState state;
    watched.emplace(state);
    state.SetPending(watched->Pending());
  }
  EXPECT_EQ(watched->givenBack, 1);
}

}  // namespace
}  // namespace standalone
