#include "host/host/class.h"

#include "host/core/text.h"

namespace host {
namespace {

const Type kIntegerType{Type::Kind::kInteger, "Integer"};
const Type kSelfType{Type::Kind::kObject, "Object"};

std::vector<Type> HandlerTypes(const Method& method) {
  std::vector<Type> types;
  if (method.takes_self) types.push_back(kSelfType);
  for (const Parameter& parameter : method.declaration.parameters) types.push_back(parameter.type);
  return types;
}

// A module's "Name(extends ref as Class, ..., assigns value as Type)" becomes what a class would have
// registered.
void FoldModuleForm(Method& method) {
  auto& parameters = method.declaration.parameters;
  if (!parameters.empty() && parameters.front().extends) {
    method.extended_class = parameters.front().type.name;
    method.takes_self = true;
    parameters.erase(parameters.begin());
  }
  if (!parameters.empty() && parameters.back().assigns) {
    method.declaration.result = parameters.back().type;
    method.setter = method.handler;
    method.handler = nullptr;
    parameters.pop_back();
  }
}

std::string Label(std::string_view owner, const std::string& name) {
  return owner.empty() ? name : Text(owner, ".", name);
}

}  // namespace

Property::Property(const REALproperty& record, std::string_view owner)
    : name(record.name),
      type(ParseType(record.type)),
      flags(record.flags),
      getter(record.getter),
      setter(record.setter),
      parameter(record.parameter),
      get_label(Label(owner, name)),
      set_label(get_label + "="),
      get_form({kSelfType, kIntegerType}, type),
      set_form({kSelfType, kIntegerType, type}, {}) {}

Method::Method(const REALmethodDefinition& record, std::string_view owner, bool has_self)
    : declaration(ParseDeclaration(record.declaration)),
      text(record.declaration),
      flags(record.flags),
      handler(record.handler),
      setter(record.setter),
      takes_self(has_self) {
  FoldModuleForm(*this);
  label = Label(extended_class.empty() ? owner : extended_class, declaration.name);
  set_label = label + "=";
  std::vector<Type> types = HandlerTypes(*this);
  call_form = std::make_unique<CallForm>(types, declaration.result);
  if (setter == nullptr) return;
  types.push_back(declaration.result);
  set_form = std::make_unique<CallForm>(types, Type{});
}

MemberGroup& MemberTable::Group(const std::string& name) {
  MemberGroup& group = groups_[name];
  if (group.name.empty()) {
    group.name = name;
    as_written_[group.name] = &group;
  }
  return group;
}

void MemberTable::Add(std::unique_ptr<Property> property) {
  MemberGroup& group = Group(property->name);
  group.property = std::move(property);
}

void MemberTable::Add(std::unique_ptr<Method> method) {
  MemberGroup& group = Group(method->declaration.name);
  group.overloads.push_back(std::move(method));
}

const MemberGroup* MemberTable::Find(std::string_view name) const {
  const auto as_written = as_written_.find(name);
  if (as_written != as_written_.end()) return as_written->second;
  const auto found = groups_.find(name);
  return found == groups_.end() ? nullptr : &found->second;
}

bool Class::IsA(std::string_view class_name) const {
  return SameName(name, class_name) || (superclass != nullptr && superclass->IsA(class_name));
}

const MemberGroup* Class::Find(std::string_view member) const {
  const MemberGroup* group = members.Find(member);
  if (group != nullptr || superclass == nullptr) return group;
  return superclass->Find(member);
}

const Method* Class::FindDeclared(std::string_view declaration) const {
  const std::string_view method_name = declaration.substr(0, declaration.find_first_of(" ("));
  const MemberGroup* group = Find(method_name);
  if (group == nullptr) return nullptr;
  for (const auto& method : group->overloads) {
    if (method->text == declaration) return method.get();
  }
  return nullptr;
}

std::vector<std::string> Class::MemberNames() const {
  std::vector<std::string> names = superclass != nullptr ? superclass->MemberNames() : std::vector<std::string>();
  for (const auto& [key, group] : members.all()) names.push_back(group.name);
  return names;
}

}  // namespace host
