#ifndef ZT_CORE_EX_ZTMETRICCALIBRESULT_H
#define ZT_CORE_EX_ZTMETRICCALIBRESULT_H

// The records in which a metric calibration reports its outcome. The
// calibration that fills them lies outside this library; callers read the
// fields directly. What the fields mean is the calibration's business.

#include "ZtArrayString.h"
#include "ZtArrayUInt.h"
#include "ZtCoreExExport.h"
#include "ZtString.h"

namespace Zt {

// The outcome of a whole calibration: five values, zero by default.
class ZT_CORE_EX_API CZtMetricCalibResult {
public:
  CZtMetricCalibResult();
  CZtMetricCalibResult(const CZtMetricCalibResult& other);
  CZtMetricCalibResult& operator=(const CZtMetricCalibResult& other);
  virtual ~CZtMetricCalibResult();

  double m_Value1;
  double m_Value2;
  double m_Value3;
  double m_Value4;
  double m_Value5;
};

// The outcome of adding one image to a calibration. By default it reports
// that nothing was added.
//
// Copies are deep. Assigning a record to itself leaves m_aTexts invalid, as
// assigning a CZtArrayString to itself does; the other members keep their
// values. What the members raise while copying passes through unchanged.
class ZT_CORE_EX_API CZtMetricCalibAddImageResult {
public:
  CZtMetricCalibAddImageResult();
  CZtMetricCalibAddImageResult(const CZtMetricCalibAddImageResult& other);
  CZtMetricCalibAddImageResult& operator=(const CZtMetricCalibAddImageResult& other);
  virtual ~CZtMetricCalibAddImageResult();

  int m_iValue1;  // -1 by default
  int m_iValue2;
  int m_iValue3;
  bool m_bValue4;
  CZtString m_sMessage;  // "No object added to metric calibration" by default
  CZtArrayUInt m_aValues1;
  CZtArrayUInt m_aValues2;
  CZtArrayString m_aTexts;  // empty and valid by default
};

}  // namespace Zt

#endif
