// The host functions for strings.

#include "host/core/encoding.h"
#include "host/functions/host_call.h"
#include "host/classes/native.h"
#include "host/functions/host_functions.h"

namespace host {
namespace {

Ref<String> MakeString(const char* bytes, int32_t length, uint32_t encoding) {
  if (bytes == nullptr || length < 0) return {};
  return Host::Current().heap().Make<String>(std::string(bytes, static_cast<size_t>(length)), encoding);
}

void REALLockString(REALstringStruct* string) {
  HostCall call("REALLockString", string);
  Host::Current().heap().HandOut(Find<String>(string));
}

void REALUnlockString(REALstringStruct* string) {
  HostCall call("REALUnlockString", string);
  if (Find<String>(string) != nullptr) Host::Current().heap().GiveUp(string);
}

const char* StringGetCString(REALstringStruct* string) {
  HostCall call("StringGetCString", string);
  const String* text = Find<String>(string);
  return text == nullptr ? nullptr : text->bytes().c_str();
}

REALstringStruct* REALBuildString(const char* bytes, int32_t length) {
  HostCall call("REALBuildString", Bytes{bytes, length}, length);
  if (call.fails()) return nullptr;
  return call.HandOut<REALstringStruct>(MakeString(bytes, length, kEncodingUnknown));
}

REALstringStruct* REALBuildStringWithEncoding(const char* bytes, int32_t length, uint32_t encoding) {
  HostCall call("REALBuildStringWithEncoding", Bytes{bytes, length}, length, encoding);
  if (call.fails()) return nullptr;
  return call.HandOut<REALstringStruct>(MakeString(bytes, length, encoding));
}

void REALSetStringEncoding(REALstringStruct* string, uint32_t encoding) {
  HostCall call("REALSetStringEncoding", string, encoding);
  if (String* text = Find<String>(string)) text->set_encoding(encoding);
}

REALstringStruct* REALConvertString(REALstringStruct* string, uint32_t encoding) {
  HostCall call("REALConvertString", string, encoding);
  const String* text = Find<String>(string);
  if (call.fails() || text == nullptr) return nullptr;
  return call.HandOut<REALstringStruct>(
      Host::Current().heap().Make<String>(ConvertEncoding(text->bytes(), text->encoding(), encoding), encoding));
}

}  // namespace

std::span<const HostFunction> StringFunctions() {
  static const HostFunction functions[] = {
      {"REALLockString", Proc(REALLockString)},
      {"REALUnlockString", Proc(REALUnlockString)},
      {"StringGetCString", Proc(StringGetCString)},
      {"REALBuildString", Proc(REALBuildString)},
      {"REALBuildStringWithEncoding", Proc(REALBuildStringWithEncoding)},
      {"REALSetStringEncoding", Proc(REALSetStringEncoding)},
      {"REALConvertString", Proc(REALConvertString)},
  };
  return functions;
}

}  // namespace host
