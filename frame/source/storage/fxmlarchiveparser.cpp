#include "fxmlarchiveparser.h"
#include <charconv>
#include <cstring>

namespace Tessarine {
namespace {
constexpr size_t kMaxOpen =
    4 * FAttributeArchiveBase::kMaxDepth;  // elements; archives of the greatest depth have two a bag

/** What is one number and nothing else is read the short way. */
template <class Number>
Number numberOf(const char* text, bool (ConstString::*scan)(Number&, uint32_t, bool) const) {
    Number number = 0;
    if (!text)
        return 0;
    const char* end = text + std::strlen(text);
    const auto read = std::from_chars(text, end, number);
    if (read.ec != std::errc() || read.ptr != end)
        (ConstString(text).*scan)(number, 0, false);
    return number;
}

int64_t integerOf(const char* text) {
    return numberOf(text, &ConstString::scanInt64);
}

double floatOf(const char* text) {
    return numberOf(text, &ConstString::scanFloat);
}

uint64_t idOf(const char* text) {
    uint64_t id = 0;
    if (text)
        std::from_chars(text, text + std::strlen(text), id);
    return id;
}

bool isAscii(const char* text) {
    for (; *text; ++text) {
        if (*text & 0x80)
            return false;
    }
    return true;
}

/** 16-bit text from UTF-8; what is none stays what it was. */
String wideText(const char* utf8) {
    String text;
    if (!text.fromUTF8(utf8)) {
        text = utf8;
        text.toWideString();
    }
    return text;
}

/** A key as it was before it was written: UTF-8 came from code page 0. */
String keyOf(const char* name) {
    String key(name);
    if (name && !isAscii(name) && key.fromUTF8(name))
        key.toMultiByte();
    return key;
}

OPtr<FStringIDAttribute> attributeNamed(const char* name) {
    if (!name || isAscii(name))
        return OPtr<FStringIDAttribute>(new FStringIDAttribute(name));
    return OPtr<FStringIDAttribute>(new FStringIDAttribute(keyOf(name).text8()));
}

int32_t digitOf(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}
}  // namespace

const FXmlArchiveParser::Element FXmlArchiveParser::kElements[] = {
    {"int",         kInBag,                         &FXmlArchiveParser::startInt        },
    {"float",       kInBag,                         &FXmlArchiveParser::startFloat      },
    {"string",      kInBag,                         &FXmlArchiveParser::startString     },
    {"member",      kInBag,                         &FXmlArchiveParser::startMember     },
    {"item",        kInList | kInBagList,           &FXmlArchiveParser::startItem       },
    {"list",        kInBag,                         &FXmlArchiveParser::startList       },
    {"obj",         kInBag | kInList | kInDocument, &FXmlArchiveParser::startObject     },
    {"bin",         kInBag,                         &FXmlArchiveParser::startBytes      },
    {"root",        kInRoots,                       &FXmlArchiveParser::startRoot       },
    {"rootObjects", kInDocument,                    &FXmlArchiveParser::startRootObjects},
};

bool FXmlArchiveParser::load(RootList& roots, RootList& bags, const char* rootClass, bool onlyBags) {
    className = rootClass;
    withoutObjects = onlyBags;
    globalRoots = &bags;
    const bool parsed = run();
    resolveReferences(roots);
    return parsed && allRestored;
}

bool FXmlArchiveParser::loadAttributes(FAttributes& attributes) {
    rootBag = &attributes;
    return run() && allRestored;
}

/** Goes to the end of the root, and no further. */
bool FXmlArchiveParser::run() {
    const bool parsed = process(this);
    stream->seek(getStreamPosition(), kFromStart);
    for (; !states.empty(); states.pop_back())
        finish(states.back());
    loader.finish();
    return parsed && rootStarted;
}

void FXmlArchiveParser::resolveReferences(RootList& roots) {
    for (const NamedReference& each : namedRoots) {
        CmObject* root = FXmlReference::targetOf(each.object);
        if (!root || (className && !root->isTypeOf(className, true))) {
            allRestored = allRestored && (withoutObjects || !root);
            continue;
        }
        roots.setObjAttribute(each.name.c_str(), root, RootList::kShared, RootList::kAppend);
    }
}

bool FXmlArchiveParser::startTag(const char* name, CmContainer& attributes, bool empty, void* /*userData*/) {
    if (states.size() >= kMaxOpen)
        return false;
    State state = stateOf(name, tagOf(attributes));
    if (stopped)
        return true;
    const int32_t bags = depth + (state.holdsBag ? 1 : 0);
    if (empty || bags > FAttributeArchiveBase::kMaxDepth) {
        finish(state);
        if (states.empty() && rootStarted)
            stopped = rootEnded = empty;
        return empty && bags <= FAttributeArchiveBase::kMaxDepth;
    }
    depth = bags;
    states.push_back(std::move(state));
    return true;
}

bool FXmlArchiveParser::endTag(const char* /*name*/, void* /*userData*/) {
    if (states.empty())
        return false;
    State state = std::move(states.back());
    states.pop_back();
    depth -= state.holdsBag ? 1 : 0;
    finish(state);
    stopped = states.empty();
    rootEnded = states.empty();
    return true;
}

void FXmlArchiveParser::gotData(void* data, uint32_t size, void* /*userData*/) {
    auto* bytes = states.empty() ? nullptr : classCast<FMemoryStream>(states.back().made.get());
    if (!bytes)
        return;
    std::string decoded;
    decoded.reserve(size / 2 + 1);
    for (const char c : std::string_view(static_cast<const char*>(data), size)) {
        const int32_t digit = digitOf(c);
        if (digit < 0)
            continue;
        if (highDigit >= 0)
            decoded += static_cast<char>(highDigit << 4 | digit);
        highDigit = highDigit < 0 ? digit : -1;
    }
    bytes->writeRaw(decoded.data(), static_cast<int64_t>(decoded.size()));
}

FXmlArchiveParser::Tag FXmlArchiveParser::tagOf(const CmContainer& attributes) {
    static constexpr std::pair<std::string_view, const char * Tag::*> kFields[] = {
        {"name",  &Tag::name     },
        {"value", &Tag::value    },
        {"ID",    &Tag::id       },
        {"class", &Tag::className},
        {"type",  &Tag::type     },
        {"wide",  &Tag::wide     },
    };
    Tag tag{};
    for (CmObject* object : static_cast<const CmArray&>(attributes)) {
        auto* attribute = static_cast<FXmlAttribute*>(object);
        const std::string_view name = units8(attribute->name);
        for (const auto& [known, field] : kFields) {
            if (name.size() == known.size() && name[0] == known[0] && name == known) {
                tag.*field = attribute->value.text8();
                break;
            }
        }
    }
    return tag;
}

/** Of an element that isn't known, or may not stand here: nothing in it is looked at. */
FXmlArchiveParser::State FXmlArchiveParser::stateOf(std::string_view name, const Tag& tag) {
    State state;
    if (states.empty()) {
        rootStarted = name == rootTag;
        if (rootStarted && rootBag)
            state.bag = rootBag;
        state.content = !rootStarted ? kNowhere : rootBag ? kInBag : kInDocument;
        state.holdsBag = rootBag != nullptr;
        return state;
    }
    for (const Element& element : kElements) {
        if (element.name == name && (element.places & states.back().content))
            return (this->*element.start)(tag);
    }
    return state;
}

void FXmlArchiveParser::finish(State& state) {
    if (state.isObject)
        allRestored = loader.end() && allRestored;
}

void FXmlArchiveParser::addTo(const State& outer, const char* name, OPtr<CmObject> object) {
    if (!object)
        return;
    if (outer.bag) {
        OPtr<FStringIDAttribute> attribute = attributeNamed(name);
        attribute->setObj(object.detach(), FAttributeValue::kOwned);
        outer.bag->addAttribute(attribute.detach());
    } else if (outer.list == kObjects && static_cast<FObjectList*>(outer.made.get())->queue(object, true)) {
        object.detach();
    } else if (outer.list == kBags &&
               static_cast<FSubList*>(outer.made.get())->queue(static_cast<FAttributes*>(object.get()))) {
        object.detach();
    }
}

FXmlArchiveParser::State FXmlArchiveParser::startRootObjects(const Tag& /*tag*/) {
    State state;
    state.content = kInRoots;
    return state;
}

FXmlArchiveParser::State FXmlArchiveParser::startRoot(const Tag& tag) {
    State state;
    const String key = keyOf(tag.name);
    if (tag.id) {
        namedRoots.push_back({key.text8(), loader.refer(idOf(tag.id))});
        return state;
    }
    auto* bag = new FAttributes;
    globalRoots->setObjAttribute(key.text8(), bag, RootList::kOwned, RootList::kAppend);
    state.content = kInBag;
    state.bag = bag;
    state.holdsBag = true;
    return state;
}

FXmlArchiveParser::State FXmlArchiveParser::startObject(const Tag& tag) {
    State state;
    const State& outer = states.back();
    if (withoutObjects && outer.content == kInDocument) {
        stopped = true;
        return state;
    }
    if (outer.content == kInList && outer.list != kObjects)
        return state;
    if (!tag.className) {
        addTo(outer, tag.name, loader.refer(idOf(tag.id)));
        return state;
    }
    FXmlInstance& instance = loader.begin(tag.className, idOf(tag.id));
    addTo(outer, tag.name, OPtr<CmObject>(IPtr<CmObject>(instance.getStandIn())));
    state.content = kInBag;
    state.bag = instance.getAttributes();
    state.isObject = true;
    state.holdsBag = true;
    return state;
}

FXmlArchiveParser::State FXmlArchiveParser::startInt(const Tag& tag) {
    OPtr<FStringIDAttribute> attribute = attributeNamed(tag.name);
    attribute->setLong(integerOf(tag.value));
    states.back().bag->addAttribute(attribute.detach());
    return {};
}

FXmlArchiveParser::State FXmlArchiveParser::startFloat(const Tag& tag) {
    OPtr<FStringIDAttribute> attribute = attributeNamed(tag.name);
    attribute->setFloat(floatOf(tag.value));
    states.back().bag->addAttribute(attribute.detach());
    return {};
}

FXmlArchiveParser::State FXmlArchiveParser::startString(const Tag& tag) {
    OPtr<FStringIDAttribute> attribute = attributeNamed(tag.name);
    const char* text = tag.value ? tag.value : "";
    const bool wide = (tag.wide && std::strcmp(tag.wide, "true") == 0) || !isAscii(text);
    if (!wide) {
        attribute->setString8(text);
    } else if (String converted = wideText(text); !converted.isEmpty()) {
        attribute->takeString(converted);
    } else {
        attribute->setString16(u"");
    }
    states.back().bag->addAttribute(attribute.detach());
    return {};
}

FXmlArchiveParser::State FXmlArchiveParser::startBytes(const Tag& tag) {
    State state;
    highDigit = -1;
    state.made = new FMemoryStream;
    addTo(states.back(), tag.name, state.made);
    return state;
}

FXmlArchiveParser::State FXmlArchiveParser::startList(const Tag& tag) {
    static constexpr std::string_view kTypes[] = {"int", "float", "string", "obj", "list"};
    State state;
    const auto* type = std::ranges::find(kTypes, std::string_view(tag.type ? tag.type : ""));
    state.list = static_cast<ListType>(type - std::begin(kTypes));
    switch (state.list) {
    case kInts:
        state.made = new FIntList;
        break;
    case kFloats:
        state.made = new FFloatList;
        break;
    case kStrings:
        state.made = new FStringList;
        break;
    case kObjects:
        state.made = new FObjectList(true);
        break;
    case kBags:
        state.made = new FSubList;
        break;
    default:
        return state;
    }
    state.content = state.list == kBags ? kInBagList : kInList;
    addTo(states.back(), tag.name, state.made);
    return state;
}

FXmlArchiveParser::State FXmlArchiveParser::startMember(const Tag& tag) {
    State state;
    state.made = new FAttributes;
    state.bag = static_cast<FAttributes*>(state.made.get());
    state.content = kInBag;
    state.holdsBag = true;
    addTo(states.back(), tag.name, state.made);
    return state;
}

FXmlArchiveParser::State FXmlArchiveParser::startItem(const Tag& tag) {
    State state;
    const State& outer = states.back();
    switch (outer.list) {
    case kInts:
        static_cast<FIntList*>(outer.made.get())->queue(integerOf(tag.value));
        break;
    case kFloats:
        static_cast<FFloatList*>(outer.made.get())->queue(floatOf(tag.value));
        break;
    case kStrings:
        static_cast<FStringList*>(outer.made.get())->queue(wideText(tag.value ? tag.value : ""));
        break;
    case kObjects:
        addTo(outer, nullptr, loader.refer(idOf(tag.value ? tag.value : tag.id)));
        break;
    case kBags:
        state.made = new FAttributes;
        state.bag = static_cast<FAttributes*>(state.made.get());
        state.content = kInBag;
        state.holdsBag = true;
        addTo(outer, nullptr, state.made);
        break;
    default:
        break;
    }
    return state;
}

}  // namespace Tessarine
