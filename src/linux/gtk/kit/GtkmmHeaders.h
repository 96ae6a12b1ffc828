#pragma once

// Included by nearly every file of these rooms, so it is precompiled.
#include <gtkmm.h>
