#include "luavalues.h"
#include "luaobjects.h"
#include <algorithm>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace Tessarine {

constinit const FUID LuaFunction::iid(0x4CB45C95, 0xA1E3471D, 0x9E3B2A56, 0x70C8D1F4);

namespace {
constexpr tchar kReplacement = 0xFFFD;
constexpr size_t kMostBytes = 4;                             // of a character, in UTF-8
constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};  // by the number of bytes that follow the first
constexpr size_t kNoLead = std::size(kSmallest);             // nothing that begins a character

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return !(c & 0x80); });
}

/** One character of UTF-8, which goes off the text; what is malformed is one byte, and replaced. */
char32_t takeCharacter(std::string_view& text) {
    const auto lead = uint8_t(text.front());
    const size_t more = lead < 0x80   ? 0
                        : lead < 0xC2 ? kNoLead
                        : lead < 0xE0 ? 1
                        : lead < 0xF0 ? 2
                        : lead < 0xF5 ? 3
                                      : kNoLead;
    char32_t c = more == 0 ? lead : lead & (0x3F >> more);
    bool good = more != kNoLead && more < text.size();
    for (size_t i = 1; good && i <= more; ++i) {
        good = (text[i] & 0xC0) == 0x80;
        c = c << 6 | (text[i] & 0x3F);
    }
    good = good && c >= kSmallest[more] && c <= 0x10FFFF && (c & ~0x7FFu) != 0xD800;
    text.remove_prefix(good ? more + 1 : 1);
    return good ? c : kReplacement;
}

std::u16string wideOf(std::string_view text) {
    std::u16string wide;
    wide.reserve(text.size());
    while (!text.empty()) {
        const char32_t c = takeCharacter(text);
        if (c >= 0x10000)
            wide += tchar(0xD7C0 + (c >> 10));
        wide += c < 0x10000 ? tchar(c) : tchar(0xDC00 | (c & 0x3FF));
    }
    return wide;
}

bool isLeading(tchar unit) {
    return (unit & 0xFC00) == 0xD800;
}

bool isTrailing(tchar unit) {
    return (unit & 0xFC00) == 0xDC00;
}

char32_t takeCharacter(const tchar*& text) {
    const tchar unit = *text++;
    if (isLeading(unit) && isTrailing(*text))
        return 0x10000 + (char32_t(unit & 0x3FF) << 10) + (*text++ & 0x3FF);
    return isLeading(unit) || isTrailing(unit) ? char32_t(kReplacement) : char32_t(unit);
}

char* putCharacter(char* bytes, char32_t c) {
    const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr uint8_t kLeads[] = {0, 0xC0, 0xE0, 0xF0};
    *bytes++ = char(kLeads[more] | c >> 6 * more);
    for (int i = more - 1; i >= 0; --i)
        *bytes++ = char(0x80 | (c >> 6 * i & 0x3F));
    return bytes;
}

/** Bytes in UTF-8. */
size_t narrowLength(const tchar* text) {
    char unused[kMostBytes];
    size_t length = 0;
    while (*text)
        length += size_t(putCharacter(unused, takeCharacter(text)) - unused);
    return length;
}

void pushWide(lua_State* state, const tchar* text) {
    luaL_Buffer buffer;
    char* const bytes = luaL_buffinitsize(state, &buffer, narrowLength(text));
    char* end = bytes;
    for (const tchar* next = text; *next;)
        end = putCharacter(end, takeCharacter(next));
    luaL_pushresultsize(&buffer, size_t(end - bytes));
}

std::string_view textAt(lua_State* state, int index) {
    size_t length = 0;
    const char* text = lua_tolstring(state, index, &length);
    return {text, length};
}

/** With one reference. Null: no memory; the function's reference is dropped then. */
LuaFunction* newFunction(lua_State* state, int index, int reference) {
    LuaContext& context = LuaContext::of(state);
    lua_Debug record = {};
    lua_pushvalue(state, index);
    lua_getinfo(state, ">S", &record);
    auto* function = new (std::nothrow) LuaFunction(context, reference, record.short_src);
    if (!function)
        context.dropReference(reference);
    return function;
}

void setText(SVariant& value, std::string_view text) {
    if (isAscii(text))
        value.setString8(text.data());
    else
        value.setString16(wideOf(text).c_str());
}

void setFunction(lua_State* state, int index, int reference, SVariant& value) {
    const OPtr<LuaFunction> function(newFunction(state, index, reference));
    value.setObject(function);
}

int pushVariantBody(lua_State* state) {
    pushVariant(state, *static_cast<const SVariant*>(lua_touserdata(state, 1)));
    return 1;
}
}  // namespace

// --- functions

LuaFunction::LuaFunction(LuaContext& context, int reference, const char* file)
    : context(&context), reference(reference) {
    std::snprintf(this->file, sizeof(this->file), "%s", file);
}

LuaFunction::~LuaFunction() {
    context->dropReference(reference);
}

