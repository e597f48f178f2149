#include "codec/tolerance.h"

#if defined(GIF_TOLERANT)
const bool kTolerant = true;
#else
const bool kTolerant = false;
#endif
