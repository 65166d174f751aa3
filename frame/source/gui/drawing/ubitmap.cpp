#include "gui/drawing/ubitmap.h"
#include "base/source/finitializer.h"
#include "frame/source/gui/drawing/boundary.h"
#include "graphics/bitmapfilters/bitmapfilter.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "gui/drawing/ubitmapcache.h"
#include "gui/drawing/uoffscreen.h"
#include "pluginterfaces/graphics/ifactory.h"
#include <algorithm>
#include <cmath>

namespace Tessarine {
using Graphics::IBitmap;
using Graphics::IBitmapFilter;
namespace BitmapFilter = Graphics::BitmapFilter;

IMPLEMENT_CLASS(UBitmap, CmObject)

namespace {
constexpr double kDisabledGray = 0.5, kDisabledAlpha = 0.5;
constexpr uint32_t kColorBits = 0x00FFFFFF;
constexpr int32_t kAlphaShift = 24;

const OneTimeProcedure UBitmapTerminator(false, termUBitmap, "UBitmap", 25);

/** Whole pixels; 0 for what isn't a size. */
int32_t wholeSide(double side) {
    return side >= 1 && side <= Graphics::IBitmapFactory::kMaxSide ? int32_t(side) : 0;
}

IPtr<IBitmap> filtered(IBitmapFilter* filter, IBitmap* bitmap, bool inPlace) {
    FVariant result;
    if (!filter || !bitmap || filter->setInputValue("Bitmap", FVariant(static_cast<FUnknown*>(bitmap))) != kResultOk ||
        filter->runFilter(inPlace) != kResultOk ||
        filter->getValue("Bitmap", result, Graphics::kOutputValue) != kResultOk)
        return nullptr;
    return FUnknownPtr<IBitmap>(result.getObject());
}

template <class Change>
bool changePixels(IBitmap* bitmap, const Change& change) {
    const BitmapPixelAccessor pixels(bitmap, Graphics::kLockRead | Graphics::kLockWrite);
    for (int32_t y = 0; y < pixels.getHeight(); ++y)
        std::transform(pixels.row(y), pixels.row(y) + pixels.getWidth(), pixels.row(y), change);
    return pixels.isValid();
}

/** Takes off both rectangles, which are of one size, what lies outside of the bounds of the first one. */
void cut(URect& rect, const URect& bounds, URect& other) {
    const URect before(rect);
    rect.intersect(bounds);
    other = URect(UPoint::clip(int64_t(other.left) + rect.left - before.left),
                  UPoint::clip(int64_t(other.top) + rect.top - before.top),
                  UPoint::clip(int64_t(other.right) + rect.right - before.right),
                  UPoint::clip(int64_t(other.bottom) + rect.bottom - before.bottom));
}
}  // namespace

bool termUBitmap() {
    UBitmapCache::UProcessedBitmapPool::end();
    return true;
}

UBitmap::UBitmap(IBitmap* bitmap) {
    setGraphicsObject(bitmap);
}

UBitmap::UBitmap(const UPoint& size, uint32_t depth) : depth(depth) {
    Graphics::IBitmapFactory* factory = getFactory();
    setGraphicsObject(OPtr<IBitmap>(factory ? factory->create({double(size.x), double(size.y)}) : nullptr));
}

UBitmap::UBitmap(const UBitmap& other) : CmObject(other), origin(other.origin), depth(other.depth) {
    auto& source = const_cast<UBitmap&>(other);
    const OPtr<UBitmap> pixels(source.getSection(source.bounds()));
    if (!pixels)
        return;
    setGraphicsObject(pixels->graphicsObject);
    pixels->describe(*this);
}

UBitmap::UBitmap(IBStream* stream) {
    loadFromStream(stream);
}

UBitmap::UBitmap(IPath* path) {
    Graphics::IBitmapFactory* factory = path ? getFactory() : nullptr;
    setGraphicsObject(OPtr<IBitmap>(factory ? factory->createFromPath(path) : nullptr));
}

UBitmap::~UBitmap() {
    if (isInPool)
        UBitmapCache::removeProcessedBitmap(this);
}

bool UBitmap::loadFromStream(IBStream* stream) {
    Graphics::IBitmapFactory* factory = stream ? getFactory() : nullptr;
    // a compressed stream expands as it is read, so that a small file can't fill the memory before its size is known
    setGraphicsObject(OPtr<IBitmap>(factory ? factory->createFromStream(stream) : nullptr));
    return graphicsObject;
}

void UBitmap::setGraphicsObject(IBitmap* bitmap) {
    const Graphics::Size pixels = bitmap ? bitmap->getSize() : Graphics::Size();
    graphicsObject = bitmap;
    size = UPoint(int32_t(pixels.width), int32_t(pixels.height));
}

UBitmap* UBitmap::pixelOwner() {
    UBitmap* owner = this;
    for (UBitmap* target; owner && (target = owner->getTargetBitmap()) != owner;)
        owner = target;
    return owner;
}

bool UBitmap::isBehind(UBitmap* bitmap) const {
    while (bitmap && bitmap != this) {
        UBitmap* target = bitmap->getTargetBitmap();
        bitmap = target == bitmap ? nullptr : target;
    }
    return bitmap;
}

void UBitmap::describe(UBitmap& copy) {
    const UBitmap* owner = pixelOwner();
    if (!owner)
        return;
    copy.alphaFactor = owner->alphaFactor;
    copy.madeTransparent = owner->madeTransparent;
}

void UBitmap::keepUpWith(const UBitmap& copy) {
    UBitmap* owner = pixelOwner();
    if (owner && copy.madeTransparent && !owner->madeTransparent)
        owner->makeColorTransparent(UColor(UColor::getStandardColorSpec(kWhite)));
}

bool UBitmap::makeColorTransparent(const UColor& color) {
    const uint32_t spec = color.toColorSpec();
    madeTransparent |= changePixels(graphicsObject, [spec](uint32_t pixel) { return pixel == spec ? 0 : pixel; });
    return madeTransparent;
}

bool UBitmap::copyPixels(UBitmap* from, const URect& source, const UPoint& target) {
    URect read(source), written(target, source.getSize());
    cut(read, from->bounds(), written);
    cut(written, URect(UPoint(), size), read);
    const BitmapPixelAccessor in(from->graphicsObject, Graphics::kLockRead);
    const BitmapPixelAccessor out(graphicsObject, Graphics::kLockRead | Graphics::kLockWrite);
    if (!in.isValid() || !out.isValid())
        return false;
    for (int32_t y = 0; y < written.getHeight(); ++y)
        std::copy_n(in.row(read.top + y) + read.left, written.getWidth(), out.row(written.top + y) + written.left);
    return true;
}

bool UBitmap::copyShown(UBitmap* from, const URect& source, const URect& target) {
    URect read(source), written(target);
    cut(written, URect(UPoint(), size), read);
    const bool isOther = from->getTargetBitmap() == from && from->graphicsObject != graphicsObject;
    URect inside(read);
    inside.intersect(from->bounds());
    if (isOther && inside == read)
        return copyPixels(from, read, written.getOrigin());
    const OPtr<UBitmap> part(from->getSection(read));
    return part && copyPixels(part, part->bounds(), written.getOrigin());
}

bool UBitmap::copyFrom(UBitmap* from, const URect& source, const URect& target, int16_t mode) {
    if (!from || !graphicsObject || source.isEmpty() || target.isEmpty())
        return false;
    if (mode == kBitmapPlain && source.getSize() == target.getSize())
        return copyShown(from, source, target);
    if (from->getBitmap() == graphicsObject) {
        const OPtr<UBitmap> part(from->getSection(source));
        return part && copyFrom(part, part->bounds(), target, mode);
    }
    UOffscreen device(this);
    if (mode != kBitmapPlain)
        return from->draw(&device, source, target, mode);
    device.eraseRect(target);
    return from->drawAlpha(&device, source, target, 1.0);
}

UBitmap* UBitmap::getSection(const URect& rect) {
    if (rect.isEmpty() || !graphicsObject)
        return nullptr;
    OPtr<UBitmap> section(new UBitmap(rect.getSize(), depth));
    if (!section->copyPixels(this, rect, UPoint()))
        return nullptr;
    describe(*section);
    return section.detach();
}

bool UBitmap::draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode) {
    becomeShown(mode);
    if (!showsDisabled(mode))
        return drawAlpha(device, source, target, alphaFactor);
    const OPtr<UBitmap> section(disabledSection(source));
    return section && section->drawAlpha(device, section->bounds(), target, section->alphaFactor);
}

