#pragma once
#include "fobjectgraph.h"
#include "storage/fmstream.h"
#include "storage/fxmlparser.h"
#include <string>
#include <string_view>

namespace Tessarine {

/** Reads the files of FXmlArchive, which is its only user, once. It has a stack of its own for what is open, so that no depth
    of elements costs stack; bags are nested to FAttributeArchiveBase::kMaxDepth. */
class FXmlArchiveParser final : public FXmlParser {
public:
    using RootList = FAttributeList<FStringIDAttribute, const char*, CmArray>;

    FXmlArchiveParser(FStream* stream, const char* rootTag) : FXmlParser(stream), rootTag(rootTag) {
        options = kLongValues;  // what was written can be read
    }

    bool load(RootList& roots, RootList& globalRoots, const char* className, bool withoutObjects);
    bool loadAttributes(FAttributes& attributes);
    /** The root's end tag was there. */
    bool isWhole() const { return rootEnded; }

    bool startTag(const char* name, CmContainer& attributes, bool empty, void* userData) override;
    bool endTag(const char* name, void* userData) override;
    void gotData(void* data, uint32_t size, void* userData) override;

private:
    enum Place : uint8_t { kNowhere = 0, kInDocument = 1, kInRoots = 2, kInBag = 4, kInList = 8, kInBagList = 16 };
    enum ListType : uint8_t { kInts, kFloats, kStrings, kObjects, kBags, kNoList };
    /** The attributes of a tag; null without one. */
    struct Tag {
        const char *name, *value, *id, *className, *type, *wide;
    };
    /** An element that is open. */
    struct State {
        Place content = kNowhere;  // what may stand in it
        ListType list = kNoList;
        FAttributes* bag = nullptr;  // borrowed: filled by what stands in it
        OPtr<CmObject> made;         // what it becomes: a list, a bag or a stream of bytes
        bool isObject = false;       // the loader's current one
        bool holdsBag = false;       // counts for the depth
    };
    struct Element {
        std::string_view name;
        int32_t places;  // where it may stand
        State (FXmlArchiveParser::*start)(const Tag& tag);
    };
    struct NamedReference {
        std::string name;
        OPtr<CmObject> object;
    };
    static const Element kElements[];

    bool run();
    void resolveReferences(RootList& roots);
    static Tag tagOf(const CmContainer& attributes);
    State stateOf(std::string_view name, const Tag& tag);
    void finish(State& state);
    void addTo(const State& outer, const char* name, OPtr<CmObject> object);

    State startRootObjects(const Tag& tag);
    State startRoot(const Tag& tag);
    State startObject(const Tag& tag);
    State startInt(const Tag& tag);
    State startFloat(const Tag& tag);
    State startString(const Tag& tag);
    State startBytes(const Tag& tag);
    State startList(const Tag& tag);
    State startMember(const Tag& tag);
    State startItem(const Tag& tag);

    const std::string rootTag;
    const char* className = nullptr;
    bool withoutObjects = false;
    RootList* globalRoots = nullptr;
    FAttributes* rootBag = nullptr;  // the root's own attributes; null: it holds objects

    FObjectPool pool;
    FObjectLoader loader;
    std::vector<State> states;
    std::vector<NamedReference> namedRoots;
    int32_t depth = 0;
    bool rootStarted = false, rootEnded = false, allRestored = true;
    int32_t highDigit = -1;  // of a byte whose second digit is still to come
};

}  // namespace Tessarine
