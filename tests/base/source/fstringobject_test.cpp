#include "base/source/fstringobject.h"
#include "pluginterfaces/base/smartpointer.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {

TEST(StringObject, TakesACopyThroughEachOfItsFaces) {
    const OPtr<StringObject> text(new StringObject("start"));
    const FUnknownPtr<IString> face(static_cast<FObject*>(text.get()));
    const FUnknownPtr<IStringResult> result(face);
    ASSERT_TRUE(face && result);
    char narrow[] = "block";
    face->take(narrow, false);
    narrow[0] = '?';
    EXPECT_STREQ(face->getText8(), "block");
    tchar wide[] = u"wide";
    face->take(wide, true);
    wide[0] = u'?';
    EXPECT_TRUE(face->isWideString());
    EXPECT_EQ(text->compare(u"wide"), 0);
    result->setText("narrow");
    EXPECT_FALSE(face->isWideString());
    face->take(nullptr, true);
    EXPECT_EQ(text->length(), 0u);
    EXPECT_EQ(text->addRef(), 4u);
    EXPECT_EQ(text->release(), 3u);
    EXPECT_TRUE(text->isTypeOf("FObject", true) && !text->isTypeOf("FObject", false));
}

}  // namespace
}  // namespace Tessarine
