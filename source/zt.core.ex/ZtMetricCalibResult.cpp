#include "ZtMetricCalibResult.h"

namespace Zt {

CZtMetricCalibResult::CZtMetricCalibResult()
    : m_Value1(0), m_Value2(0), m_Value3(0), m_Value4(0), m_Value5(0) {}

CZtMetricCalibResult::CZtMetricCalibResult(const CZtMetricCalibResult& other) = default;
CZtMetricCalibResult& CZtMetricCalibResult::operator=(const CZtMetricCalibResult& other) = default;
CZtMetricCalibResult::~CZtMetricCalibResult() = default;

CZtMetricCalibAddImageResult::CZtMetricCalibAddImageResult()
    : m_iValue1(-1), m_iValue2(0), m_iValue3(0), m_bValue4(false) {
  m_sMessage = "No object added to metric calibration";
  m_aValues1.Reset();
  m_aValues2.Reset();
  m_aTexts.Reset();
}

// Member by member, in the order of declaration. The text array copies as a
// CZtArrayString does, so assigning a record to itself empties m_aTexts and
// leaves it invalid.
CZtMetricCalibAddImageResult::CZtMetricCalibAddImageResult(
    const CZtMetricCalibAddImageResult& other) = default;
CZtMetricCalibAddImageResult& CZtMetricCalibAddImageResult::operator=(
    const CZtMetricCalibAddImageResult& other) = default;
CZtMetricCalibAddImageResult::~CZtMetricCalibAddImageResult() = default;

}  // namespace Zt
