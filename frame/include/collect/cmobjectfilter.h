#pragma once
#include "base/source/cmobject.h"

namespace Tessarine {

/** A question about an object, or a visitor: what a container asks about, or shows, each of its elements. */
class CmObjectFilter {
public:
    virtual bool test(CmObject* object) = 0;

protected:
    ~CmObjectFilter() = default;
};

/** This very object. */
class CmIdentityFilter final : public CmObjectFilter {
public:
    explicit CmIdentityFilter(const CmObject* wanted) : wanted(wanted) {}
    bool test(CmObject* object) override { return object == wanted; }

private:
    const CmObject* wanted;  // borrowed
};

/** Of the class or of one derived from it. */
class CmTypeFilter final : public CmObjectFilter {
public:
    explicit CmTypeFilter(const char* className) : className(className) {}
    bool test(CmObject* object) override { return object && object->isTypeOf(className, true); }

private:
    const char* className;  // borrowed
};

/** Of the class itself. */
class CmIsAFilter final : public CmObjectFilter {
public:
    explicit CmIsAFilter(const char* className) : className(className) {}
    bool test(CmObject* object) override { return object && object->isA(className); }

private:
    const char* className;  // borrowed
};

/** Answers the interface. */
class CmHasInterfaceFilter final : public CmObjectFilter {
public:
    explicit CmHasInterfaceFilter(const char* iid) : iid(iid) {}
    bool test(CmObject* object) override;

private:
    const char* iid;  // borrowed
};

/** What a function says. */
class CmMacroFilter final : public CmObjectFilter {
public:
    using Function = bool (*)(CmObject* object);
    explicit CmMacroFilter(Function function) : function(function) {}
    bool test(CmObject* object) override { return function(object); }

private:
    Function function;
};

}  // namespace Tessarine
