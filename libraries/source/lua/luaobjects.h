#pragma once
#include "luacontext.h"

/** Objects of the host as scripts see them: one metatable for each class, made of its tables. */

namespace Tessarine {

/** May raise. Shares the object; one that isn't for scripts can only be handed on. */
void pushObject(lua_State* state, FUnknown* object);
/** The object behind a value of a script. Borrowed. */
FUnknown* objectAt(lua_State* state, int index);
/** May raise. Its objects are known from then on; a class that has a constructor is pushed as a function, others as nil. */
void pushClass(lua_State* state, const SClassInfo* info);

}  // namespace Tessarine
