#include "gui/drawing/udrawport.h"
#include "gui/drawing/usystemscheme.h"
#include "tests/frame/source/graphics/cairo/canvas.h"
#include <cmath>

using namespace Tessarine;
using namespace Tessarine::Testing;

namespace {
constexpr uint32_t kLine = 0xFF7E7E7E, kLight = 0xFFFFFFFF, kDark = 0xFFB4B4B4, kPanel = 0xFFDEDEDE, kBar = 0xFF005A00;
const tchar* const kLongText = u"A text that is longer than most of the rectangles";

using Pixels = std::vector<std::vector<uint32_t>>;

/** Smoothed edges differ a little with their place; colours below alpha 32 can't be told apart. */
bool isNear(uint32_t a, uint32_t b, int32_t tolerance) {
    const auto differs = [=](int32_t shift) {
        return std::abs(int32_t(a >> shift & 0xFF) - int32_t(b >> shift & 0xFF)) > tolerance;
    };
    const bool isFaint = (a >> 24) < 32 || (b >> 24) < 32;
    return !differs(24) && (isFaint || !(differs(0) || differs(8) || differs(16)));
}
}  // namespace

class SchemeShapes : public Drawing {
protected:
    Pixels drawn(const UPoint& canvasSize, const URect& rect, int32_t shape, const tchar* text = nullptr,
                 double scale = 1) const {
        const Canvas canvas(canvasSize.x, canvasSize.y, scale);
        scheme->drawShape(*canvas.device, rect, USchemeShape(shape), text);
        return canvas.pixels();
    }

    const OPtr<UScheme> scheme{new UScheme};
};

TEST_F(SchemeShapes, StayWithinTheirRectangle) {
    const UPoint sizes[] = {
        {1,  1 },
        {2,  3 },
        {7,  2 },
        {7,  7 },
        {40, 20},
        {40, 8 },
        {9,  60}
    };
    for (const double scale : {1.0, 2.0})
        for (const UPoint& size : sizes)
            for (int32_t shape = 0; shape < kNumSchemeShapes; ++shape) {
                SCOPED_TRACE(testing::Message() << "shape " << shape << " of " << size.x << "x" << size.y);
                const Canvas canvas(size.x + 20, size.y + 20, scale);
                const URect rect(UPoint(10, 10), size);
                scheme->drawShape(*canvas.device, rect, USchemeShape(shape), kLongText);
                URect ink = canvas.ink();
                const int32_t factor = int32_t(scale);
                const URect room(rect.left * factor, rect.top * factor, rect.right * factor, rect.bottom * factor);
                URect outside(room);
                outside.unite(ink);
                EXPECT_EQ(outside, room);
                EXPECT_TRUE(size.x < 40 || !ink.isEmpty());
                URect clip;
                canvas.device->getClip(clip);
                EXPECT_EQ(clip, URect(-30000, -30000, 30000, 30000));
            }
}

TEST_F(SchemeShapes, OfStraightEdgesAreTheSameAtTwiceTheScale) {
    const USchemeShape shapes[] = {kShapeWorkAreaFrame,     kShapeDialogFrame,   kShapeMultiPane,
                                   kShapeSeparator,         kShapeViewSeparator, kShapeTransparentFrame,
                                   kShapeSimpleProgressBar, kShapeColumnHeader};
    for (const USchemeShape shape : shapes)
        for (const URect& rect : {URect(2, 2, 61, 15), URect(3, 2, 14, 48)}) {
            SCOPED_TRACE(testing::Message() << "shape " << shape << " " << rect.getWidth());
            const Pixels single = drawn({64, 50}, rect, shape), twice = drawn({64, 50}, rect, shape, nullptr, 2);
            for (size_t y = 0; y < twice.size(); ++y)
                for (size_t x = 0; x < twice[y].size(); ++x)
                    ASSERT_EQ(twice[y][x], single[y / 2][x / 2]) << x << ", " << y;
        }
}

TEST_F(SchemeShapes, StandInTheMiddleOfTheirRectangle) {
    const USchemeShape upright[] = {kShapeCross,      kShapeExpansionBox, kShapeMenuArrow,     kShapeCrossBox,
                                    kShapeSortMarker, kShapeShadow,       kShapeButtonReleased};
    for (const USchemeShape shape : upright)
        for (const int32_t side : {11, 16}) {
            SCOPED_TRACE(testing::Message() << "shape " << shape << " " << side);
            for (const auto& row : drawn({side, side}, {0, 0, side, side}, shape))
                for (size_t x = 0; x < row.size() / 2; ++x)
                    ASSERT_TRUE(isNear(row[x], row[row.size() - 1 - x], 8)) << x;
        }
}

