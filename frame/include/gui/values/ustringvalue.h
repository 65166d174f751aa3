#pragma once
#include "base/source/fstring.h"
#include "collect/cmlinkedlist.h"
#include "gui/values/uintvalue.h"

namespace Tessarine {

/** A text. As an integer it is 1 unless it is empty. */
class UStringValue : public UValue {
public:
    DECLARE_CLASS(UStringValue, UValue)
    DECLARE_NEWCOPY(UStringValue)

    UStringValue() = default;
    explicit UStringValue(const ConstString& text);
    UStringValue(const UStringValue&) = default;
    /** As setStringValue. */
    UStringValue& operator=(const ConstString& text);
    UStringValue& operator=(const UStringValue& source) { return *this = source.string; }

    /** The text alone, in both forms. What an archive holds goes to the owner too. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    int32_t getValue() override { return !string.isEmpty(); }
    /** Another text value only. */
    void assignTo(UValue* source) override;
    using UValue::toString;
    void toString(FString& text) override;
    /** The owner hears of it even when the text is the same. */
    void fromString(const tchar* text) override;
    int32_t getValueType() override { return kString; }

    const FString& getStringValue() const { return string; }
    void setStringValue(const ConstString& text);
    /** The owner hears of it even when the text is the same. */
    void setTargetStringValue(const ConstString& text);

protected:
    FString string;
};

/** One of a list of texts: the value is the index of the selected one.

    Range    0 to the last index; -1 to -1, with the value -1, before the first string and after removeAll.
    Results  false, null or -1 for an index or a text that isn't there; nothing is changed then. */
class UStringListValue : public UIntDefValue, public IStringList {
public:
    DECLARE_CLASS(UStringListValue, UIntDefValue)
    DECLARE_NEWCOPY(UStringListValue)
    static constexpr int32_t kArrayStyle = 3;

    UStringListValue();
    /** In the array style. */
    UStringListValue(const tchar* const* texts, int32_t count);
    UStringListValue(const UStringListValue& source) = default;

    int32_t queryInterface(const char* iid, void** obj) override;
    FORWARD_REFCOUNT(UIntDefValue)
    /** The strings alone; afterwards the first one is selected. Cut off: all stays as it was. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    /** Strings, range and value. */
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    using UIntDefValue::toString;
    void toString(FString& text) override;
    /** Selects the first exact match from min to max; no match leaves the value. */
    void fromString(const tchar* text) override;

    bool addString(const tchar* text) override;
    virtual bool addSortedString(const tchar* text);
    virtual bool addStrings(const tchar* const* texts, int32_t count);
    virtual bool replaceStringAt(int32_t index, const tchar* text);
    /** The selection stays on its string. */
    virtual bool prependString(const tchar* text);
    virtual bool insertString(int32_t index, const tchar* text);
    virtual void removeAll();
    virtual bool removeAt(int32_t index);
    int32_t countStrings() override { return strings.total(); }
    const tchar* getStringAt(int32_t index) override;
    void removeAllStrings() override { removeAll(); }
    bool removeStringAt(int32_t index) override { return removeAt(index); }
    bool containsString(const tchar* text) override { return contains(text); }

    /** As fromString, but not when that string is selected already. */
    void initFromString(const tchar* text);
    /** Of the first exact match. */
    int32_t getIndex(const tchar* text) const;
    bool contains(const tchar* text) const { return getIndex(text) >= 0; }

protected:
    CmLinkedList strings;  // of CmString, owned

private:
    bool insertAt(int32_t index, const tchar* text);
    void adoptRange();
    int32_t selectable(const tchar* text) const;
    void takeStrings(CmLinkedList& others);
    void restoreStrings(FAttributes& attributes);
};

/** Texts in the order of their last use, the newest first. The list is cut by setMaxRecent alone: adding never drops
    the oldest one, so that it may grow past the maximum. */
class URecentStringListValue : public UStringListValue {
public:
    DECLARE_CLASS(URecentStringListValue, UStringListValue)
    DECLARE_NEWCOPY(URecentStringListValue)
    static constexpr int32_t kUsualRecent = 5;

    explicit URecentStringListValue(int32_t maxRecent = kUsualRecent) : maxRecent(maxRecent) {}

    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;
    /** To the front, from where it was if it is in the list already; the selection doesn't follow it. */
    bool addString(const tchar* text) override;
    void setMaxRecent(int32_t count);
    int32_t getMaxRecent() const { return maxRecent; }

protected:
    int32_t maxRecent;
};

}  // namespace Tessarine
