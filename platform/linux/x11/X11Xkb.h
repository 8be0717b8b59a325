#pragma once

// The XKB header of xcb names a field `explicit`, which no C++ compiler takes.
#define explicit explicitField
#include <xcb/xkb.h>
#undef explicit
