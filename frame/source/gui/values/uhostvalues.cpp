#include "base/source/classfactory.h"
#include "gui/values/ufloatvalue.h"
#include "gui/values/uintvalue.h"
#include "gui/values/ustringvalue.h"
#include "gui/values/uvalueproxy.h"

namespace Tessarine {
namespace {
/** A new value by its outside face, with one reference. */
template <class Value>
FUnknown* createHostValue() {
    IValue* face = new Value;
    return face;
}

FUnknown* createUIntHostValue() {
    return createHostValue<UIntDefValue>();  // a plain integer would refuse the default that modules set
}

MetaClass hostValues[] = {
    {nullptr, createHostValue<UValue>,               IHostOnOffValue_iid,       nullptr},
    {nullptr, createUIntHostValue,                   IHostIntValue_iid,         nullptr},
    {nullptr, createHostValue<UFloatDefValue>,       IHostFloatValue_iid,       nullptr},
    {nullptr, createHostValue<UStringValue>,         IHostStringValue_iid,      nullptr},
    {nullptr, createHostValue<UStringListValue>,     IHostStringListValue_iid,  nullptr},
    {nullptr, createHostValue<UFloatTransformValue>, IHostTransformerValue_iid, nullptr},
    {nullptr, createHostValue<UValueProxy>,          IHostValueProxy_iid,       nullptr},
    {nullptr, createHostValue<UAliasValue>,          IHostAliasValue_iid,       nullptr},
};
}  // namespace

}  // namespace Tessarine
