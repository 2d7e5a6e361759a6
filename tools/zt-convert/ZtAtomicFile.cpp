#include "ZtAtomicFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ZtImageIo.h"

namespace ZtTools {
namespace {

std::string Failure(const char* what, const std::string& path) {
  return std::string(what) + " '" + path + "': " + std::strerror(errno);
}

// The permissions an ordinary new file gets: 0666 less the umask. mkstemp
// itself creates the file readable by its owner only.
mode_t NewFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return static_cast<mode_t>(0666 & ~mask);
}

}  // namespace

CAtomicFile::CAtomicFile(const std::string& path) : m_Path(path) {
  const std::size_t slash = path.find_last_of('/');
  const std::string directory = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  if (name.empty()) throw CIoError("'" + path + "' names no file");

  std::string pattern = directory + "." + name + ".XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  const int descriptor = mkstemp(buffer.data());
  if (descriptor < 0) throw CIoError(Failure("cannot write", path));
  m_TemporaryPath = buffer.data();
  if (fchmod(descriptor, NewFileMode()) != 0 || (m_pFile = fdopen(descriptor, "wb")) == nullptr) {
    const std::string message = Failure("cannot write", path);
    close(descriptor);
    std::remove(m_TemporaryPath.c_str());
    throw CIoError(message);
  }
}

CAtomicFile::~CAtomicFile() { Discard(); }

void CAtomicFile::Discard() {
  if (m_pFile != nullptr) {
    std::fclose(m_pFile);
    m_pFile = nullptr;
  }
  if (!m_TemporaryPath.empty()) {
    std::remove(m_TemporaryPath.c_str());
    m_TemporaryPath.clear();
  }
}

void CAtomicFile::Commit() {
  std::FILE* file = m_pFile;
  m_pFile = nullptr;
  const bool flushed = std::fflush(file) == 0 && std::ferror(file) == 0;
  const int flushError = errno;
  const bool closed = std::fclose(file) == 0;
  if (!flushed || !closed) {
    if (!flushed) errno = flushError;
    const std::string message = Failure("cannot write", m_Path);
    Discard();
    throw CIoError(message);
  }
  if (std::rename(m_TemporaryPath.c_str(), m_Path.c_str()) != 0) {
    const std::string message = Failure("cannot replace", m_Path);
    Discard();
    throw CIoError(message);
  }
  m_TemporaryPath.clear();
}

}  // namespace ZtTools
