#pragma once

// The only file that names the interpreter's headers.
#include <lua.hpp>
