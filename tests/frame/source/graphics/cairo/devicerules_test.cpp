#include "base/source/tarray.h"
#include "gui/drawing/udrawport.h"
#include "tests/frame/source/graphics/cairo/canvas.h"

using namespace Tessarine;
using namespace Tessarine::Testing;

namespace {
constexpr float kWholeTurn = 6.2831855F;

void line(UDrawDevice& device, int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
    device.moveTo(UPoint(x1, y1));
    device.lineTo(UPoint(x2, y2));
}

UPolygon polygon(const std::vector<Graphics::Point>& points) {
    UPolygon result;
    for (const Graphics::Point& point : points)
        result.lineTo(point);
    return result;
}

void rects(UDrawDevice& device, bool filled) {
    TArray<URect> both;
    both.add(URect(0, 0, 3, 3));
    both.add(URect(4, 0, 4, 3));
    both.add(URect(5, 1, 8, 4));
    device.fastRects(both, filled);
}

void lines(UDrawDevice& device) {
    int32_t both[] = {0, 1, 5, 1, 6, 0, 6, 3, 7, 7};
    device.fastLines(both, 10);
}

const UPolygon kSquare = polygon({
    {1, 1},
    {5, 1},
    {5, 3},
    {1, 3}
});

struct Rule {
    const char* name;
    int32_t penWidth;
    void (*draw)(UDrawDevice& device);
    Picture picture;  // rows behind these stay blank
};
const Rule kRules[] = {
    {"lines end before their end",   1, [](UDrawDevice& d) { line(d, 2, 1, 6, 1); },                    {"", "  PPPP"}                             },
    {"and so backwards",             1, [](UDrawDevice& d) { line(d, 6, 1, 2, 1); },                    {"", "  PPPP"}                             },
    {"downwards",                    1, [](UDrawDevice& d) { line(d, 1, 0, 1, 2); },                    {" P", " P"}                               },
    {"even widths aren't moved",     2, [](UDrawDevice& d) { line(d, 2, 1, 6, 1); },                    {"  PPPP", "  PPPP"}                       },
    {"three wide",                   3, [](UDrawDevice& d) { line(d, 2, 1, 6, 1); },                    {"  PPPP", "  PPPP", "  PPPP"}             },
    {"many lines",                   1, [](UDrawDevice& d) { lines(d); },                               {"      P", "PPPPP P", "      P"}          },
    {"moving by",
     1,                                 [](UDrawDevice& d) {
         d.moveTo(UPoint(1, 1));
         d.moveBy(UPoint(1, 1));
         d.lineTo(UPoint(4, 2));
     },                                                                                          {"", "", "  PP"}                           },
    {"dots begin with one",
     1,                                 [](UDrawDevice& d) {
         d.setPen(UPen(UColor(0xFF000000), 1, UPen::kDotted));
         line(d, 0, 0, 6, 0);
     },                                                                                          {"P P P"}                                  },
    {"outline within",               1, [](UDrawDevice& d) { d.frameRect(URect(1, 0, 5, 3)); },         {" PPPP", " P  P", " PPPP"}                },
    {"outline of a point",           1, [](UDrawDevice& d) { d.frameRect(URect(1, 1, 2, 2)); },         {}                                         },
    {"nothing empty",
     1,                                 [](UDrawDevice& d) {
         d.frameRect(URect(4, 1, 2, 3));
         d.paintRect(URect(4, 1, 2, 3));
     },                                                                                          {}                                         },
    {"area as it is",                3, [](UDrawDevice& d) { d.paintRect(URect(1, 0, 4, 2)); },         {" BBB", " BBB"}                           },
    {"many areas",                   1, [](UDrawDevice& d) { rects(d, true); },                         {"BBB", "BBB  BBB", "BBB  BBB", "     BBB"}},
    {"many outlines",                1, [](UDrawDevice& d) { rects(d, false); },                        {"PPP", "P P  PPP", "PPP  P P", "     PPP"}},
    {"erased",
     1,                                 [](UDrawDevice& d) {
         d.paintRect(URect(0, 0, 4, 3));
         d.eraseRect(URect(1, 1, 3, 2));
     },                                                                                          {"BBBB", "B  B", "BBBB"}                   },
    {"polygon is moved",             2, [](UDrawDevice& d) { d.paintPoly(kSquare); },                   {"", " BBBB", " BBBB"}                     },
    {"its outline closes",           1, [](UDrawDevice& d) { d.framePoly(kSquare); },                   {"", " PPPPP", " P   P", " PPPPP"}         },
    {"a line of points stays open",  1, [](UDrawDevice& d) { d.polyLine(kSquare); },                    {"", " PPPPP", "     P", " PPPPP"}         },
    {"nothing of no turn",
     1,                                 [](UDrawDevice& d) {
         d.paintOval(URect(0, 0, 8, 4), 0, 0);
         d.frameOval(URect(0, 0, 8, 4), 1, 0);
     },                                                                                          {}                                         },
    {"round outlines reach the end",
     1,                                 [](UDrawDevice& d) { d.paintRoundRect(URect(0, 0, 8, 4), 0); },
     {"BBBBBBBB", "BBBBBBBB", "BBBBBBBB", "BBBBBBBB"}                                                                                              },
};
}  // namespace

