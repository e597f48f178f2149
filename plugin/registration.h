#pragma once

// Adapting the definition tables to the running host and registering them with it.

#include <cstdint>

#include "bridge/gif_plugin_host.h"

// The class-definition version that the records handed to the host follow, 9 to 13; set by `REALPluginMain`.
extern uint32_t CurrentREALControlVersion;

// The part's name, from which the names of its modules are formed.
extern const char* gpartname;

// The class-definition version for a host version.
uint32_t ControlVersionFor(double host_version);

// Makes the flags of a class and of all its members fit the host: a marker bit (0x40000 or 0x80000) becomes
// the flag it stands for (4 or 8) on hosts of version 2010.029 or later and is removed on older ones.
void FixConsoleFlags(REALclassDefinition* definition);
uint32_t FixedFlags(uint32_t flags);

// A declaration rewritten as an extension method of the named class: "Open as X" becomes
// "Open(extends ref as Class) as X". The caller frees the result with `free`; null without memory.
char* AddClassParameter(const char* declaration, const char* class_name);

// A declaration with a last parameter for the value assigned: "Red(index as integer) as integer" becomes
// "Red(index as integer, assigns value as integer)". Freed with `free`; null without memory and for a
// declaration with neither ")" nor a blank.
char* AddAssignedParameter(const char* declaration);

// Register with the host; a step that runs out of memory is left out.
void RegisterClass(REALclassDefinition* definition);
void RegisterClassExtension(REALclassDefinition* extension);
void RegisterGlobalMethods(REALmethodDefinition* methods, int64_t count);
