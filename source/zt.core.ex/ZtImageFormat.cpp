#include "ZtImageFormat.h"

namespace Zt {

CZtImageFormat::CZtImageFormat(int width, int height, EPixelType::ID pixelType,
                               EDataType::ID dataType)
    : Width(width), Height(height), DataType(dataType), PixelType(pixelType) {}

void CZtImageFormat::Reset() {
  Width = 0;
  Height = 0;
  DataType = static_cast<EDataType::ID>(0);
  PixelType = static_cast<EPixelType::ID>(0);
}

CZtString CZtImageFormat::ToString() const {
  CZtString text;
  text << Width << "x" << Height << ", " << PixelType2String(PixelType) << ", "
       << DataType2String(DataType);
  return text;
}

CZtString CZtImageFormat::PixelType2String(EPixelType::ID type) {
  switch (type) {
    case EPixelType::RGB: return "RGB";
    case EPixelType::RGBA: return "RGBA";
    case EPixelType::Lum: return "Lum";
    case EPixelType::LumA: return "LumA";
    case EPixelType::BayerRG: return "BayerRG";
    case EPixelType::BayerBG: return "BayerBG";
    case EPixelType::BayerGR: return "BayerGR";
    case EPixelType::BayerGB: return "BayerGB";
    case EPixelType::BGR: return "BGR";
    case EPixelType::BGRA: return "BGRA";
  }
  return "None";
}

CZtString CZtImageFormat::DataType2String(EDataType::ID type) {
  switch (type) {
    case EDataType::Byte: return "Byte";
    case EDataType::UByte: return "UByte";
    case EDataType::Short: return "Short";
    case EDataType::UShort: return "UShort";
    case EDataType::Int: return "Int";
    case EDataType::UInt: return "UInt";
    case EDataType::Float: return "Float";
    case EDataType::Double: return "Double";
  }
  return "Void";
}

bool CZtImageFormat::operator==(const CZtImageFormat& other) const {
  return Width == other.Width && Height == other.Height && PixelType == other.PixelType &&
         DataType == other.DataType;
}

bool CZtImageFormat::operator!=(const CZtImageFormat& other) const { return !(*this == other); }

bool CZtImageFormat::IsBayerPixelType() const {
  return PixelType >= EPixelType::BayerRG && PixelType <= EPixelType::BayerGB;
}

int CZtImageFormat::GetPixelTypeComponentCount(EPixelType::ID type) {
  switch (type) {
    case EPixelType::Lum:
    case EPixelType::BayerRG:
    case EPixelType::BayerBG:
    case EPixelType::BayerGR:
    case EPixelType::BayerGB: return 1;
    case EPixelType::LumA: return 2;
    case EPixelType::RGB:
    case EPixelType::BGR: return 3;
    case EPixelType::RGBA:
    case EPixelType::BGRA: return 4;
  }
  return 0;
}

int CZtImageFormat::GetDataTypeSize(EDataType::ID type) {
  switch (type) {
    case EDataType::Byte:
    case EDataType::UByte: return 1;
    case EDataType::Short:
    case EDataType::UShort: return 2;
    case EDataType::Int:
    case EDataType::UInt:
    case EDataType::Float: return 4;
    case EDataType::Double: return 8;
  }
  return 0;
}

int CZtImageFormat::GetComponentCount() const { return GetPixelTypeComponentCount(PixelType); }

int CZtImageFormat::GetBytesPerPixel() const {
  return GetComponentCount() * GetDataTypeSize(DataType);
}

unsigned int CZtImageFormat::GetPixelCount() const {
  // Unsigned on purpose: the product wraps modulo 2^32 and never overflows.
  return static_cast<unsigned int>(Width) * static_cast<unsigned int>(Height);
}

unsigned int CZtImageFormat::GetByteCount() const {
  return static_cast<unsigned int>(GetBytesPerPixel()) * static_cast<unsigned int>(Height) *
         static_cast<unsigned int>(Width);
}

}  // namespace Zt
