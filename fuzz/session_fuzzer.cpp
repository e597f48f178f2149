// Whole script sessions: opens a damaged document and calls handlers that the input chooses, in its order, with
// objects that earlier calls gave, while others are dropped. The host ends the program on any broken reference; when
// everything is dropped in the end, nothing may be alive.
//
// Input: two bytes with the length of the document, the document, then choices.

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "fuzz/flat_document.h"
#include "fuzz/input.h"
#include "host/classes/full_host.h"
#include "host/host/dispatch.h"
#include "host/host/folder_item.h"
#include "host/host/memory_block.h"

namespace {

using host::Host;
using host::Object;
using host::Ref;
using host::Type;
using host::Value;

host::HostOptions Options() {
  host::HostOptions options;
  if (std::getenv("DESKTOP_PICTURES")) options.pictures = host::PictureKind::kDesktop;
  if (SmallImages()) options.largest_block = 1'000'000;  // a row of 2 GB takes a second
  return options;
}

Host& TheHost() {
  static host::FullHost host(Options());
  return host;
}

// In the end what the session holds goes first to last, which frees documents before and after their views.
class Session {
 public:
  Session(Input input, const Bytes& document, bool may_take_long) : input_(input), may_take_long_(may_take_long) {
    const std::string_view bytes(reinterpret_cast<const char*>(document.data()), document.size());
    const Value text = HandleValue(host_.NewString(bytes));
    Keep(text);
    Keep(Item());
    KeepOpened([&] { return CallGlobal(host_, "GifStringToGifZKV", {text}); });
  }

  ~Session() {
    if (saved_) std::remove(Path().c_str());  // the next session is to be the same whatever came before
  }

  void Run() {
    for (int calls = 0; calls < 64 && !input_.empty(); ++calls) {
      try {
        Step();
      } catch (const host::UsageError&) {
      } catch (const host::RaisedException& raised) {
        if (raised.class_name != "OutOfBoundsException" && raised.class_name != "OutOfMemoryException") std::abort();
      }
    }
  }

 private:
  struct Held {
    Ref<host::Counted> thing;
    bool opened = false;  // a document that owns what its views look at
  };

  void Step() {
    switch (input_.Below(10)) {
      case 0:
        return Keep(HandleValue(NewObject(host_, ClassName())));
      case 1:
        if (!held_.empty()) held_.erase(held_.begin() + input_.Below(static_cast<int32_t>(held_.size())));
        return;
      case 2:
        return Keep(MakeBlock());
      case 3:
        return may_take_long_ ? UseFile() : UseMember();
      default:
        return UseMember();
    }
  }

  void Keep(const Value& value) {
    const auto* thing = std::get_if<Ref<host::Counted>>(&value);
    if (thing != nullptr && held_.size() < 64) held_.push_back({*thing});
  }

  template <class Open>
  void KeepOpened(Open open) {
    const size_t before = held_.size();
    Keep(open());
    if (held_.size() > before) held_.back().opened = true;
  }

  // The one file of a session.
  static const std::string& Path() {
    static const std::string path =
        std::filesystem::temp_directory_path() / ("session_fuzzer_" + std::to_string(getpid()) + ".gif");
    return path;
  }

  Value Item() {
    const Ref<Object> item = NewObject(host_, "FolderItem");
    if (auto* file = dynamic_cast<host::FolderItem*>(item.get())) file->set_path(Path());
    return HandleValue(item);
  }

  Value MakeBlock() {
    const Ref<Object> block = NewObject(host_, "MemoryBlock", {int64_t{input_.Byte()}});
    auto* memory = dynamic_cast<host::MemoryBlock*>(block.get());
    for (int64_t i = 0; i < memory->size(); ++i) memory->bytes()[i] = static_cast<std::byte>(i);
    return HandleValue(block);
  }

  void UseFile() {
    const Ref<Object> item = host::ValueAs<Object>(Item());
    if (input_.Coin()) {
      saved_ = true;
      Keep(CallMember(host_, item, "SaveAsGIFZKV", {Pick({Type::Kind::kObject, "GIFZKV"})}));
    } else if (input_.Coin()) {
      KeepOpened([&] { return CallMember(host_, item, "OpenAsGIFZKV"); });
    } else {
      Keep(CallGlobal(host_, "GifStringToPictureZKV", {Pick({Type::Kind::kString, "string"})}));
    }
  }

