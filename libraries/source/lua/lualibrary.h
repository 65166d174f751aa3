#pragma once
#include <lua.hpp>

namespace Tessarine {

/** May raise. Gives the state new globals: those parts of the standard library that neither reach outside nor run for long, and
    some of our own in place of others. */
int openLuaLibrary(lua_State* state);

}  // namespace Tessarine
