// Reference counting and the class query of the platform objects.
#include <gtest/gtest.h>

#include <zrplatform/platform.h>

namespace {

class Shape : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(Shape);
  static int alive;
  Shape() { ++alive; }
  ~Shape() override { --alive; }
};
int Shape::alive = 0;
ZR_RX_DEFINE_MEMBERS(Shape, ZrRxObject, L"Shape")

class Circle : public Shape {
 public:
  ZR_RX_DECLARE_MEMBERS(Circle);
};
ZR_RX_DEFINE_MEMBERS(Circle, Shape, L"Circle")

}  // namespace

TEST(Objects, CountsAndLifetime) {
  {
    ZrSmartPtr<Shape> a = ZrRxObjectImpl<Shape>::createObject();
    EXPECT_EQ(a->numRefs(), 1);
    ZrSmartPtr<Shape> b = a;
    EXPECT_EQ(a->numRefs(), 2);
    zrrxAddRef(a.get());
    zrrxRelease(a.get());
    zrrxRelease(nullptr);
    ZrSmartPtr<Shape>& alias = b;
    b = alias;  // self-assignment keeps the reference
    EXPECT_EQ(a->numRefs(), 2);
    b.reset();
    EXPECT_EQ(a->numRefs(), 1);
    EXPECT_EQ(Shape::alive, 1);
  }
  EXPECT_EQ(Shape::alive, 0);
}

TEST(Objects, ClassQuery) {
  ZrSmartPtr<Circle> circle = ZrRxObjectImpl<Circle>::createObject();
  EXPECT_TRUE(circle->isKindOf(Shape::desc()));
  EXPECT_TRUE(circle->isKindOf(ZrRxObject::desc()));
  EXPECT_FALSE(circle->isKindOf(ZrStreamBuf::desc()));
  EXPECT_STREQ(circle->className(), L"Circle");

  ZrSmartPtr<ZrRxObject> root = circle;
  ZrSmartPtr<Circle> back(root);  // through the query: the object is a Circle
  EXPECT_EQ(back.get(), circle.get());
  EXPECT_EQ(circle->numRefs(), 3);

  ZrSmartPtr<Shape> plain = ZrRxObjectImpl<Shape>::createObject();
  ZrSmartPtr<ZrRxObject> other = plain;
  try {
    ZrSmartPtr<Circle> wrong(other);
    FAIL() << "a Shape is not a Circle";
  } catch (const ZrError& e) {
    EXPECT_EQ(e.status(), Zrad::eNotThatKindOfClass);
  }
  EXPECT_EQ(plain->numRefs(), 2);  // the failed query took no reference
}
