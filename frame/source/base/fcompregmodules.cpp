#include "base/fcompreg.h"
#include "storage/fpath.h"
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace Tessarine {
namespace {
constexpr const char* kVendor = "Vendor";
constexpr const char* kUrl = "Url";
constexpr const char* kEmail = "Email";
constexpr const char* kFlags = "Flags";
constexpr const char* kNumClasses = "NumClasses";
constexpr const char* kClassID = "CID";
constexpr std::string_view kOfClass = "Class ";
constexpr int32_t kClassesUnknown = -1;
constexpr int32_t kMaxClasses = 10000;  // of one module that are believed

/** A group of the cache, field by field; of one class, or of the factory when the index is below 0. */
class Fields {
public:
    Fields(FDefaults& defaults, int32_t index = -1) : defaults(defaults), index(index) {}

    template <class Char, size_t Size>
    void store(const char* name, const Char (&text)[Size]) {
        defaults.setString(keyOf(name), ConstString(text, int32_t(Size)));
    }
    void store(const char* name, int32_t number) { defaults.setLong(keyOf(name), number); }
    void store(const char* name, uint32_t number) { defaults.setLong(keyOf(name), int32_t(number)); }
    template <size_t Size>
    bool restore(const char* name, char (&text)[Size]) {
        return defaults.getString8(keyOf(name), scratch) && copy(scratch.text8(), text);
    }
    template <size_t Size>
    bool restore(const char* name, tchar (&text)[Size]) {
        return defaults.getString16(keyOf(name), scratch) && copy(scratch.text16(), text);
    }
    bool restore(const char* name, int32_t& number) { return defaults.getLong(keyOf(name), number); }
    bool restore(const char* name, uint32_t& number) {
        int32_t bits = 0;
        const bool found = restore(name, bits);
        number = uint32_t(bits);
        return found;
    }
    bool restore(const char* name, FUID& cid) {
        return defaults.getString8(keyOf(name), scratch) && cid.fromString(scratch.text8());
    }

private:
    template <class Char, size_t Size>
    bool copy(const Char* text, Char (&field)[Size]) const {
        std::copy_n(text, std::min<size_t>(scratch.length(), Size), field);
        return true;
    }
    const char* keyOf(const char* name) {
        if (index < 0)
            return name;
        std::snprintf(key, sizeof(key), "%s%02i - %s", kOfClass.data(), int(index), name);
        return key;
    }

    FDefaults& defaults;
    int32_t index;
    char key[64] = {};
    String scratch;
};

/** Walks over the fields that a class needs, until the visitor answers false. */
template <class Info, class Visit>
bool visitNeeded(Info& info, Visit visit) {
    return visit("Cardinality", info.cardinality) && visit("Category", info.category) && visit("Name", info.name);
}

template <class Info, class Visit>
void visitOptional(Info& info, Visit visit) {
    visit("ClassFlags", info.classFlags);
    visit("SubCategories", info.subCategories);
    visit("Vendor", info.vendor);
    visit("Version", info.version);
    visit("SdkVersion", info.sdkVersion);
}

template <class Info, class Visit>
void visitFactory(Info& info, Visit visit) {
    visit(kVendor, info.vendor);
    visit(kUrl, info.url);
    visit(kEmail, info.email);
    visit(kFlags, info.flags);
}

void addField(FDefaults& defaults, FStringIDAttribute* field) {
    field->addRef();
    defaults.getValues().addAttribute(field);
}

/** The fields of each class by themselves: looking for each of them among all takes ever longer. */
std::vector<OPtr<FDefaults>> splitByClass(FDefaults& defaults, int32_t count) {
    std::vector<OPtr<FDefaults>> classes(static_cast<size_t>(count));
    std::ranges::generate(classes, [] { return OPtr<FDefaults>(new FDefaults); });
    FAttributes& all = defaults.getValues();
    for (int32_t i = 0; i < all.countAttributes(); ++i) {
        FStringIDAttribute* field = all.getAttribute(i);
        const std::string_view key = field->getID();
        int32_t index = -1;
        if (key.starts_with(kOfClass))
            std::from_chars(key.data() + kOfClass.size(), key.data() + key.size(), index);
        if (index >= 0 && index < count)
            addField(*classes[size_t(index)], field);
    }
    return classes;
}

void storeClass(FDefaults& defaults, int32_t index, const PClassInfoW& info) {
    const OPtr<FDefaults> ofClass(new FDefaults);
    Fields fields(*ofClass, index);
    const auto store = [&fields](const char* name, const auto& field) {
        fields.store(name, field);
        return true;
    };
    char digits[2 * FUID::kSize + 1];
    FUID(static_cast<const char*>(info.cid)).toString(digits);
    fields.store(kClassID, digits);
    visitNeeded(info, store);
    visitOptional(info, store);
    for (int32_t i = 0; i < ofClass->getValues().countAttributes(); ++i)
        addField(defaults, ofClass->getValues().getAttribute(i));
}

bool restoreClass(FDefaults& ofClass, int32_t index, PClassInfoW& info) {
    Fields fields(ofClass, index);
    const auto restore = [&fields](const char* name, auto& field) { return fields.restore(name, field); };
    FUID cid;
    if (!restore(kClassID, cid) || !visitNeeded(info, restore))
        return false;
    cid.toTUID(info.cid);
    visitOptional(info, restore);
    return true;
}

/** In the widest form that the factory offers. */
bool readClass(IPluginFactory& factory, int32_t index, PClassInfoW& info) {
    if (const FUnknownPtr<IPluginFactory3> wide(&factory); wide)
        return wide->getClassInfoUnicode(index, &info) == kResultOk;
    PClassInfo2 narrow;
    const FUnknownPtr<IPluginFactory2> extended(&factory);
    if (!extended || extended->getClassInfo2(index, &narrow) != kResultOk) {
        PClassInfo plain;
        if (factory.getClassInfo(index, &plain) != kResultOk)
            return false;
        narrow = PClassInfo2(plain);
    }
    info.fromAscii(narrow);
    return true;
}

/** Static: it is filled before there is a registry. */
TArray<FString>& doNotLoadThem() {
    static TArray<FString> names(0, -1);
    return names;
}

bool mayBeLoaded(const FModule& module) {
    return module.getPath() && !doNotLoadThem().contains(module.getPath()->getFileName());
}

int32_t countOf(IPluginFactory& factory) {
    return std::min(factory.countClasses(), kMaxClasses);
}

bool isCached(const PFactoryInfo& info) {
    return (info.flags & (FModule::kClassesVary | FModule::kAsksEachTime)) == 0;
}
}  // namespace

void FComponentRegistry::addDoNotLoad(const tchar* fileName) {
    doNotLoadThem().add(FString(fileName));
}

FModuleBase* FComponentRegistry::createModule(FPath* path) {
    return new FModule(path);
}

void FComponentRegistry::removeAll() {
    {
        const std::vector<IPtr<FComponentDescription>> all(sorted.begin(), sorted.end());
        for (FComponentDescription* each : all)
            if (classCast<FPluginComponent>(each))
                forget(each);
    }
    FModuleManager::removeAll();
}

bool FComponentRegistry::isKnownCategory(const char* category) const {
    const auto isIt = [category](const char* each) {
        return std::strncmp(each, category, PClassInfo::kCategorySize) == 0;
    };
    return std::ranges::any_of(unicodeCategories, isIt);
}

bool FComponentRegistry::checkForUnicodeCompliantInterfaces(IPluginFactory& factory) const {
    PClassInfo info;
    for (int32_t i = 0; i < countOf(factory); ++i)
        if (factory.getClassInfo(i, &info) == kResultOk && !isKnownCategory(info.category))
            return false;
    return true;
}

// --- from the module

bool FComponentRegistry::onRegisterModule(FDefaults* defaults, FModuleBase* base) {
    auto* module = classCast<FModule>(base);
    if (!defaults || !module || !mayBeLoaded(*module))
        return false;
    showComponentStatus(FFullPathString(*module->getPath()).text16());
    const FModulePin pin(module);  // whoever hears of its classes may make an object at once
    IPluginFactory* factory = module->getFactory(true);
    if (factory && registerClasses(*defaults, *module, *factory))
        return true;
    module->unload();
    return false;
}

bool FComponentRegistry::registerClasses(FDefaults& defaults, FModule& module, IPluginFactory& factory) {
    const int32_t count = countOf(factory);
    PFactoryInfo info;
    if (count < 1 || factory.getFactoryInfo(&info) != kResultOk)
        return false;
    if (!(info.flags & FModule::kIsUnicode) && !checkForUnicodeCompliantInterfaces(factory))
        return false;
    module.updateInfo(info);
    Fields fields(defaults);
    visitFactory(info, [&fields](const char* name, const auto& field) { fields.store(name, field); });
    fields.store(kNumClasses, info.flags & FModule::kClassesVary ? kClassesUnknown : count);
    for (int32_t i = 0; i < count; ++i) {
        PClassInfoW record;
        if (!readClass(factory, i, record))
            continue;
        addComponentClass(new FPluginComponent(record, info, &module, nullptr));
        storeClass(defaults, i, record);
    }
    return true;
}

int32_t FComponentRegistry::addComponentClasses(IPluginFactory* factory, FUnknown* context) {
    PFactoryInfo info;
    if (!factory || factory->getFactoryInfo(&info) != kResultOk)
        return 0;
    int32_t added = 0;
    for (int32_t i = 0; i < countOf(*factory); ++i) {
        PClassInfoW record;
        if (readClass(*factory, i, record))
            added += addComponentClass(new FPluginComponent(record, info, nullptr, factory, context));
    }
    return added;
}

// --- from the cache

bool FComponentRegistry::onRestoreModule(FDefaults* defaults, FModuleBase* base) {
    auto* module = classCast<FModule>(base);
    if (!defaults || !module || !mayBeLoaded(*module))
        return false;
    Fields fields(*defaults);
    PFactoryInfo info;
    info.flags = 0;
    visitFactory(info, [&fields](const char* name, auto& field) { fields.restore(name, field); });
    module->updateInfo(info);
    if (!isCached(info))
        return false;
    if (!(info.flags & FModule::kIsUnicode)) {
        IPluginFactory* factory = module->getFactory(true);
        const bool compliant = factory && checkForUnicodeCompliantInterfaces(*factory);
        module->unload();
        if (!compliant)
            return false;
    }
    int32_t count = 0;
    if (!fields.restore(kNumClasses, count) || count < 1 || count > kMaxClasses)
        return false;
    const std::vector<OPtr<FDefaults>> classes = splitByClass(*defaults, count);
    std::vector<PClassInfoW> records(classes.size());
    for (int32_t i = 0; i < count; ++i)
        if (!restoreClass(*classes[size_t(i)], i, records[size_t(i)]))
            return false;
    for (const PClassInfoW& record : records)
        addComponentClass(new FPluginComponent(record, info, module, nullptr));
    return true;
}

}  // namespace Tessarine
