// The host functions for strings.

#include "host/core/encoding.h"
#include "host/functions/host_call.h"
#include "host/functions/host_functions.h"

namespace host {
namespace {

Ref<String> MakeString(Host& host, const char* bytes, int32_t length, uint32_t encoding) {
  if (bytes == nullptr || length < 0) return {};
  return host.heap().Make<String>(std::string(bytes, static_cast<size_t>(length)), encoding);
}

void REALLockString(REALstringStruct* string) {
  HostCall call("REALLockString", string);
  call.host().heap().HandOut(call.Find<String>(string));
}

void REALUnlockString(REALstringStruct* string) {
  HostCall call("REALUnlockString", string);
  call.host().heap().GiveUp(call.Find<String>(string));
}

const char* StringGetCString(REALstringStruct* string) {
  HostCall call("StringGetCString", string);
  const String* text = call.Find<String>(string);
  return text == nullptr ? nullptr : text->bytes().c_str();
}

REALstringStruct* REALBuildString(const char* bytes, int32_t length) {
  HostCall call("REALBuildString", Bytes{bytes, length}, length);
  if (call.fails()) return nullptr;
  return call.HandOut<REALstringStruct>(MakeString(call.host(), bytes, length, kEncodingUnknown));
}

REALstringStruct* REALBuildStringWithEncoding(const char* bytes, int32_t length, uint32_t encoding) {
  HostCall call("REALBuildStringWithEncoding", Bytes{bytes, length}, length, encoding);
  if (call.fails()) return nullptr;
  return call.HandOut<REALstringStruct>(MakeString(call.host(), bytes, length, encoding));
}

void REALSetStringEncoding(REALstringStruct* string, uint32_t encoding) {
  HostCall call("REALSetStringEncoding", string, encoding);
  if (String* text = call.Find<String>(string)) text->set_encoding(encoding);
}

REALstringStruct* REALConvertString(REALstringStruct* string, uint32_t encoding) {
  HostCall call("REALConvertString", string, encoding);
  const String* text = call.Find<String>(string);
  if (call.fails() || text == nullptr) return nullptr;
  return call.HandOut<REALstringStruct>(
      call.host().heap().Make<String>(ConvertEncoding(text->bytes(), text->encoding(), encoding), encoding));
}

}  // namespace

std::span<const HostFunction> StringFunctions() {
  static const HostFunction functions[] = {
      Offered<REALLockString>("REALLockString"),
      Offered<REALUnlockString>("REALUnlockString"),
      Offered<StringGetCString>("StringGetCString"),
      Offered<REALBuildString>("REALBuildString"),
      Offered<REALBuildStringWithEncoding>("REALBuildStringWithEncoding"),
      Offered<REALSetStringEncoding>("REALSetStringEncoding"),
      Offered<REALConvertString>("REALConvertString"),
  };
  return functions;
}

}  // namespace host
