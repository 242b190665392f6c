// The shared library is made of the floors; this file only gives the link step its own source.
#include "vorn/vorn.h"
