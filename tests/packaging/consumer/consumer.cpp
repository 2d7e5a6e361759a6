// A user's program: the umbrella header, exported classes, a failure caught across the boundary.
#include <ZtCoreEx.h>

#include <cstdio>
#include <cstring>

int main() {
  Zt::CZtImage image;
  if (!image.Create(4, 2, Zt::EPixelType::RGBA, Zt::EDataType::UByte)) return 1;
  image.SetZero();
  const Zt::CZtString text = image.GetFormat().ToString();
  std::printf("%s, %u bytes\n", text.ToCString(), image.GetByteCount());
  if (std::strcmp(text.ToCString(), "4x2, RGBA, UByte") != 0 || image.GetByteCount() != 32u)
    return 1;
  try {
    throw Zt::CZtOutOfMemoryException::Create("out of memory", "consumer", "main", __LINE__);
  } catch (Zt::Interop::Runtime30::CIException& e) {
    return e.HasException(Zt::CZtOutOfMemoryException::ClassGuid) ? 0 : 1;
  }
}
