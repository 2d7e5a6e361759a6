#ifndef ZT_CORE_EX_ZTMEMBASE_H
#define ZT_CORE_EX_ZTMEMBASE_H

// Internal: raw growable memory blocks. Never included by a public header.

namespace Zt {

template <class T>
class CZtMemObj;

// A growable block of equally sized elements from malloc/realloc, released
// with free. The capacity moves in whole blocks of 4 elements, with no
// doubling; the length can move without touching the capacity. Memory is
// never initialised.
//
// A block starts unreserved: its capacity follows the length both ways.
// The first Reserve that allocates makes it reserved for good; from then on
// the capacity only grows and is a high-water mark of the length.
class CZtMemBase {
public:
  // A block of `length` elements of `elementSize` bytes; even a length of 0
  // owns memory for one block.
  CZtMemBase(unsigned long long elementSize, unsigned long long length);
  CZtMemBase(const CZtMemBase&) = delete;
  CZtMemBase& operator=(const CZtMemBase&) = delete;
  virtual ~CZtMemBase();

  // The one place that touches the heap: room for `count` elements (at least
  // one). A failed realloc leaves the old memory in place; a failed malloc
  // leaves the block without memory. Leaves m_Capacity to the caller.
  void Alloc(unsigned long long count);
  // Room for at least `count` elements, and never below the length.
  void Reserve(unsigned long long count);
  // Sets the length, moving the capacity by the rules of the block's state.
  void Resize(unsigned long long count);
  // The capacity that a request for `count` elements gets.
  unsigned long long RoundToBlocks(unsigned long long count) const;

  unsigned long long ElementSize() const { return m_ElementSize; }
  unsigned long long Length() const { return m_Length; }
  unsigned long long Capacity() const { return m_Capacity; }
  unsigned long long BlockSize() const { return m_BlockSize; }
  unsigned long long AllocCount() const { return m_AllocCount; }
  bool IsUnreserved() const { return m_bUnreserved; }
  unsigned char* Data() const { return m_pData; }
  // The last element in use; one element below the block for a length of 0.
  unsigned char* Last() const { return m_pLast; }

private:
  // A block of objects keeps its own block reserved from the start.
  template <class T>
  friend class CZtMemObj;

  bool m_bUnreserved;
  unsigned long long m_ElementSize;
  unsigned long long m_Length;
  unsigned long long m_Capacity;
  unsigned long long m_BlockSize;
  unsigned long long m_AllocCount;
  unsigned char* m_pData;
  unsigned char* m_pLast;
};

// A memory block typed by its element.
template <class T>
class CZtMem : public CZtMemBase {
public:
  explicit CZtMem(unsigned long long length) : CZtMemBase(sizeof(T), length) {}
  ~CZtMem() override = default;

  T* Elements() const { return static_cast<T*>(static_cast<void*>(Data())); }
};

}  // namespace Zt

#endif
