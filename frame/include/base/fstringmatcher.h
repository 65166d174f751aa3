#pragma once
#include "base/source/fbitset.h"
#include "base/source/fobject.h"
#include "base/source/fstring.h"
#include "base/source/tarray.h"
#include "pluginterfaces/base/smartpointer.h"

/** Finding by name, forgiving of what the user typed. Within one copy of the framework. */

namespace Tessarine {

/** Something that has a name to search for. */
class IObjectDescription : public FUnknown {
public:
    /** Borrowed. */
    virtual const tchar* getName() = 0;

    DECLARE_INTERFACE(IObjectDescription)
};

/** How a name matches. */
struct StringMatchInfos {
    enum MatchType : int32_t { kExactMatch, kSubStringMatch, kPartialMatch };

    int32_t matchType = kExactMatch;
    uint32_t distance = 0;     // 0 but for a partial match: edits by characters in common
    BitSet matchPositions{0};  // a bit for each character of the name; none set in an exact match
};

struct FStringMatch {
    /** Below, at or above 0: the smaller distance first, of equal ones the better type. */
    static int32_t compareByMatchingDistance(const FStringMatch& a, const FStringMatch& b);
    int32_t compare(const FStringMatch& other) const { return compareByMatchingDistance(*this, other); }
    bool operator==(const FStringMatch& other) const { return object == other.object; }

    IPtr<IObjectDescription> object;
    StringMatchInfos infos;
};

/** The best matches first. */
class FStringMatchList : public TSortableArray<FStringMatch> {
public:
    using TSortableArray::TSortableArray;
};

class IStringMatcher : public FUnknown {
public:
    /** false, and infos as it was: no match. */
    virtual bool isMatch(const ConstString& candidate, StringMatchInfos& infos) const = 0;
    /** Puts what matches into matches, in the place of what was there. Partial matches stay only when there is no better
        one, and of them those with the smallest distance. */
    virtual void filterCandidates(const TContainer<IPtr<IObjectDescription>>& list,
                                  FStringMatchList& matches) const = 0;

    DECLARE_INTERFACE(IStringMatcher)
};

/** Compares names with one search text, whatever the case of their letters: a name may begin with it, contain it or be
    some edits away from it.

    Threads   all operations only read. */
class FStringMatcher : public FObject, public IStringMatcher {
public:
    explicit FStringMatcher(const ConstString& text);

    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override;
    const char* isA() const override { return "FStringMatcher"; }
    bool isA(const char* name) const override { return isTypeOf(name, false); }
    bool isTypeOf(const char* name, bool askBaseClass) const override;

    bool isMatch(const ConstString& candidate, StringMatchInfos& infos) const override;
    void filterCandidates(const TContainer<IPtr<IObjectDescription>>& list, FStringMatchList& matches) const override;
    /** At least three characters in common and less than ten edits away; false, and nothing written: no match. */
    bool isPartialMatch(const ConstString& candidate, BitSet& bits, uint32_t& distance) const;

private:
    String searchText;  // 16-bit
};

namespace StringMatcher {
/** The caller releases it. */
IStringMatcher* create(const ConstString& text);
}  // namespace StringMatcher

}  // namespace Tessarine
