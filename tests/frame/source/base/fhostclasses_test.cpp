#include "base/fhostclasses.h"
#include "base/fcompreg.h"
#include "base/fmessage.h"
#include "base/source/updatehandler.h"
#include "gui/values/uvalue.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/ihosttools.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {

class FHostClassesTest : public testing::Test {
protected:
    OPtr<FHostClasses> host{new FHostClasses};
};

TEST_F(FHostClassesTest, MakesEachValueByItsOutsideFace) {
    const std::tuple<const char*, const FUID&, const char*, IValue::ValueType, uint32_t, bool> rows[] = {
        {"on/off",  IHostOnOffValue_iid,       "UValue",               IValue::kOnOff,   0x201,    false},
        {"integer", IHostIntValue_iid,         "UIntDefValue",         IValue::kInteger, 0x202,    true },
        {"float",   IHostFloatValue_iid,       "UFloatDefValue",       IValue::kFloat,   0x202,    true },
        {"string",  IHostStringValue_iid,      "UStringValue",         IValue::kString,  0x201,    false},
        {"list",    IHostStringListValue_iid,  "UStringListValue",     IValue::kInteger, 0x202,    true },
        {"scaled",  IHostTransformerValue_iid, "UFloatTransformValue", IValue::kFloat,   0x202,    true },
        {"proxy",   IHostValueProxy_iid,       "UValueProxy",          IValue::kOnOff,   0x200201, false},
        {"alias",   IHostAliasValue_iid,       "UAliasValue",          IValue::kOnOff,   0x200201, false},
    };
    void* made = this;
    EXPECT_EQ(host->createClassInstance(IStringRepresentationTarget::iid, &made), kResultFalse);
    EXPECT_EQ(made, nullptr);
    for (const auto& [name, id, className, type, state, hasDefault] : rows) {
        SCOPED_TRACE(name);
        ASSERT_EQ(host->createClassInstance(id, &made), kResultOk);
        OPtr<IValue> value(static_cast<IValue*>(made));  // taken as it comes, as modules do
        EXPECT_EQ(value->getValueType(), type);
        EXPECT_EQ(referencesOf(value), 1u);
        FUnknownPtr<IValue2> extended(value.get());
        ASSERT_TRUE(extended);
        EXPECT_EQ(extended->setDefault(0.f), hasDefault);
        auto* object = static_cast<UValue*>(commonObject(value));
        EXPECT_STREQ(object->isA(), className);
        EXPECT_EQ(object->getState(), state);
    }
}

TEST_F(FHostClassesTest, ServicesAreSharedAndCountedOnce) {
    OPtr<UpdateHandler> own(UpdateHandler::instance() ? nullptr : new UpdateHandler);
    const auto check = [this]<class Face>(Face* service) {
        const uint32_t before = referencesOf(service);
        {
            FInstancePtr<Face> got(host);
            EXPECT_EQ(got.get(), service);
            EXPECT_EQ(referencesOf(service), before + 1);
        }
        EXPECT_EQ(referencesOf(service), before);
    };
    check(FObject::gUpdateHandler);
    check(static_cast<IMessenger*>(gMessenger));
}

TEST_F(FHostClassesTest, ToolsOfEachKind) {
    FComponentRegistry::use();
    {
        const FInstancePtr<IComponentFactory> registry(host);
        EXPECT_EQ(registry.get(), gComponentRegistry);
        const FInstancePtr<IList> list(host), other(host);
        EXPECT_NE(list.get(), other.get());
        const OPtr<UValue> a(new UValue), b(new UValue);
        EXPECT_EQ(list->add(nullptr), kResultFalse);
        for (UValue* each : {a.get(), b.get()})
            EXPECT_EQ(list->add(static_cast<CmObject*>(each)), kResultOk);
        EXPECT_EQ(list->removeAt(2), kInvalidArgument);
        EXPECT_EQ(list->removeAt(0), kResultOk);
        EXPECT_EQ(list->at(0), static_cast<CmObject*>(b.get()));
        EXPECT_TRUE(referencesOf(a) == 1 && referencesOf(b) == 2);
        const FInstancePtr<IComparer> comparer(host);
        CmObject *first = a, *second = b;
        EXPECT_EQ(comparer->compare(first, second) < 0, first->compare(second) < 0);
        const FInstancePtr<IMemoryAllocator> memory(host);
        memory->free(memory->reallocate(memory->allocate(1), 100));
        const FInstancePtr<IDynamicLibrary> library(host);
        EXPECT_TRUE(library->load(u"nothing", false) == kResultFalse && !library->getProcAddress("any"));
    }
    EXPECT_EQ(referencesOf(gComponentRegistry), 1u);
    FComponentRegistry::unuse();
}

}  // namespace
}  // namespace Tessarine
