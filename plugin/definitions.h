#pragma once

// The tables of everything that scripts see. They are handed to the host, so they stay in place for the life of the
// process. The seven classes' own records stand with the classes; the host writes each one's instance offset into it.

#include "bridge/gif_plugin_host.h"

extern REALclassDefinition folderitem2Class3;  // extends the host's class "Folderitem"

extern REALmethodDefinition globalMethods[2];

// Puts the tables of members into the class records; called once, before they are registered.
void FillDefinitions();
