#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/fvariant.h"
#include <concepts>
#include <utility>

namespace Tessarine {
class UValue;

/** A tagged value: integer, float, text in one of two widths, or object. What skins and scripts calculate with.

    Owns      text and object only with kOwner set. A copy of what is owned is owned too, text as a block of its own, an object
              by a reference more; a copy of what is borrowed borrows.
    Order     by the numbers of FVariant's kinds first, so that an integer stands before a float, whatever their values; within a
              kind by value, text in any case.
    Readers   convert between numbers and text; what can't be converted is 0. */
class CmVariant : public CmObject {
public:
    DECLARE_CLASS(CmVariant, CmObject)
    DECLARE_NEWCOPY(CmVariant)
    /** Other numbers than FVariant's. */
    enum Type : uint16_t {
        kEmpty = 0,
        kInteger = 1,
        kObject = 2,
        kFloat = 4,
        kString8 = 8,
        kString16 = 16,
        kOwner = 32,  // text is freed with array delete, an object released
    };

    CmVariant() = default;
    explicit CmVariant(std::integral auto number) : type(kInteger) { data.integer = int64_t(number); }
    explicit CmVariant(double number) : type(kFloat) { data.number = number; }
    /** Borrows a terminated text, or owns a copy. */
    explicit CmVariant(const char* text, bool own = false) { setString8(text, own); }
    explicit CmVariant(const tchar* text, bool own = false) { setString16(text, own); }
    explicit CmVariant(FUnknown* object) { setUnknown(object); }
    explicit CmVariant(const FVariant& source) { assign(source); }
    CmVariant(const CmVariant& source) : CmObject(source) { copy(source); }
    CmVariant(CmVariant&& source) noexcept { swapContent(source); }
    ~CmVariant() override {
        if (isOwner())
            empty();
    }
    CmVariant& operator=(const CmVariant& source);
    CmVariant& operator=(CmVariant&& source) noexcept {
        if (isOwner() && this != &source)
            empty();
        swapContent(source);
        return *this;
    }

    /** Says whether what is held belongs to the variant. */
    void setOwner(bool state) { type = uint16_t(state ? type | kOwner : getType()); }
    /** Owns copies of what was borrowed. */
    void emancipate();
    void empty();
    void setLong(int64_t number);
    void setFloat(double number);
    /** own false: the text is borrowed; it ends with a 0 and must outlive the variant. */
    void setString8(const char* text, bool own);
    void setString16(const tchar* text, bool own);
    /** In the width that it has. */
    void setString(const ConstString& text, bool own);
    /** Shares the object. */
    void setUnknown(FUnknown* object);
    /** As a copy does. What is borrowed from one side must not be what the other side owns. */
    void assign(const FVariant& source);
    void assignTo(FVariant& target) const;
    /** A number or a text for a value of whatever form, which counts as a change by the program. Nothing for an object. */
    void assignTo(UValue& target) const;
    operator FVariant() const;

    bool operator==(const CmVariant& other) const { return compare(other) == 0; }
    /** Below, at or above 0. */
    int32_t compare(const CmVariant& other) const;
    /** Null text comes last of its kind; objects by themselves, if both are objects of the framework, otherwise by address. */
    static int32_t compareVariants(const FVariant& a, const FVariant& b);
    /** With another CmVariant by its content, otherwise as objects. */
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;

    uint16_t getType() const { return type & kKindMask; }
    bool is(uint16_t types) const { return (type & types) != 0; }
    bool isOwner() const { return is(kOwner); }
    bool isEmpty() const { return getType() == kEmpty; }
    bool isString() const { return is(kString8 | kString16); }
    /** A float loses its fraction and stops at the bounds. 8-bit text is read from its start, 16-bit text from its first
        number. */
    int64_t getLong() const;
    double getFloat() const;
    /** Numbers are printed, floats with two decimals; of objects a CmString has text, a CmTime its date and time. false, and text
        as it was: there is none. */
    bool getString(String& text) const;
    /** The text as it stands; empty for other kinds. Borrowed. */
    ConstString getText() const;
    const char* getString8() const { return is(kString8) ? data.string8 : nullptr; }
    const tchar* getString16() const { return is(kString16) ? data.string16 : nullptr; }
    /** Borrowed, as the others; null for other kinds. */
    FUnknown* getUnknown() const { return is(kObject) ? data.object : nullptr; }
    /** Null also for what isn't of this class. */
    CmObject* getObject(const char* className) const;

    /** false: an object that is none of the framework. */
    bool storeAttributes(FAttributes& attributes) const override;
    /** What was restored is owned. false, and as it was: something is missing. */
    bool restoreAttributes(FAttributes& attributes) override;

    /** The same, borrowed: for as long as this one lives and keeps its value. */
    CmVariant view() const {
        CmVariant result;
        result.type = getType();
        result.data = data;
        return result;
    }

private:
    static constexpr uint16_t kKindMask = 0xffff & ~kOwner;

    void copy(const CmVariant& source);
    void own();
    void take(uint16_t kind, bool owned);
    void swapContent(CmVariant& other) noexcept {
        std::swap(type, other.type);
        std::swap(data, other.data);
    }
    void viewAs(FVariant& target) const;
    bool restoreKind(int64_t kind, const FAttributes& attributes);
    bool restoreText(bool narrow, const FAttributes& attributes);

    uint16_t type = kEmpty;
    FVariantData data{0};
};

/** What an expression's leaf gives out without a copy. */
inline CmVariant borrowed(const CmVariant& variant) {
    return variant.view();
}

}  // namespace Tessarine
