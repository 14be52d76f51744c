#include "standalone/runtime/host.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <new>
#include <string>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

TEST(Host, IsOneAtATime) {
  EXPECT_FALSE(Host::IsRunning());
  {
    Host host;
    EXPECT_TRUE(Host::IsRunning());
    EXPECT_EQ(&Host::Current(), &host);
    EXPECT_THROW(Host another, HostError);
    EXPECT_EQ(&Host::Current(), &host);
  }
  EXPECT_FALSE(Host::IsRunning());
  EXPECT_EQ(Host::Resolve("REALLockObject"), nullptr);
}

TEST(Resolve, AnswersTheExactNameAndCountsQuestions) {
  Host host;
  EXPECT_NE(Host::Resolve("REALLockObject"), nullptr);
  EXPECT_EQ(Host::Resolve("reallockobject"), nullptr);
  EXPECT_EQ(Host::Resolve("Nothing"), nullptr);
  EXPECT_EQ(Host::Resolve("Nothing"), nullptr);
  EXPECT_EQ(Host::Resolve(nullptr), nullptr);
  EXPECT_EQ(host.Questions("Nothing"), 2);
  EXPECT_EQ(host.Questions("REALLockObject"), 1);
  EXPECT_EQ(host.Questions("REALUnlockObject"), 0);
}

TEST(Resolve, OffersEveryEntryOfTheInterface) {
  Host host;
  for (const char *const name : {"RegisterPluginVersion",
                                 "REALGetRBVersion",
                                 "REALinRuntime",
                                 "PluginRegisterClass",
                                 "PluginNewInstance",
                                 "REALLockObject",
                                 "REALUnlockObject",
                                 "REALLockString",
                                 "REALUnlockString",
                                 "REALBuildString",
                                 "REALGetStringEncoding",
                                 "REALSetStringEncoding",
                                 "REALConvertString",
                                 "PluginGetStringData",
                                 "PluginDisposeStringData",
                                 "StringGetCString",
                                 "RuntimeRaiseException",
                                 "REALSetPropValueString",
                                 "REALSetPropValueInt",
                                 "REALGetPropValueInt",
                                 "REALGetPropValueBool",
                                 "REALYieldToRB",
                                 "REALFSRefFromFolderItem",
                                 "REALFSSpecFromFolderItem",
                                 "memoryBlockGetPtr",
                                 "PtrToMemoryBlock",
                                 "newMemoryBlock",
                                 "RuntimeUBound",
                                 "RuntimeDirectReadIntArray",
                                 "GetEventInstance",
                                 "pluginObjectType",
                                 "REALLoadGlobalMethod",
                                 "REALLoadObjectMethod",
                                 "REALLockPictureDescription",
                                 "lockPictureDescription",
                                 "unlockPictureDescription",
                                 "REALPictureClearCache",
                                 "pluginPictureGraphicsGetter",
                                 "REALGetPictureMask",
                                 "newPicture",
                                 "REALBuildPictureFromBuffer"}) {
    EXPECT_NE(Host::Resolve(name), nullptr) << name;
  }
}

TEST(Resolve, DeniesWhatIsWithheldUntilItIsOffered) {
  Host host({.withheld = {"REALLockObject"}});
  EXPECT_EQ(Host::Resolve("REALLockObject"), nullptr);
  host.Withhold("REALUnlockObject");
  EXPECT_EQ(Host::Resolve("REALUnlockObject"), nullptr);
  host.Offer("REALLockObject");
  EXPECT_NE(Host::Resolve("REALLockObject"), nullptr);
}

TEST(Version, IsReportedOnlyIfThereIsOne) {
  {
    Host host({.version = 2013.03});
    EXPECT_EQ(Entry<double()>("REALGetRBVersion")(), 2013.03);
    EXPECT_EQ(host.Version(), 2013.03);
  }
  Host host({.version = std::nullopt});
  EXPECT_EQ(Host::Resolve("REALGetRBVersion"), nullptr);
  EXPECT_EQ(host.Version(), 0);
}

TEST(InRuntime, IsAsTheOptionSays) {
  {
    Host host;
    EXPECT_EQ(Entry<uint8_t()>("REALinRuntime")(), 1);
  }
  Host host({.inRuntime = false});
  EXPECT_EQ(Entry<uint8_t()>("REALinRuntime")(), 0);
}

int replacedCalls = 0;
void Replacement(REALobject) { ++replacedCalls; }

TEST(SetEntry, PutsATestsFunctionInPlaceOfTheHosts) {
  sample::SampleHost host;
  replacedCalls = 0;
  host.SetEntry("REALLockObject", Replacement);
  host.SetEntry("NewEntry", Replacement);
  auto object = host.New();
  Entry<void(REALobject)>("REALLockObject")(object);
  Entry<void(REALobject)>("NewEntry")(object);
  EXPECT_EQ(replacedCalls, 2);
  EXPECT_EQ(object->References(), 1);
  EXPECT_EQ(host.Calls("REALLockObject"), 0);
  reinterpret_cast<void (*)(REALobject)>(host.OwnEntry("REALLockObject"))(object);
  EXPECT_EQ(object->References(), 2);
  EXPECT_EQ(host.Calls("REALLockObject"), 1);
  object->Unlock();
  host.SetEntry("REALLockObject", nullptr);
  EXPECT_EQ(Host::Resolve("REALLockObject"), nullptr);
  EXPECT_EQ(host.OwnEntry("NewEntry"), nullptr);
}

