#pragma once
#include "graphics/platformgraphics.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include "pluginterfaces/graphics/ifactory.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Tessarine::Testing {

/** Tests that draw: the platform is installed before, and gone after. */
class Drawing : public testing::Test {
protected:
    Drawing() { installTessarinePlatformGraphics(); }
    ~Drawing() override { UPhysicalDrawDevice::setFactory(nullptr); }
    static Graphics::IFactory* factory() { return UPhysicalDrawDevice::getFactory(true); }
};

using Picture = std::vector<std::string>;

/** A bitmap that is drawn on, a number of units large, and read back. */
class Canvas {
public:
    explicit Canvas(int32_t width, int32_t height, double scale = 1)
        : bitmap(UPhysicalDrawDevice::getFactory(true)->getBitmapFactory()->create({width * scale, height * scale})),
          boundary(Graphics::createScaledDrawDevice(bitmap, scale)), device(new UPhysicalDrawDevice(boundary)) {}

    /** Pixels by rows. */
    std::vector<std::vector<uint32_t>> pixels() const {
        const BitmapPixelAccessor access(bitmap, Graphics::kLockRead);
        std::vector<std::vector<uint32_t>> rows;
        for (int32_t y = 0; y < access.getHeight(); ++y)
            rows.emplace_back(access.row(y), access.row(y) + access.getWidth());
        return rows;
    }
    uint32_t at(int32_t x, int32_t y) const { return pixels()[size_t(y)][size_t(x)]; }
    void fill(uint32_t color) const {
        const BitmapPixelAccessor access(bitmap, Graphics::kLockWrite);
        for (int32_t y = 0; y < access.getHeight(); ++y)
            std::fill_n(access.row(y), access.getWidth(), color);
    }
    /** Rows with a blank for what nothing was drawn on, P for black, B for white, ? for others. */
    Picture picture() const {
        Picture result;
        for (const auto& row : pixels()) {
            std::string& text = result.emplace_back();
            for (const uint32_t pixel : row)
                text += pixel == 0 ? ' ' : pixel == 0xFF000000 ? 'P' : pixel == 0xFFFFFFFF ? 'B' : '?';
        }
        return result;
    }
    /** Around what was drawn, in pixels. */
    URect ink() const {
        URect result;
        const auto rows = pixels();
        for (int32_t y = 0; y < int32_t(rows.size()); ++y)
            for (int32_t x = 0; x < int32_t(rows[size_t(y)].size()); ++x)
                if (rows[size_t(y)][size_t(x)] != 0)
                    result.unite(URect(x, y, x + 1, y + 1));
        return result;
    }

    const OPtr<Graphics::IBitmap> bitmap;
    const OPtr<Graphics::IDrawDevice> boundary;
    const OPtr<UPhysicalDrawDevice> device;
};

inline void PrintTo(const Picture& picture, std::ostream* out) {
    for (const std::string& row : picture)
        *out << "\n|" << row << "|";
}

}  // namespace Tessarine::Testing
