#pragma once
#include "base/source/classfactory.h"
#include "base/source/fobject.h"

namespace Tessarine {
class FArchive;
class FAttributes;
class FMessage;

/** The common object: what containers, archives and notifications rest on. Adds no data. */
class CmObject : public FObject {
public:
    static MetaClass __fClass;
    static FUnknown* __fCreate();

    const char* isA() const override { return "CmObject"; }
    bool isA(const char* name) const override { return isTypeOf(name, false); }
    bool isTypeOf(const char* name, bool askBaseClass) const override;

    /** Here: the same object. */
    virtual bool isEqual(const CmObject* other) const { return this == other; }
    /** Below, at or above 0; here by address. */
    virtual int32_t compare(const CmObject* other) const;
    /** 0 to buckets - 1; here by address. */
    virtual uint32_t hash(uint32_t buckets) const;
    /** Of objects of this copy of the framework: passes on to update(CmObject*, message). */
    void update(FUnknown* changedUnknown, int32_t message) override;
    virtual void update(CmObject* /*changedObject*/, int32_t /*message*/) {}
    virtual bool internalize(FArchive& /*archive*/) { return true; }
    virtual bool externalize(FArchive& /*archive*/) const { return true; }
    virtual bool storeAttributes(FAttributes& /*attributes*/) const { return false; }
    virtual bool restoreAttributes(FAttributes& /*attributes*/) { return false; }
    /** A message for this object; 0: not handled. */
    virtual int32_t notify(FMessage* /*message*/) { return 0; }
    virtual MetaClass* getClass() const { return &__fClass; }
    /** A copy with one reference, null where the class has none. */
    virtual CmObject* newCopy() const { return nullptr; }
};

/** The object behind any face, when it is a CmObject of this copy of the framework, else null. Borrowed. */
CmObject* commonObject(FUnknown* unknown);

/** The object as Class, by its class name, null when it is none. Null is allowed. */
template <class Class>
Class* classCast(CmObject* object) {
    return object && object->isTypeOf(Class::className(), true) ? static_cast<Class*>(object) : nullptr;
}
template <class Class>
const Class* classCast(const CmObject* object) {
    return object && object->isTypeOf(Class::className(), true) ? static_cast<const Class*>(object) : nullptr;
}

/** Members that tell a class by its name. */
#define DECLARE_CLASS_NAME(Class, Base)                                                                          \
    static constexpr const char* className() {                                                                   \
        return #Class;                                                                                           \
    }                                                                                                            \
    const char* isA() const override {                                                                           \
        return #Class;                                                                                           \
    }                                                                                                            \
    bool isA(const char* name) const override {                                                                  \
        return isTypeOf(name, false);                                                                            \
    }                                                                                                            \
    bool isTypeOf(const char* name, bool askBaseClass) const override {                                          \
        return name && (std::strcmp(name, #Class) == 0 || (askBaseClass && Base::isTypeOf(name, askBaseClass))); \
    }

/** Members that each class declares of its record; what follows is public. An abstract class is one that nobody makes by
    name. */
#define DECLARE_ABSTRACT_CLASS(Class, Base)             \
public:                                                 \
    static ::Tessarine::MetaClass __fClass;             \
    DECLARE_CLASS_NAME(Class, Base)                     \
    ::Tessarine::MetaClass* getClass() const override { \
        return &__fClass;                               \
    }

#define DECLARE_CLASS(Class, Base)                      \
    DECLARE_ABSTRACT_CLASS(Class, Base)                 \
    /** A default-built instance with one reference. */ \
    static ::Tessarine::FUnknown* __fCreate();

#define DECLARE_NEWCOPY(Class)                        \
    ::Tessarine::CmObject* newCopy() const override { \
        return new Class(*this);                      \
    }

#define IMPLEMENT_CLASS_V(Class, Base, version)                                                           \
    ::Tessarine::MetaClass Class::__fClass(#Class, &Class::__fCreate, nullptr, &Base::__fClass, version); \
    ::Tessarine::FUnknown* Class::__fCreate() {                                                           \
        return static_cast<::Tessarine::CmObject*>(new Class);                                            \
    }
#define IMPLEMENT_CLASS(Class, Base) IMPLEMENT_CLASS_V(Class, Base, 0)
#define IMPLEMENT_ABSTRACT_CLASS(Class, Base) \
    ::Tessarine::MetaClass Class::__fClass(#Class, nullptr, nullptr, &Base::__fClass, 0);

}  // namespace Tessarine
