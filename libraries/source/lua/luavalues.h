#pragma once
#include "luacontext.h"
#include <cstddef>
#include <memory>
#include <string>

/** Values on their way between the interpreter and the host. What may raise says so. */

namespace Tessarine {

/** A function of a context, as the host holds it. It needn't be given back before the context is closed. */
class LuaFunction final : public FUnknown {
public:
    static const FUID iid;  // of this engine alone

    LuaFunction(LuaContext& context, int reference, const char* file);
    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;

    /** Null: it is none of the context. Borrowed. */
    static LuaFunction* of(FUnknown* object, const LuaContext& context);
    int getReference() const { return reference; }
    /** Where it comes from. */
    const char* getFile() const { return file; }

private:
    virtual ~LuaFunction();

    int32_t refCount = 1;
    const IPtr<LuaContext> context;
    const int reference;  // in the registry
    char file[LUA_IDSIZE];
};

/** What is handed to an object: the references of functions among the arguments, made by what may raise, and then the values,
    which never raises. */
struct LuaReferences {
    int references[SClassInfo::kMaxArguments];
};

/** May raise: also when there are more than most, or what can't be handed over. The result is the count. */
int referArguments(lua_State* state, int first, int most, LuaReferences& references);

class LuaArguments {
public:
    LuaArguments(lua_State* state, int first, int count, const LuaReferences& references);
    ~LuaArguments() { std::destroy_n(args.variants, args.count); }
    LuaArguments(const LuaArguments&) = delete;
    LuaArguments& operator=(const LuaArguments&) = delete;

    SArgs args;

private:
    void take(lua_State* state, int index, int reference, FVariant& variant);
    const tchar* keep(std::u16string text);

    alignas(FVariant) std::byte room[sizeof(FVariant) * SClassInfo::kMaxArguments];  // as many as there are
    std::vector<std::u16string> wideTexts;
    std::vector<OPtr<FUnknown>> functions;
};

/** The same value as a record, borrowed. */
SVariant recordOf(const FVariant& value);
/** May raise. */
void pushVariant(lua_State* state, const SVariant& value);
/** Empties the value, then may raise. */
void pushResult(lua_State* state, SVariant& value);
/** May raise, and then value is as it was: empty. */
void toResult(lua_State* state, int index, SVariant& value);

}  // namespace Tessarine
