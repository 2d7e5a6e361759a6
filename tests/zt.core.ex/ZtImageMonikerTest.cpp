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

TEST(CZtImageMoniker, BindsEveryFormatAndRefusesBadOnesLeavingAZeroFormat) {
  const std::vector<unsigned char> memory(64, 0xAB);  // const, yet handed out writable
  for (const auto& p : kPixelTypes) {
    for (const auto& d : kDataTypes) {
      CZtImageMoniker view;
      ASSERT_TRUE(view.Create(4, 2, p.type, d.type, memory.data()));
      EXPECT_EQ(view.GetDataPtr(), static_cast<const void*>(memory.data()));
      EXPECT_EQ(view.GetFormat(), CZtImageFormat(4, 2, p.type, d.type));
      int pt = 0, dt = 0;
      view.GetType(pt, dt);  // the integer form, pixel type first
      EXPECT_TRUE(pt == p.type && dt == d.type && view.IsOfType(p.type, d.type));
    }
  }
  struct Refusal {
    int w, h, p, d;
  };
  std::vector<Refusal> refusals = {{0, 10, EPixelType::RGB, EDataType::UByte},
                                   {10, 0, EPixelType::RGB, EDataType::UByte},
                                   {-1, 1, EPixelType::Lum, EDataType::Float},
                                   {1, INT_MIN, EPixelType::Lum, EDataType::Float}};
  for (int p : kUnknownPixelTypes) refusals.push_back({2, 2, p, EDataType::UByte});
  for (int d : kUnknownDataTypes) refusals.push_back({2, 2, EPixelType::RGB, d});
  for (const auto& r : refusals) {
    SCOPED_TRACE(testing::Message() << r.w << "x" << r.h << " " << r.p << " " << r.d);
    CZtImageMoniker view;
    ASSERT_TRUE(view.Create(2, 2, EPixelType::RGBA, EDataType::Short, memory.data()));
    EXPECT_FALSE(view.Create(r.w, r.h, AsPixelType(r.p), AsDataType(r.d), memory.data()));
    EXPECT_TRUE(!view.IsValid() && view.GetFormat() == kZero);
    view.Set(memory.data());
    ExpectCreateRaises([&] { view.Create(r.w, r.h, r.p, r.d, memory.data()); });
    EXPECT_TRUE(!view.IsValid() && view.GetFormat() == kZero);
    ExpectCreateRaises([&] {
      view.Create({r.w, r.h, AsPixelType(r.p), AsDataType(r.d)}, nullptr);
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
  CZtImage image;
  ASSERT_TRUE(image.Create(3, 2, EPixelType::BGRA, EDataType::Float));
  const CZtImage empty;
  unsigned char memory[4] = {};
  const CZtImageFormat old(1, 1, EPixelType::Lum, EDataType::Int);
  CZtImageMoniker view;
  view.Create(old, memory);
  EXPECT_FALSE(view.Create(static_cast<const IImage*>(nullptr)));
  EXPECT_FALSE(view.Create(&empty));
  ExpectCreateRaises([&] { view.Create(empty); });
  EXPECT_TRUE(view.GetDataPtr() == memory && view.GetFormat() == old);

  view.Create(image);
  EXPECT_TRUE(view.Create(&view));  // unlike CZtImage, which ends Empty
  EXPECT_TRUE(view.GetDataPtr() == image.GetDataPtr() && view.GetFormat() == image.GetFormat());
  CZtImage copy;  // a view as a source of Create gives a deep copy
  EXPECT_TRUE(copy.Create(&view));
  EXPECT_TRUE(copy.GetDataPtr() != image.GetDataPtr() && copy.GetFormat() == image.GetFormat());
}

TEST(CZtImageMoniker, CopiesShareTheMemoryAndDestroyZeroesOnlyTheOneView) {
  unsigned char memory[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  const CZtImageFormat format(2, 1, EPixelType::LumA, EDataType::UShort);
  CZtImageMoniker view, assigned, fresh;
  view.Create(format, memory);
  CZtImageMoniker copy(view);
  assigned = view;
  EXPECT_TRUE(view.Destroy());
  EXPECT_TRUE(!view.IsValid() && view.GetFormat() == kZero && memory[7] == 8);
  EXPECT_TRUE(copy.GetDataPtr() == memory && copy.GetFormat() == format);
  EXPECT_TRUE(assigned.GetDataPtr() == memory && assigned.GetFormat() == format);
  assigned = view;  // an unbound view is assigned too, unlike an invalid CZtImage
  EXPECT_TRUE(!assigned.IsValid() && assigned.GetFormat() == kZero);
  EXPECT_TRUE(fresh.Destroy());  // zeroes even an unset format
  EXPECT_EQ(fresh.GetFormat(), kZero);
}

}  // namespace