class DeviceRules : public Drawing {};

TEST_F(DeviceRules, PixelsAreExact) {
    for (const Rule& rule : kRules) {
        const Canvas canvas(8, 4);
        canvas.device->setPen(UPen(UColor(0xFF000000), rule.penWidth));
        rule.draw(*canvas.device);
        Picture expected = rule.picture;
        expected.resize(4);
        for (std::string& row : expected)
            row.resize(8, ' ');
        EXPECT_EQ(canvas.picture(), expected) << rule.name;
    }
}

TEST_F(DeviceRules, OvalsStayWithinTheirRectangle) {
    const struct {
        const char* name;
        void (*draw)(UDrawDevice& device);
        URect ink;
        char middle;
    } rows[] = {
        {"filled",  [](UDrawDevice& d) { d.paintOval(URect(2, 2, 22, 14), 0, kWholeTurn); },       {2, 2, 22, 14},  'B'},
        {"outline", [](UDrawDevice& d) { d.frameOval(URect(2, 2, 22, 14), 0, kWholeTurn); },       {2, 2, 22, 14},  ' '},
        {"pie",     [](UDrawDevice& d) { d.paintOval(URect(2, 2, 22, 14), 0, kWholeTurn / 4); },   {12, 8, 22, 14}, 'B'},
        {"arc",
         [](UDrawDevice& d) { d.frameOval(URect(2, 2, 22, 14), kWholeTurn / 2, kWholeTurn / 2); },
         {2, 2, 22, 8},
         ' '                                                                                                           },
    };
    for (const auto& row : rows) {
        const Canvas canvas(24, 16);
        row.draw(*canvas.device);
        const URect ink = canvas.ink();
        EXPECT_TRUE(ink == row.ink) << row.name << ": " << ink.left << " " << ink.top << " " << ink.right << " "
                                    << ink.bottom;
        EXPECT_EQ(canvas.picture()[8][12], row.middle) << row.name;
    }
}

TEST_F(DeviceRules, LastOfPenAndBrushDecidesOnSmoothing) {
    const struct {
        bool pen, brush;
    } rows[] = {
        {false, true },
        {true,  false}
    };
    for (const auto& row : rows) {
        const Canvas canvas(9, 9);
        canvas.device->setPen(UPen(UColor(0xFF000000), 1, UPen::kSolid, row.pen));
        canvas.device->setBrush(UBrush(UColor(0xFFFFFFFF), row.brush));
        line(*canvas.device, 0, 0, 8, 5);
        const std::string all = ::testing::PrintToString(canvas.picture());
        EXPECT_EQ(all.find('?') != std::string::npos, row.brush);
    }
}

TEST_F(DeviceRules, ClipIsStoredCollapsedAndSentAsItIs) {
    const Canvas canvas(8, 4);
    URect clip;
    canvas.device->getClip(clip);
    EXPECT_TRUE(clip == URect(-30000, -30000, 30000, 30000));
    canvas.device->setClip(URect(6, 3, 2, 1));
    canvas.device->getClip(clip);
    EXPECT_TRUE(clip == URect(2, 1, 2, 1));
    canvas.device->paintRect(URect(0, 0, 8, 4));
    EXPECT_TRUE(canvas.ink().isEmpty());
}

TEST_F(DeviceRules, PortMovesClipsAndGivesBack) {
    const Canvas canvas(8, 4);
    canvas.device->setClip(URect(0, 0, 7, 4));
    {
        UDrawPort port(canvas.device, UPoint(2, 1), URect(0, 0, 9, 2));
        URect clip;
        port.getClip(clip);
        EXPECT_TRUE(clip == URect(0, 0, 5, 2));
        port.paintRect(URect(-9, -9, 90, 90));
        port.setClip(URect(1, 0, 99, 1));
        line(port, 0, 0, 90, 0);
        TArray<URect> moved;
        moved.add(URect(1, 1, 3, 3));
        int32_t numbers[] = {0, 0, 1, 1};
        port.fastRects(moved, false);
        port.fastLines(numbers, 4);
        EXPECT_TRUE(moved.at(0) == URect(3, 2, 5, 4));
        EXPECT_EQ(numbers[3], 2);
    }
    EXPECT_EQ(canvas.picture(), (Picture{"        ", "  BPPPP ", "  BBBBB ", "        "}));
    URect clip;
    canvas.device->getClip(clip);
    EXPECT_TRUE(clip == URect(0, 0, 7, 4));
    UDrawPort inert(nullptr, UPoint(), URect(0, 0, 9, 9));
    inert.paintRect(URect(0, 0, 9, 9));
    EXPECT_EQ(inert.getStringWidth(u"text"), 0);
}

TEST_F(DeviceRules, WithoutADeviceNothingHappens) {
    UPhysicalDrawDevice device(nullptr);
    for (const Rule& rule : kRules)
        rule.draw(device);
    device.drawString(u"text", UPoint());
    device.drawBitmap(nullptr, UPoint(), 0);
    device.saveState();
    device.restoreState();
    EXPECT_EQ(device.getPen().width, 1);
}
