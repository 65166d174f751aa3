#include "frame/source/graphics/cairo/cairocells.h"
#include "tests/frame/source/graphics/cairo/canvas.h"
#include <algorithm>
#include <limits>
#include <random>

using namespace Tessarine;
using namespace Tessarine::Graphics;
using namespace Tessarine::Testing;

namespace {
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kEndless = std::numeric_limits<double>::infinity();
constexpr uint32_t kRedPixel = 0xFFFF0000, kBluePixel = 0xFF0000FF;

std::vector<uint32_t> multipliedNoise(size_t count) {
    std::mt19937 random(7);
    std::vector<uint32_t> pixels(count);
    for (size_t index = 0; index < count; ++index) {
        const uint32_t alphaBits = index % 3 == 0 ? 0xFF000000 : index % 5 == 0 ? 0 : uint32_t(random());
        pixels[index] = multiplied((uint32_t(random()) & 0xFFFFFF) | (alphaBits & 0xFF000000));
    }
    return pixels;
}

/** A bitmap with two columns of red and the others blue. */
OPtr<IBitmap> stripes(int32_t width, int32_t height) {
    const Canvas canvas(width, height);
    canvas.fill(kBluePixel);
    canvas.boundary->setBrushColor(kRedPixel);
    canvas.boundary->drawRect({0, 0, 2, double(height)}, kDrawFill);
    return OPtr<IBitmap>(IPtr<IBitmap>(canvas.bitmap));
}

size_t count(const Canvas& canvas, uint32_t color) {
    size_t result = 0;
    for (const auto& row : canvas.pixels())
        result += size_t(std::ranges::count(row, color));
    return result;
}
}  // namespace

class Device : public Drawing {};

TEST_F(Device, ClipReplacesAndEmptyLetsNothingThrough) {
    const struct {
        Rect clip;
        int32_t result;
        Picture picture;
    } rows[] = {
        {{1, 1, 2, 1},                     kResultOk,        {"    ", " BB "}},
        {{-5, -5, 7, 6},                   kResultOk,        {"BB  ", "    "}},
        {{3, 1, -2, 1},                    kResultOk,        {"    ", "    "}},
        {{1, 1, 2, 0},                     kResultOk,        {"    ", "    "}},
        {{-30000, -30000, 60000, 60000},   kResultOk,        {"BBBB", "BBBB"}},
        {{-1e300, -1e300, 1.5e300, 2e300}, kResultOk,        {"BBBB", "BBBB"}},
        {{1e9, 0, 1e9, 2},                 kResultOk,        {"    ", "    "}},
        {{kNoNumber, 0, 4, 2},             kInvalidArgument, {"    ", "    "}},
        {{0, 0, kEndless, 2},              kInvalidArgument, {"    ", "    "}},
    };
    for (const auto& row : rows)
        for (const uint32_t brush : {0xFFFFFFFFU, 0xFEFFFFFFU}) {  // past cairo, and by it
            const Canvas canvas(4, 2);
            canvas.boundary->setClip({0, 0, 1, 1});
            EXPECT_EQ(canvas.boundary->setClip(row.clip), row.result);
            canvas.boundary->setBrushColor(brush);
            canvas.boundary->drawRect({-9, -9, 90, 90}, kDrawFill);
            Picture picture = canvas.picture();
            for (std::string& text : picture)
                std::ranges::replace(text, '?', 'B');
            EXPECT_EQ(picture, row.picture) << row.clip.x << " " << row.clip.width << " " << brush;
        }
}

TEST_F(Device, ClipWithinPixelsHoldsAllThatIsDrawn) {
    const Canvas canvas(4, 2);
    canvas.boundary->setDrawAntialiased(1);
    canvas.boundary->setClip({0.5, 0, 2, 2});
    canvas.boundary->drawRect({0, 0, 4, 2}, kDrawFill);
    const OPtr<IBitmap> source(stripes(4, 2));
    EXPECT_EQ(canvas.picture()[0], "?B? ");
    EXPECT_NEAR(canvas.at(0, 0) >> 24, 128, 1);
    canvas.boundary->drawBitmap(source, {0, 0, 4, 2}, {0, 0}, 1);
    EXPECT_EQ(canvas.at(1, 0), kRedPixel);
    EXPECT_EQ(canvas.at(3, 0), 0u);
}

