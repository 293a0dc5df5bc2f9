// The root of the runtime class tree and the free reference-count functions.
#include "zrplatform/rxobject.h"

bool ZrRxClass::isDerivedFrom(const ZrRxClass* other) const {
  for (const ZrRxClass* c = this; c; c = c->m_parent)
    if (c == other) return true;
  return false;
}

ZrRxObject::~ZrRxObject() = default;

const ZrRxClass* ZrRxObject::desc() {
  static const ZrRxClass cls(L"ZrRxObject", nullptr);
  return &cls;
}

const ZrRxClass* ZrRxObject::isA() const { return desc(); }

ZrRxObject* ZrRxObject::queryX(const ZrRxClass* cls) const {
  return cls == desc() ? const_cast<ZrRxObject*>(this) : nullptr;
}

void zrrxAddRef(ZrRxObject* obj) {
  if (obj) obj->addRef();
}

void zrrxRelease(ZrRxObject* obj) {
  if (obj) obj->release();
}
