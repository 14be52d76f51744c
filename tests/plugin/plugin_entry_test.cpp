#include "plugin/plugin_entry.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/host_services.h"
#include "image/image_record.h"
#include "tests/support/faults.h"

namespace zvk::plugin {
namespace {

// A host that only listens: what it was asked and told while it loaded the library.
struct Listener {
  std::optional<double> version;
  bool inRuntime = true;
  std::set<std::string> withheld;
  std::vector<std::string> asked;
  std::vector<std::string> called;
  std::vector<int32_t> versionsTold;
  std::vector<REALclassDefinition *> classes;
} listener;

void *Resolve(const char *name) {
  listener.asked.emplace_back(name);
  if (listener.withheld.count(name)) return nullptr;
  const std::string entry = name;
  if (entry == "RegisterPluginVersion") {
    return reinterpret_cast<void *>(+[](int32_t version) {
      listener.called.emplace_back("RegisterPluginVersion");
      listener.versionsTold.push_back(version);
    });
  }
  if (entry == "REALGetRBVersion" && listener.version) {
    return reinterpret_cast<void *>(+[]() -> double {
      listener.called.emplace_back("REALGetRBVersion");
      return *listener.version;
    });
  }
  if (entry == "REALinRuntime") {
    return reinterpret_cast<void *>(+[]() -> uint8_t {
      listener.called.emplace_back("REALinRuntime");
      return listener.inRuntime;
    });
  }
  if (entry == "PluginRegisterClass") {
    return reinterpret_cast<void *>(+[](REALclassDefinition *definition) {
      listener.called.emplace_back("PluginRegisterClass");
      listener.classes.push_back(definition);
    });
  }
  return nullptr;
}

void Load(std::optional<double> version) {
  listener.version = version;
  REALPluginMain(Resolve);
}

struct VersionCase {
  std::optional<double> host;
  int32_t tables;
};

class PluginEntryVersion : public testing::TestWithParam<VersionCase> {};

TEST_P(PluginEntryVersion, ChoosesTheTablesByTheHostsVersion) {
  Load(GetParam().host);
  EXPECT_EQ(CurrentREALControlVersion, GetParam().tables);
  EXPECT_EQ(rbversion, GetParam().host.value_or(0));
  EXPECT_EQ(listener.versionsTold, std::vector<int32_t>{GetParam().tables});
  ASSERT_EQ(listener.classes.size(), 2u);
  EXPECT_EQ(listener.classes[0], &PictureDefinition);
  EXPECT_EQ(listener.classes[1], &PictureFactoryDefinition);
  EXPECT_EQ(PictureDefinition.version, static_cast<uint32_t>(GetParam().tables));
  EXPECT_EQ(PictureFactoryDefinition.version, static_cast<uint32_t>(GetParam().tables));
  EXPECT_EQ(PictureDefinition.dataSize % 16, 0u);
  EXPECT_GE(PictureDefinition.dataSize, sizeof(ImageClassData));
}

INSTANTIATE_TEST_SUITE_P(Hosts, PluginEntryVersion,
                         testing::Values(VersionCase{std::nullopt, 9}, VersionCase{2011.99, 9}, VersionCase{2012.0, 10},
                                         VersionCase{2012.9, 10}, VersionCase{2013.0, 11}, VersionCase{2013.02, 11},
                                         VersionCase{2013.03, 12}, VersionCase{2014.1, 12}));

TEST(PluginEntry, AsksAndTellsInTheToldOrder) {
  Load(2013.03);
  EXPECT_EQ(gResolver, Resolve);
  const std::vector<std::string> expected = {"RegisterPluginVersion", "REALGetRBVersion", "REALinRuntime",
                                             "PluginRegisterClass"};
  EXPECT_EQ(listener.asked, expected);
  const std::vector<std::string> calls = {"REALGetRBVersion", "RegisterPluginVersion", "REALinRuntime",
                                          "PluginRegisterClass", "PluginRegisterClass"};
  EXPECT_EQ(listener.called, calls);
}

TEST(PluginEntry, InARunningApplicationThePageIsTheSystemsAndTheRandomSequenceStartsFromTheTime) {
  const faults::PageSize page(16384);
  const faults::Clock clock(12345);
  const faults::Seeds seeds;
  Load(2013.03);
  EXPECT_EQ(PageSize, 16384);
  EXPECT_EQ(seeds.All(), std::vector<unsigned>{12345});
}

TEST(PluginEntry, APageIsNeverBelow4096) {
  const faults::PageSize page(1024);
  Load(2013.03);
  EXPECT_EQ(PageSize, 4096);
}

TEST(PluginEntry, OutsideARunningApplicationNothingIsSeededAndThePageStays4096) {
  const faults::PageSize page(16384);
  const faults::Seeds seeds;
  listener.inRuntime = false;
  Load(2013.03);
  EXPECT_EQ(PageSize, 4096);
  EXPECT_TRUE(seeds.All().empty());
  EXPECT_EQ(listener.classes.size(), 2u);
}

TEST(PluginEntry, AHostWithoutREALinRuntimeCountsAsNotRunning) {
  const faults::PageSize page(16384);
  const faults::Seeds seeds;
  listener.withheld = {"REALinRuntime"};
  Load(2013.03);
  EXPECT_EQ(PageSize, 4096);
  EXPECT_TRUE(seeds.All().empty());
}

TEST(PluginEntry, WithoutPluginRegisterClassNothingIsRegisteredAndNothingFails) {
  listener.withheld = {"PluginRegisterClass"};
  Load(2013.03);
  EXPECT_TRUE(listener.classes.empty());
}

TEST(PluginEntry, ConstantsAreRewrittenAsDeclarations) {
  Load(2013.03);
  ASSERT_EQ(PictureDefinition.constantCount, 80u);
  const auto declares = [](const std::string &text) {
    for (size_t i = 0; i < PictureDefinition.constantCount; ++i) {
      if (PictureDefinition.constants[i].declaration == text) return true;
    }
    return false;
  };
  EXPECT_TRUE(declares("ImageFormatG = &h0000000B"));
  EXPECT_TRUE(declares("ScaleCubic = 7"));
  EXPECT_TRUE(declares("ImageFormatUnknown = 0"));
  EXPECT_TRUE(declares("DitherCluster8Matrix = &h0000000A"));
  for (size_t i = 0; i < 80; ++i) EXPECT_EQ(PictureDefinition.constants[i].reserved, 0u);
}

// On every host; an older one would get tables converted twice, in which nothing is where it is looked for.
TEST_P(PluginEntryVersion, ASecondCallDoesNothing) {
  Load(GetParam().host);
  const Listener once = listener;
  const auto *const constants = PictureDefinition.constants;
  const std::string first = constants[0].declaration;
  const REALclassDefinition picture = PictureDefinition;
  const REALclassDefinition factory = PictureFactoryDefinition;
  Load(2014.1);
  EXPECT_EQ(listener.asked, once.asked);
  EXPECT_EQ(listener.called, once.called);
  EXPECT_EQ(rbversion, GetParam().host.value_or(0));
  EXPECT_EQ(CurrentREALControlVersion, GetParam().tables);
  EXPECT_EQ(PictureDefinition.constants, constants);
  EXPECT_EQ(constants[0].declaration, first);
  EXPECT_EQ(std::memcmp(&PictureDefinition, &picture, sizeof picture), 0);
  EXPECT_EQ(std::memcmp(&PictureFactoryDefinition, &factory, sizeof factory), 0);
}

TEST(PluginEntry, ASecondCallWithAnotherResolverKeepsTheFirst) {
  Load(2013.03);
  REALPluginMain([](const char *) -> void * { return nullptr; });
  EXPECT_EQ(gResolver, Resolve);
}

// The flag word of a property or method in the version 12 tables, by the start of its text.
uint32_t PropertyFlags(const std::string &name) {
  for (size_t i = 0; i < PictureDefinition.propertyCount; ++i) {
    if (PictureDefinition.properties[i].name == name) return PictureDefinition.properties[i].flags;
  }
  ADD_FAILURE() << name;
  return ~0u;
}

TEST(PluginEntry, ANewHostMayUsePicturesInConsoleApplications) {
  Load(2012.0);
  EXPECT_EQ(PropertyFlags("Target"), 6u);
  EXPECT_EQ(PropertyFlags("DebugPicture"), 6u);
  EXPECT_EQ(PropertyFlags("Width"), 6u);
  for (size_t i = 0; i < PictureDefinition.methodCount; ++i) {
    const std::string text = PictureDefinition.methods[i].declaration;
    // Combine is for no console program at all.
    EXPECT_EQ(PictureDefinition.methods[i].flags, text.starts_with("Combine(") ? 0u : 4u) << text;
  }
}

TEST(PluginEntry, AHostWithoutAVersionGetsConvertedTablesWithoutPicturesInConsoleApplications) {
  Load(std::nullopt);
  const auto *properties = reinterpret_cast<const REALproperty9 *>(PictureDefinition.properties);
  for (size_t i = 0; i < PictureDefinition.propertyCount; ++i) {
    const std::string name = properties[i].name;
    const bool picture = name == "DebugPictureEnabled" || name == "DebugPicture" || name == "Target";
    EXPECT_EQ(properties[i].flags, picture ? 2u : 6u) << name;
  }
  const auto *methods = reinterpret_cast<const REALmethodDefinition9 *>(PictureDefinition.methods);
  for (size_t i = 0; i < PictureDefinition.methodCount; ++i) {
    const std::string text = methods[i].declaration;
    const bool picture = text.ends_with("as picture") || text.find("pic as picture") != text.npos;
    EXPECT_EQ(methods[i].flags, picture || text.starts_with("Combine(") ? 0u : 4u) << text;
  }
  const auto *event = reinterpret_cast<const REALevent9 *>(PictureFactoryDefinition.events);
  EXPECT_EQ(NewPictureEvent.forSystemUse, reinterpret_cast<uintptr_t>(event));
  EXPECT_STREQ(event->declaration, NewPictureEvent.declaration);
}

}  // namespace
}  // namespace zvk::plugin