REALstring OutOfMemory(const void *, int32_t) { throw std::bad_alloc(); }

TEST(SetEntry, LetsExceptionsPassToThePlugin) {
  Host host;
  host.SetEntry("REALBuildString", OutOfMemory);
  EXPECT_THROW(Entry<REALstring(const void *, int32_t)>("REALBuildString")("a", 1), std::bad_alloc);
  host.onYield = [] { throw std::bad_alloc(); };
  EXPECT_THROW(Entry<void()>("REALYieldToRB")(), std::bad_alloc);
}

TEST(Yield, IsCountedAndRunsOtherCode) {
  Host host;
  const auto yield = Entry<void()>("REALYieldToRB");
  yield();
  int runs = 0;
  host.onYield = [&runs, &host] {
    ++runs;
    host.onYield = nullptr;
  };
  yield();
  yield();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(host.Calls("REALYieldToRB"), 3);
}

TEST(Calls, StartFromZeroWithEachHost) {
  {
    Host host;
    Entry<void()>("REALYieldToRB")();
  }
  Host host;
  EXPECT_EQ(host.Calls("REALYieldToRB"), 0);
  EXPECT_EQ(host.Calls("Nothing"), 0);
}

REALresolver givenResolver = nullptr;
void HandMadePlugin(REALresolver resolver) {
  givenResolver = resolver;
  reinterpret_cast<void (*)(int32_t)>(resolver("RegisterPluginVersion"))(11);
}

TEST(Start, HandsThePluginTheResolverAndNotesItsVersion) {
  Host host;
  EXPECT_EQ(host.PluginVersion(), 0);
  host.Start(HandMadePlugin);
  EXPECT_EQ(givenResolver, &Host::Resolve);
  EXPECT_EQ(host.PluginVersion(), 11);
}

void BadPlugin(REALresolver resolver) {
  REALclassDefinition definition{};
  definition.version = 77;
  definition.name = "Bad";
  reinterpret_cast<void (*)(REALclassDefinition *)>(resolver("PluginRegisterClass"))(&definition);
}

TEST(Start, RefusesAPluginWhoseClassesCannotBeRead) {
  Host host;
  EXPECT_THROW(host.Start(BadPlugin), HostError);
}

std::string LoadingError(Host &host, const std::string &path) {
  try {
    host.Load(path);
  } catch (const HostError &error) {
    return error.what();
  }
  return "";
}

TEST(Load, NamesThePathInOneLineIfItCannotLoad) {
  Host host;
  for (const char *const path : {"/nowhere/missing.so", "missing.so", "/dev/null"}) {
    const std::string message = LoadingError(host, path);
    EXPECT_NE(message.find(path), std::string::npos) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
  }
}

TEST(Load, RegistersTheClassesOfALibrary) {
  Host host;
  host.Load(PICTUREZVK_LIBRARY);
  EXPECT_FALSE(host.Classes().Registered().empty());
  EXPECT_GT(host.PluginVersion(), 0);
}

TEST(Load, ASecondHostGetsAPrivateCopyWithAStateOfItsOwn) {
  {
    Host host({.version = 2011.0});
    host.Load(PICTUREZVK_LIBRARY);
    EXPECT_EQ(host.PluginVersion(), 9);
  }
  Host host({.version = 2013.03});
  host.Load(PICTUREZVK_LIBRARY);
  EXPECT_EQ(host.PluginVersion(), 12);
  EXPECT_TRUE(host.Misdeeds().empty());
  for (const Class *type : host.Classes().Registered()) EXPECT_EQ(type->Definition()->version, 12u);
}

TEST(Load, ASecondHostGetsAPrivateCopyUnderAnyNameOfTheFile) {
  const std::string one = std::filesystem::temp_directory_path() / ("one" + std::to_string(getpid()) + ".so");
  const std::string other = one + ".link";
  std::filesystem::copy_file(PICTUREZVK_LIBRARY, one);
  std::filesystem::create_hard_link(one, other);
  {
    Host host({.version = 2011.0});
    host.Load(one);
  }
  Host host({.version = 2013.03});
  host.Load(other);
  EXPECT_EQ(host.PluginVersion(), 12);
  EXPECT_FALSE(host.Classes().Registered().empty());
  std::filesystem::remove(one);
  std::filesystem::remove(other);
}

TEST(Host, KeepsStandardInputAwayFromDescriptor0) {
  Host host;
  EXPECT_GE(fcntl(0, F_GETFD), 0);
  EXPECT_NE(host.StandardInputDescriptor(), 0);
}

TEST(Host, AfterAnEntryThatClosedItDescriptor0IsTakenAgain) {
  Host host;
  host.Start([](REALresolver) { close(0); });
  EXPECT_GE(fcntl(0, F_GETFD), 0);
}

}  // namespace
}  // namespace standalone
