#include "public.sdk/source/main/pluginfactory.h"
#include "pluginterfaces/base/smartpointer.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>

using namespace Tessarine;

namespace {
const FUID kClassA(1, 2, 3, 4), kClassB(1, 2, 3, 5), kClassC(0xF0000000, 2, 3, 4);

/** Counts its living objects. */
class Product : public FUnknown {
public:
    static FUnknown* create(void* context) {
        lastContext = context;
        return new Product;
    }
    static FUnknown* createNothing(void*) { return nullptr; }

    Product() { ++living; }
    virtual ~Product() { --living; }
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<FUnknown>(this, iid, obj) ? kResultOk : noInterface(obj);
    }
    uint32_t addRef() override { return uint32_t(++references); }
    uint32_t release() override {
        const int32_t left = --references;
        if (left == 0)
            delete this;
        return uint32_t(left);
    }

    static int32_t living;
    static void* lastContext;
    int32_t references = 1;
};
int32_t Product::living = 0;
void* Product::lastContext = nullptr;

class Factory : public testing::Test {
protected:
    ~Factory() override {
        EXPECT_EQ(factory->release(), 0u);
        EXPECT_EQ(Product::living, 0);
    }
    /** A null that every result must have written over. */
    void* const kUnwritten = this;

    CPluginFactory* factory = new CPluginFactory(PFactoryInfo("Vendor", "", "", 0));
    PClassInfo infoA{kClassA, 1, "Service", "Class A"};
    PClassInfo2 infoB{kClassB, 2, "Private", "Class B", 3, "Sub", nullptr, "1.0.0", "sdk"};
};
}  // namespace

TEST_F(Factory, AnswersItsFacesAndNoOther) {
    for (const FUID* iid : {&FUnknown::iid, &IPluginFactory::iid, &IPluginFactory2::iid, &IPluginFactory3::iid}) {
        void* face = nullptr;
        EXPECT_EQ(factory->queryInterface(*iid, &face), kResultOk);
        EXPECT_EQ(face, factory);
        EXPECT_EQ(factory->release(), 1u);
    }
    void* face = kUnwritten;
    EXPECT_EQ(factory->queryInterface(IPluginBase::iid, &face), kNoInterface);
    EXPECT_EQ(face, nullptr);
}

TEST_F(Factory, GivesWhatWasRegistered) {
    ASSERT_TRUE(factory->registerClass(&infoA, Product::create));
    ASSERT_TRUE(factory->registerClass(&infoB, Product::create));
    PClassInfo info;
    ASSERT_EQ(factory->getClassInfo(1, &info), kResultOk);
    EXPECT_TRUE(FUID::same(info.cid, kClassB));
    EXPECT_EQ(info.cardinality, 2);
    EXPECT_STREQ(info.name, "Class B");
    PClassInfo2 info2;
    ASSERT_EQ(factory->getClassInfo2(1, &info2), kResultOk);
    EXPECT_EQ(std::memcmp(&info2, &infoB, sizeof(infoB)), 0);
    PClassInfoW infoW;
    ASSERT_EQ(factory->getClassInfoUnicode(0, &infoW), kResultOk);
    EXPECT_EQ(std::u16string(infoW.name), u"Class A");
    EXPECT_EQ(infoW.version[0], 0);
}

