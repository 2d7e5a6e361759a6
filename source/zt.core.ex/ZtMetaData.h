#ifndef ZT_CORE_EX_ZTMETADATA_H
#define ZT_CORE_EX_ZTMETADATA_H

#include <string>

#include "ZtArrayDouble.h"
#include "ZtArrayString.h"
#include "ZtArrayUInt.h"
#include "ZtCoreExExport.h"
#include "ZtString.h"

namespace Zt {

template <class TKey, class TText>
class CZtParMap;

// A store of typed, named values: unsigned int, double, CZtString and the
// arrays CZtArrayUInt, CZtArrayDouble and CZtArrayString.
//
// Names are compared byte by byte as unsigned values, case-sensitively, and
// GetElementNameType walks them in that order. An element keeps the type it
// was added with: reading or writing it as another type raises, and nothing
// is converted. Elements added as arrays are recorded with the type "uint",
// and read and written back as single unsigned int values; their own array
// forms refuse them.
//
// Failures are CZtExceptions. Apart from AddElement's refusal of a duplicate
// name, each names the operation ("Error getting element 'x'") and holds the
// cause as inner exception; a write holds one more link of the store's own.
// The store and the caller's out arguments are left as they were. Allocation
// failures of the standard containers pass through as they are.
//
// Copies share no element. A store belongs to one thread at a time, also for
// reading, since a read can create a value record.
class ZT_CORE_EX_API CZtMetaData {
public:
  CZtMetaData();
  CZtMetaData(const CZtMetaData& other);
  ~CZtMetaData();
  // Replaces every element with a copy of other's. The last error texts of
  // both sides stay as they were.
  CZtMetaData& operator=(const CZtMetaData& other);

  // Removes every element.
  void Clear();
  // Returns the last error text and empties it. Failures are raised, never
  // recorded here, so the text is always empty.
  CZtString GetLastError();

  unsigned int GetElementCount();
  // Name and type ("uint", "double", "string" or "unknown") of the element at
  // `index` in name order. Costs time in proportion to `index`.
  void GetElementNameType(unsigned int index, CZtString& name, CZtString& type);
  bool HasElement(const CZtString& name);

  // Adds an element; raises "Element 'x' already exists", by itself, for a
  // name in use, whatever its type.
  void AddElement(const CZtString& name, const CZtString& description, unsigned int value);
  void AddElement(const CZtString& name, const CZtString& description, double value);
  void AddElement(const CZtString& name, const CZtString& description, const CZtString& value);
  void AddElement(const CZtString& name, const CZtString& description, const CZtArrayUInt& value);
  void AddElement(const CZtString& name, const CZtString& description, const CZtArrayDouble& value);
  void AddElement(const CZtString& name, const CZtString& description, const CZtArrayString& value);

  // Replaces an element's value; the element must exist with this type.
  void SetElement(const CZtString& name, unsigned int value);
  void SetElement(const CZtString& name, double value);
  void SetElement(const CZtString& name, const CZtString& value);
  void SetElement(const CZtString& name, const CZtArrayUInt& value);
  void SetElement(const CZtString& name, const CZtArrayDouble& value);
  void SetElement(const CZtString& name, const CZtArrayString& value);

  // Reads an element's value; `value` changes only when the read succeeds.
  void GetElement(const CZtString& name, unsigned int& value);
  void GetElement(const CZtString& name, double& value);
  void GetElement(const CZtString& name, CZtString& value);
  void GetElement(const CZtString& name, CZtArrayUInt& value);
  void GetElement(const CZtString& name, CZtArrayDouble& value);
  void GetElement(const CZtString& name, CZtArrayString& value);

private:
  void Init();
  void Finalize();

  CZtParMap<std::string, std::string>* m_pData;  // owned
  CZtString m_LastError;
};

}  // namespace Zt

#endif
