#ifndef ZT_TESTS_TOOLS_ZTTOOLTESTSUPPORT_H
#define ZT_TESTS_TOOLS_ZTTOOLTESTSUPPORT_H

// A scratch directory per test and small file helpers.

#include <dirent.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "ZtCoreEx.h"

namespace ZtTest {

using CBytes = std::vector<unsigned char>;

// A fresh directory, removed with everything in it at the end of the test.
class CScratchDir {
public:
  CScratchDir() {
    std::string pattern = testing::TempDir() + "zt-tools-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr) ADD_FAILURE() << "mkdtemp failed";
    m_Path = buffer.data();
  }
  ~CScratchDir() { std::system(("rm -rf '" + m_Path + "'").c_str()); }
  CScratchDir(const CScratchDir&) = delete;
  CScratchDir& operator=(const CScratchDir&) = delete;

  std::string operator/(const std::string& name) const { return m_Path + "/" + name; }

  // Names in the directory, hidden ones (temporary files) included.
  std::vector<std::string> Entries() const {
    std::vector<std::string> names;
    if (DIR* dir = opendir(m_Path.c_str())) {
      while (dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
      }
      closedir(dir);
    }
    return names;
  }

private:
  std::string m_Path;
};

inline void WriteBytes(const std::string& path, const CBytes& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  ASSERT_NE(file, nullptr) << path;
  if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

inline CBytes ReadBytes(const std::string& path) {
  CBytes bytes;
  if (std::FILE* file = std::fopen(path.c_str(), "rb")) {
    int c = 0;
    while ((c = std::fgetc(file)) != EOF) bytes.push_back(static_cast<unsigned char>(c));
    std::fclose(file);
  }
  return bytes;
}

// Text followed by raw bytes, for hand-made files.
inline CBytes Concat(const std::string& text, const CBytes& tail = {}) {
  CBytes bytes(text.begin(), text.end());
  bytes.insert(bytes.end(), tail.begin(), tail.end());
  return bytes;
}

// An image of the format whose bytes follow a fixed pseudo-random sequence,
// so that any misplaced byte shows.
inline Zt::CZtImage Scrambled(int width, int height, Zt::EPixelType::ID pixelType,
                              Zt::EDataType::ID dataType, unsigned seed = 12345) {
  Zt::CZtImage image;
  EXPECT_TRUE(image.Create(width, height, pixelType, dataType));
  auto* bytes = static_cast<unsigned char*>(image.GetDataPtr());
  for (unsigned i = 0; i < image.GetByteCount(); ++i) {
    seed = seed * 1103515245u + 12345u;
    bytes[i] = static_cast<unsigned char>(seed >> 16);
  }
  return image;
}

}  // namespace ZtTest

#endif