bool UBitmap::showsDisabled(int16_t mode) {
    return mode == kBitmapDisabled || mode == kBitmapTransparentDisabled;
}

void UBitmap::becomeShown(int16_t mode) {
    const bool transparent = mode == kBitmapTransparent || mode == kBitmapTransparentDisabled;
    if (transparent && !madeTransparent)
        makeColorTransparent(UColor(UColor::getStandardColorSpec(kWhite)));
}

OPtr<UBitmap> UBitmap::disabledSection(const URect& source) {
    OPtr<UBitmap> section(getSection(source));
    return section && section->desaturate(kDisabledGray, kDisabledAlpha) ? std::move(section) : nullptr;
}

bool UBitmap::drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha) {
    Graphics::IDrawDevice* surface = device ? device->getDevice() : nullptr;
    URect from(source), to(target);
    const bool sameSize = source.getWidth() == target.getWidth() && source.getHeight() == target.getHeight();
    if (sameSize)
        cut(from, bounds(), to);
    if (!surface || !graphicsObject || from.isEmpty() || to.isEmpty())
        return false;
    return kResultOk ==
           (sameSize ? surface->drawBitmap(graphicsObject, boundary(from), {double(to.left), double(to.top)}, alpha)
                     : surface->drawBitmapStretched(graphicsObject, boundary(from), boundary(to), alpha));
}

