// Test helper: an element class of its own that reads through to a tree of ElementValues.
//
// Every lookup answers with a fresh wrapper that nothing else holds, so whoever walks through
// one must keep each answer alive by itself.
#pragma once

#include <zrad/json.h>

namespace jsontest {

class Wrapper : public IElementValueBase {
 public:
  static ZrJsonPtr wrap(ZrJsonPtr inner) { return inner ? ZrJsonPtr::adopt(new Wrapper(inner)) : inner; }
  int getType() const override { return m_inner->getType(); }
  ZrUtf8String strValue() const override { return m_inner->strValue(); }
  bool boolValue() const override { return m_inner->boolValue(); }
  long long longlongValue() const override { return m_inner->longlongValue(); }
  double floatValue() const override { return m_inner->floatValue(); }
  int property_count() const override { return m_inner->property_count(); }
  ZrJsonPtr enumproperty(int i, ZrUtf8String& key) const override { return wrap(m_inner->enumproperty(i, key)); }
  ZrJsonPtr property_sub(const ZrUtf8String& name) const override { return wrap(m_inner->property_sub(name)); }
  int array_count() const override { return m_inner->array_count(); }
  ZrJsonPtr array_sub(int index) const override { return wrap(m_inner->array_sub(index)); }

 private:
  explicit Wrapper(ZrJsonPtr inner) : m_inner(inner) {}
  ZrJsonPtr m_inner;
};

}  // namespace jsontest
