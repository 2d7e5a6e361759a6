#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "ZtCoreEx.h"

using Zt::CZtMetricCalibAddImageResult;
using Zt::CZtMetricCalibResult;
using Record = std::tuple<std::vector<int>, std::string, std::vector<unsigned>,
                          std::vector<unsigned>, bool, std::vector<std::string>>;

namespace {

std::vector<double> Fields(const CZtMetricCalibResult& r) {
  return {r.m_Value1, r.m_Value2, r.m_Value3, r.m_Value4, r.m_Value5};
}

std::vector<unsigned> Elements(const Zt::CZtArrayUInt& a) {
  return std::vector<unsigned>(a.GetDataPtr(), a.GetDataPtr() + a.Length());
}

// Everything of an add-image record, texts last, comparable in one go.
Record Take(const CZtMetricCalibAddImageResult& r) {
  std::vector<std::string> texts;
  for (unsigned long long i = 0; i < r.m_aTexts.Length(); ++i)
    texts.emplace_back(r.m_aTexts[i].ToCString());
  return {{r.m_iValue1, r.m_iValue2, r.m_iValue3, r.m_bValue4},
          r.m_sMessage.ToCString(),
          Elements(r.m_aValues1),
          Elements(r.m_aValues2),
          r.m_aTexts.IsValid(),
          texts};
}

TEST(CZtMetricCalibResult, StartsAtZeroAndCopiesEveryField) {
  CZtMetricCalibResult r, assigned;
  EXPECT_EQ(Fields(r), std::vector<double>(5, 0.0));
  r.m_Value1 = 1.5;
  r.m_Value5 = -2.0;
  assigned = r;
  EXPECT_EQ(Fields(CZtMetricCalibResult(r)), (std::vector<double>{1.5, 0, 0, 0, -2.0}));
  EXPECT_EQ(Fields(assigned), Fields(r));
}

TEST(CZtMetricCalibAddImageResult, StartsWithNothingAddedAndCopiesDeeplyButNotToItself) {
  CZtMetricCalibAddImageResult source;
  EXPECT_EQ(Take(source),
            Record({-1, 0, 0, 0}, "No object added to metric calibration", {}, {}, true, {}));
  source.m_iValue1 = 4, source.m_iValue2 = -5, source.m_iValue3 = 6, source.m_bValue4 = true;
  source.m_sMessage = "added";
  source.m_aValues1.Resize(2);
  source.m_aValues1[1] = 11u;
  source.m_aValues2.Resize(1);
  source.m_aValues2[0] = 22u;
  source.m_aTexts.Resize(2);
  source.m_aTexts[0] = "first";
  const Record before = Take(source);
  EXPECT_EQ(before, Record({4, -5, 6, 1}, "added", {0, 11}, {22}, true, {"first", ""}));
  CZtMetricCalibAddImageResult constructed(source), assigned, self(source);
  assigned = source;
  for (CZtMetricCalibAddImageResult* copy : {&constructed, &assigned}) {
    EXPECT_EQ(Take(*copy), before);
    copy->m_aValues1[1] = 99u;
    copy->m_aValues2[0] = 98u;
    copy->m_aTexts[0] = "changed";
    copy->m_sMessage = "changed";
  }
  EXPECT_EQ(Take(source), before);
  // Assigned to itself, a record loses only its texts.
  CZtMetricCalibAddImageResult& alias = self;
  self = alias;
  EXPECT_EQ(Take(self), Record({4, -5, 6, 1}, "added", {0, 11}, {22}, false, {}));
}

}  // namespace
