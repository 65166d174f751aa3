#include "tools/drawing-gallery/page.h"
#include "graphics/platformgraphics.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include "storage/ffstream.h"
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Tessarine::Gallery {
namespace {
/** Fonts of another release smooth their edges a little differently; a line that moved by a pixel differs by 50. */
constexpr int32_t kBlock = 8, kTolerance = 12;

OPtr<Graphics::IBitmap> kept(const std::string& name) {
    const char* root = std::getenv("TALV_SOURCE_DIR");
    FFileStream file;
    FPath path;
    path.fromString(FString(((root ? std::string(root) + "/" : "") + "docs/gallery/" + name).c_str()).text16(),
                    kFilePath);
    file.setPath(path);
    return OPtr<Graphics::IBitmap>(file.open() ? bitmapFactory()->createFromStream(&file) : nullptr);
}

int32_t difference(uint32_t a, uint32_t b) {
    int32_t most = 0;
    for (int32_t shift = 0; shift < 32; shift += 8)
        most = std::max(most, std::abs(int32_t(a >> shift & 0xFF) - int32_t(b >> shift & 0xFF)));
    return most;
}

/** Of a block's pixels, the mean. */
int32_t differenceAt(const BitmapPixelAccessor& a, const BitmapPixelAccessor& b, int32_t left, int32_t top) {
    int32_t sum = 0, pixels = 0;
    for (int32_t y = top; y < std::min(top + kBlock, a.getHeight()); ++y)
        for (int32_t x = left; x < std::min(left + kBlock, a.getWidth()); ++x, ++pixels)
            sum += difference(a.row(y)[x], b.row(y)[x]);
    return sum / pixels;
}

/** The places of blocks that differ. */
std::vector<std::string> differences(Graphics::IBitmap* drawn, Graphics::IBitmap* golden) {
    const BitmapPixelAccessor a(drawn, Graphics::kLockRead), b(golden, Graphics::kLockRead);
    if (!a.isValid() || a.getWidth() != b.getWidth() || a.getHeight() != b.getHeight())
        return {"another size"};
    std::vector<std::string> places;
    for (int32_t top = 0; top < a.getHeight(); top += kBlock)
        for (int32_t left = 0; left < a.getWidth(); left += kBlock)
            if (differenceAt(a, b, left, top) > kTolerance)
                places.push_back(std::to_string(left) + ", " + std::to_string(top));
    return places;
}

/** What the documents show is what is drawn. */
TEST(Gallery, IsAsTheDocumentsShowIt) {
    installTessarinePlatformGraphics();
    for (const Page& page : allPages())
        for (const int32_t scale : {1, 2}) {
            const std::string name = page.name + std::string(scale == 2 ? "@2x.png" : ".png");
            const OPtr<Graphics::IBitmap> golden = kept(name);
            EXPECT_TRUE(golden) << name;
            EXPECT_EQ(differences(pictureOf(page, scale), golden), std::vector<std::string>()) << name;
        }
    UPhysicalDrawDevice::setFactory(nullptr);
}
}  // namespace
}  // namespace Tessarine::Gallery