  std::string ClassName() {
    static constexpr const char* kNames[] = {"GIFZKV",       "GifBlockZKV",   "GifPictureZKV", "GifExtensionZKV",
                                             "GifScreenZKV", "GifPaletteZKV", "GifDataZKV"};
    return kNames[input_.Below(std::size(kNames))];
  }

  // A held value of the type; nothing when the one looked at is of another.
  Value Pick(const Type& type) {
    if (held_.empty()) return {};
    Value value = HandleValue(held_[input_.Byte() % held_.size()].thing);
    return Accepts(type, value) ? value : Value();
  }

  Value Argument(const Type& type, bool to_opened) {
    static constexpr int64_t kIntegers[] = {0,
                                            1,
                                            2,
                                            3,
                                            4,
                                            5,
                                            7,
                                            8,
                                            9,
                                            16,
                                            100,
                                            254,
                                            255,
                                            256,
                                            257,
                                            300,
                                            -1,
                                            -2,
                                            INT64_MAX,
                                            INT64_MIN,
                                            int64_t{1} << 32,
                                            (int64_t{1} << 31) - 1};
    switch (type.kind) {
      case Type::Kind::kInteger:
      case Type::Kind::kColor:
        return kIntegers[input_.Below(std::size(kIntegers) - 1)];
      case Type::Kind::kBoolean:
        return input_.Coin();
      case Type::Kind::kString:
      case Type::Kind::kObject:
        // A document that stores its own view holds itself for ever: opened ones get something new.
        if (!to_opened) return Pick(type);
        return input_.Coin() ? HandleValue(NewObject(host_, type.name)) : Value();
      default:
        return {};
    }
  }

  // A property's new value.
  Value NewValue(const Type& type, bool to_opened) {
    Value value = Argument(type, to_opened);
    auto* integer = std::get_if<int64_t>(&value);
    if (integer != nullptr && !may_take_long_) *integer &= 63;
    return value;
  }

  void UseMember() {
    if (held_.empty()) return;
    const Held held = held_[input_.Byte() % held_.size()];
    const Ref<Object> object = host::ValueAs<Object>(HandleValue(held.thing));
    if (!object || object->object_class().definition == nullptr) return;
    const auto& members = object->object_class().members.all();
    const auto chosen = std::next(members.begin(), input_.Below(static_cast<int32_t>(members.size())));
    const host::MemberGroup& member = chosen->second;
    const bool set = input_.Coin();
    if (member.property && set) {
      SetProperty(host_, object, *member.property, NewValue(member.property->type, held.opened));
    } else if (member.property) {
      Keep(GetProperty(host_, object, *member.property));
    } else {
      const auto& overload = member.overloads[input_.Byte() % member.overloads.size()];
      std::vector<Value> arguments;
      for (const auto& parameter : overload->declaration.parameters) {
        arguments.push_back(Argument(parameter.type, held.opened));
      }
      if (set && overload->setter != nullptr) {
        AssignMethod(host_, object, member, arguments, Argument(overload->declaration.result, held.opened));
      } else {
        Keep(CallMethod(host_, object, member, arguments));
      }
    }
  }

  Host& host_ = TheHost();
  Input input_;
  const bool may_take_long_;  // uses files, and gives images large sizes
  bool saved_ = false;
  std::vector<Held> held_;
};

// Where images are to be small one session in sixteen, by its bytes: an engine does not learn to make such ones.
bool MayTakeLong(const uint8_t* data, size_t size) {
  return !SmallImages() || std::hash<std::string_view>()({reinterpret_cast<const char*>(data), size}) % 16 == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  [[maybe_unused]] static const bool loaded = (TheHost().LoadPlugin(GIF_PLUGIN_FILE), true);
  if (size < 2) return 0;
  const size_t length = std::min<size_t>(data[0] + 256u * data[1], size - 2);
  Bytes document(data + 2, data + 2 + length);
  const bool may_take_long = MayTakeLong(data, size);
  LimitImages(&document, LargeImages() ? 1600000 : may_take_long ? 8000 : 1000);
  Session(Input(data + 2 + length, size - 2 - length), document, may_take_long).Run();
  if (TheHost().heap().empty()) return 0;
  TheHost().ReportLeaks();
  std::abort();
}
