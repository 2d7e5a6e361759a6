#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <vector>

#include "ZtChain.h"
#include "ZtCoreEx.h"
#include "ZtTypeLists.h"

using namespace Zt;
using namespace ZtTest;

namespace {

const CZtImageFormat kZero(0, 0, EPixelType::ID(0), EDataType::ID(0));

// The refusal of Create's raising forms: one plain link.
void ExpectCreateRaises(const std::function<void()>& create) {
  ExpectRaise(create, {{"Error creating CZtImageMoniker", "Zt::CZtImageMoniker::Create",
                        "ZtImageMoniker"}});
}

// A view's binding: its memory and its format.
using Binding = std::pair<const void*, CZtImageFormat>;
Binding Bound(const CZtImageMoniker& view) { return {view.GetDataPtr(), view.GetFormat()}; }

TEST(CZtImageMoniker, BindsEveryFormatAndRefusesBadOnesLeavingAZeroFormat) {
  const std::vector<unsigned char> memory(64, 0xAB);  // const, yet handed out writable
  for (const auto& p : kPixelTypes) {
    for (const auto& d : kDataTypes) {
      CZtImageMoniker view;
      ASSERT_TRUE(view.Create(4, 2, p.type, d.type, memory.data()));
      EXPECT_EQ(Bound(view), Binding(memory.data(), CZtImageFormat(4, 2, p.type, d.type)));
      int pt = 0, dt = 0;
      view.GetType(pt, dt);  // the integer form, pixel type first
      EXPECT_TRUE(pt == p.type && dt == d.type && view.IsOfType(p.type, d.type));
    }
  }
  std::vector<std::vector<int>> refusals = {{0, 10, EPixelType::RGB, EDataType::UByte},
                                            {10, 0, EPixelType::RGB, EDataType::UByte},
                                            {-1, 1, EPixelType::Lum, EDataType::Float},
                                            {1, INT_MIN, EPixelType::Lum, EDataType::Float}};
  for (int p : kUnknownPixelTypes) refusals.push_back({2, 2, p, EDataType::UByte});
  for (int d : kUnknownDataTypes) refusals.push_back({2, 2, EPixelType::RGB, d});
  for (const auto& r : refusals) {
    SCOPED_TRACE(testing::Message() << r[0] << "x" << r[1] << " " << r[2] << " " << r[3]);
    CZtImageMoniker view;
    ASSERT_TRUE(view.Create(2, 2, EPixelType::RGBA, EDataType::Short, memory.data()));
    EXPECT_FALSE(view.Create(r[0], r[1], AsPixelType(r[2]), AsDataType(r[3]), memory.data()));
    EXPECT_TRUE(!view.IsValid() && view.GetFormat() == kZero);
    view.Set(memory.data());
    ExpectCreateRaises([&] { view.Create(r[0], r[1], r[2], r[3], memory.data()); });
    EXPECT_TRUE(!view.IsValid() && view.GetFormat() == kZero);
    ExpectCreateRaises([&] {
      view.Create({r[0], r[1], AsPixelType(r[2]), AsDataType(r[3])}, nullptr);
    });
  }
  EXPECT_EQ(memory, std::vector<unsigned char>(64, 0xAB));
}

TEST(CZtImageMoniker, NullDataGivesAFormatWithoutMemoryThatSetBindsAndUnbinds) {
  const unsigned char memory[12] = {};
  const CZtImageFormat format(2, 2, EPixelType::RGB, EDataType::UByte);
  CZtImageMoniker a, b, c, d;
  EXPECT_TRUE(a.Create(2, 2, EPixelType::RGB, EDataType::UByte));
  EXPECT_TRUE(b.Create(2, 2, EPixelType::RGB, EDataType::UByte, nullptr));
  c.Create(2, 2, int{EPixelType::RGB}, int{EDataType::UByte}, nullptr);  // no raise
  d.Create(format, nullptr);
  for (CZtImageMoniker* view : {&a, &b, &c, &d}) {
    EXPECT_TRUE(!view->IsValid() && view->GetFormat() == format);
    view->Set(memory);
    EXPECT_TRUE(view->IsValid() && view->GetDataPtr() == memory);
    view->Set(nullptr);
    EXPECT_TRUE(!view->IsValid() && view->GetFormat() == format);
  }
}

TEST(CZtImageMoniker, CreateFromAnImageReadsAllFirstAndRefusalsKeepTheBinding) {
  CZtImage image, copy;
  ASSERT_TRUE(image.Create(3, 2, EPixelType::BGRA, EDataType::Float));
  const CZtImage empty;
  unsigned char memory[4] = {};
  const CZtImageFormat old(1, 1, EPixelType::Lum, EDataType::Int);
  CZtImageMoniker view;
  view.Create(old, memory);
  EXPECT_FALSE(view.Create(static_cast<const IImage*>(nullptr)) || view.Create(&empty));
  ExpectCreateRaises([&] { view.Create(empty); });
  EXPECT_EQ(Bound(view), Binding(memory, old));
  view.Create(image);
  EXPECT_TRUE(view.Create(&view));  // unlike CZtImage, which ends Empty
  EXPECT_EQ(Bound(view), Binding(image.GetDataPtr(), image.GetFormat()));
  EXPECT_TRUE(copy.Create(&view));  // a view as a source of Create gives a deep copy
  EXPECT_TRUE(copy.GetDataPtr() != image.GetDataPtr() && copy.GetFormat() == image.GetFormat());
}

TEST(CZtImageMoniker, CopiesShareTheMemoryAndDestroyZeroesOnlyTheOneView) {
  unsigned char memory[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  const Binding bound(memory, CZtImageFormat(2, 1, EPixelType::LumA, EDataType::UShort));
  CZtImageMoniker view, assigned, fresh;
  view.Create(bound.second, memory);
  CZtImageMoniker copy(view);
  assigned = view;
  EXPECT_TRUE(view.Destroy());
  EXPECT_TRUE(!view.IsValid() && view.GetFormat() == kZero && memory[7] == 8);
  EXPECT_TRUE(Bound(copy) == bound && Bound(assigned) == bound);
  assigned = view;  // an unbound view is assigned too, unlike an invalid CZtImage
  EXPECT_TRUE(!assigned.IsValid() && assigned.GetFormat() == kZero);
  EXPECT_TRUE(fresh.Destroy());  // zeroes even an unset format
  EXPECT_EQ(fresh.GetFormat(), kZero);
}

}  // namespace
