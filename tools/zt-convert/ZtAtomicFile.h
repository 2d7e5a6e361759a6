#ifndef ZT_TOOLS_ZTATOMICFILE_H
#define ZT_TOOLS_ZTATOMICFILE_H

#include <cstdio>
#include <string>

namespace ZtTools {

// A file that appears under its name complete or not at all. It is written
// under a hidden temporary name in the same directory (so the final rename
// stays on one file system and is atomic) and renamed into place by Commit.
// Destroyed without Commit, for instance while an exception passes, it
// removes the temporary file and leaves whatever stood at the path before.
class CAtomicFile {
public:
  // Throws CIoError when the temporary file cannot be created.
  explicit CAtomicFile(const std::string& path);
  ~CAtomicFile();
  CAtomicFile(const CAtomicFile&) = delete;
  CAtomicFile& operator=(const CAtomicFile&) = delete;

  std::FILE* File() const { return m_pFile; }
  const std::string& TemporaryPath() const { return m_TemporaryPath; }

  // Flushes, closes and renames; throws CIoError, after removing the
  // temporary file, when any of that fails.
  void Commit();

private:
  void Discard();

  std::string m_Path;
  std::string m_TemporaryPath;
  std::FILE* m_pFile = nullptr;
};

}  // namespace ZtTools

#endif
