#include "standalone/runtime/exceptions.h"

#include <gtest/gtest.h>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

// Raises in the manner of a plug-in: new instance, properties by name, raise, drop.
void Raise(const char *className, const char *message, int32_t number) {
  const REALobject exception = Entry<REALobject(const char *)>("PluginNewInstance")(className);
  auto text = Owned<String>::Adopt(String::Make(message));
  Entry<uint8_t(REALobject, const char *, REALstring)>("REALSetPropValueString")(exception, "Message", text);
  Entry<uint8_t(REALobject, const char *, int32_t)>("REALSetPropValueInt")(exception, "ErrorNumber", number);
  Entry<void(REALobject)>("RuntimeRaiseException")(exception);
  Entry<void(REALobject)>("REALUnlockObject")(exception);
}

TEST(Exceptions, ArePendingUntilTheyAreTaken) {
  Host host;
  EXPECT_FALSE(host.HasPendingException());
  Raise("NilObjectException", "picture is nil", 3);
  EXPECT_TRUE(host.HasPendingException());
  EXPECT_EQ(host.TakePendingException(), (RaisedException{"NilObjectException", "picture is nil", 3}));
  EXPECT_EQ(host.TakePendingException(), std::nullopt);
  EXPECT_TRUE(host.Leaks().empty());
}

TEST(Exceptions, ALaterOneTakesThePlaceOfThePendingOne) {
  Host host;
  Raise("NilObjectException", "first", 0);
  Raise("OutOfBoundsException", "second", 0);
  EXPECT_EQ(host.Leaks(), (std::vector<Leak>{{"OutOfBoundsException", 1}, {"String", 1}}));
  EXPECT_EQ(host.TakePendingException()->message, "second");
  EXPECT_TRUE(host.Leaks().empty());
}

TEST(Exceptions, TellMessageAndNumberByName) {
  Host host;
  auto exception = Owned<Object>::Adopt(host.Classes().NewInstance("RuntimeException"));
  String *text = nullptr;
  EXPECT_TRUE(exception->GetText("message", &text));
  EXPECT_EQ(text, nullptr);
  int32_t number = -1;
  EXPECT_TRUE(exception->GetInteger("errornumber", &number));
  EXPECT_EQ(number, 0);
  EXPECT_FALSE(exception->SetInteger("Number", 1));
  EXPECT_FALSE(exception->SetText("Reason", nullptr));
}

TEST(Exceptions, WithoutAMessageHaveAnEmptyOne) {
  Host host;
  auto exception = Owned<Object>::Adopt(host.Classes().NewInstance("RuntimeException"));
  host.Raise(exception.Get());
  EXPECT_EQ(host.TakePendingException(), (RaisedException{"RuntimeException", "", 0}));
}

TEST(Exceptions, OnlyAnExceptionCanBeRaised) {
  Host host;
  auto item = Owned<Object>::Adopt(host.Classes().NewInstance("FolderItem"));
  Entry<void(REALobject)>("RuntimeRaiseException")(item);
  EXPECT_FALSE(host.HasPendingException());
  EXPECT_EQ(host.Misdeeds().size(), 1u);
}

}  // namespace
}  // namespace standalone
