// A small plugin for tests of the script host: one class that breaks the rules on demand.

#include <cstdint>
#include <cstdlib>

#include "bridge/gif_plugin_host.h"

namespace {

REALresolver resolve = nullptr;

template <class Result, class... Arguments>
Result Call(const char* name, Arguments... arguments) {
  return reinterpret_cast<Result (*)(Arguments...)>(resolve(name))(arguments...);
}

template <class Result, class... Arguments>
REALproc Proc(Result (*function)(Arguments...)) {
  return reinterpret_cast<REALproc>(function);
}

struct Bag {
  int64_t width;
};

extern REALclassDefinition bag_class;

Bag& Data(REALobjectStruct* self) {
  return *reinterpret_cast<Bag*>(reinterpret_cast<char*>(self) + bag_class.instance_offset);
}

int64_t GetWidth(REALobjectStruct* self, int64_t) { return Data(self).width; }
void SetWidth(REALobjectStruct* self, int64_t, int64_t value) { Data(self).width = value; }

REALobjectStruct* MakeBag(int64_t width) {
  auto* made = Call<REALobjectStruct*>("PluginNewInstance", "Bag");
  Data(made).width = width;
  return made;
}

// Breaks one rule of the interface: see the tests for what each number does.
void Break(REALobjectStruct* self, int64_t rule) {
  REALobjectStruct* made = MakeBag(0);
  switch (rule) {
    case 0:
      return;  // keeps the reference
    case 1:
      Call<void>("REALUnlockObject", made);
      return Call<void>("REALUnlockObject", made);
    case 2:
      Call<void>("REALUnlockObject", self);  // only borrowed
      break;
    case 3:
      Call<void>("REALLockString", made);  // another kind
      break;
    case 4:
      (&Data(made).width)[1] = 1;  // behind the data
      break;
    case 5:
      Call<void>("REALLockObject", &rule);  // never a handle
      break;
    default:
      break;
  }
  Call<void>("REALUnlockObject", made);
}

// Returns its argument without a reference of its own.
REALobjectStruct* GiveBorrowed(REALobjectStruct*, REALobjectStruct* bag) { return bag; }

REALproperty properties[] = {
    {nullptr, "Width", "Integer", 4, Proc(GetWidth), Proc(SetWidth), 0, nullptr},
};

REALmethodDefinition methods[] = {
    {Proc(Break), nullptr, "Break(rule as integer)", 4, 0, 0},
    {Proc(GiveBorrowed), nullptr, "GiveBorrowed(bag as Bag) as Bag", 4, 0, 0},
};

REALclassDefinition bag_class = {13, "Bag",   nullptr, sizeof(Bag), 0,       nullptr, nullptr, properties,
                                 1,  methods, 2,       4,           nullptr, 0,       nullptr, 0};

REALmethodDefinition make_wide = {Proc(MakeBag), nullptr, "WideBag(width as integer = 80) as Bag", 4, 0, 0};

}  // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver) {
  resolve = resolver;
  Call<void>("RegisterPluginVersion", int32_t{13});
  Call<void>("PluginRegisterClass", &bag_class);
  if (const char* odd = std::getenv("SAMPLE_DECLARATION")) make_wide.declaration = odd;
  Call<void>("PluginRegisterMethod", &make_wide);
}
