#pragma once
#include "base/source/fstring.h"
#include "gui/drawing/udelegatedbitmap.h"
#include <vector>

namespace Tessarine {

/** Bitmaps with names in a row. As a bitmap it is the current one, at first the first. */
class UBitmapCollection : public UBitmapForwarder {
public:
    DECLARE_CLASS(UBitmapCollection, UBitmap)
    UBitmapCollection() = default;

    /** Shares the bitmap; names may repeat, and null is empty. false: no bitmap, or one that stands for this. */
    bool addImage(UBitmap* bitmap, const char* name);
    /** As UBitmapResource; false: it isn't there. */
    bool addImage(int32_t id, void* module);
    int32_t countImages() const { return int32_t(images.size()); }
    /** Borrowed, as the others; null: there is none. */
    UBitmap* getCurrentImage() const { return getIndexedImage(current); }
    /** false, and the old one stays: out of range, or one that has come to stand for this. */
    bool setCurrentImage(int32_t index);
    UBitmap* getIndexedImage(int32_t index) const;
    /** The first of the name. */
    UBitmap* getNamedImage(const char* name) const;

    UBitmap* getTargetBitmap() override { return getCurrentImage(); }

private:
    struct Image {
        FString name;
        IPtr<UBitmap> bitmap;
    };
    bool isInside(int32_t index) const { return index >= 0 && index < countImages(); }

    std::vector<Image> images;
    int32_t current = 0;
};

/** What the skin has under a name when it is made. */
class USkinBitmapCollection : public UBitmapCollection {
public:
    DECLARE_ABSTRACT_CLASS(USkinBitmapCollection, UBitmapCollection)
    explicit USkinBitmapCollection(const char* name);

    const FString& getName() const { return name; }

private:
    FString name;
};

}  // namespace Tessarine
