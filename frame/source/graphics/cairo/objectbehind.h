#pragma once
#include "base/source/fobject.h"

namespace Tessarine::Graphics {

/** The object of a class behind any of its faces; null: it is of somebody else. Borrowed. */
template <class Class>
Class* objectBehind(FUnknown* face) {
    FObject* object = frameworkObject(face);
    return object && object->isA(Class::className()) ? static_cast<Class*>(object) : nullptr;
}

}  // namespace Tessarine::Graphics
