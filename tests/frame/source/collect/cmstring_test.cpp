#include "collect/cmstring.h"
#include "pluginterfaces/base/smartpointer.h"
#include <gtest/gtest.h>
#include <string.h>

namespace Tessarine {
namespace {
TEST(CmString, IsEqualAndOrderedByItsText) {
    OPtr<CmString> a(new CmString("abc")), b(new CmString(u"abc")), c(new CmString("abd"));
    OPtr<CmObject> other(new CmObject);
    EXPECT_TRUE(a->isEqual(b) && b->isEqual(a) && a->isEqual(a));
    EXPECT_FALSE(a->isEqual(c) || a->isEqual(other) || a->isEqual(nullptr));
    EXPECT_EQ(a->compare(b.get()), 0);
    EXPECT_LT(a->compare(c.get()), 0);
    EXPECT_GT(c->compare(a.get()), 0);
    EXPECT_EQ(a->compare(other.get()), -other->compare(a.get()));
    EXPECT_EQ(a->hash(50), hashString8("abc", 50));
    EXPECT_EQ(b->hash(50), hashString16(u"abc", 50));
    EXPECT_TRUE(b->FString::isWideString());
}

TEST(CmString, OneObjectBehindAllFaces) {
    OPtr<CmString> text(new CmString);
    FUnknownPtr<IString> face(static_cast<CmObject*>(text.get()));
    FUnknownPtr<IStringResult> result(face);
    ASSERT_TRUE(face && result);
    face->setText16(u"w");
    EXPECT_TRUE(text->isWideString());
    result->setText("narrow");
    EXPECT_FALSE(face->isWideString());
    EXPECT_STREQ(face->getText8(), "narrow");
    EXPECT_EQ(std::u16string(face->getText16()), u"narrow");
    face->take(strdup("block"), false);
    EXPECT_STREQ(text->text8(), "block");

    ConstString(u"\u65E5").copyTo(*face);
    EXPECT_TRUE(face->isWideString());
    ConstString("view", 2).copyTo(result);
    EXPECT_STREQ(text->text8(), "vi");
    EXPECT_EQ(text->addRef(), 4u);
    EXPECT_EQ(text->release(), 3u);
}

TEST(CmString, CopiesAreObjectsOfTheirOwn) {
    OPtr<CmString> text(new CmString("abc"));
    text->addRef();
    OPtr<CmObject> copy(text->newCopy());
    EXPECT_TRUE(copy->isEqual(text));
    EXPECT_EQ(copy->addRef(), 2u);
    copy->release();
    text->release();
    *classCast<CmString>(copy.get()) = u"other";
    EXPECT_FALSE(copy->isEqual(text));
}
}  // namespace
}  // namespace Tessarine
