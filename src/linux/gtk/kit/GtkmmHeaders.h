#pragma once

// What nearly every file of this room includes, compiled once.
#include <gtkmm.h>
