#include "gui/drawing/ucolorgroup.h"
#include "base/source/finitializer.h"
#include "gui/drawing/hooks.h"
#include <algorithm>
#include <string_view>

namespace Tessarine {
namespace {
constexpr char kSeparator = '|';
constexpr char kCollection[] = "ColorTransforms";  // of the skin, and in the defaults

struct GroupRow {
    std::string_view name;
    ColorGroup group;
};
constexpr GroupRow kGroups[] = {
    {"chassis", kChassisGroup},
    {"display", kDisplayGroup},
};

struct DeltaRow {
    const char* property;
    const char* mark;
};
constexpr DeltaRow kDeltas[] = {
    {"deltaHue", "(dH)"},
    {"deltaSat", "(dS)"},
    {"deltaLum", "(dL)"},
};
static_assert(std::size(kDeltas) == UColorTransform::kNumDeltas);

/** Words begin with capitals instead of separators. */
void appendWords(String& text, std::string_view name) {
    bool atStart = true;
    for (const char c : name) {
        if (c != kSeparator)
            text.append(atStart ? ConstString::toUpper(c) : c);
        atStart = c == kSeparator;
    }
}

template <class Instance>
Instance* singleton(FObject*& instance) {
    if (!instance && !Singleton::isTerminated()) {
        instance = new Instance;
        Singleton::registerInstance(&instance);
    }
    return static_cast<Instance*>(instance);
}
}  // namespace

constinit FObject* MarrowfatDefaults::gMade = nullptr;
static const OneTimeProcedure MarrowfatDefaultsTerminator(false, &MarrowfatDefaults::storeIfMade, "MarrowfatDefaults",
                                                          0);

IMPLEMENT_CLASS(UColorTransform, CmObject)
IMPLEMENT_CLASS(MarrowfatDefaults, FDefaultPool)
IMPLEMENT_CLASS(UColorGroupHandler, CmObject)

ColorGroup colorGroupOfName(const char* name) {
    uint32_t bits = kNoColorGroup;
    std::string_view rest(name ? name : "");
    while (!rest.empty()) {
        const std::string_view word = rest.substr(0, rest.find(kSeparator));
        const auto row = std::ranges::find(kGroups, word, &GroupRow::name);
        bits |= row != std::end(kGroups) ? row->group : kNoColorGroup;
        rest.remove_prefix(std::min(rest.size(), word.size() + 1));
    }
    return ColorGroup(bits);
}

void nameOfColorGroup(ColorGroup group, String& name) {
    name.assign("");
    for (const GroupRow& row : kGroups) {
        if (!(group & row.group))
            continue;
        if (!name.isEmpty())
            name.append(kSeparator);
        name.append(row.name.data(), int32_t(row.name.size()));
    }
}

UColorTransform::UColorTransform(ColorGroup group) : group(group), identifier("ColorTransform") {
    String name;
    nameOfColorGroup(group, name);
    appendWords(identifier, name.text8());
}

int32_t UColorTransform::queryInterface(const char* iid, void** obj) {
    return answerInterface<IColorTransform>(this, iid, obj) ? kResultOk : CmObject::queryInterface(iid, obj);
}

void UColorTransform::setDelta(Delta delta, int32_t value) {
    const int32_t bounded = std::clamp(value, -kRanges[delta], kRanges[delta]);
    if (bounded == deltas[delta])
        return;
    deltas[delta] = bounded;
    changed();
}

void UColorTransform::setFactoryDelta(Delta delta, int32_t value) {
    factoryDeltas[delta] = std::clamp(value, -kRanges[delta], kRanges[delta]);
}

String UColorTransform::defaultsKey(int32_t delta) const {
    return String(identifier).append(kDeltas[delta].mark);
}

void UColorTransform::loadDefaults() {
    MarrowfatDefaults* pool = MarrowfatDefaults::instance();
    FDefaults* kept = pool ? pool->getDefaults(kCollection, 0, true) : nullptr;
    for (int32_t delta = 0; delta < kNumDeltas; ++delta) {
        int32_t value = factoryDeltas[delta];
        if (kept)
            kept->initLong(defaultsKey(delta).text8(), value);
        setDelta(Delta(delta), value);
    }
}

void UColorTransform::saveDefaults() const {
    MarrowfatDefaults* pool = MarrowfatDefaults::instance();
    for (int32_t delta = 0; pool && delta < kNumDeltas; ++delta)
        pool->setLong(kCollection, defaultsKey(delta).text8(), deltas[delta]);
}

MarrowfatDefaults* MarrowfatDefaults::instance() {
    const bool isNew = !gMade;
    auto* pool = singleton<MarrowfatDefaults>(gMade);
    if (isNew && pool)
        pool->restore();
    return pool;
}

bool MarrowfatDefaults::storeIfMade() {
    return !gMade || static_cast<MarrowfatDefaults*>(gMade)->store();
}

UColorGroupHandler* UColorGroupHandler::instance() {
    static FObject* made = nullptr;
    return singleton<UColorGroupHandler>(made);
}

int32_t UColorGroupHandler::queryInterface(const char* iid, void** obj) {
    return answerInterface<IColorGroupInformation>(this, iid, obj) ? kResultOk : CmObject::queryInterface(iid, obj);
}

UColorTransform* UColorGroupHandler::getColorGroupTransform(ColorGroup group) {
    const auto found = std::ranges::find_if(
        transforms, [group](const OPtr<UColorTransform>& each) { return (each->getColorGroup() & group) != 0; });
    return found != transforms.end() ? found->get() : nullptr;
}

UColorTransform* UColorGroupHandler::at(int32_t index) const {
    return size_t(index) < transforms.size() ? transforms[size_t(index)].get() : nullptr;
}

void UColorGroupHandler::setupColorGroups() {
    removeAll();
    FString name;
    CmObject* properties = nullptr;
    for (int32_t index = 0;
         gDrawingHooks.skinProperty && gDrawingHooks.skinProperty(kCollection, index, name, properties); ++index) {
        addColorGroup(colorGroupOfName(name.text8()), classCast<FAttributes>(properties));
        properties = nullptr;
    }
}

void UColorGroupHandler::addColorGroup(ColorGroup group, const FAttributes* properties) {
    OPtr<UColorTransform> transform(new UColorTransform(group));
    for (int32_t delta = 0; properties && delta < UColorTransform::kNumDeltas; ++delta) {
        int32_t value = 0;
        properties->get(kDeltas[delta].property, value);
        transform->setFactoryDelta(UColorTransform::Delta(delta), value);
    }
    transform->loadDefaults();
    transforms.push_back(std::move(transform));
}

}  // namespace Tessarine
