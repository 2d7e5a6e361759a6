#ifndef ZT_TESTS_TOOLS_ZTTOOLTESTSUPPORT_H
#define ZT_TESTS_TOOLS_ZTTOOLTESTSUPPORT_H

// A scratch directory per test, files as byte strings, images as text.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <set>
#include <sstream>
#include <string>

#include "ZtCoreEx.h"

namespace ZtTest {

using namespace std::string_literals;

class CScratchDir {
public:
  CScratchDir() : m_Path(testing::TempDir() + "zt-tools-XXXXXX") {
    if (mkdtemp(m_Path.data()) == nullptr) ADD_FAILURE() << "mkdtemp failed";
  }
  ~CScratchDir() {
    std::error_code ignored;  // what cannot be removed stays, as with rm -rf
    std::filesystem::remove_all(m_Path, ignored);
  }
  std::string operator/(const std::string& name) const { return m_Path + "/" + name; }

  // Names in the directory, hidden ones (temporary files) included, sorted, joined by blanks.
  std::string Entries() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_Path))
      names.insert(entry.path().filename());
    std::string joined;
    for (const auto& name : names) joined += " " + name;
    return joined.erase(0, 1);
  }

private:
  std::string m_Path;
};

inline void WriteFile(const std::string& path, const std::string& bytes) {
  EXPECT_TRUE(std::ofstream(path, std::ios::binary) << bytes) << path;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The message of the E that `action` throws; anything else thrown fails the test.
template <class E, class F>
std::string MessageOf(F action) {
  try {
    action();
  } catch (const E& e) {
    return e.what();
  }
  return "(nothing thrown)";
}

inline std::string Bytes(const Zt::CZtImage& image) {
  return std::string(static_cast<const char*>(image.GetDataPtr()), image.GetByteCount());
}

// The samples of a UByte, UShort or Float image as text ("0 128 255"), exact for every float.
inline std::string Samples(const Zt::CZtImage& image) {
  std::ostringstream text;
  const auto put = [&](const auto* samples) {
    for (std::size_t i = 0; i < image.GetByteCount() / sizeof *samples; ++i)
      text << (i == 0 ? "" : " ") << std::setprecision(9) << +samples[i];
  };
  switch (image.GetFormat().DataType) {
    case Zt::EDataType::UByte: put(static_cast<const unsigned char*>(image.GetDataPtr())); break;
    case Zt::EDataType::UShort: put(static_cast<const unsigned short*>(image.GetDataPtr())); break;
    default: put(static_cast<const float*>(image.GetDataPtr())); break;
  }
  return text.str();
}

// An image of the format whose bytes follow a fixed pseudo-random sequence: a misplaced byte shows.
inline Zt::CZtImage Scrambled(const Zt::CZtImageFormat& format) {
  Zt::CZtImage image(format);
  auto* bytes = static_cast<unsigned char*>(image.GetDataPtr());
  for (unsigned i = 0, seed = 12345; i < image.GetByteCount(); ++i) {
    seed = seed * 1103515245u + 12345u;
    bytes[i] = static_cast<unsigned char>(seed >> 16);
  }
  return image;
}

}  // namespace ZtTest

#endif
