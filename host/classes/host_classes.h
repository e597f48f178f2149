#pragma once

// The host's own classes. Each function adds those of one kind.

#include "host/host/host.h"

namespace host {

void AddExceptionClasses(Host& host);
void AddMemoryBlockClass(Host& host);
void AddFolderItemClass(Host& host);
void AddPictureClasses(Host& host);
void AddOutputFileClass(Host& host);
void AddCanvasClass(Host& host);
void AddFilmClass(Host& host);
void AddApplicationClass(Host& host);
void AddGlobalMethods(Host& host);

}  // namespace host