UBitmap* UBitmap::copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm) {
    const UPoint now(getWidth(), getHeight()), wanted(wholeSide(newSize.x), wholeSide(newSize.y));
    if (wanted.x < 1 || wanted.y < 1)
        return nullptr;
    if (wanted == now)
        return getSection(bounds());
    if (algorithm == kScaleByArea)
        return scaledByArea(wanted);
    if (now.x / 2.0 <= wanted.x && now.y / 2.0 <= wanted.y)
        return scaledByDrawing(wanted);
    const OPtr<UBitmap> halfway(scaledByArea(UPoint((now.x + wanted.x) / 2, (now.y + wanted.y) / 2)));
    return halfway ? halfway->scaledByArea(wanted) : nullptr;
}

UBitmap* UBitmap::scaledByArea(const UPoint& newSize) {
    const Graphics::Size destination = {double(newSize.x), double(newSize.y)};
    return copyProcessed(OPtr<IBitmapFilter>(BitmapFilter::PNMScale::create(getFilterFactory(), destination)));
}

UBitmap* UBitmap::scaledByDrawing(const UPoint& newSize) {
    OPtr<UBitmap> scaled(new UBitmap(newSize, getBitDepth()));
    UOffscreen device(scaled);
    if (!drawAlpha(&device, bounds(), scaled->bounds(), 1.0))
        return nullptr;
    describe(*scaled);
    return scaled.detach();
}

UBitmap* UBitmap::copyProcessed(IBitmapFilter* filter) {
    const OPtr<UBitmap> part(getTargetBitmap() == this ? nullptr : getSection(bounds()));
    const IPtr<IBitmap> result(filtered(filter, part ? part->graphicsObject : graphicsObject, false));
    if (!result)
        return nullptr;
    auto* copy = new UBitmap(result);
    describe(*copy);
    return copy;
}

