#include "host/native.h"

namespace host {

void AddPictureClasses(Host& host) { host.AddClass("Picture", nullptr); }

void AddApplicationClasses(Host& host) { host.AddClass("ConsoleApplication", nullptr); }

}  // namespace host
