#include "ZtImageMoniker.h"

#include "ZtRaise.h"

namespace Zt {
namespace {

constexpr const char* ZtSourceFile = "ZtImageMoniker";
constexpr const char* CreateFunction = "Zt::CZtImageMoniker::Create";
constexpr const char* CreateFailed = "Error creating CZtImageMoniker";

}  // namespace

CZtImageMoniker::CZtImageMoniker() : IImage(), m_pData(nullptr) {}

CZtImageMoniker::CZtImageMoniker(const CZtImageMoniker& other)
    : IImage(other), m_Format(other.m_Format), m_pData(other.m_pData) {}

CZtImageMoniker::~CZtImageMoniker() { CZtImageMoniker::Destroy(); }

CZtImageMoniker& CZtImageMoniker::operator=(const CZtImageMoniker& other) {
  m_Format = other.m_Format;
  m_pData = other.m_pData;
  return *this;
}

bool CZtImageMoniker::Create(const IImage* source) {
  if (source == nullptr || !source->IsValid()) {
    return false;
  }
  // Everything is read before the five-argument Create destroys the binding,
  // so a view created from itself stays as it was.
  int width = 0;
  int height = 0;
  EPixelType::ID pixelType{};
  EDataType::ID dataType{};
  source->GetSize(width, height);
  source->GetType(pixelType, dataType);
  const void* data = source->GetDataPtr();
  return Create(width, height, pixelType, dataType, data);
}

bool CZtImageMoniker::Create(int width, int height, EPixelType::ID pixelType,
                             EDataType::ID dataType, const void* data) {
  Destroy();
  if (width < 1 || height < 1) {
    return false;
  }
  m_Format = CZtImageFormat(width, height, pixelType, dataType);
  if (m_Format.GetBytesPerPixel() == 0) {
    m_Format.Reset();
    return false;
  }
  m_pData = data;
  return true;
}

bool CZtImageMoniker::Create(int width, int height, EPixelType::ID pixelType,
                             EDataType::ID dataType) {
  return Create(width, height, pixelType, dataType, nullptr);
}

bool CZtImageMoniker::Destroy() {
  m_pData = nullptr;
  m_Format.Reset();
  return true;
}

bool CZtImageMoniker::IsValid() const { return m_pData != nullptr; }

int CZtImageMoniker::GetBytesPerPixel() const { return m_Format.GetBytesPerPixel(); }

unsigned int CZtImageMoniker::GetPixelCount() const { return m_Format.GetPixelCount(); }

unsigned int CZtImageMoniker::GetByteCount() const { return m_Format.GetByteCount(); }

void CZtImageMoniker::GetSize(int& width, int& height) const {
  width = m_Format.Width;
  height = m_Format.Height;
}

void CZtImageMoniker::GetType(EPixelType::ID& pixelType, EDataType::ID& dataType) const {
  pixelType = m_Format.PixelType;
  dataType = m_Format.DataType;
}

const void* CZtImageMoniker::GetDataPtr() const { return m_pData; }

// Constness of the viewed memory is not enforced: this is how a view of
// const memory becomes a conversion target.
void* CZtImageMoniker::GetDataPtr() { return const_cast<void*>(m_pData); }

void CZtImageMoniker::GetType(int& pixelType, int& dataType) const {
  pixelType = m_Format.PixelType;
  dataType = m_Format.DataType;
}

void CZtImageMoniker::Create(const CZtImage& image) {
  if (!Create(static_cast<const IImage*>(&image))) {
    ZT_RAISE(CreateFunction, CreateFailed);
  }
}

void CZtImageMoniker::Create(int width, int height, int pixelType, int dataType, const void* data) {
  if (!Create(width, height, static_cast<EPixelType::ID>(pixelType),
              static_cast<EDataType::ID>(dataType), data)) {
    ZT_RAISE(CreateFunction, CreateFailed);
  }
}

void CZtImageMoniker::Create(const CZtImageFormat& format, const void* data) {
  if (!Create(format.Width, format.Height, format.PixelType, format.DataType, data)) {
    ZT_RAISE(CreateFunction, CreateFailed);
  }
}

void CZtImageMoniker::Set(const void* data) { m_pData = data; }

const CZtImageFormat& CZtImageMoniker::GetFormat() const { return m_Format; }

bool CZtImageMoniker::IsOfType(EPixelType::ID pixelType, EDataType::ID dataType) const {
  return m_Format.PixelType == pixelType && m_Format.DataType == dataType;
}

}  // namespace Zt
