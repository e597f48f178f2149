#pragma once

// Where this codec and the world's files disagree, a library has it one way or the other. A tolerant one
// - goes on with a full code table when codes follow without a clear code; otherwise the row ends there;
// - saves an image whose pixels exceed its table's depth with a minimum code size that holds them; otherwise the
// depth
//   rules, and such pixels spoil those that follow.
//
// Defined by codec/tolerance.cpp, as GIF_TOLERANT says. A library can bring its own definition: linked in before the
// codec, it is the one that counts.
extern const bool kTolerant;
