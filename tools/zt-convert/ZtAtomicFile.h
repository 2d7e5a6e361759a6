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
//
// Replacing keeps what belongs to the name rather than to the contents: a
// symbolic link stays a link and the file it leads to is replaced; a replaced
// file keeps its permissions, and its owner and group where the process may
// set them. Another hard link to the old file keeps the old contents.
//
// While the temporary file exists, SIGINT, SIGTERM and SIGHUP remove it
// before the process dies of the signal as it would have without it. One
// file at a time is covered this way: a second one open at once is not.
class CAtomicFile {
public:
  // Throws CIoError when the temporary file cannot be created; the message
  // names the directory when that does not allow a new file.
  explicit CAtomicFile(const std::string& path);
  ~CAtomicFile();
  CAtomicFile(const CAtomicFile&) = delete;
  CAtomicFile& operator=(const CAtomicFile&) = delete;

  std::FILE* File() const { return m_pFile; }
  const std::string& TemporaryPath() const { return m_TemporaryPath; }
  // The file that will be replaced: the path, or where its links lead.
  const std::string& TargetPath() const { return m_Target; }

  // Flushes, closes and renames; throws CIoError, after removing the
  // temporary file, when any of that fails.
  void Commit();

private:
  void Discard();

  std::string m_Path;
  std::string m_Target;
  std::string m_TemporaryPath;
  std::FILE* m_pFile = nullptr;
  bool m_bGuarded = false;
};

}  // namespace ZtTools

#endif
