#include "ZtAtomicFile.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
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

// --- Removal on a fatal signal -------------------------------------------------
// The handler may only use what is safe in a signal handler: the path is
// copied into static storage before the file is created, and the handler
// unlinks it, restores the default action and raises the signal again, so
// that the parent sees the death by that signal.

constexpr int kGuardedSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr std::size_t kSignalCount = sizeof kGuardedSignals / sizeof kGuardedSignals[0];

char g_PendingPath[PATH_MAX + 1];
volatile std::sig_atomic_t g_bPending = 0;
struct sigaction g_PreviousActions[kSignalCount];
bool g_bHandlersInstalled[kSignalCount];

extern "C" void RemovePendingAndDie(int signalNumber) {
  if (g_bPending != 0) unlink(g_PendingPath);
  struct sigaction defaultAction {};
  defaultAction.sa_handler = SIG_DFL;
  sigemptyset(&defaultAction.sa_mask);
  sigaction(signalNumber, &defaultAction, nullptr);
  // Blocked while this handler runs; delivered, with its default action, on return.
  raise(signalNumber);
}

sigset_t GuardedSet() {
  sigset_t set;
  sigemptyset(&set);
  for (int signalNumber : kGuardedSignals) sigaddset(&set, signalNumber);
  return set;
}

// Signals the process ignores (as under nohup) stay ignored.
void InstallHandlers() {
  for (std::size_t i = 0; i < kSignalCount; ++i) {
    g_bHandlersInstalled[i] = false;
    if (sigaction(kGuardedSignals[i], nullptr, &g_PreviousActions[i]) != 0 ||
        g_PreviousActions[i].sa_handler == SIG_IGN) {
      continue;
    }
    struct sigaction action {};
    action.sa_handler = RemovePendingAndDie;
    action.sa_mask = GuardedSet();
    g_bHandlersInstalled[i] = sigaction(kGuardedSignals[i], &action, nullptr) == 0;
  }
}

void RestoreHandlers() {
  for (std::size_t i = 0; i < kSignalCount; ++i) {
    if (g_bHandlersInstalled[i]) sigaction(kGuardedSignals[i], &g_PreviousActions[i], nullptr);
    g_bHandlersInstalled[i] = false;
  }
}

// Blocks the guarded signals for its lifetime, so that the temporary file and
// its record in g_PendingPath come into being together.
class CSignalsBlocked {
public:
  CSignalsBlocked() {
    const sigset_t set = GuardedSet();
    sigprocmask(SIG_BLOCK, &set, &m_Previous);
  }
  ~CSignalsBlocked() { sigprocmask(SIG_SETMASK, &m_Previous, nullptr); }
  CSignalsBlocked(const CSignalsBlocked&) = delete;
  CSignalsBlocked& operator=(const CSignalsBlocked&) = delete;

private:
  sigset_t m_Previous;
};

// --- Names -------------------------------------------------------------------

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

// The file a path leads to through any symbolic links; a link to nothing
// leads to the name it holds, which the new file then takes.
std::string FollowLinks(const std::string& path) {
  std::string current = path;
  for (int depth = 0; depth < 40; ++depth) {
    struct stat status {};
    if (lstat(current.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return current;
    std::vector<char> buffer(PATH_MAX + 1);
    const ssize_t length = readlink(current.c_str(), buffer.data(), buffer.size());
    if (length < 0 || static_cast<std::size_t>(length) >= buffer.size()) {
      throw CIoError(Failure("cannot follow the link", current));
    }
    const std::string target(buffer.data(), static_cast<std::size_t>(length));
    current = target[0] == '/' ? target : DirectoryOf(current) + target;
  }
  errno = ELOOP;
  throw CIoError(Failure("cannot follow the link", path));
}

// ".<name>.XXXXXX", the name shortened where the whole would exceed what the
// directory allows.
std::string TemporaryPattern(const std::string& directory, const std::string& name) {
  const long limit = pathconf(directory.empty() ? "." : directory.c_str(), _PC_NAME_MAX);
  const std::size_t nameMax = limit > 0 ? static_cast<std::size_t>(limit) : 255;
  const std::size_t room = nameMax > 8 ? nameMax - 8 : 1;
  return directory + "." + name.substr(0, room) + ".XXXXXX";
}

}  // namespace

CAtomicFile::CAtomicFile(const std::string& path) : m_Path(path) {
  m_Target = FollowLinks(path);
  const std::string directory = DirectoryOf(m_Target);
  const std::string name = m_Target.substr(directory.size());
  if (name.empty()) throw CIoError("'" + path + "' names no file");

  const std::string pattern = TemporaryPattern(directory, name);
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  int descriptor = -1;
  {
    CSignalsBlocked blocked;
    descriptor = mkstemp(buffer.data());
    if (descriptor >= 0 && g_bPending == 0 && buffer.size() <= sizeof g_PendingPath) {
      std::memcpy(g_PendingPath, buffer.data(), buffer.size());
      g_bPending = 1;
      m_bGuarded = true;
      InstallHandlers();
    }
  }
  if (descriptor < 0) {
    const std::string shown = directory.empty() ? "." : directory.substr(0, directory.size() - 1);
    throw CIoError("cannot write '" + path + "': cannot create a file in directory '" +
                   (shown.empty() ? "/" : shown) + "': " + std::strerror(errno));
  }
  m_TemporaryPath = buffer.data();

  // The replaced file's owner first: changing it may clear set-id bits,
  // which the mode then restores.
  struct stat existing {};
  mode_t mode = NewFileMode();
  if (stat(m_Target.c_str(), &existing) == 0 && S_ISREG(existing.st_mode)) {
    if (fchown(descriptor, existing.st_uid, existing.st_gid) != 0) {
      // Not allowed to give the file away; the group may still be ours to set.
      [[maybe_unused]] const int ignored =
          fchown(descriptor, static_cast<uid_t>(-1), existing.st_gid);
    }
    mode = existing.st_mode & 07777;
  }
  if (fchmod(descriptor, mode) != 0 || (m_pFile = fdopen(descriptor, "wb")) == nullptr) {
    const std::string message = Failure("cannot write", path);
    close(descriptor);
    Discard();
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
  if (m_bGuarded) {
    CSignalsBlocked blocked;
    g_bPending = 0;
    RestoreHandlers();
    m_bGuarded = false;
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
  if (std::rename(m_TemporaryPath.c_str(), m_Target.c_str()) != 0) {
    const std::string message = Failure("cannot replace", m_Path);
    Discard();
    throw CIoError(message);
  }
  m_TemporaryPath.clear();
  Discard();
}

}  // namespace ZtTools