TEST_F(Factory, RefusesIndicesAndNullRecords) {
    ASSERT_TRUE(factory->registerClass(&infoA, Product::create));
    PClassInfo info;
    PClassInfo2 info2;
    PClassInfoW infoW;
    for (const int32_t index : {-1, 1, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(factory->getClassInfo(index, &info), kInvalidArgument);
        EXPECT_EQ(factory->getClassInfo2(index, &info2), kInvalidArgument);
        EXPECT_EQ(factory->getClassInfoUnicode(index, &infoW), kInvalidArgument);
    }
    EXPECT_EQ(factory->getClassInfo(0, nullptr), kInvalidArgument);
    EXPECT_EQ(factory->getClassInfo2(0, nullptr), kInvalidArgument);
    EXPECT_EQ(factory->getClassInfoUnicode(0, nullptr), kInvalidArgument);
}

TEST_F(Factory, AUnicodeClassHasNoNarrowRecord) {
    PClassInfoW wide;
    wide.fromAscii(infoB);
    wide.name[0] = u'\u03A9';
    ASSERT_TRUE(factory->registerClass(&wide, Product::create));
    PClassInfo info = infoA;
    EXPECT_EQ(factory->getClassInfo(0, &info), kResultFalse);
    EXPECT_EQ(std::memcmp(&info, std::string(sizeof(info), 0).data(), sizeof(info)), 0);
    PClassInfo2 info2 = infoB;
    EXPECT_EQ(factory->getClassInfo2(0, &info2), kResultFalse);
    EXPECT_EQ(std::memcmp(&info2, std::string(sizeof(info2), 0).data(), sizeof(info2)), 0);
    PClassInfoW infoW;
    EXPECT_EQ(factory->getClassInfoUnicode(0, &infoW), kResultOk);
    EXPECT_EQ(std::memcmp(&infoW, &wide, sizeof(wide)), 0);
    EXPECT_TRUE(factory->isClassRegistered(kClassB));
}

TEST_F(Factory, GrowsAndForgets) {
    for (uint32_t i = 0; i < 25; ++i) {
        const FUID cid(9, 9, 9, i);
        PClassInfo info(cid, 1, "Many", std::to_string(i).c_str());
        ASSERT_TRUE(factory->registerClass(&info, Product::create));
    }
    EXPECT_EQ(factory->countClasses(), 25);
    PClassInfo info;
    for (int32_t i = 0; i < 25; ++i) {
        ASSERT_EQ(factory->getClassInfo(i, &info), kResultOk);
        EXPECT_EQ(info.name, std::to_string(i));
    }
    EXPECT_TRUE(factory->isClassRegistered(FUID(9, 9, 9, 24)));
    EXPECT_FALSE(factory->isClassRegistered(FUID(9, 9, 9, 25)));
    factory->removeAllClasses();
    EXPECT_EQ(factory->countClasses(), 0);
    EXPECT_FALSE(factory->isClassRegistered(FUID(9, 9, 9, 0)));
    EXPECT_TRUE(factory->registerClass(&infoA, Product::create));
}

TEST_F(Factory, CreatesByTheFirstMatchAndNothingOnAMiss) {
    EXPECT_FALSE(factory->registerClass(static_cast<PClassInfoW*>(nullptr), Product::create));
    EXPECT_FALSE(factory->registerClass(&infoB, nullptr));
    EXPECT_EQ(factory->countClasses(), 0);
    int32_t context = 0;
    ASSERT_TRUE(factory->registerClass(&infoA, Product::create, &context));
    ASSERT_TRUE(factory->registerClass(&infoA, Product::createNothing));
    void* made = nullptr;
    ASSERT_EQ(factory->createInstance(kClassA, FUnknown::iid, &made), kResultOk);
    EXPECT_EQ(Product::lastContext, &context);
    EXPECT_EQ(static_cast<FUnknown*>(made)->release(), 0u) << "the caller holds the only reference";
    PClassInfo infoC(kClassC, 1, "Service", "Class C");
    ASSERT_TRUE(factory->registerClass(&infoC, Product::createNothing));
    struct Row {
        const char* name;
        const FUID *cid, *iid;
    };
    const Row rows[] = {
        {"unknown class", &kClassB, &FUnknown::iid   },
        {"unknown face",  &kClassA, &IPluginBase::iid},
        {"no object",     &kClassC, &FUnknown::iid   },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        void* object = kUnwritten;
        EXPECT_EQ(factory->createInstance(*row.cid, *row.iid, &object), kNoInterface);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(Product::living, 0);
    }
}

TEST(FactoryLife, ClearsTheGlobalOnlyWhenItStandsThere) {
    CPluginFactory* const before = gPluginFactory;
    auto* one = new CPluginFactory(PFactoryInfo());
    auto* other = new CPluginFactory(PFactoryInfo());
    gPluginFactory = one;
    other->release();
    EXPECT_EQ(gPluginFactory, one);
    one->release();
    EXPECT_EQ(gPluginFactory, nullptr);
    gPluginFactory = before;
}