bool UBitmap::process(IBitmapFilter* filter) {
    UBitmap* owner = pixelOwner();
    if (!owner)
        return false;
    const IPtr<IBitmap> result(filtered(filter, owner->graphicsObject, true));
    if (result && result != owner->graphicsObject)
        owner->setGraphicsObject(result);
    return result;
}

IBitmapFilter* UBitmap::createFilter(const char* name) {
    Graphics::IBitmapFilterFactory* factory = getFilterFactory();
    return factory ? factory->createBitmapFilter(name) : nullptr;
}

Graphics::IBitmapFilterFactory* UBitmap::getFilterFactory() {
    Graphics::IFactory* factory = UPhysicalDrawDevice::getFactory(true);
    return factory ? factory->getBitmapFilterFactory() : nullptr;
}

Graphics::IBitmapFactory* UBitmap::getFactory() {
    Graphics::IFactory* factory = UPhysicalDrawDevice::getFactory(true);
    return factory ? factory->getBitmapFactory() : nullptr;
}

UBitmap* UBitmap::copyRotated(float angle, bool interpolate) {
    return copyProcessed(
        OPtr<IBitmapFilter>(BitmapFilter::Rotate::create(getFilterFactory(), angle, interpolate, true, nullptr)));
}

UBitmap* UBitmap::mirrorCopy(bool horizontal, bool vertical) {
    return copyProcessed(OPtr<IBitmapFilter>(BitmapFilter::Mirror::create(getFilterFactory(), horizontal, vertical)));
}

bool UBitmap::mirror(bool horizontal, bool vertical) {
    return process(OPtr<IBitmapFilter>(BitmapFilter::Mirror::create(getFilterFactory(), horizontal, vertical)));
}

bool UBitmap::adjustHSL(int32_t hue, int32_t saturation, int32_t luminance) {
    return process(
        OPtr<IBitmapFilter>(BitmapFilter::AdjustHSL::create(getFilterFactory(), hue, saturation, luminance)));
}

UBitmap* UBitmap::copyDesaturate(float grayFactor, float alphaFactor) {
    return copyProcessed(
        OPtr<IBitmapFilter>(BitmapFilter::Desaturate::create(getFilterFactory(), grayFactor, alphaFactor)));
}

bool UBitmap::desaturate(float grayFactor, float alphaFactor) {
    return process(OPtr<IBitmapFilter>(BitmapFilter::Desaturate::create(getFilterFactory(), grayFactor, alphaFactor)));
}

bool UBitmap::tintImage(const UColor& color, float factor) {
    return process(OPtr<IBitmapFilter>(BitmapFilter::Tint::create(getFilterFactory(), color.toColorSpec(), factor)));
}

bool UBitmap::tintImage(const UColor& color, int32_t percent) {
    constexpr int32_t kWholeCircle = 101;
    return tintImage(color, float(percent % kWholeCircle) / 100);
}

bool UBitmap::adjustAlpha(double factor) {
    if (!(factor >= 0) || !std::isfinite(factor))
        return false;
    return changePixels(getBitmap(), [factor](uint32_t pixel) {
        const auto alpha = uint32_t(std::min((pixel >> kAlphaShift) * factor, 255.0));
        return (pixel & kColorBits) | alpha << kAlphaShift;
    });
}

bool UBitmap::clearFill() {
    return changePixels(getBitmap(), [](uint32_t) { return 0U; });
}

bool UBitmap::colorFill(const UColor& color, ColorFillMode mode) {
    if (mode == kFillClear)
        return clearFill();
    const uint32_t kept = mode == kFillKeepAlpha ? ~kColorBits : 0, spec = color.toColorSpec() & ~kept;
    return changePixels(getBitmap(), [kept, spec](uint32_t pixel) { return (pixel & kept) | spec; });
}

}  // namespace Tessarine