TEST_F(Device, TurnedAndScaledAreasAreWhereTheyBelong) {
    const struct {
        TransformMatrix matrix;
        Picture picture;
    } rows[] = {
        {{0, 1, -1, 0, 4, 0},   {" BB ", " BB ", " BB "}}, // a quarter turn about the corner
        {{-1, 0, 0, 1, 4, 0},   {"    ", " BBB", " BBB"}},
        {{2, 0, 0, 1, -2, 0},   {"    ", "BBBB", "BBBB"}},
        {{1, 0, 0, 1, 1e9, 0},  {"    ", "BBB ", "BBB "}}, // refused
        {{0, 0, 0, 0, 0, 0},    {"    ", "BBB ", "BBB "}},
        {{1, 0, 0, 1e-9, 0, 0}, {"    ", "BBB ", "BBB "}},
    };
    for (const auto& row : rows) {
        const Canvas canvas(4, 3);
        canvas.boundary->concatTransformMatrix(row.matrix);
        canvas.boundary->drawRect({0, 1, 3, 2}, kDrawFill);
        EXPECT_EQ(canvas.picture(), row.picture) << row.matrix.xx << " " << row.matrix.x0;
    }
}

TEST_F(Device, StateIsSavedAndComesBack) {
    const Canvas canvas(4, 1);
    EXPECT_EQ(canvas.boundary->restoreGlobalState(), kResultFalse);
    canvas.boundary->saveGlobalState();
    canvas.boundary->setBrushColor(kRedPixel);
    canvas.boundary->setClip({0, 0, 1, 1});
    canvas.boundary->concatTransformMatrix({1, 0, 0, 1, 2, 0});
    EXPECT_EQ(canvas.boundary->restoreGlobalState(), kResultOk);
    canvas.boundary->drawRect({1, 0, 2, 1}, kDrawFill);
    EXPECT_EQ(canvas.picture(), Picture{" BB "});
}

TEST_F(Device, WhatIsNoNumberDrawsNothing) {
    const Canvas canvas(4, 4);
    const OPtr<IBitmap> source(stripes(4, 4));
    const OPtr<IGraphicsPath> path(factory()->createPath());
    const OPtr<IGraphicsPathAccessor> figure(path->open());
    EXPECT_EQ(figure->addLine({1, 1}), kResultFalse);
    EXPECT_EQ(figure->beginFigure({0, kNoNumber}, 1), kInvalidArgument);
    for (const double bad : {kNoNumber, kEndless, -kEndless}) {
        EXPECT_EQ(canvas.boundary->drawLine({0, 0}, {bad, 1}), kInvalidArgument);
        EXPECT_EQ(canvas.boundary->drawRect({bad, 0, 4, 4}, kDrawFill), kInvalidArgument);
        EXPECT_EQ(canvas.boundary->drawEllipse({0, 0, bad, 4}, kDrawFill), kInvalidArgument);
        EXPECT_EQ(canvas.boundary->drawBitmapStretched(source, {0, 0, 4, 4}, {0, bad, 4, 4}, 1), kInvalidArgument);
        EXPECT_EQ(canvas.boundary->drawBitmap(source, {0, 0, 4, 4}, {0, 0}, bad), kInvalidArgument);
        EXPECT_EQ(canvas.boundary->concatTransformMatrix({1, 0, 0, 1, bad, 0}), kInvalidArgument);
        EXPECT_EQ(canvas.boundary->concatTransformMatrix({1, 0, 0, 1, 0, bad}), kInvalidArgument);
        EXPECT_EQ(canvas.boundary->setPenWidth(bad), kInvalidArgument);
    }
    EXPECT_EQ(canvas.boundary->drawBitmap(nullptr, {0, 0, 4, 4}, {0, 0}, 1), kInvalidArgument);
    EXPECT_EQ(canvas.boundary->drawPath(nullptr, kDrawFill, nullptr), kInvalidArgument);
    EXPECT_EQ(canvas.boundary->drawString(u"x", {0, 0, 4, 4}, nullptr, 0, 0), kInvalidArgument);
    EXPECT_EQ(canvas.boundary->setLineStyle({
                  0, 0, 2, {0, 0}
    }),
              kInvalidArgument);
    canvas.boundary->drawBitmapStretched(source, {0, 0, 1e-20, 4}, {0, 0, 1e300, 4}, 1);
    canvas.boundary->saveGlobalState();
    canvas.boundary->concatTransformMatrix({0.8, -0.6, 0.6, 0.8, 0, 0});
    canvas.boundary->drawBitmapStretched(source, {0, 0, 4, 4}, {0.5, 0, 1e-5, 4}, 1);
    canvas.boundary->restoreGlobalState();
    EXPECT_TRUE(canvas.ink().isEmpty());
    EXPECT_EQ(createScaledDrawDevice(nullptr, 1), nullptr);
    EXPECT_EQ(createScaledDrawDevice(source, 0), nullptr);
    // and huge ones cover what they should
    canvas.boundary->drawRect({-1e300, -1e300, 1.5e300, 1.5e300}, kDrawFill);
    canvas.boundary->drawLine({-1e300, 1.5}, {1e300, 1.5});
    EXPECT_EQ(canvas.picture(), (Picture{"BBBB", "PPPP", "BBBB", "BBBB"}));
}

