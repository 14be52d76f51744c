#include "standalone/fuzz/fuzzer.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/fuzz/domains.h"
#include "standalone/runtime/folder_item.h"
#include "standalone/runtime/host.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/picture.h"

// Of the sanitizers, in a program that is built with one.
extern "C" [[gnu::weak]] void __sanitizer_set_death_callback(void (*callback)());

namespace standalone {
namespace {

constexpr char kFactoryClass[] = "FuzzFactory";
constexpr int64_t kCallsOfCase = 100;
constexpr size_t kMostImages = 10;
constexpr size_t kMostPictures = 4;

// --- what is told where the process dies ---

std::atomic<uint64_t> runningSeed;
std::atomic<int64_t> runningCase = -1;

void TellCase() {
  const int64_t number = runningCase;
  if (number < 0) return;
  char text[160] = {};
  const int length =
      std::snprintf(text, sizeof text, "zvk: died in a random case; repeat it with --seed %llu --case %lld\n",
                    static_cast<unsigned long long>(runningSeed), static_cast<long long>(number));
  if (write(STDERR_FILENO, text, static_cast<size_t>(length)) < 0) _exit(1);
}

void OnSignal(int signal) {
  TellCase();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

class CaseTeller {
 public:
  CaseTeller() {
    for (size_t i = 0; i < kSignals.size(); ++i) before_[i] = std::signal(kSignals[i], OnSignal);
    if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(TellCase);
  }
  CaseTeller(const CaseTeller &) = delete;
  CaseTeller &operator=(const CaseTeller &) = delete;
  ~CaseTeller() {
    runningCase = -1;
    for (size_t i = 0; i < kSignals.size(); ++i) std::signal(kSignals[i], before_[i]);
  }

 private:
  static constexpr std::array kSignals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
  std::array<void (*)(int), kSignals.size()> before_ = {};
};

// --- text of calls ---

std::string TextOf(const Value &value) {
  switch (value.GetKind()) {
    case Value::Kind::Nil:
      return "nil";
    case Value::Kind::Integer:
    case Value::Kind::Int64:
      return std::to_string(value.AsInt64());
    case Value::Kind::Double: {
      char text[32] = {};
      std::snprintf(text, sizeof text, "%.17g", value.AsDouble());
      return text;
    }
    case Value::Kind::Boolean:
      return value.AsBoolean() ? "true" : "false";
    case Value::Kind::Color: {
      char text[16] = {};
      std::snprintf(text, sizeof text, "&h%08X", value.AsColor().rgb);
      return text;
    }
    case Value::Kind::String:
      return "String of " + std::to_string(value.AsBytes().size());
    case Value::Kind::Array:
      return "array of " + std::to_string(value.AsIntegers().size());
    case Value::Kind::Object:
      break;
  }
  std::string text = value.KindText();
  if (value.AsObject()->Type().IsA("PictureZVK")) {
    text += "[" + std::to_string(value.Get("Width").AsInteger()) + "x" +
            std::to_string(value.Get("Height").AsInteger()) + " " + value.Get("ImageFormatString").AsText() +
            (value.Get("IsMapping").AsBoolean() ? " mapped" : "") + (value.Get("Parent").IsNil() ? "" : " view") + "]";
  }
  return text;
}

std::string TextOf(const Arguments &arguments) {
  std::string text;
  for (const Value &argument : arguments) text += (text.empty() ? "" : ", ") + TextOf(argument);
  return "(" + text + ")";
}

// --- one case ---

class Case : public FuzzPool {
 public:
  Case(uint64_t seed, int64_t number, const std::filesystem::path &folder, FuzzReport &report, std::ostream *trace)
      : random_(seed ^ (static_cast<uint64_t>(number) * 0x9E3779B97F4A7C15U)),
        folder_(folder),
        report_(report),
        trace_(trace) {
    srand(static_cast<unsigned>(random_.Between(0, 0xFFFF)));
    for (const BoundMethod &method : images_.Methods()) {
      if (!IsInDomain(method.declaration)) continue;
      if (NamesEqual(method.declaration.name, "Constructor")) {
        constructors_.push_back(&method);
      } else {
        methods_.push_back(&method);
      }
    }
    for (int i = 0; i < 3; ++i) pictures_.push_back(NewPicture());
  }

  void Run(int64_t calls) {
    for (int64_t i = 0; i < calls; ++i) {
      try {
        Step();
      } catch (const HostException &) {
        ++report_.exceptions;
      }
      ++report_.calls;
    }
  }

  // What must not have happened and did, if anything.
  const std::optional<std::string> &Wrong() const { return wrong_; }

  Value AnyImage() override {
    if (all_.empty() || random_.OneIn(12)) return nullptr;
    return all_[Index(all_.size())];
  }

  Value CoveringImage(int32_t width, int32_t height, int32_t pixelSize) override {
    std::vector<Value> covering;
    for (const Value &image : all_) {
      if (image.Get("Width").AsInteger() >= width && image.Get("Height").AsInteger() >= height &&
          image.Get("PixelSize").AsInteger() >= pixelSize) {
        covering.push_back(image);
      }
    }
    if (covering.empty()) return nullptr;
    return covering[Index(covering.size())];
  }

  Value AnyPicture() override {
    if (random_.OneIn(20)) return nullptr;
    return pictures_[Index(pictures_.size())];
  }

  // One that answers with nothing, or with an image as large as asked for or larger, of any format of its kind.
  Value AnyFactory() override {
    if (random_.OneIn(3)) return nullptr;
    return factories_.New();
  }

  Value NewFile() override {
    return Owned<FolderItem>::Adopt(FolderItem::Make((folder_ / ("image" + std::to_string(++files_))).string()));
  }

  static Value AnswerFactory(const Arguments &asked) {
    const int32_t width = asked[0].AsInteger();
    const int32_t height = asked[1].AsInteger();
    if (width < 1 || height < 1 || width > kMostPixels || height > kMostPixels || rand() % 4 == 0) return nullptr;
    return ClassNamed("PictureZVK").New({width + rand() % 3, height + rand() % 3, asked[2]});
  }

 private:
  size_t Index(size_t count) { return static_cast<size_t>(random_.Between(0, static_cast<int64_t>(count) - 1)); }

  Value NewPicture() {
    const auto width = static_cast<int32_t>(random_.Between(1, kLargestSide));
    const auto height = static_cast<int32_t>(random_.Between(1, kLargestSide));
    Owned<Picture> picture = Owned<Picture>::Adopt(Picture::Make(width, height));
    for (int32_t y = 0; y < height; ++y) picture->SetPixel(y % width, y, {static_cast<uint8_t>(y), 255, 0, 255});
    if (random_.OneIn(2)) picture->GetMask().SetPixel(0, 0, {});
    return picture;
  }

  void Note(const std::string &member, const std::string &text) {
    ++report_.members[member];
    if (trace_ != nullptr) *trace_ << "  " << text << std::endl;
  }

  Arguments ArgumentsOf(const BoundMethod &method, const Value &self) {
    Arguments arguments;
    for (const Parameter &parameter : method.declaration.parameters) {
      if (parameter.defaultValue && random_.OneIn(4)) break;
      arguments.push_back(AnyArgument(random_, *this, self, method.declaration.name, method.declaration, parameter));
    }
    return arguments;
  }

  // True if working on the image takes too long. A view is never larger than an image of the pool. One whose rows have
  // wrapped in 32 bits has little memory where its RowSize is small, and no pixel of it is ever worked on.
  static bool IsTooLarge(const Value &image) {
    const int64_t width = image.Get("Width").AsInteger();
    const int64_t pixels = width * image.Get("Height").AsInteger();
    const bool hasWrappedRows = width * image.Get("PixelSize").AsInteger() > std::numeric_limits<int32_t>::max();
    if (hasWrappedRows) return image.Get("RowSize").AsInteger() > kMostPixels;
    return image.Get("Parent").IsNil() && pixels > kMostPixels;
  }

  void CheckView(const Value &view) {
    const Value parent = view.Get("Parent");
    if (parent.IsNil()) return;
    for (const char *side : {"Width", "Height"}) {
      const int32_t size = view.Get(side).AsInteger();
      if (size > std::max(parent.Get(side).AsInteger(), 0)) {
        wrong_ = std::string("a view is larger than its image: ") + side + " " + std::to_string(size);
      }
    }
  }

  // Takes an image into the pool unless it is too large to work on.
  void Keep(const Value &result) {
    if (result.GetKind() != Value::Kind::Object) return;
    if (result.AsObject()->Type().IsA("PictureZVK")) {
      CheckView(result);
      if (IsTooLarge(result)) return;
      if (all_.size() < kMostImages) {
        all_.push_back(result);
      } else {
        all_[Index(all_.size())] = result;
      }
    } else if (result.AsObject()->Type().IsA("Picture") && pictures_.size() < kMostPictures) {
      pictures_.push_back(result);
    }
  }

  void Step() {
    if (all_.size() < 3 || random_.OneIn(12)) return Make();
    const size_t index = Index(all_.size());
    const Value image = all_[index];
    const int64_t kind = random_.Between(1, 20);
    if (random_.OneIn(40)) {
      MakeAnew(index);
    } else if (kind == 1) {
      GetProperty(image);
    } else if (kind == 2) {
      SetProperty(image);
    } else {
      CallMethod(image);
    }
  }

  void Make() {
    const BoundMethod &constructor = *constructors_[Index(constructors_.size())];
    const Arguments arguments = ArgumentsOf(constructor, nullptr);
    Note("Constructor", "Constructor" + TextOf(arguments));
    const Value image = images_.New(arguments);
    Keep(image);
    if (random_.OneIn(2) && image.Get("Valid").AsBoolean() && !all_.empty() &&
        all_.back().AsObject() == image.AsObject()) {
      image.Call("FillRectRandom");
    }
  }

  // A second construction of an image that no view depends on.
  void MakeAnew(size_t index) {
    const Value image = all_[index];
    if (HasViews(image)) return;
    const Arguments arguments = ArgumentsOf(*constructors_[Index(constructors_.size())], nullptr);
    Note("Constructor", TextOf(image) + ".Constructor" + TextOf(arguments));
    try {
      image.Call("Constructor", arguments);
    } catch (const HostException &) {
      // The image is there all the same, as large as it has become.
      ++report_.exceptions;
    }
    if (IsTooLarge(image)) all_.erase(all_.begin() + static_cast<ptrdiff_t>(index));
  }

  bool HasViews(const Value &image) const {
    for (const Value &other : all_) {
      for (Value parent = other.Get("Parent"); !parent.IsNil(); parent = parent.Get("Parent")) {
        if (parent.AsObject() == image.AsObject()) return true;
      }
    }
    return false;
  }

  void CallMethod(const Value &image) {
    const BoundMethod &method = *methods_[Index(methods_.size())];
    const std::string &name = method.declaration.name;
    // Whoever closes an image must not use the views of it any more.
    if (NamesEqual(name, "Close") && (HasViews(image) || !random_.OneIn(4))) return;
    const Arguments arguments = ArgumentsOf(method, image);
    if (method.setter != nullptr && arguments.size() == method.declaration.parameters.size() && random_.OneIn(2)) {
      const Value assigned =
          AnyArgument(random_, *this, image, name, method.declaration, {"value", method.declaration.result});
      if (assigned.IsNil() && method.declaration.result.kind != TypeKind::Object) return;
      Note(name + " =", TextOf(image) + "." + name + TextOf(arguments) + " = " + TextOf(assigned));
      image.Assign(name, arguments, assigned);
      return;
    }
    Note(name, (method.isShared ? "" : TextOf(image) + ".") + name + TextOf(arguments));
    Keep(method.isShared ? images_.Call(name, arguments) : image.Call(name, arguments));
  }

  void GetProperty(const Value &image) {
    const std::vector<BoundProperty> &properties = images_.Properties();
    const std::string &name = properties[Index(properties.size())].registered->name;
    Note(name, TextOf(image) + "." + name);
    Keep(image.Get(name));
  }

  // Offsets stay those of channels of the image: two of them change places.
  void SetProperty(const Value &image) {
    const int64_t kind = random_.Between(1, 5);
    if (kind == 1 && image.Get("IsRGB").AsBoolean()) {
      const Value red = image.Get("RedOffset");
      const Value blue = image.Get("BlueOffset");
      Note("RedOffset =", TextOf(image) + ".RedOffset = BlueOffset");
      image.Set("RedOffset", blue);
      image.Set("BlueOffset", red);
    } else if (kind == 2) {
      const auto size = static_cast<int32_t>(random_.Between(-1, 1 << 16));
      Note("MappingBlockSize =", TextOf(image) + ".MappingBlockSize = " + std::to_string(size));
      image.Set("MappingBlockSize", size);
    } else if (kind == 3) {
      const auto ticks = static_cast<int32_t>(random_.Between(-2, 2));
      Note("YieldTicks =", TextOf(image) + ".YieldTicks = " + std::to_string(ticks));
      image.Set("YieldTicks", ticks);
    } else if (kind == 4) {
      const Value factory = AnyFactory();
      Note("Factory =", TextOf(image) + ".Factory = " + TextOf(factory));
      image.Set("Factory", factory);
    } else {
      const bool isOn = random_.OneIn(2);
      Note("DebugPictureEnabled =", TextOf(image) + ".DebugPictureEnabled = " + TextOf(Value(isOn)));
      image.Set("DebugPictureEnabled", isOn);
    }
  }

  RandomSource random_;
  const std::filesystem::path &folder_;
  FuzzReport &report_;
  std::ostream *trace_;
  const ClassBinding &images_ = ClassNamed("PictureZVK");
  const ClassBinding &factories_ = ClassNamed(kFactoryClass);
  std::vector<const BoundMethod *> constructors_;
  std::vector<const BoundMethod *> methods_;
  std::vector<Value> all_;
  std::vector<Value> pictures_;
  int64_t files_ = 0;
  std::optional<std::string> wrong_;
};

// --- all cases ---

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zvk_fuzz_XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder can be made in " + pattern);
    path_ = pattern;
  }
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path &Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// What is alive now, but for what some calls leave behind by design: masks that drawing through them keeps, and
// description locks of pictures whose form was refused.
std::vector<Leak> UnexpectedLeaks() {
  std::vector<Leak> leaks = Host::Current().Leaks();
  std::erase_if(leaks, [](const Leak &leak) { return leak.what == "Picture" || leak.what == "description lock"; });
  return leaks;
}

}  // namespace

FuzzReport Fuzz(const FuzzOptions &options) {
  const TemporaryFolder folder;
  const CaseTeller teller;
  Host &host = Host::Current();
  if (host.Classes().Find(kFactoryClass) == nullptr) {
    Bindings::Current().DefineSubclass(
        kFactoryClass, "PictureFactoryZVK",
        {{"NewPictureZVK", [](const Value &, const Arguments &asked) { return Case::AnswerFactory(asked); }}});
  }
  FuzzReport report;
  runningSeed = options.seed;
  for (int64_t number = options.onlyCase.value_or(0); report.calls < options.calls; ++number) {
    runningCase = number;
    const std::vector<Leak> before = UnexpectedLeaks();
    if (options.trace != nullptr) *options.trace << "case " << number << std::endl;
    std::optional<std::string> wrong;
    {
      Case one(options.seed, number, folder.Path(), report, options.trace);
      one.Run(std::min(kCallsOfCase, options.calls - report.calls));
      wrong = one.Wrong();
    }
    ClassNamed("PictureFactoryZVK").Call("SetFactory", {nullptr});
    ++report.cases;
    const auto fail = [&](const std::string &what) {
      throw FuzzError(what + " in case " + std::to_string(number) + "; repeat it with --seed " +
                      std::to_string(options.seed) + " --case " + std::to_string(number));
    };
    if (wrong) fail(*wrong);
    if (!host.Misdeeds().empty()) fail(host.Misdeeds().front());
    if (UnexpectedLeaks() != before) fail("left behind: " + Describe(host.Leaks()));
    if (options.onlyCase) break;
  }
  return report;
}

}  // namespace standalone