int32_t LuaFunction::queryInterface(const char* id, void** obj) {
    return answerInterface<LuaFunction>(this, id, obj) || answerInterface<FUnknown>(this, id, obj) ? kResultOk
                                                                                                   : noInterface(obj);
}

uint32_t LuaFunction::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t LuaFunction::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

LuaFunction* LuaFunction::of(FUnknown* object, const LuaContext& context) {
    void* found = nullptr;
    if (!object || object->queryInterface(iid, &found) != kResultOk)
        return nullptr;
    auto* function = static_cast<LuaFunction*>(found);
    function->release();  // object still holds it
    return function->context.get() == &context ? function : nullptr;
}

// --- to the host

int referArguments(lua_State* state, int first, int most, LuaReferences& references) {
    const int count = lua_gettop(state) - first + 1;
    most = std::min(most, int(SClassInfo::kMaxArguments));
    if (count > most)
        luaL_error(state, "takes %d values, not %d", most, count);
    for (int i = 0; i < count; ++i) {
        const int type = lua_type(state, first + i);
        if (type == LUA_TTABLE || type == LUA_TTHREAD)
            luaL_argerror(state, first + i, "cannot be handed over");
    }
    for (int i = 0; i < count; ++i)
        references.references[i] =
            lua_isfunction(state, first + i) ? LuaContext::of(state).refer(state, first + i) : LUA_NOREF;
    return count;
}

LuaArguments::LuaArguments(lua_State* state, int first, int count, const LuaReferences& references) {
    args = {count, reinterpret_cast<FVariant*>(room)};
    for (int i = 0; i < count; ++i)
        take(state, first + i, references.references[i], *std::construct_at(args.variants + i));
}

const tchar* LuaArguments::keep(std::u16string text) {
    wideTexts.reserve(SClassInfo::kMaxArguments);  // those that are there stay where they are
    return wideTexts.emplace_back(std::move(text)).c_str();
}

void LuaArguments::take(lua_State* state, int index, int reference, FVariant& variant) {
    switch (lua_type(state, index)) {
    case LUA_TBOOLEAN:
        return variant.setInteger(lua_toboolean(state, index));
    case LUA_TNUMBER:
        return lua_isinteger(state, index) ? variant.setInteger(lua_tointeger(state, index))
                                           : variant.setFloat(lua_tonumber(state, index));
    case LUA_TSTRING:
        if (isAscii(textAt(state, index)))
            return variant.setString8(lua_tostring(state, index));
        return variant.setString16(keep(wideOf(textAt(state, index))));
    case LUA_TFUNCTION:
        return variant.setObject(functions.emplace_back(newFunction(state, index, reference)));
    default:
        if (FUnknown* object = objectAt(state, index))
            variant.setObject(object);
    }
}

void toResult(lua_State* state, int index, SVariant& value) {
    switch (lua_type(state, index)) {
    case LUA_TBOOLEAN:
        return value.setInteger(lua_toboolean(state, index));
    case LUA_TNUMBER:
        return lua_isinteger(state, index) ? value.setInteger(lua_tointeger(state, index))
                                           : value.setFloat(lua_tonumber(state, index));
    case LUA_TSTRING:
        return setText(value, textAt(state, index));
    case LUA_TFUNCTION:
        return setFunction(state, index, LuaContext::of(state).refer(state, index), value);
    default:
        if (FUnknown* object = objectAt(state, index))
            value.setObject(object);
    }
}

// --- to the script

SVariant recordOf(const FVariant& value) {
    SVariant record;
    record.init();
    record.type = value.getType();
    if (value.getType() == FVariant::kInteger)
        record.value.integer = value.getInteger();
    else if (value.getType() == FVariant::kFloat)
        record.value.number = value.getFloat();
    else if (value.getType() == FVariant::kString8)
        record.value.string8 = const_cast<char*>(value.getString8());
    else if (value.getType() == FVariant::kString16)
        record.value.string16 = const_cast<tchar*>(value.getString16());
    else
        record.value.object = value.getObject();
    return record;
}

void pushVariant(lua_State* state, const SVariant& value) {
    switch (value.getType()) {
    case FVariant::kInteger:
        return lua_pushinteger(state, value.value.integer);
    case FVariant::kFloat:
        return lua_pushnumber(state, value.value.number);
    case FVariant::kString8:
        lua_pushstring(state, value.value.string8);
        return;
    case FVariant::kString16:
        return value.value.string16 ? pushWide(state, value.value.string16) : lua_pushnil(state);
    case FVariant::kObject:
        return pushObject(state, value.value.object);
    default:
        return lua_pushnil(state);
    }
}

void pushResult(lua_State* state, SVariant& value) {
    if (value.getType() == FVariant::kInteger)
        return lua_pushinteger(state, value.value.integer);
    if (value.getType() == FVariant::kFloat)
        return lua_pushnumber(state, value.value.number);
    lua_pushcfunction(state, pushVariantBody);
    lua_pushlightuserdata(state, &value);
    const int status = lua_pcall(state, 1, 1, 0);
    value.sempty();
    if (status != LUA_OK)
        lua_error(state);
}

}  // namespace Tessarine
