#pragma once

// What the code asks of compilers and machines: words that each compiler has its own for, with a fallback, and the
// one refusal.

#include <bit>
#include <cstdint>

static_assert(std::endian::native == std::endian::little,
              "records, codes and pixels are laid out for little-endian machines");

// Before the function that a shared library shows.
#if defined(_WIN32)
#define GIF_EXPORTED __declspec(dllexport)
#elif defined(__GNUC__)
#define GIF_EXPORTED __attribute__((visibility("default")))
#else
#define GIF_EXPORTED
#endif

// Set GIF_PLAIN_COMPILER to build with what a compiler without words of its own gets.
#if defined(__GNUC__) && !defined(GIF_PLAIN_COMPILER)
#define GIF_GNU_WORDS
#endif

// After a lambda's parameters: it is to become part of its caller.
#if defined(GIF_GNU_WORDS)
#define GIF_ALWAYS_INLINE __attribute__((always_inline))
#else
#define GIF_ALWAYS_INLINE
#endif

// The address of the running function's frame, or of a local variable in it.
#if defined(GIF_GNU_WORDS)
#define GIF_FRAME_ADDRESS(local) reinterpret_cast<uintptr_t>(__builtin_frame_address(0))
#else
#define GIF_FRAME_ADDRESS(local) reinterpret_cast<uintptr_t>(&(local))
#endif

// Which vector instructions the compiler can be asked for. On x86 a function says which it uses, and its caller asks
// first whether this processor has them.
#if defined(GIF_GNU_WORDS) && defined(__x86_64__)
#define GIF_X86_KERNELS
#define GIF_TARGET(instructions) __attribute__((target(instructions)))
#if defined(__APPLE__)
bool SystemSaysProcessorHas(const char* instructions);
#define GIF_PROCESSOR_HAS(instructions) SystemSaysProcessorHas(instructions)
#else
#define GIF_PROCESSOR_HAS(instructions) __builtin_cpu_supports(instructions)
#endif
#elif defined(GIF_GNU_WORDS) && defined(__ARM_NEON) && defined(__aarch64__)
#define GIF_NEON_KERNELS
#endif
