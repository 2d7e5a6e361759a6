#ifndef ZT_INTEROP_IMEMORY_H
#define ZT_INTEROP_IMEMORY_H

#include "ZtInteropExport.h"

namespace Zt {
namespace Interop {
namespace Runtime30 {

// Read access to a one-dimensional block of typed memory. Lengths count
// elements; GetElementSize gives the width of one element in bytes.
// The order of the virtual operations is part of the binary interface.
class ZT_INTEROP_API IMemoryAccess {
public:
  virtual unsigned long long GetElementSize() const = 0;
  virtual unsigned long long Length() const = 0;
  virtual const void* GetPointer() const = 0;
  virtual bool IsValid() const = 0;
  virtual ~IMemoryAccess();

protected:
  IMemoryAccess() = default;
  IMemoryAccess(const IMemoryAccess&) = default;
  IMemoryAccess& operator=(const IMemoryAccess&) = default;
};

// A one-dimensional block that can change. Outside code never destroys a
// block through this interface.
class ZT_INTEROP_API IMemory : public IMemoryAccess {
public:
  using IMemoryAccess::GetPointer;

  virtual void New(unsigned long long length) = 0;
  virtual void Resize(unsigned long long length) = 0;
  virtual void Delete() = 0;
  virtual void Reset() = 0;
  virtual void CopyFrom(const IMemoryAccess* source) = 0;
  virtual void* GetPointer() = 0;

protected:
  IMemory() = default;
  IMemory(const IMemory&) = default;
  IMemory& operator=(const IMemory&) = default;
  ~IMemory() override;
};

// Read access to a two-dimensional block, stored row by row.
class ZT_INTEROP_API IMemory2DAccess {
public:
  virtual unsigned long long GetElementSize() const = 0;
  virtual void GetSize(unsigned long long& rows, unsigned long long& columns) const = 0;
  virtual const void* GetPointer() const = 0;
  virtual bool IsValid() const = 0;
  virtual ~IMemory2DAccess();

protected:
  IMemory2DAccess() = default;
  IMemory2DAccess(const IMemory2DAccess&) = default;
  IMemory2DAccess& operator=(const IMemory2DAccess&) = default;
};

// A two-dimensional block that can change. Outside code never destroys a
// block through this interface.
class ZT_INTEROP_API IMemory2D : public IMemory2DAccess {
public:
  using IMemory2DAccess::GetPointer;

  virtual void New(unsigned long long rows, unsigned long long columns) = 0;
  virtual void Resize(unsigned long long rows, unsigned long long columns) = 0;
  virtual void Delete() = 0;
  virtual void Reset() = 0;
  virtual void CopyFrom(const IMemory2DAccess* source) = 0;
  virtual void* GetPointer() = 0;

protected:
  IMemory2D() = default;
  IMemory2D(const IMemory2D&) = default;
  IMemory2D& operator=(const IMemory2D&) = default;
  ~IMemory2D() override;
};

}  // namespace Runtime30
}  // namespace Interop
}  // namespace Zt

#endif