TEST_F(SchemeShapes, HaveTheColorsOfTheScheme) {
    const struct {
        USchemeShape shape;
        int32_t x, y;  // of 30 by 20
        uint32_t color;
    } kRows[] = {
        {kShapeWorkAreaFrame,     0,  0,  kDark     },
        {kShapeWorkAreaFrame,     1,  1,  kLine     },
        {kShapeWorkAreaFrame,     15, 10, kLight    },
        {kShapeWorkAreaFrame,     29, 10, kLight    },
        {kShapeDialogFrame,       15, 0,  kLine     },
        {kShapeDialogFrame,       1,  10, kLight    },
        {kShapeDialogFrame,       28, 10, kDark     },
        {kShapeDialogFrame,       15, 10, kPanel    },
        {kShapeMultiPane,         29, 19, kLine     },
        {kShapeTopTab,            15, 19, kPanel    }, // open to the pane
        {kShapeTopTabInactive,    15, 19, kLine     },
        {kShapeTopTabInactive,    15, 0,  0         },
        {kShapeBottomTab,         15, 0,  kPanel    },
        {kShapeBottomTabInactive, 15, 0,  kLine     },
        {kShapeSeparator,         15, 9,  kLine     },
        {kShapeSeparator,         15, 10, kLight    },
        {kShapeDataFieldActive,   15, 10, kLight    },
        {kShapeSimpleProgressBar, 15, 10, kBar      },
        {kShapeCross,             15, 10, 0xFF000000},
        {kShapeTransparentFrame,  15, 10, 0         },
        {kShapeColumnText,        29, 19, 0         },
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message() << "shape " << row.shape << " at " << row.x << ", " << row.y);
        EXPECT_EQ(drawn({30, 20}, {0, 0, 30, 20}, row.shape)[size_t(row.y)][size_t(row.x)], row.color);
    }
    const uint32_t frame = drawn({30, 20}, {0, 0, 30, 20}, kShapeTransparentFrame)[0][15];
    for (const URect& thin : {URect(0, 0, 30, 1), URect(0, 0, 1, 20)})
        EXPECT_EQ(drawn({30, 20}, thin, kShapeTransparentFrame)[0][0], frame);
    scheme->setSchemeColor(kSchemeWorkArea, UColor(0xFF123456), kDisplayGroup);
    EXPECT_EQ(drawn({30, 20}, {0, 0, 30, 20}, kShapeWorkAreaFrame)[10][15], 0xFF123456);
}

TEST_F(SchemeShapes, ProgressIsBoundedAndRounded) {
    const struct {
        float part;
        int32_t columns;  // of 20
    } kRows[] = {
        {-1,        0 },
        {NAN,       0 },
        {0.024F,    0 },
        {0.026F,    1 },
        {0.5F,      10},
        {1,         20},
        {HUGE_VALF, 20},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.part);
        const Canvas canvas(24, 9);
        scheme->drawSimpleProgressBar(*canvas.device, {0, 0, 24, 9}, row.part);
        EXPECT_EQ(std::ranges::count(canvas.pixels()[4], kBar), row.columns);
        scheme->drawProgressBar(*canvas.device, {0, 0, 24, 9}, u"1", row.part);
    }
}

TEST_F(SchemeShapes, OfHostileRectanglesEndSoonAndInSilence) {
    const Canvas canvas(8, 8);
    const URect hostile[] = {
        {5,         5,         5,         9        },
        {9,         9,         -9,        -9       },
        {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX},
        {INT32_MIN, 2,         INT32_MAX, 4        },
        {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN},
    };
    for (const URect& rect : hostile)
        for (int32_t shape = -1; shape <= kNumSchemeShapes; ++shape)
            scheme->drawShape(*canvas.device, rect, USchemeShape(shape), kLongText);
    EXPECT_NE(canvas.at(4, 3), 0U);
    const OPtr<UPhysicalDrawDevice> nowhere(new UPhysicalDrawDevice(nullptr));
    for (int32_t shape = 0; shape < kNumSchemeShapes; ++shape)
        scheme->drawShape(*nowhere, {0, 0, 30, 20}, USchemeShape(shape), kLongText);
}

TEST_F(SchemeShapes, ThroughAPortKeepItsOriginAndItsClip) {
    for (int32_t shape = 0; shape < kNumSchemeShapes; ++shape) {
        SCOPED_TRACE(shape);
        const Canvas canvas(60, 40);
        {
            const OPtr<UDrawPort> port(new UDrawPort(canvas.device, {20, 10}, {0, 0, 15, 25}));
            scheme->drawShape(*port, {0, 0, 30, 20}, USchemeShape(shape), kLongText);
        }
        const Pixels all = drawn({30, 20}, {0, 0, 30, 20}, shape, kLongText), shown = canvas.pixels();
        for (size_t y = 0; y < 40; ++y)
            for (size_t x = 0; x < 60; ++x) {
                const bool inside = x >= 20 && x < 35 && y >= 10 && y < 30;
                ASSERT_TRUE(isNear(shown[y][x], inside ? all[y - 10][x - 20] : 0, 16)) << x << ", " << y;
            }
    }
}

TEST_F(SchemeShapes, OfTheSystemHaveAFlatWorkArea) {
    const OPtr<USystemScheme> system(new USystemScheme);
    const Canvas canvas(9, 9);
    system->drawShape(*canvas.device, {0, 0, 9, 9}, kShapeWorkAreaFrame);
    EXPECT_EQ(canvas.at(0, 4), kDark);
    EXPECT_EQ(canvas.at(1, 4), kLight);
    EXPECT_EQ(canvas.at(8, 8), kDark);
}
