#include "ZtImage.h"

#include <cstdlib>
#include <cstring>

namespace Zt {

CZtImage::CZtImage() : IImage(), m_pData(nullptr) {}

CZtImage::CZtImage(const CZtImage& other) : IImage(), m_pData(nullptr) {
  if (other.IsValid()) {
    Create(other);
  }
}

CZtImage::CZtImage(const CZtImageFormat& format) : IImage(), m_pData(nullptr) {
  CZtImage::Create(format.Width, format.Height, format.PixelType, format.DataType);
}

CZtImage::~CZtImage() { CZtImage::Destroy(); }

CZtImage& CZtImage::operator=(const CZtImage& other) {
  // No self-assignment test: Create destroys before it reads the source.
  if (other.IsValid()) {
    Create(other);
  }
  return *this;
}

bool CZtImage::Create(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType) {
  Destroy();
  if (width < 1 || height < 1) {
    return false;
  }
  m_Format = CZtImageFormat(width, height, pixelType, dataType);
  if (m_Format.GetBytesPerPixel() == 0) {
    m_Format.Reset();
    return false;
  }
  m_pData = std::malloc(m_Format.GetByteCount());
  if (m_pData == nullptr) {
    m_Format.Reset();
    return false;
  }
  return true;
}

bool CZtImage::Create(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType,
                      const void* data) {
  if (!Create(width, height, pixelType, dataType)) {
    return false;
  }
  std::memcpy(m_pData, data, m_Format.GetByteCount());
  return true;
}

bool CZtImage::Create(const IImage* source) {
  if (source == nullptr || !source->IsValid()) {
    return false;
  }
  Destroy();
  int width = 0;
  int height = 0;
  EPixelType::ID pixelType{};
  EDataType::ID dataType{};
  source->GetSize(width, height);
  source->GetType(pixelType, dataType);
  const void* data = source->GetDataPtr();
  return Create(width, height, pixelType, dataType, data);
}

bool CZtImage::Create(const CZtImage& other) {
  if (!other.IsValid()) {
    return false;
  }
  Destroy();
  // Read after Destroy on purpose: Create(*this) finds a zero format here.
  const CZtImageFormat format = other.GetFormat();
  if (!Create(format.Width, format.Height, format.PixelType, format.DataType)) {
    return false;
  }
  std::memcpy(m_pData, other.GetDataPtr(), m_Format.GetByteCount());
  return true;
}

bool CZtImage::Create(const CZtImageFormat& format) {
  return Create(format.Width, format.Height, format.PixelType, format.DataType);
}

bool CZtImage::Destroy() {
  if (m_pData != nullptr) {
    std::free(m_pData);
    m_pData = nullptr;
    m_Format.Reset();
  }
  return true;
}

bool CZtImage::IsValid() const { return m_pData != nullptr; }

int CZtImage::GetBytesPerPixel() const { return m_Format.GetBytesPerPixel(); }

unsigned int CZtImage::GetPixelCount() const { return m_Format.GetPixelCount(); }

unsigned int CZtImage::GetByteCount() const { return m_Format.GetByteCount(); }

void CZtImage::GetSize(int& width, int& height) const {
  width = m_Format.Width;
  height = m_Format.Height;
}

void CZtImage::GetType(EPixelType::ID& pixelType, EDataType::ID& dataType) const {
  pixelType = m_Format.PixelType;
  dataType = m_Format.DataType;
}

const void* CZtImage::GetDataPtr() const { return m_pData; }

void* CZtImage::GetDataPtr() { return m_pData; }

const CZtImageFormat& CZtImage::GetFormat() const { return m_Format; }

bool CZtImage::Set(const CZtImage& other) {
  if (!IsValid() || !other.IsValid() || m_Format != other.GetFormat()) {
    return false;
  }
  // memmove, not memcpy: Set(*this) copies the block onto itself.
  std::memmove(m_pData, other.GetDataPtr(), m_Format.GetByteCount());
  return true;
}

bool CZtImage::Set(const void* data) {
  if (IsValid()) {
    std::memcpy(m_pData, data, m_Format.GetByteCount());
  }
  return false;  // deliberately false on every path
}

bool CZtImage::IsOfType(EPixelType::ID pixelType, EDataType::ID dataType) const {
  return m_Format.PixelType == pixelType && m_Format.DataType == dataType;
}

void CZtImage::SetZero() {
  // No validity test: an Empty image with a leftover format is the caller's
  // fault. A zero byte count has nothing to clear (and memset on a null
  // pointer would be undefined even for 0 bytes).
  const unsigned int count = m_Format.GetByteCount();
  if (count != 0) {
    std::memset(m_pData, 0, count);
  }
}

bool CZtImage::Normalize() {
  const unsigned int count = GetPixelCount();
  if (m_Format.PixelType != EPixelType::Lum || m_Format.DataType != EDataType::Float) {
    return false;
  }
  float* samples = static_cast<float*>(m_pData);
  // Fixed starting extremes, not seeded from the first sample: an image
  // lying wholly above 1e9 keeps 1e9 as its minimum.
  float minimum = 1e9f;
  float maximum = -1e9f;
  for (unsigned int i = 0; i < count; ++i) {
    const float v = samples[i];
    if (minimum > v) {
      minimum = v;
    }
    if (v > maximum) {
      maximum = v;
    }
  }
  const float range = maximum - minimum;
  // Also leaves the pixels alone for a NaN or negative range.
  if (!(static_cast<double>(range) > 1e-9)) {
    return true;
  }
  for (unsigned int i = 0; i < count; ++i) {
    samples[i] = (samples[i] - minimum) / range;
  }
  return true;
}

}  // namespace Zt
