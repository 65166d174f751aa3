#include "base/fstringmatcher.h"
#include "base/source/fstringconvert.h"
#include "collect/cmtarray2d.h"
#include "pluginterfaces/base/identifiers.h"
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

namespace Tessarine {

DEFINE_IID_ROW(IObjectDescription, kIObjectDescriptionID);
DEFINE_IID_ROW(IStringMatcher, kIStringMatcherID);

namespace {
constexpr int32_t kMaxEdits = 10;     // so many are no match any more
constexpr uint32_t kMinInCommon = 3;  // characters

ConstString viewOf(std::u16string_view text) {
    return ConstString(text.data(), int32_t(text.size()));
}

std::u16string lowered(std::u16string_view text) {
    std::u16string lower(text);
    for (tchar& c : lower)
        c = ConstString::toLower(c);
    return lower;
}

/** Insertions, deletions and substitutions from a to b; kMaxEdits stands for that many or more. Only the cells near the
    diagonal are looked at, as all others are that far away. */
int32_t editsBetween(std::u16string_view a, std::u16string_view b) {
    const int32_t height = int32_t(a.size()), width = int32_t(b.size());
    CmTArray2D<int32_t> table;
    if (std::abs(height - width) >= kMaxEdits || !table.resize(2, width + 1))
        return kMaxEdits;
    for (int32_t j = 0; j <= width; ++j)
        table[0][j] = j;
    for (int32_t i = 1; i <= height; ++i) {
        const int32_t first = std::max(1, i - kMaxEdits + 1), last = std::min(width, i + kMaxEdits - 1);
        const int32_t* above = table[(i - 1) % 2];
        int32_t* row = table[i % 2];
        row[first - 1] = first == 1 ? i : kMaxEdits;
        for (int32_t j = first; j <= last; ++j) {
            const int32_t substituted = above[j - 1] + (a[size_t(i - 1)] == b[size_t(j - 1)] ? 0 : 1);
            row[j] = std::min({substituted, above[j] + 1, row[j - 1] + 1});
        }
        if (last < width)
            row[last + 1] = kMaxEdits;
    }
    return std::min(table[height % 2][width], kMaxEdits);
}

/** A bit for each unit of text that is one of the wanted. */
BitSet placesOf(std::u16string wanted, std::u16string_view text) {
    std::ranges::sort(wanted);
    BitSet places(uint32_t(text.size()));
    for (uint32_t i = 0; i < text.size(); ++i)
        if (std::ranges::binary_search(wanted, text[i]))
            places.setBit(i);
    return places;
}

bool isPartial(const StringMatchInfos& infos) {
    return infos.matchType == StringMatchInfos::kPartialMatch;
}
}  // namespace

int32_t FStringMatch::compareByMatchingDistance(const FStringMatch& a, const FStringMatch& b) {
    if (a.infos.distance != b.infos.distance)
        return a.infos.distance < b.infos.distance ? -1 : 1;
    return a.infos.matchType - b.infos.matchType;
}

FStringMatcher::FStringMatcher(const ConstString& text) : searchText(text) {
    searchText.toWideString();  // here, so that matching only reads
}

int32_t FStringMatcher::queryInterface(const char* iid, void** obj) {
    return answerInterface<IStringMatcher>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

bool FStringMatcher::isTypeOf(const char* name, bool askBaseClass) const {
    return name && (std::strcmp(name, "FStringMatcher") == 0 || (askBaseClass && FObject::isTypeOf(name, true)));
}

bool FStringMatcher::isMatch(const ConstString& candidate, StringMatchInfos& infos) const {
    const WideText wide(candidate);
    const ConstString name = viewOf(wide);
    if (name.isEmpty())
        return false;
    StringMatchInfos found;
    found.matchPositions.setSize(name.length());
    const int32_t wanted = int32_t(searchText.length());
    if (name.compare(searchText, wanted, kIgnoreCase) == 0) {
        infos = found;
        return true;
    }
    const int32_t place = name.findNext(0, searchText, kIgnoreCase);
    found.matchType = place >= 0 ? StringMatchInfos::kSubStringMatch : StringMatchInfos::kPartialMatch;
    for (int32_t i = 0; place >= 0 && i < wanted; ++i)
        found.matchPositions.setBit(uint32_t(place + i));
    if (place < 0 && !isPartialMatch(name, found.matchPositions, found.distance))
        return false;
    infos = found;
    return true;
}

void FStringMatcher::filterCandidates(const TContainer<IPtr<IObjectDescription>>& list,
                                      FStringMatchList& matches) const {
    matches.removeAll();
    const std::unique_ptr<TIterator<IPtr<IObjectDescription>>> walk(list.newIterator());
    while (!walk->done()) {
        FStringMatch match;
        match.object = walk->next();
        if (match.object && isMatch(ConstString(match.object->getName()), match.infos))
            matches.add(match);
    }
    if (matches.isEmpty())
        return;
    const StringMatchInfos& best = matches.at(0).infos;
    const FStringMatch* end = std::find_if(matches.begin(), matches.end(), [&](const FStringMatch& match) {
        return isPartial(best) ? match.infos.distance > best.distance : isPartial(match.infos);
    });
    matches.removeRange(int32_t(end - matches.begin()), int32_t(matches.end() - end));
}

bool FStringMatcher::isPartialMatch(const ConstString& candidate, BitSet& bits, uint32_t& distance) const {
    const WideText wideCandidate(candidate), wideSearch(searchText);
    const std::u16string name = lowered(wideCandidate), wanted = lowered(wideSearch);
    const int32_t edits = editsBetween(wanted, name);
    if (edits >= kMaxEdits)
        return false;
    const BitSet places = placesOf(wanted, name);
    const uint32_t inCommon = places.countSetBits();
    if (inCommon < kMinInCommon)
        return false;
    bits = places;
    distance = uint32_t(edits) / inCommon;
    return true;
}

IStringMatcher* StringMatcher::create(const ConstString& text) {
    return new FStringMatcher(text);
}

}  // namespace Tessarine
