#include "lualibrary.h"
#include "luacontext.h"
#include <algorithm>
#include <cstring>

namespace Tessarine {
namespace {
constexpr lua_Integer kMaxUnpacked = 250;
constexpr int kMaxGiven = 255;                 // values
constexpr size_t kMaxGivenBytes = 8 << 20;     // of all texts among them
constexpr lua_Integer kMaxRepeated = 1 << 20;  // bytes
constexpr lua_Integer kMovedAtOnce = 10000;    // members of a table, between two looks at the clock

// --- of our own: those of the standard library may loop for ages without an instruction that is counted

/** What a value does by its metatable. What else stands there has no effect: finalizers run with the hook switched off, what is
    weak takes ages to find out about, and where something ends nobody looks at the clock. */
constexpr const char* kEvents[] = {"__add",       "__band", "__bnot", "__bor",      "__bxor",     "__call",  "__concat",
                                   "__div",       "__eq",   "__idiv", "__index",    "__le",       "__len",   "__lt",
                                   "__metatable", "__mod",  "__mul",  "__name",     "__newindex", "__pairs", "__pow",
                                   "__shl",       "__shr",  "__sub",  "__tostring", "__unm"};
constexpr const char* kRefused[] = {"__gc", "__mode", "__close"};
constexpr lua_Integer kProtects = 1;  // of a copy: what it was made of has "__metatable"

/** The member of a name of the table at an index, without metatables. */
int pushMember(lua_State* state, int index, const char* name) {
    lua_pushstring(state, name);
    return lua_rawget(state, index);
}

/** Of the metatable at 2, with nothing but events; scripts see theirs instead. Nobody changes the copy later, so what holds now
    always holds. What is called is a function: tables that call each other move all of the stack at each step. */
void pushCopyOfMetatable(lua_State* state) {
    lua_newtable(state);
    for (const char* name : kEvents) {
        pushMember(state, 2, name);
        lua_setfield(state, 3, name);
    }
    const int called = pushMember(state, 3, "__call");
    luaL_argcheck(state, called == LUA_TNIL || called == LUA_TFUNCTION, 2, "what is called is no function");
    const bool isProtected = pushMember(state, 3, "__metatable") != LUA_TNIL;
    lua_settop(state, 3);
    if (isProtected) {
        lua_pushboolean(state, true);
        lua_rawseti(state, 3, kProtects);
    } else {
        lua_pushvalue(state, 2);
        lua_setfield(state, 3, "__metatable");
    }
}

/** As the standard one, but the value gets a copy: what changes in the metatable later has no effect. */
int setMetatable(lua_State* state) {
    luaL_checktype(state, 1, LUA_TTABLE);
    const int type = lua_type(state, 2);
    luaL_argexpected(state, type == LUA_TNIL || type == LUA_TTABLE, 2, "nil or table");
    lua_settop(state, 2);
    if (lua_getmetatable(state, 1) && lua_rawgeti(state, 3, kProtects) != LUA_TNIL)
        return luaL_error(state, "cannot change a protected metatable");
    lua_settop(state, 2);
    if (type == LUA_TTABLE) {
        for (const char* name : kRefused)
            if (pushMember(state, 2, name) != LUA_TNIL)
                return luaL_error(state, "a metatable cannot have '%s' here", name);
        lua_settop(state, 2);
        pushCopyOfMetatable(state);
    }
    lua_setmetatable(state, 1);
    lua_settop(state, 1);
    return 1;
}

int repeat(lua_State* state) {
    size_t length = 0, gapLength = 0;
    const char* text = luaL_checklstring(state, 1, &length);
    const lua_Integer times = luaL_checkinteger(state, 2);
    const char* gap = luaL_optlstring(state, 3, "", &gapLength);
    const size_t both = length + gapLength;
    if (times <= 0 || both == 0) {
        lua_pushliteral(state, "");
        return 1;
    }
    luaL_argcheck(state, times <= kMaxRepeated / lua_Integer(both), 2, "the text would be too long");
    luaL_Buffer buffer;
    char* const start = luaL_buffinitsize(state, &buffer, both * size_t(times));
    char* end = start;
    for (lua_Integer i = 0; i < times; ++i) {
        end = std::copy_n(text, length, end);
        end = std::copy_n(gap, i + 1 < times ? gapLength : 0, end);
    }
    luaL_pushresultsize(&buffer, size_t(end - start));
    return 1;
}

/** A plain text, no pattern: first and last place, or nil. */
int find(lua_State* state) {
    size_t length = 0, whatLength = 0;
    const char* text = luaL_checklstring(state, 1, &length);
    const char* what = luaL_checklstring(state, 2, &whatLength);
    lua_Integer from = luaL_optinteger(state, 3, 1);
    from = from < 0 ? std::max<lua_Integer>(lua_Integer(length) + from + 1, 1) : std::max<lua_Integer>(from, 1);
    const bool isInside = from <= lua_Integer(length) + 1;
    const void* found = isInside ? memmem(text + from - 1, length - size_t(from - 1), what, whatLength) : nullptr;
    if (!found) {
        lua_pushnil(state);
        return 1;
    }
    const lua_Integer at = static_cast<const char*>(found) - text + 1;
    lua_pushinteger(state, at);
    lua_pushinteger(state, at + lua_Integer(whatLength) - 1);
    return 2;
}

// the table functions see what stands in the table itself, as far as its length goes

lua_Integer tableLength(lua_State* state) {
    luaL_checktype(state, 1, LUA_TTABLE);
    const auto length = lua_Integer(lua_rawlen(state, 1));
    luaL_argcheck(state, length < LUA_MAXINTEGER, 1, "too long");
    return length;
}

/** Moves what stands at places of the table by one, from the first of them to the last. Few members are enough for a length that
    nobody lives to see the end of, so that it looks at the clock. */
void moveMembers(lua_State* state, lua_Integer first, lua_Integer last, int by) {
    for (lua_Integer i = first, left = kMovedAtOnce; i != last - by; i -= by) {
        lua_rawgeti(state, 1, i);
        lua_rawseti(state, 1, i + by);
        if (--left == 0) {
            LuaContext::of(state).checkTime(state);
            left = kMovedAtOnce;
        }
    }
}

/** Bytes of members of the first argument with gaps. Raises at the first that is no text: a few members are enough for a
    length that nobody lives to see the end of. */
size_t joinedLength(lua_State* state, lua_Integer first, lua_Integer last, size_t gapLength) {
    size_t length = 0;
    for (lua_Integer i = first; i <= last; ++i) {
        size_t own = 0;
        lua_rawgeti(state, 1, i);
        if (!lua_tolstring(state, -1, &own))
            luaL_error(state, "the value at %I is no text", i);
        length += own + (i < last ? gapLength : 0);
        lua_pop(state, 1);
    }
    return length;
}

int concat(lua_State* state) {
    const lua_Integer length = tableLength(state);
    size_t gapLength = 0;
    const char* gap = luaL_optlstring(state, 2, "", &gapLength);
    const lua_Integer first = luaL_optinteger(state, 3, 1), last = luaL_optinteger(state, 4, length);
    luaL_argcheck(state, first > last || (first >= 1 && last <= length), 3, "outside of the table");
    luaL_Buffer buffer;
    luaL_buffinitsize(state, &buffer, joinedLength(state, first, last, gapLength));
    for (lua_Integer i = first; i <= last; ++i) {
        lua_rawgeti(state, 1, i);
        luaL_addvalue(&buffer);
        if (i < last)
            luaL_addlstring(&buffer, gap, gapLength);
    }
    luaL_pushresult(&buffer);
    return 1;
}

int insert(lua_State* state) {
    const lua_Integer end = tableLength(state) + 1;
    const bool hasPlace = lua_gettop(state) > 2;
    const lua_Integer place = hasPlace ? luaL_checkinteger(state, 2) : end;
    luaL_argcheck(state, place >= 1 && place <= end, 2, "outside of the table");
    luaL_checkany(state, 2);
    moveMembers(state, end - 1, place, 1);
    lua_settop(state, hasPlace ? 3 : 2);
    lua_rawseti(state, 1, place);
    return 0;
}

int removeAt(lua_State* state) {
    const lua_Integer length = tableLength(state);
    const lua_Integer place = luaL_optinteger(state, 2, length);
    luaL_argcheck(state, place == length || (place >= 1 && place <= length + 1), 2, "outside of the table");
    lua_rawgeti(state, 1, place);
    if (place < length)
        moveMembers(state, place + 1, length, -1);
    lua_pushnil(state);
    lua_rawseti(state, 1, std::max(place, length));
    return 1;
}

int unpack(lua_State* state) {
    const lua_Integer length = tableLength(state);
    const lua_Integer first = luaL_optinteger(state, 2, 1), last = luaL_optinteger(state, 3, length);
    if (first > last)
        return 0;
    luaL_argcheck(state, first >= 1 && last - kMaxUnpacked <= length && last - first < kMaxUnpacked, 3,
                  "too many values");
    luaL_checkstack(state, int(last - first) + 1, nullptr);
    for (lua_Integer i = first; i <= last; ++i)
        lua_rawgeti(state, 1, i);
    return int(last - first) + 1;
}

// --- what there is

/** What is converted or compared takes time for each of its bytes. */
void checkGiven(lua_State* state) {
    const int count = lua_gettop(state);
    if (count > kMaxGiven)
        luaL_error(state, "takes %d values at most", int(kMaxGiven));
    size_t bytes = 0;
    for (int i = 1; i <= count; ++i)
        bytes += lua_type(state, i) == LUA_TSTRING ? lua_rawlen(state, i) : 0;
    if (bytes > kMaxGivenBytes)
        luaL_error(state, "is given too much text");
}

/** Looks at the clock first: its work grows with what it is given, and so does the garbage that it leaves. */
int guarded(lua_State* state) {
    LuaContext& context = LuaContext::of(state);
    context.checkTime(state);
    checkGiven(state);
    context.searchWhenDue();
    const int results = lua_tocfunction(state, lua_upvalueindex(1))(state);
    context.stopWhenOver(state);  // by a coroutine that it resumed
    return results;
}

struct Member {
    const char* name;
    lua_CFunction own;  // null: the standard one
};
constexpr Member kBase[] = {
    {"assert",       nullptr     },
    {"error",        nullptr     },
    {"getmetatable", nullptr     },
    {"ipairs",       nullptr     },
    {"next",         nullptr     },
    {"pairs",        nullptr     },
    {"pcall",        nullptr     },
    {"rawequal",     nullptr     },
    {"rawget",       nullptr     },
    {"rawlen",       nullptr     },
    {"rawset",       nullptr     },
    {"select",       nullptr     },
    {"setmetatable", setMetatable},
    {"tonumber",     nullptr     },
    {"tostring",     nullptr     },
    {"type",         nullptr     },
};
constexpr Member kString[] = {
    {"byte",    nullptr},
    {"char",    nullptr},
    {"find",    find   },
    {"format",  nullptr},
    {"len",     nullptr},
    {"lower",   nullptr},
    {"rep",     repeat },
    {"reverse", nullptr},
    {"sub",     nullptr},
    {"upper",   nullptr},
};
constexpr Member kTable[] = {
    {"concat", concat  },
    {"insert", insert  },
    {"remove", removeAt},
    {"unpack", unpack  },
};
constexpr Member kMath[] = {
    {"abs",        nullptr},
    {"acos",       nullptr},
    {"asin",       nullptr},
    {"atan",       nullptr},
    {"ceil",       nullptr},
    {"cos",        nullptr},
    {"deg",        nullptr},
    {"exp",        nullptr},
    {"floor",      nullptr},
    {"fmod",       nullptr},
    {"huge",       nullptr},
    {"log",        nullptr},
    {"max",        nullptr},
    {"maxinteger", nullptr},
    {"min",        nullptr},
    {"mininteger", nullptr},
    {"modf",       nullptr},
    {"pi",         nullptr},
    {"rad",        nullptr},
    {"random",     nullptr},
    {"randomseed", nullptr},
    {"sin",        nullptr},
    {"sqrt",       nullptr},
    {"tan",        nullptr},
    {"tointeger",  nullptr},
    {"type",       nullptr},
    {"ult",        nullptr},
};
constexpr Member kUtf8[] = {
    {"char",      nullptr},
    {"codepoint", nullptr},
    {"len",       nullptr},
    {"offset",    nullptr},
};
/** Without those that run a dead coroutine's pending variables, with the hook switched off. A new one counts its instructions
    afresh, so that making and resuming must look at the clock. */
constexpr Member kCoroutine[] = {
    {"create",      nullptr},
    {"isyieldable", nullptr},
    {"resume",      nullptr},
    {"running",     nullptr},
    {"status",      nullptr},
    {"yield",       nullptr},
};

struct Library {
    const char* name;  // null: its members are globals
    lua_CFunction open;
    const Member* members;
    size_t count;
};
constexpr Library kLibraries[] = {
    {nullptr,     luaopen_base,      kBase,      std::size(kBase)     },
    {"string",    luaopen_string,    kString,    std::size(kString)   },
    {"table",     luaopen_table,     kTable,     std::size(kTable)    },
    {"math",      luaopen_math,      kMath,      std::size(kMath)     },
    {"utf8",      luaopen_utf8,      kUtf8,      std::size(kUtf8)     },
    {"coroutine", luaopen_coroutine, kCoroutine, std::size(kCoroutine)},
};

/** On the top: a function of the library that keeps nothing between calls. */
bool canBeGuarded(lua_State* state) {
    const bool keeps = lua_iscfunction(state, -1) && lua_getupvalue(state, -1, 1);
    if (keeps)
        lua_pop(state, 1);
    return lua_iscfunction(state, -1) && !keeps;
}

/** Copies what is allowed from the table at one index to that at another. */
void copyMembers(lua_State* state, const Library& library, int from, int to) {
    for (size_t i = 0; i < library.count; ++i) {
        const Member& member = library.members[i];
        if (member.own)
            lua_pushcfunction(state, member.own);
        else
            lua_getfield(state, from, member.name);
        if (canBeGuarded(state))
            lua_pushcclosure(state, guarded, 1);
        lua_setfield(state, to, member.name);
    }
}

/** Texts have methods: the allowed ones. */
void setTextMethods(lua_State* state, int library) {
    lua_pushliteral(state, "");
    lua_getmetatable(state, -1);
    lua_pushvalue(state, library);
    lua_setfield(state, -2, "__index");
    lua_pushboolean(state, false);
    lua_setfield(state, -2, "__metatable");
    lua_pop(state, 2);
}
}  // namespace

int openLuaLibrary(lua_State* state) {
    lua_newtable(state);
    const int globals = lua_gettop(state);
    for (const Library& library : kLibraries) {
        lua_pushcfunction(state, library.open);
        lua_call(state, 0, 1);
        const int whole = lua_gettop(state);
        if (library.name)
            lua_newtable(state);
        copyMembers(state, library, whole, library.name ? whole + 1 : globals);
        if (library.open == luaopen_string)
            setTextMethods(state, whole + 1);
        if (library.name)
            lua_setfield(state, globals, library.name);
        lua_settop(state, globals);
    }
    lua_rawseti(state, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
    return 0;
}

}  // namespace Tessarine
