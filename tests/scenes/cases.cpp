#include "tests/scenes/cases.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace scenes {
namespace {

constexpr const char *kVariable = "PICTUREZVK_CASE";

std::string Name(uint32_t number) {
  return "case " + std::to_string(number) + ", which " + kVariable + "=" + std::to_string(number) + " repeats";
}

// Tells which case runs when a signal ends the process, and leaves the rest to whoever answered the signal before.
class LastWords {
 public:
  LastWords() {
    current_ = this;
    struct sigaction tell {};
    tell.sa_handler = Tell;
    for (size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &tell, &before_[i]);
  }
  LastWords(const LastWords &) = delete;
  LastWords &operator=(const LastWords &) = delete;
  ~LastWords() { Restore(); }

  void Set(std::string text) { text_ = std::move(text) + "\n"; }

 private:
  static constexpr std::array kSignals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

  // What raised the signal is done again after this, and meets the earlier answer.
  static void Tell(int) {
    current_->Restore();
    if (write(STDERR_FILENO, current_->text_.data(), current_->text_.size()) < 0) return;
  }
  void Restore() {
    for (size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  }

  static inline LastWords *current_ = nullptr;
  std::array<struct sigaction, kSignals.size()> before_{};
  std::string text_;
};

std::optional<uint32_t> AskedCase() {
  const char *const text = std::getenv(kVariable);
  if (text == nullptr) return std::nullopt;
  return static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

}  // namespace

void CheckCases(const std::function<void(Random &)> &property) {
  LastWords lastWords;
  const auto run = [&](uint32_t number) {
    SCOPED_TRACE(Name(number));
    RC_LOG() << Name(number) << "\n";
    lastWords.Set(Name(number));
    Random random(number);
    property(random);
  };
  const std::optional<uint32_t> asked = AskedCase();
  bool done = false;
  const bool holds = rc::check([&] {
    if (!asked) {
      // Whole numbers of any size from the first case on; a smaller number is no smaller case.
      run(*rc::gen::noShrink(rc::gen::resize(rc::kNominalSize, rc::gen::arbitrary<uint32_t>())));
    } else if (!done) {
      run(*asked);
      done = true;
    }
  });
  EXPECT_TRUE(holds) << "PICTUREZVK_CASE repeats the case whose number is told above";
}

}  // namespace scenes
