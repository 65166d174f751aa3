#pragma once
#include "pluginterfaces/base/funknown.h"
#include "pluginterfaces/host/ihostclasses.h"

/** Counted pointers. Null is fine everywhere; none of them is for sharing between threads without a lock. */

namespace Tessarine {

/** Shares an object: a reference more while it points there. */
template <class T>
class IPtr {
public:
    IPtr() = default;
    IPtr(T* object) : pointer(object) { acquire(); }
    IPtr(const IPtr& other) : pointer(other.pointer) { acquire(); }
    IPtr(IPtr&& other) noexcept : pointer(other.detach()) {}
    ~IPtr() { drop(pointer); }
    IPtr& operator=(T* object) {
        if (object == pointer)
            return *this;
        T* old = pointer;
        pointer = object;
        acquire();
        drop(old);
        return *this;
    }
    IPtr& operator=(const IPtr& other) { return *this = other.pointer; }
    IPtr& operator=(IPtr&& other) noexcept {
        if (this != &other) {
            T* old = pointer;
            pointer = other.detach();
            drop(old);
        }
        return *this;
    }

    T* operator->() const { return pointer; }
    T& operator*() const { return *pointer; }
    operator T*() const { return pointer; }
    T* get() const { return pointer; }
    /** Hands the reference to the caller. */
    T* detach() {
        T* object = pointer;
        pointer = nullptr;
        return object;
    }

protected:
    void acquire() {
        if (pointer)
            pointer->addRef();
    }
    static void drop(T* object) {
        if (object)
            object->release();
    }

    T* pointer = nullptr;
};

/** Takes over the one reference that the creator holds. A copy of it shares. */
template <class T>
class OPtr : public IPtr<T> {
public:
    OPtr() = default;
    OPtr(T* object) { this->pointer = object; }
    OPtr(const OPtr&) = default;
    OPtr(OPtr&&) noexcept = default;
    OPtr(const IPtr<T>& other) : IPtr<T>(other) {}
    OPtr& operator=(const OPtr&) = default;
    OPtr& operator=(OPtr&&) noexcept = default;
    OPtr& operator=(T* object) {
        T* old = this->pointer;
        this->pointer = object;
        if (old != object)
            this->drop(old);
        return *this;
    }
};

/** An interface of an object, got by query; null when the object is null or doesn't offer it. */
template <class I>
class FUnknownPtr : public IPtr<I> {
public:
    FUnknownPtr() = default;
    explicit FUnknownPtr(FUnknown* object) { this->pointer = query(object); }
    FUnknownPtr& operator=(FUnknown* object) {
        IPtr<I>::operator=(OPtr<I>(query(object)));
        return *this;
    }

private:
    static I* query(FUnknown* object) {
        void* face = nullptr;
        if (!object || object->queryInterface(I::iid, &face) != kResultOk)
            return nullptr;
        return static_cast<I*>(face);
    }
};

/** A service or a new object of the host, by its interface; null without a host or when the host doesn't have it. */
template <class I>
class FInstancePtr : public IPtr<I> {
public:
    FInstancePtr() = default;
    explicit FInstancePtr(IHostClasses* hostClasses) {
        void* face = nullptr;
        if (hostClasses && hostClasses->createClassInstance(I::iid, &face) == kResultOk)
            this->pointer = static_cast<I*>(face);
    }
    using IPtr<I>::operator=;
};

}  // namespace Tessarine
