// Compiled with the host layer's include settings by a test that expects it to fail: the host
// layer sees its own headers and no module header.
#include "orvsdk/host/core/OrvMemory.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
