#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZtCoreEx.h"

using Zt::CZtMetricCalibAddImageResult;
using Zt::CZtMetricCalibResult;

namespace {

std::vector<double> Fields(const CZtMetricCalibResult& r) {
  return {r.m_Value1, r.m_Value2, r.m_Value3, r.m_Value4, r.m_Value5};
}

// Everything of an add-image record, comparable in one go.
struct Snapshot {
  int i1, i2, i3;
  bool b4;
  std::string message;
  std::vector<unsigned int> values1, values2;
  bool textsValid;
  std::vector<std::string> texts;
  bool operator==(const Snapshot& o) const {
    return i1 == o.i1 && i2 == o.i2 && i3 == o.i3 && b4 == o.b4 && message == o.message &&
           values1 == o.values1 && values2 == o.values2 && textsValid == o.textsValid &&
           texts == o.texts;
  }
};

std::vector<unsigned int> Elements(const Zt::CZtArrayUInt& a) {
  std::vector<unsigned int> v;
  for (unsigned long long i = 0; i < a.Length(); ++i) {
    v.push_back(a[i]);
  }
  return v;
}

Snapshot Take(const CZtMetricCalibAddImageResult& r) {
  Snapshot s{r.m_iValue1,
             r.m_iValue2,
             r.m_iValue3,
             r.m_bValue4,
             r.m_sMessage.ToCString(),
             Elements(r.m_aValues1),
             Elements(r.m_aValues2),
             r.m_aTexts.IsValid(),
             {}};
  for (unsigned long long i = 0; i < r.m_aTexts.Length(); ++i) {
    s.texts.emplace_back(r.m_aTexts[i].ToCString());
  }
  return s;
}

CZtMetricCalibAddImageResult Filled() {
  CZtMetricCalibAddImageResult r;
  r.m_iValue1 = 4;
  r.m_iValue2 = -5;
  r.m_iValue3 = 6;
  r.m_bValue4 = true;
  r.m_sMessage = "added";
  r.m_aValues1.Resize(2);
  r.m_aValues1[1] = 11u;
  r.m_aValues2.Resize(1);
  r.m_aValues2[0] = 22u;
  r.m_aTexts.Resize(2);
  r.m_aTexts[0] = "first";
  return r;
}

TEST(CZtMetricCalibResult, StartsAtZeroAndCopiesEveryField) {
  CZtMetricCalibResult r;
  EXPECT_EQ(Fields(r), std::vector<double>(5, 0.0));
  r.m_Value1 = 1.5;
  r.m_Value5 = -2.0;
  CZtMetricCalibResult copy(r);
  EXPECT_EQ(Fields(copy), (std::vector<double>{1.5, 0, 0, 0, -2.0}));
  CZtMetricCalibResult assigned;
  assigned = r;
  EXPECT_EQ(Fields(assigned), Fields(r));
}

TEST(CZtMetricCalibAddImageResult, ReportsByDefaultThatNothingWasAdded) {
  const CZtMetricCalibAddImageResult r;
  const Snapshot expected{-1, 0,  0,    false, "No object added to metric calibration",
                          {}, {}, true, {}};
  EXPECT_EQ(Take(r), expected);
}

TEST(CZtMetricCalibAddImageResult, CopiesAreDeepInBothForms) {
  const CZtMetricCalibAddImageResult source = Filled();
  const Snapshot before = Take(source);
  CZtMetricCalibAddImageResult constructed(source);
  CZtMetricCalibAddImageResult assigned;
  assigned = source;
  for (CZtMetricCalibAddImageResult* copy : {&constructed, &assigned}) {
    EXPECT_EQ(Take(*copy), before);
    copy->m_aValues1[1] = 99u;
    copy->m_aValues2[0] = 98u;
    copy->m_aTexts[0] = "changed";
    copy->m_sMessage = "changed";
  }
  EXPECT_EQ(Take(source), before);
}

TEST(CZtMetricCalibAddImageResult, SelfAssignmentLosesOnlyTheTexts) {
  CZtMetricCalibAddImageResult r = Filled();
  Snapshot expected = Take(r);
  expected.textsValid = false;
  expected.texts.clear();
  CZtMetricCalibAddImageResult& self = r;
  r = self;
  EXPECT_EQ(Take(r), expected);
}

}  // namespace
