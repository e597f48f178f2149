#pragma once

// The tables of everything that scripts see; the seven class definitions are declared in classes/instance.h.
// They are handed to the host, which writes each class's instance offset into them, so they stay in place for
// the life of the process.

#include "bridge/host_records.h"

extern REALclassDefinition folderitem2Class3;  // extends the host's class "Folderitem"

extern REALmethodDefinition globalMethods[2];
