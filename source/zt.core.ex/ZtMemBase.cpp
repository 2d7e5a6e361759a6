#include "ZtMemBase.h"

#include <cstdint>
#include <cstdlib>

#include "ZtRaise.h"

namespace Zt {

namespace {
constexpr const char* ZtSourceFile = "ZtMemBase";
}  // namespace

CZtMemBase::CZtMemBase(unsigned long long elementSize, unsigned long long length)
    : m_bUnreserved(true),
      m_ElementSize(elementSize),
      m_Length(0),
      m_Capacity(0),
      m_BlockSize(4),
      m_AllocCount(0),
      m_pData(nullptr),
      m_pLast(nullptr) {
  try {
    // Runs even for a length of 0, so a new block always owns one block.
    Resize(length);
  } catch (CIException& e) {
    ZT_WRAP("Zt::CZtMemBase::CZtMemBase", "Error creating memory object", e);
  }
}

CZtMemBase::~CZtMemBase() {
  if (m_pData != nullptr) {
    std::free(m_pData);
    m_pData = nullptr;
    m_Length = 0;
    m_Capacity = 0;
  }
}

unsigned long long CZtMemBase::RoundToBlocks(unsigned long long count) const {
  if (m_BlockSize <= 1) {
    return count;
  }
  const unsigned long long have = m_Capacity / m_BlockSize;
  const unsigned long long need = count / m_BlockSize + (count % m_BlockSize != 0 ? 1 : 0);
  if (need == 0) {
    return m_BlockSize;
  }
  if (need >= have) {
    return need * m_BlockSize;
  }
  // A shrink by a block and a half or less keeps the capacity, so that a
  // length moving around a block boundary does not reallocate each time.
  // The difference wraps when count exceeds the length, and then shrinks.
  const unsigned long long drop = m_Length - count;
  if (drop <= m_BlockSize + m_BlockSize / 2) {
    return have * m_BlockSize;
  }
  return need * m_BlockSize;
}

void CZtMemBase::Alloc(unsigned long long count) {
  if (count == 0) {
    count = 1;
  }
  const std::size_t bytes = count * m_ElementSize;
  if (m_pData != nullptr) {
    void* moved = std::realloc(m_pData, bytes);
    if (moved == nullptr) {
      ZT_RAISE("Zt::CZtMemBase::Alloc", "realloc failed");
    }
    m_pData = static_cast<unsigned char*>(moved);
  } else {
    m_pData = static_cast<unsigned char*>(std::malloc(bytes));
    if (m_pData == nullptr) {
      ZT_RAISE("Zt::CZtMemBase::Alloc", "malloc failed");
    }
  }
  ++m_AllocCount;
}

void CZtMemBase::Reserve(unsigned long long count) {
  try {
    if (count < m_Length) {
      count = m_Length;
    }
    const unsigned long long target = RoundToBlocks(count);
    // The first reservation always reallocates, also to shrink; after it,
    // a reservation can only grow the block.
    if (m_bUnreserved || target > m_Capacity) {
      Alloc(target);
      m_Capacity = target;
      if (m_pLast == nullptr) {
        m_pLast = m_pData;
      }
      m_bUnreserved = false;
    }
  } catch (CIException& e) {
    ZT_WRAP("Zt::CZtMemBase::Reserve", "Error reserving memory ", e);
  }
}

void CZtMemBase::Resize(unsigned long long count) {
  if (count == m_Length && m_Length != 0) {
    return;
  }
  try {
    if (m_bUnreserved) {
      const unsigned long long target = RoundToBlocks(count);
      if (target != m_Capacity) {
        Alloc(target);
        m_Capacity = target;
      }
    } else if (count > m_Capacity) {
      const unsigned long long target = RoundToBlocks(count);
      Alloc(target);
      m_Capacity = target;
    }
    m_Length = count;
    // For a length of 0 this is one element below the block. It is computed
    // on the address as an integer, since it may point outside the block;
    // nothing dereferences it.
    m_pLast = reinterpret_cast<unsigned char*>(reinterpret_cast<std::uintptr_t>(m_pData) +
                                               (count - 1) * m_ElementSize);
  } catch (CIException& e) {
    ZT_WRAP("Zt::CZtMemBase::Resize", "Error setting memory size: ", e);
  }
}

}  // namespace Zt
