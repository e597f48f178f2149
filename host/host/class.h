#pragma once

// Classes, modules and their members, as registered.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bridge/gif_plugin_host.h"
#include "host/core/call_form.h"
#include "host/core/declaration.h"
#include "host/core/heap.h"
#include "host/core/names.h"

namespace host {

class Object;

struct Property {
  explicit Property(const REALproperty& record, std::string_view owner);

  std::string name;
  Type type;
  uint32_t flags;
  REALproc getter;  // null: write-only
  REALproc setter;  // null: read-only
  int64_t parameter;
  std::string get_label;  // "GIFZKV.Count", for messages and the trace
  std::string set_label;  // "GIFZKV.Count="
  CallForm get_form;
  CallForm set_form;
  bool native = false;  // the host's own, not registered by the plugin
};

struct Method {
  // `takes_self`: the handler's first argument is the object that the method is called on. In a module's
  // record that object may be the first declared parameter ("extends ref as Picture"); it is taken off the
  // list here.
  Method(const REALmethodDefinition& record, std::string_view owner, bool takes_self);

  Declaration declaration;  // the parameters between the parentheses of a call, and the result
  std::string text;         // as registered
  uint32_t flags;
  REALproc handler;  // null: can only be assigned to
  REALproc setter;   // called for `Name(arguments) = value`; null: can't be assigned to
  bool takes_self;
  std::string extended_class;  // of a declaration with "extends": the class that gets the method
  std::string label;           // "GIFZKV.Block"
  std::string set_label;       // "GifPaletteZKV.Red="
  std::unique_ptr<CallForm> call_form;
  std::unique_ptr<CallForm> set_form;
  bool native = false;  // as of a property
};

// What one name of a class (or among the global methods) stands for: a property, or overloaded methods.
struct MemberGroup {
  std::string name;
  std::unique_ptr<Property> property;
  std::vector<std::unique_ptr<Method>> overloads;
};

class MemberTable {
 public:
  void Add(std::unique_ptr<Property> property);
  void Add(std::unique_ptr<Method> method);
  const MemberGroup* Find(std::string_view name) const;
  const NameMap<MemberGroup>& all() const { return groups_; }

 private:
  MemberGroup& Group(const std::string& name);
  NameMap<MemberGroup> groups_;
  std::unordered_map<std::string_view, const MemberGroup*>
      as_written_;  // found sooner, where letter case is the same
};

class Class {
 public:
  using Maker = Ref<Object> (*)(Heap& heap, const Class& made_class);

  std::string name;
  std::string destructor_label;  // "GIFZKV destructor"
  const Class* superclass = nullptr;
  Maker maker = nullptr;                      // null: no instances
  REALclassDefinition* definition = nullptr;  // the plugin's record, for classes that it registered
  MemberTable members;

  bool IsA(std::string_view class_name) const;
  const MemberGroup* Find(std::string_view member) const;          // here or in a superclass
  const Method* FindDeclared(std::string_view declaration) const;  // by its exact text
  std::vector<std::string> MemberNames() const;
};

}  // namespace host
