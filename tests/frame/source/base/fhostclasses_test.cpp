#include "base/fhostclasses.h"
#include "base/fmessage.h"
#include "base/source/updatehandler.h"
#include "gui/values/uvalue.h"
#include "pluginterfaces/base/smartpointer.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {

uint32_t referencesOf(FUnknown* object) {
    object->addRef();
    return object->release();
}

class FHostClassesTest : public testing::Test {
protected:
    OPtr<FHostClasses> host{new FHostClasses};
};

TEST_F(FHostClassesTest, MakesEachValueByItsOutsideFace) {
    struct Row {
        const char* name;
        const FUID& id;
        const char* className;
        IValue::ValueType type;
        uint32_t state;
        bool hasDefault;
    };
    const Row rows[] = {
        {"on/off",  IHostOnOffValue_iid,      "UValue",           IValue::kOnOff,   0x201, false},
        {"integer", IHostIntValue_iid,        "UIntDefValue",     IValue::kInteger, 0x202, true },
        {"float",   IHostFloatValue_iid,      "UFloatDefValue",   IValue::kFloat,   0x202, true },
        {"string",  IHostStringValue_iid,     "UStringValue",     IValue::kString,  0x201, false},
        {"list",    IHostStringListValue_iid, "UStringListValue", IValue::kInteger, 0x202, true },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        void* made = nullptr;
        ASSERT_EQ(host->createClassInstance(row.id, &made), kResultOk);
        OPtr<IValue> value(static_cast<IValue*>(made));  // taken as it comes, as modules do
        EXPECT_EQ(value->getValueType(), row.type);
        EXPECT_EQ(referencesOf(value), 1u);
        FUnknownPtr<IValue2> extended(value.get());
        ASSERT_TRUE(extended);
        EXPECT_EQ(extended->setDefault(0.f), row.hasDefault);
        auto* object = static_cast<UValue*>(commonObject(value));
        EXPECT_STREQ(object->isA(), row.className);
        EXPECT_EQ(object->getState(), row.state);
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

TEST_F(FHostClassesTest, AMissIsAResult) {
    void* found = this;
    EXPECT_EQ(host->createClassInstance(IStringRepresentationTarget::iid, &found), kResultFalse);
    EXPECT_EQ(found, nullptr);
}

}  // namespace
}  // namespace Tessarine