TEST_F(Device, HalfTransparentColoursMix) {
    const Canvas canvas(2, 1);
    canvas.fill(0xFF000000);
    canvas.boundary->setBrushColor(0x80FFFFFF);
    canvas.boundary->drawRect({0, 0, 1, 1}, kDrawFill);
    EXPECT_EQ(canvas.at(0, 0), 0xFF808080);
    EXPECT_EQ(canvas.at(1, 0), 0xFF000000);
}

TEST_F(Device, PixelsThatDrawingLeftAloneKeepTheirColours) {
    const Canvas canvas(3, 1);
    canvas.fill(0x00123456);
    canvas.boundary->drawRect({1, 0, 1, 1}, kDrawFill);
    EXPECT_EQ(canvas.pixels()[0], (std::vector<uint32_t>{0x00123456, 0xFFFFFFFF, 0x00123456}));
    const BitmapPixelAccessor writing(canvas.bitmap, kLockWrite);
    EXPECT_EQ(canvas.boundary->drawRect({0, 0, 1, 1}, kDrawFill), kResultFalse);
    EXPECT_EQ(factory()->createDrawDeviceForBitmap(canvas.bitmap), nullptr);
}

TEST_F(Device, FastRowsGiveThePlainBytes) {
    std::vector<uint32_t> from = multipliedNoise(1001), below = multipliedNoise(1011);
    for (const uint32_t opacity : {0U, 1U, 128U, 254U, 255U}) {
        std::vector<uint32_t> plain(below.begin() + 10, below.end()), fast(plain);
        blendRowPlain(plain.data(), from.data(), 1001, opacity);
        blendRows({fast.data(), 77}, {from.data(), 77}, 77, 13, opacity);
        EXPECT_EQ(fast, plain) << opacity;
    }
}

TEST_F(Device, LinesPastCairoAreThoseByIt) {
    constexpr double kEnds[] = {-1, 0.5, 1, 2.25, 3.5, 4, 9};
    for (const double scale : {1.0, 2.0})
        for (const double width : {0.0, 1.0, 2.0, 3.0})
            for (const double place : {1.0, 2.5, 3.75})
                for (const double start : kEnds)
                    for (const double end : kEnds) {
                        const Canvas past(6, 6, scale), by(6, 6, scale);
                        by.boundary->setClip({-8.25, -8.25, 99, 99});
                        for (const Canvas* canvas : {&past, &by}) {
                            canvas->boundary->setPenWidth(width);
                            canvas->boundary->drawLine({start, place}, {end, place});
                            canvas->boundary->drawLine({place, end}, {place, start});
                        }
                        EXPECT_EQ(past.picture(), by.picture())
                            << scale << " " << width << " " << place << " " << start << " " << end;
                    }
}

