#pragma once
#include "base/fattribute.h"
#include "pluginterfaces/base/iattributelist.h"

namespace Tessarine {

/** A list of attributes as a component. A key has one value, whatever its kind: getters answer kResultFalse for another kind,
    but numbers and texts convert into each other's numbers. */
class FAttributeListImp : public CmObject, public IAttributeList {
public:
    DECLARE_CLASS(FAttributeListImp, CmObject)
    FORWARD_REFCOUNT(CmObject)
    FAttributeListImp() = default;
    FAttributeListImp(const FAttributeListImp&) = delete;
    FAttributeListImp& operator=(const FAttributeListImp&) = delete;
    int32_t queryInterface(const char* iid, void** obj) override;

    bool internalize(FArchive& archive) override { return list.internalizeAttributes(archive); }
    bool externalize(FArchive& archive) const override { return list.externalizeAttributes(archive); }

    int32_t setBinaryAttribute(const char* key, const void* data, uint32_t size) override;
    int32_t getBinaryAttribute(const char* key, const void*& data, uint32_t& size) override;
    int32_t setObjectAttribute(const char* key, FUnknown* object) override;
    int32_t getObjectAttribute(const char* key, FUnknown*& object) override;
    int32_t setLongAttribute(const char* key, int64_t value) override;
    int32_t getLongAttribute(const char* key, int64_t& value) override;
    int32_t setFloatAttribute(const char* key, double value) override;
    int32_t getFloatAttribute(const char* key, double& value) override;
    int32_t setStringAttribute(const char* key, const tchar* text) override;
    int32_t getStringAttribute(const char* key, const tchar*& text) override;
    int32_t containsAttribute(const char* key) override;
    int32_t removeAttribute(const char* key) override;
    int32_t addAllTo(IAttributeList* other) override;
    int32_t isEmpty() override;

private:
    using List = FAttributeList<FStringIDAttribute, const char*, CmOrderedArray>;

    FStringIDAttribute* numberOrText(const char* key) const;
    static int32_t addTo(IAttributeList& other, FStringIDAttribute& attribute);

    List list;
};

}  // namespace Tessarine
