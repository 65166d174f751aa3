#include "gui/values/fcontroller.h"
#include "gui/values/uvaluecontainer.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {

struct Answering : FController {
    Answering() { ++living; }
    ~Answering() override { --living; }
    bool testCondition(const char*) override { return true; }
    static inline int32_t living = 0;
};

TEST(FController, HoldsSubControllersByName) {
    OPtr<Answering> parent(new Answering), shared(new Answering), borrowed(new Answering);
    EXPECT_TRUE(parent->injectSubController(shared, "shared", true));
    EXPECT_TRUE(parent->injectSubController(borrowed, "borrowed", false));
    EXPECT_EQ(referencesOf(shared), 2u);
    EXPECT_EQ(referencesOf(borrowed), 1u);
    EXPECT_EQ(parent->lookupSubController("shared"), static_cast<IController*>(shared));
    EXPECT_STREQ(parent->getInjectedControllerNameByIndex(1), "borrowed");
    EXPECT_EQ(parent->getInjectedControllerByIndex(2), nullptr);
    parent->injectSubController(nullptr, "borrowed", false);
    borrowed = nullptr;
    EXPECT_EQ(parent->lookupSubController("borrowed"), nullptr);
    parent = nullptr;
    EXPECT_EQ(referencesOf(shared), 1u);
}

TEST(FController, HandsOutItsValuesToModules) {
    OPtr<UValueContainer> container(new UValueContainer);
    UValue* value = container->newValue(nullptr, 1, "on");
    OPtr<IValue> made(container->createParamInterface("on"));
    EXPECT_EQ(made.get(), static_cast<IValue*>(value));
    EXPECT_EQ(referencesOf(made), 2u);
    EXPECT_EQ(container->createParamInterface("off"), nullptr);
}

TEST(UDelegatingController, AnswersForItsDelegateOrNothing) {
    OPtr<UDelegatingController> controller(new UDelegatingController);
    auto* view = reinterpret_cast<UView*>(controller.get());  // only passed on
    EXPECT_FALSE(controller->testCondition("any"));
    EXPECT_EQ(controller->lookupValue("any"), nullptr);
    EXPECT_EQ(controller->verifyView(view, nullptr), nullptr);
    auto* answering = new Answering;
    controller->delegateTo(answering);
    answering->release();
    controller->delegateTo(answering);  // its only reference: kept
    EXPECT_TRUE(controller->testCondition("any"));
    EXPECT_EQ(controller->verifyView(view, nullptr), view);
    EXPECT_FALSE(controller->injectSubController(answering, "sub", false));
    EXPECT_EQ(controller->lookupSubController("sub"), nullptr);
    controller = nullptr;
    EXPECT_EQ(Answering::living, 0);
}

}  // namespace
}  // namespace Tessarine
