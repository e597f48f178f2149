// A small plugin for tests of the script host: one class that breaks the rules on demand.

#include <cstdint>

#include "plugin/host_records.h"

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
  REALobjectStruct* item;
  int64_t cells[4];
};

extern REALclassDefinition bag_class;

Bag& Data(REALobjectStruct* self) {
  return *reinterpret_cast<Bag*>(reinterpret_cast<char*>(self) + bag_class.instance_offset);
}

void Destroy(REALobjectStruct* self) { Call<void>("REALUnlockObject", Data(self).item); }

int64_t GetWidth(REALobjectStruct* self, int64_t) { return Data(self).width; }
void SetWidth(REALobjectStruct* self, int64_t, int64_t value) { Data(self).width = value; }

REALobjectStruct* GetItem(REALobjectStruct* self, int64_t) {
  Call<void>("REALLockObject", Data(self).item);
  return Data(self).item;
}
void SetItem(REALobjectStruct* self, int64_t, REALobjectStruct* item) {
  Call<void>("REALLockObject", item);
  Call<void>("REALUnlockObject", Data(self).item);
  Data(self).item = item;
}

int64_t GetCount(REALobjectStruct*, int64_t) { return 4; }

void Raise() {
  auto* exception = Call<REALobjectStruct*>("PluginNewInstance", "OutOfBoundsException");
  auto* text = Call<REALstringStruct*>("REALBuildString", "no such cell", int32_t{12});
  Call<int8_t>("REALSetPropValueString", exception, "Message", text);
  Call<int8_t>("REALSetPropValueInteger", exception, "ErrorNumber", int64_t{7});
  Call<void>("RuntimeRaiseException", exception);
  Call<void>("REALUnlockObject", exception);
  Call<void>("REALUnlockString", text);
}

int64_t GetCell(REALobjectStruct* self, int64_t index) {
  if (index >= 0 && index < 4) return Data(self).cells[index];
  Raise();
  return 0;
}
void SetCell(REALobjectStruct* self, int64_t index, int64_t value) {
  if (index < 0 || index > 3) return Raise();
  Data(self).cells[index] = value;
}

REALobjectStruct* MakeBag(REALobjectStruct*, int64_t width) {
  auto* made = Call<REALobjectStruct*>("PluginNewInstance", "Bag");
  if (made != nullptr) Data(made).width = width;
  return made;
}

// Breaks one rule of the interface: see the tests for what each number does.
void Break(REALobjectStruct* self, int64_t rule) {
  REALobjectStruct* made = MakeBag(self, 0);
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
      (&Data(made).width)[sizeof(Bag) / sizeof(int64_t)] = 1;  // behind the data
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
    {nullptr, "Item", "Bag", 4, Proc(GetItem), Proc(SetItem), 0, nullptr},
    {nullptr, "Count", "Integer", 4, Proc(GetCount), nullptr, 0, nullptr},
};

REALmethodDefinition methods[] = {
    {Proc(GetCell), Proc(SetCell), "Cell(index as integer) as integer", 4, 0, 0},
    {Proc(MakeBag), nullptr, "Element(index as integer) as Bag", 4, 0, 0},
    {Proc(Break), nullptr, "Break(rule as integer)", 4, 0, 0},
    {Proc(GiveBorrowed), nullptr, "GiveBorrowed(bag as Bag) as Bag", 4, 0, 0},
};

REALclassDefinition bag_class = {13, "Bag",   nullptr, sizeof(Bag), 0,       nullptr, Proc(Destroy), properties,
                                 3,  methods, 4,       4,           nullptr, 0,       nullptr,       0};

REALobjectStruct* MakeWide(int64_t width) { return MakeBag(nullptr, width); }
REALmethodDefinition make_wide = {Proc(MakeWide), nullptr, "WideBag(width as integer = 80) as Bag", 4, 0, 0};

}  // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver) {
  resolve = resolver;
  Call<void>("RegisterPluginVersion", int32_t{13});
  Call<void>("PluginRegisterClass", &bag_class);
  Call<void>("PluginRegisterMethod", &make_wide);
}