TEST_F(Device, NothingBesideTheSourceIsSampled) {
    const struct {
        Rect source, target;
        double alpha;
        size_t red, blue;
    } rows[] = {
        {{0, 0, 2, 4},   {0, 0, 2, 4},     1, 8,  0 },
        {{0, 0, 2, 4},   {0, 0, 12, 8},    1, 96, 0 }, // stretched: no blue at the right end
        {{2, 0, 2, 4},   {1, 1, 5, 7},     1, 0,  35},
        {{0, 0, 2, 4},   {0.5, 0.5, 9, 6}, 1, 54, 0 }, // within pixels
        {{-2, -2, 4, 4}, {0, 0, 4, 4},     1, 4,  0 }, // leaves its bitmap
        {{-2, -2, 4, 4}, {0, 0, 8, 8},     1, 16, 0 },
        {{2, 2, 90, 90}, {0, 0, 90, 90},   1, 0,  4 },
        {{9, 9, 4, 4},   {0, 0, 4, 4},     1, 0,  0 },
        {{0, 0, 2, 4},   {0, 0, -2, 4},    1, 0,  0 },
        {{0, 0, 2, 4},   {0, 0, 2, 4},     0, 0,  0 },
        {{0, 0, 2, 4},   {-6, -4, 24, 16}, 2, 96, 0 },
    };
    const OPtr<IBitmap> source(stripes(4, 4));
    for (const auto& row : rows) {
        const Canvas canvas(12, 8);
        canvas.boundary->drawBitmapStretched(source, row.source, row.target, row.alpha);
        EXPECT_EQ(count(canvas, kRedPixel), row.red) << row.source.x << " " << row.target.width;
        EXPECT_EQ(count(canvas, kBluePixel), row.blue) << row.source.x << " " << row.target.width;
    }
}

TEST_F(Device, StretchedPartsFollowTheirBitmap) {
    const OPtr<IBitmap> source(stripes(4, 4));
    const Canvas canvas(12, 8);
    const auto draw = [&] { canvas.boundary->drawBitmapStretched(source, {0, 0, 2, 2}, {0, 0, 12, 8}, 1); };
    draw();
    EXPECT_EQ(count(canvas, kRedPixel), 96u);
    {
        const BitmapPixelAccessor writing(source, kLockWrite);
        std::fill_n(writing.row(0), 16, kBluePixel);
    }
    draw();
    EXPECT_EQ(count(canvas, kBluePixel), 96u);
    canvas.boundary->drawBitmapStretched(source, {0, 0, 4, 4}, {0, 0, 4, 4}, 0.5);
    EXPECT_EQ(canvas.at(1, 1), kBluePixel);
}

TEST_F(Device, BitmapsAreDrawnOntoThemselves) {
    for (const double shift : {1.0, 1.5}) {  // past cairo, and by it
        const OPtr<IBitmap> bitmap(stripes(6, 1));
        const OPtr<IDrawDevice> device(factory()->createDrawDeviceForBitmap(bitmap));
        device->drawBitmap(bitmap, {0, 0, 4, 1}, {shift, 0}, 1);
        const BitmapPixelAccessor access(bitmap, kLockRead);
        EXPECT_EQ(access.row(0)[2], kRedPixel) << shift;
        EXPECT_EQ(access.row(0)[4], kBluePixel) << shift;
    }
}

TEST_F(Device, ScaleIsOfTheSurfaceAlone) {
    const Canvas canvas(4, 2, 2);
    const OPtr<IBitmap> source(stripes(3, 1));
    canvas.boundary->setClip({0, 0, 3, 2});
    canvas.device->paintRect(URect(1, 0, 4, 1));
    canvas.boundary->drawBitmap(source, {1, 0, 2, 1}, {0, 1}, 1);
    EXPECT_EQ(canvas.picture(), (Picture{"  BBBB  ", "  BBBB  ", "????    ", "????    "}));
    EXPECT_EQ(canvas.at(1, 3), kRedPixel);  // whole pixels stay whole
    EXPECT_EQ(canvas.at(2, 3), kBluePixel);
    canvas.boundary->setClip({-1e308, -1e308, 1.7e308, 1.7e308});
    canvas.boundary->clearRect({0, 0, 4, 2});
    EXPECT_TRUE(canvas.ink().isEmpty());
}
