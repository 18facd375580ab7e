// The members that the header defines, as symbols of the library: a binding or a look-up by name
// needs to copy, destroy and read values too.

#define KELM_INLINE __attribute__((visibility("default"), used))
#include "Kelm.h"
