// What the sanitizers are told when the program is built with them.

// NOLINTBEGIN(bugprone-reserved-identifier)
// Visible, so that the sanitizers' own library finds them.
#pragma GCC visibility push(default)
extern "C" {

// Scripts ask for more memory than there is, and are told so.
const char* __asan_default_options() { return "allocator_may_return_null=1"; }

// What a plugin hands over at registration lives as long as the process, also when no host function takes it. The
// library that finds fonts never lets go of what it has read.
const char* __lsan_default_suppressions() { return "leak:host::Host::StartPlugin\nleak:libfontconfig\n"; }

const char* __lsan_default_options() { return "print_suppressions=0"; }

}  // extern "C"
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier)
