#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "ZtCoreEx.h"

namespace {

// The records start from their defaults (their copies are the members', tested with them).
TEST(CalibrationRecords, StartFromTheirDefaults) {
  const Zt::CZtMetricCalibResult r;
  EXPECT_EQ((std::vector<double>{r.m_Value1, r.m_Value2, r.m_Value3, r.m_Value4, r.m_Value5}),
            std::vector<double>(5, 0.0));
  const Zt::CZtMetricCalibAddImageResult a;
  EXPECT_EQ(std::make_tuple(a.m_iValue1, a.m_iValue2, a.m_iValue3, a.m_bValue4,
                            std::string(a.m_sMessage.ToCString())),
            std::make_tuple(-1, 0, 0, false, std::string("No object added to metric calibration")));
  for (const Zt::CZtArrayUInt* array : {&a.m_aValues1, &a.m_aValues2})
    EXPECT_TRUE(array->IsValid() && array->Length() == 0u);
  EXPECT_TRUE(a.m_aTexts.IsValid() && a.m_aTexts.Length() == 0u);
}

}  // namespace
