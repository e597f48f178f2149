// What handlers raise, on its way through the host.

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "host/classes/full_host.h"
#include "host/classes/native.h"
#include "host/functions/host_functions.h"
#include "host/host/dispatch.h"

namespace host {
namespace {

int64_t GetNumber(REALobjectStruct* /*self*/, int64_t) { throw std::bad_alloc(); }

void SetNumber(REALobjectStruct* /*self*/, int64_t, int64_t number) {
  if (number == 0) throw std::runtime_error("not zero");
  throw RaisedException("OutOfBoundsException", "not that", number);
}

// An object whose only property raises whatever is done with it.
class Raised : public ::testing::Test {
 protected:
  Raised() {
    const REALproperty properties[] = {PropertyRow("Number", "Integer", Native<GetNumber>, Native<SetNumber>)};
    AddMembers(host_.AddClass("Refuser", MakeInstance<Object>), properties, {});
    refuser_ = NewObject(host_, "Refuser");
  }

  std::string Pending() {
    const Ref<Object> pending = host_.TakePending();
    const auto* exception = dynamic_cast<const Exception*>(pending.get());
    if (exception == nullptr) return "nothing";
    return exception->type_name() + ": " + exception->message->bytes() + " " + std::to_string(exception->number);
  }

  FullHost host_;
  Ref<Object> refuser_;
};

TEST_F(Raised, ReachesAPluginThatAskedForTheProperty) {
  const auto set =
      reinterpret_cast<int8_t (*)(void*, const char*, int64_t)>(FindHostFunction("REALSetPropValueInteger"));
  const auto get =
      reinterpret_cast<int8_t (*)(void*, const char*, int64_t*)>(FindHostFunction("REALGetPropValueInteger"));
  EXPECT_EQ(set(refuser_->handle(), "Number", 7), 0);
  EXPECT_EQ(Pending(), "OutOfBoundsException: not that 7");
  EXPECT_EQ(set(refuser_->handle(), "Number", 0), 0);
  EXPECT_EQ(Pending(), "RuntimeException: not zero 0");
  int64_t number = 5;
  EXPECT_EQ(get(refuser_->handle(), "Number", &number), 0);
  EXPECT_EQ(Pending(), "OutOfMemoryException: There is not enough memory. 0");
  EXPECT_EQ(number, 5);
}

TEST_F(Raised, StaysPendingAroundAPluginsOwnCall) {
  const auto call =
      reinterpret_cast<void* (*)(void (*)(void*), void*)>(FindHostFunction("PluginCallFunctionWithExceptionHandler"));
  host_.Raise(RaisedException("RuntimeException", "before", 1));
  void* inner =
      call([](void* host) { static_cast<Host*>(host)->Raise(RaisedException("RuntimeException", "in", 2)); }, &host_);
  EXPECT_EQ(host_.heap().TakeIn<Exception>(inner)->number, 2);
  EXPECT_EQ(Pending(), "RuntimeException: before 1");
}

}  // namespace
}  // namespace host
