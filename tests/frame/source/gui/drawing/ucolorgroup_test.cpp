#include "base/source/updatehandler.h"
#include "gui/drawing/hooks.h"
#include "gui/drawing/ucolortransformcontroller.h"
#include "storage/hooks.h"
#include "storage/userfolders.h"
#include "tests/frame/source/storage/tempfolder.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
const TempFolder* user = nullptr;
int32_t factoryHue = 0;

bool property(const char* collection, int32_t index, FString& name, CmObject*& value) {
    static const char* const kNames[] = {"chassis", "display"};
    static const OPtr<FAttributes> properties(new FAttributes);
    properties->set("deltaHue", factoryHue);
    properties->set("deltaLum", -400);
    if (std::string(collection) != "ColorTransforms" || index > 1)
        return false;
    name.assign(kNames[index]);
    value = index == 0 ? properties.get() : nullptr;
    return true;
}

/** A user's folder, and a skin with two groups. */
class ColorGroups : public testing::Test {
protected:
    ColorGroups() : handler(UpdateHandler::instance()) {
        if (!handler)
            handler = OPtr<UpdateHandler>(new UpdateHandler);
        user = &folder;
        gStorageHooks.standardFolder = [](int32_t number, FNPath& path) {
            String text;
            if (number != kUserFolder || !text.fromUTF8(user->path.c_str()))
                return false;
            path.fromString(text.text16(), kFolderPath);
            return true;
        };
        gDrawingHooks.skinProperty = property;
    }
    ~ColorGroups() override {
        UColorGroupHandler::instance()->removeAll();
        gStorageHooks = storageBefore;
        gDrawingHooks = drawingBefore;
    }

    IPtr<UpdateHandler> handler;
    const StorageHooks storageBefore = gStorageHooks;
    const DrawingHooks drawingBefore = gDrawingHooks;
    const TempFolder folder;
};
}  // namespace

TEST(ColorGroup, NamesAndIdentifiers) {
    const struct {
        const char* name;
        uint32_t group;
        const char* back;
        const char* identifier;
    } kRows[] = {
        {"chassis",         0x10000, "chassis",         "ColorTransformChassis"       },
        {"display",         0x20000, "display",         "ColorTransformDisplay"       },
        {"display|chassis", 0x30000, "chassis|display", "ColorTransformChassisDisplay"},
        {"|x|display|",     0x20000, "display",         "ColorTransformDisplay"       },
        {"Chassis",         0,       "",                "ColorTransform"              },
        {nullptr,           0,       "",                "ColorTransform"              },
    };
    for (const auto& row : kRows) {
        const ColorGroup group = colorGroupOfName(row.name);
        EXPECT_EQ(group, row.group);
        String name;
        nameOfColorGroup(group, name);
        EXPECT_STREQ(name.text8(), row.back);
        EXPECT_STREQ(OPtr<UColorTransform>(new UColorTransform(group))->getIdentifier(), row.identifier);
    }
}

TEST_F(ColorGroups, WhatTheUserHasSetOutlivesTheSkin) {
    UColorGroupHandler* groups = UColorGroupHandler::instance();
    factoryHue = 30;
    groups->setupColorGroups();
    ASSERT_EQ(groups->getColorGroupTransformTotal(), 2);
    EXPECT_EQ(groups->getColorGroupTransform(7), nullptr);
    UColorTransform* chassis = groups->getColorGroupTransform(ColorGroup(0x30000));
    ASSERT_EQ(chassis, groups->at(0));
    EXPECT_EQ(chassis->getDeltaHue(), 30);
    EXPECT_EQ(chassis->getDeltaLuminance(), -100) << "clamped";
    EXPECT_FALSE(groups->getColorGroupTransform(kDisplayGroup)->isOperative());

    const OPtr<UColorTransformController> controller(new UColorTransformController(chassis));
    UValue* hue = controller->lookupValue("deltaHue");
    ASSERT_TRUE(hue && hue == controller->lookupValue("deltaH") && !controller->lookupValue("delta"));
    hue->setTargetValue(-999);
    EXPECT_EQ(chassis->getDeltaHue(), -180);
    chassis->setDelta(UColorTransform::kSaturation, 55);
    EXPECT_EQ(controller->lookupValue("deltaS")->getValue(), 55);
    controller->lookupValue("deltaSat")->setTargetValue(56);
    int32_t standard = 0;
    EXPECT_TRUE(hue->getDefaultValue(standard));
    EXPECT_EQ(standard, 30);

    factoryHue = 99;
    groups->setupColorGroups();
    EXPECT_EQ(groups->at(0)->getDeltaHue(), -180);
    EXPECT_EQ(groups->at(0)->getDeltaSaturation(), 56);
    EXPECT_EQ(groups->at(0)->getFactoryDelta(UColorTransform::kHue), 99);
    EXPECT_TRUE(MarrowfatDefaults::storeIfMade());
    EXPECT_NE(folder.read("Marrowfat.xml").find("ColorTransformChassis(dH)"), std::string::npos);
    EXPECT_NE(folder.read("Marrowfat.xml").find("<Defaults"), std::string::npos);
}
