#include "luaobjects.h"
#include "luavalues.h"

namespace Tessarine {
namespace {
constexpr SClassInfo kUnknownClass = {"object", nullptr, 0, nullptr, 0, nullptr};

struct ObjectBox {
    FUnknown* owned;        // null once it was given back
    IScriptObject* object;  // another face of it; null: it isn't for scripts
};

ObjectBox& boxAt(lua_State* state, int index) {
    return *static_cast<ObjectBox*>(lua_touserdata(state, index));
}

template <class Row>
const Row* rowAt(lua_State* state, int index) {
    return static_cast<const Row*>(lua_touserdata(state, index));
}

void pushRow(lua_State* state, const void* row) {
    lua_pushlightuserdata(state, const_cast<void*>(row));
}

/** The face is borrowed, as long as the object is held. */
IScriptObject* scriptFaceOf(FUnknown* object) {
    return FUnknownPtr<IScriptObject>(object).get();
}

const char* classNameOf(const ObjectBox& box) {
    return box.object ? box.object->getTypeInfo()->className : kUnknownClass.className;
}

// --- calls of the object, which never raise

int32_t readProperty(lua_State* state, const ObjectBox& box, int number, SVariant& value) noexcept {
    const LuaContext::HostCall call(state);
    return box.object->getProperty(char(number), value, &LuaContext::of(state));
}

int32_t writeProperty(lua_State* state, const ObjectBox& box, int number, int index,
                      const LuaReferences& references) noexcept {
    LuaArguments arguments(state, index, 1, references);
    const LuaContext::HostCall call(state);
    return box.object->setProperty(char(number), arguments.args.variants[0], &LuaContext::of(state));
}

int32_t callMethod(lua_State* state, const ObjectBox& box, int number, int count, const LuaReferences& references,
                   SVariant& result) noexcept {
    LuaArguments arguments(state, 2, count, references);
    const LuaContext::HostCall call(state);
    return box.object->invoke(char(number), arguments.args, result);
}

IScriptObject* construct(lua_State* state, const SClassInfo& info, int count,
                         const LuaReferences& references) noexcept {
    LuaArguments arguments(state, 1, count, references);
    const LuaContext::HostCall call(state);
    return info.constructor(arguments.args);
}

void giveBack(lua_State* state, ObjectBox& box) noexcept {
    FUnknown* owned = box.owned;
    box = {nullptr, nullptr};
    const LuaContext::Finalizing finalizing(LuaContext::of(state));
    if (owned)
        owned->release();
}

// --- what scripts call; these may raise, and have no destructors

int onGone(lua_State* state) {
    if (boxAt(state, 1).owned)
        LuaContext::of(state).forgetObject();
    giveBack(state, boxAt(state, 1));
    return 0;
}

/** The host may hand over one object by several of its faces. */
int onEqual(lua_State* state) {
    const ObjectBox &a = boxAt(state, 1), &b = boxAt(state, 2);
    lua_pushboolean(state, a.owned && (a.owned == b.owned || (a.object && a.object == b.object)));
    return 1;
}

/** The box of the object whose member is wanted. */
ObjectBox& liveBox(lua_State* state) {
    ObjectBox& box = boxAt(state, 1);
    if (!box.object)
        luaL_error(state, "the object has gone");
    return box;
}

int raiseMissing(lua_State* state, const char* className) {
    return luaL_error(state, "'%s' has no such member: '%s'", className,
                      lua_type(state, 2) == LUA_TSTRING ? lua_tostring(state, 2) : luaL_typename(state, 2));
}

/** Replaces the name at index 2 by what the class has under it: a number for a property, or a method. */
void findMember(lua_State* state, const ObjectBox& box) {
    lua_pushvalue(state, 2);
    if (lua_rawget(state, lua_upvalueindex(1)) == LUA_TNIL)
        raiseMissing(state, classNameOf(box));
    lua_replace(state, 2);
}

int onIndex(lua_State* state) {
    findMember(state, boxAt(state, 1));
    if (lua_type(state, 2) == LUA_TFUNCTION)
        return 1;
    const ObjectBox& box = liveBox(state);
    SVariant value;
    value.init();
    const int32_t answer = readProperty(state, box, int(lua_tointeger(state, 2)), value);
    if (answer == kResultOk || answer == kResultFalse) {
        pushResult(state, value);
        return 1;
    }
    value.sempty();
    return luaL_error(state, "a property of '%s' cannot be read: %d", classNameOf(box), int(answer));
}

/** Upvalue: the class, which has methods alone, so that these are looked up without asking the object. */
int onMissingMethod(lua_State* state) {
    const SClassInfo& info = *rowAt<SClassInfo>(state, lua_upvalueindex(1));
    return raiseMissing(state, info.className);
}

int onNewIndex(lua_State* state) {
    findMember(state, boxAt(state, 1));
    const ObjectBox& box = liveBox(state);
    if (lua_type(state, 2) == LUA_TFUNCTION)
        return luaL_error(state, "a method of '%s' cannot be replaced", classNameOf(box));
    LuaReferences references;
    referArguments(state, 3, 1, references);
    const int32_t answer = writeProperty(state, box, int(lua_tointeger(state, 2)), 3, references);
    return answer == kResultOk
               ? 0
               : luaL_error(state, "a property of '%s' cannot be set to this: %d", classNameOf(box), int(answer));
}

/** Upvalues: the metatable of the class, and the method. */
int onMethod(lua_State* state) {
    const SMethod& method = *rowAt<SMethod>(state, lua_upvalueindex(2));
    const bool hasObject = lua_getmetatable(state, 1) && lua_rawequal(state, -1, lua_upvalueindex(1));
    if (!hasObject)
        return luaL_error(state, "'%s' is called with a colon, on an object that has it", method.name);
    lua_pop(state, 1);
    const ObjectBox& box = liveBox(state);
    LuaReferences references;
    const int count = referArguments(state, 2, method.argumentCount, references);
    SVariant result;
    result.init();
    const int32_t answer = callMethod(state, box, method.number, count, references, result);
    if (answer == kResultOk) {
        pushResult(state, result);
        return 1;
    }
    result.sempty();
    return luaL_error(state, "%s of '%s' refuses: %d", method.name, classNameOf(box), int(answer));
}

ObjectBox& pushEmptyBox(lua_State* state, int metatable) {
    auto& box = *static_cast<ObjectBox*>(lua_newuserdatauv(state, sizeof(ObjectBox), 0));
    box = {nullptr, nullptr};
    lua_pushvalue(state, metatable);
    lua_setmetatable(state, -2);
    return box;
}

int onConstruct(lua_State* state) {
    const SClassInfo& info = *rowAt<SClassInfo>(state, lua_upvalueindex(1));
    LuaReferences references;
    LuaContext::of(state).makeRoomForObject(state);
    const int count = referArguments(state, 1, SClassInfo::kMaxArguments, references);
    ObjectBox& box = pushEmptyBox(state, lua_upvalueindex(2));
    box.object = construct(state, info, count, references);
    box.owned = box.object;
    if (!box.object)
        return luaL_error(state, "'%s' cannot be made of this", info.className);
    LuaContext::of(state).countObject();
    return 1;
}

// --- classes

void pushMethod(lua_State* state, int metatable, const SMethod& method) {
    lua_pushvalue(state, metatable);
    pushRow(state, &method);
    lua_pushcclosure(state, onMethod, 2);
}

void setFunction(lua_State* state, int table, const char* name, lua_CFunction function) {
    lua_pushcfunction(state, function);
    lua_setfield(state, table, name);
}

/** Pushes a table with the members, by name, and gives the metatable what makes its objects callable. */
void pushMembers(lua_State* state, int metatable, const SClassInfo& info) {
    lua_createtable(state, 0, info.propertyCount + info.methodCount);
    for (int i = 0; i < info.propertyCount; ++i) {
        lua_pushinteger(state, i);
        lua_setfield(state, -2, info.properties[i]);
    }
    for (int i = 0; i < info.methodCount; ++i) {
        const SMethod& method = info.methods[i];
        pushMethod(state, metatable, method);
        if (*method.name)
            lua_setfield(state, -2, method.name);
        else
            lua_setfield(state, metatable, "__call");
    }
}

/** Pushes what finds members, given the table of them on the top. */
void pushIndex(lua_State* state, const SClassInfo& info) {
    lua_pushvalue(state, -1);
    if (info.propertyCount > 0)
        return lua_pushcclosure(state, onIndex, 1);
    lua_newtable(state);
    pushRow(state, &info);
    lua_pushcclosure(state, onMissingMethod, 1);
    lua_setfield(state, -2, "__index");
    lua_setmetatable(state, -2);
}

void pushMetatable(lua_State* state, const SClassInfo* info) {
    luaL_checkstack(state, 8, nullptr);
    if (lua_rawgetp(state, LUA_REGISTRYINDEX, info) == LUA_TTABLE)
        return;
    lua_pop(state, 1);
    lua_newtable(state);
    const int metatable = lua_gettop(state);
    setFunction(state, metatable, "__gc", onGone);
    setFunction(state, metatable, "__eq", onEqual);
    lua_pushstring(state, info->className);
    lua_setfield(state, metatable, "__name");
    lua_pushboolean(state, false);
    lua_setfield(state, metatable, "__metatable");
    pushMembers(state, metatable, *info);
    pushIndex(state, *info);
    lua_setfield(state, metatable, "__index");
    lua_pushcclosure(state, onNewIndex, 1);
    lua_setfield(state, metatable, "__newindex");
    lua_pushvalue(state, metatable);
    lua_rawsetp(state, LUA_REGISTRYINDEX, info);
}
}  // namespace

void pushObject(lua_State* state, FUnknown* object) {
    luaL_checkstack(state, 4, nullptr);
    if (const LuaFunction* function = LuaFunction::of(object, LuaContext::of(state))) {
        lua_rawgeti(state, LUA_REGISTRYINDEX, function->getReference());
        return;
    }
    if (!object)
        return lua_pushnil(state);
    IScriptObject* face = scriptFaceOf(object);
    pushMetatable(state, face ? face->getTypeInfo() : &kUnknownClass);
    LuaContext::of(state).makeRoomForObject(state);
    ObjectBox& box = pushEmptyBox(state, lua_gettop(state));
    lua_remove(state, -2);
    object->addRef();
    box = {object, face};
    LuaContext::of(state).countObject();
}

FUnknown* objectAt(lua_State* state, int index) {
    return lua_type(state, index) == LUA_TUSERDATA ? boxAt(state, index).owned : nullptr;
}

void pushClass(lua_State* state, const SClassInfo* info) {
    pushMetatable(state, info);
    if (info->constructor) {
        pushRow(state, info);
        lua_insert(state, -2);
        lua_pushcclosure(state, onConstruct, 2);
    } else {
        lua_pop(state, 1);
        lua_pushnil(state);
    }
}

}  // namespace Tessarine
