#include "host/classes/full_host.h"

#include "host/classes/host_classes.h"
#include "host/functions/host_functions.h"

namespace host {

FullHost::FullHost(HostOptions options) : Host(std::move(options), FindHostFunction) {
  AddExceptionClasses(*this);
  AddMemoryBlockClass(*this);
  AddFolderItemClass(*this);
  AddPictureClasses(*this);
  AddOutputFileClass(*this);
  AddCanvasClass(*this);
  AddFilmClass(*this);
  AddApplicationClass(*this);
  AddGlobalMethods(*this);
}

}  // namespace host
