#include "base/fcompreg.h"
#include "base/fdynlib.h"
#include "base/source/classfactory.h"
#include "pluginterfaces/host/ihosttools.h"
#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
/** One object for all, which nobody counts. */
template <class Interface>
class StaticTool : public Interface {
public:
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<Interface>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj)
                   ? kResultOk
                   : noInterface(obj);
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }

protected:
    ~StaticTool() = default;
};

class Comparer final : public StaticTool<IComparer> {
public:
    int32_t compare(FUnknown* a, FUnknown* b) override {
        const CmObject *own = commonObject(a), *other = commonObject(b);
        if (own && other)
            return own->compare(other);
        return std::less<>()(a, b) ? -1 : a != b;
    }
};

class MemoryAllocator final : public StaticTool<IMemoryAllocator> {
public:
    void* allocate(uint32_t bytes) override { return std::malloc(bytes); }
    void* reallocate(void* block, uint32_t bytes) override { return std::realloc(block, bytes ? bytes : 1); }
    void free(void* block) override { std::free(block); }
};

constinit Comparer gComparer;
constinit MemoryAllocator gMemoryAllocatorInterface;

class UHostList final : public FObject, public IList {
public:
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IList>(this, iid, obj) ? int32_t(kResultOk) : FObject::queryInterface(iid, obj);
    }
    int32_t count() override { return int32_t(elements.size()); }
    FUnknown* at(int32_t index) override { return isInside(index) ? elements[size_t(index)].get() : nullptr; }
    int32_t add(FUnknown* object) override {
        if (object)
            elements.emplace_back(object);
        return object ? kResultOk : kResultFalse;
    }
    int32_t removeAt(int32_t index) override {
        if (!isInside(index))
            return kInvalidArgument;
        const IPtr<FUnknown> kept = elements[size_t(index)];  // its end may come back here
        elements.erase(elements.begin() + index);
        return kResultOk;
    }
    void removeAll() override { const std::vector<IPtr<FUnknown>> kept = std::exchange(elements, {}); }

private:
    bool isInside(int32_t index) const { return index >= 0 && size_t(index) < elements.size(); }

    std::vector<IPtr<FUnknown>> elements;
};

class FDynLibHostClass final : public FDynLibrary, public IDynamicLibrary {
public:
    FORWARD_REFCOUNT(FDynLibrary)
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IDynamicLibrary>(this, iid, obj) ? int32_t(kResultOk)
                                                                : FDynLibrary::queryInterface(iid, obj);
    }
    int32_t load(const tchar* name, bool isAbsolute) override {
        return init(name, isAbsolute) ? kResultOk : kResultFalse;
    }
    void* getProcAddress(const char* name) override { return FDynLibrary::getProcAddress(name); }
    void unload() override { FDynLibrary::unload(); }
};

FUnknown* createHostIComparer() {
    return &gComparer;
}

FUnknown* createHostIMemoryAllocator() {
    return &gMemoryAllocatorInterface;
}

FUnknown* makeHostIList() {
    return static_cast<IList*>(new UHostList);
}

FUnknown* makeHostIDynamicLibrary() {
    return static_cast<IDynamicLibrary*>(new FDynLibHostClass);
}

FUnknown* createHostIComponentFactory() {
    IComponentFactory* face = gComponentRegistry;
    if (face)
        face->addRef();
    return face;
}

MetaClass hostTools[] = {
    {nullptr, createHostIComparer,         IComparer::iid,         nullptr},
    {nullptr, createHostIMemoryAllocator,  IMemoryAllocator::iid,  nullptr},
    {nullptr, makeHostIList,               IList::iid,             nullptr},
    {nullptr, makeHostIDynamicLibrary,     IDynamicLibrary::iid,   nullptr},
    {nullptr, createHostIComponentFactory, IComponentFactory::iid, nullptr},
};
}  // namespace

}  // namespace Tessarine
