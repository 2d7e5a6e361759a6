// Replacing files: what stays of the old name (mode, links), what happens
// where no new file may be made, and the temporary file on a fatal signal.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

#include "ZtAtomicFile.h"
#include "ZtImageIo.h"
#include "ZtToolTestSupport.h"

using namespace ZtTools;
using ZtTest::CBytes;
using ZtTest::Concat;
using ZtTest::CScratchDir;

namespace {

void Replace(const std::string& path, const std::string& contents) {
  CAtomicFile file(path);
  std::fputs(contents.c_str(), file.File());
  file.Commit();
}

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

bool IsLink(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

std::vector<std::string> SortedEntries(const CScratchDir& dir) {
  auto entries = dir.Entries();
  std::sort(entries.begin(), entries.end());
  return entries;
}

TEST(ZtAtomicFile, ReplacingKeepsModeAndLinksOfTheOldName) {
  const struct {
    const char* What;
    std::function<void(const CScratchDir&)> Prepare;
    const char* Written;                                        // the name written to
    std::vector<std::pair<const char*, const char*>> Contents;  // name, contents after
    std::vector<std::string> Entries;
  } cases[] = {
      {"a private file stays private",
       [](const CScratchDir& d) {
         ZtTest::WriteBytes(d / "f", Concat("old"));
         chmod((d / "f").c_str(), 0600);
       },
       "f",
       {{"f", "new"}},
       {"f"}},
      {"a link stays a link and its file is replaced",
       [](const CScratchDir& d) {
         ZtTest::WriteBytes(d / "f", Concat("old"));
         symlink("f", (d / "l").c_str());
       },
       "l",
       {{"f", "new"}, {"l", "new"}},
       {"f", "l"}},
      {"a chain of links through a subdirectory",
       [](const CScratchDir& d) {
         mkdir((d / "sub").c_str(), 0755);
         ZtTest::WriteBytes(d / "sub/f", Concat("old"));
         symlink("sub/f", (d / "l1").c_str());
         symlink("l1", (d / "l2").c_str());
       },
       "l2",
       {{"sub/f", "new"}, {"l2", "new"}},
       {"l1", "l2", "sub"}},
      {"a dangling link gets its file",
       [](const CScratchDir& d) { symlink("target", (d / "l").c_str()); },
       "l",
       {{"target", "new"}},
       {"l", "target"}},
      {"another hard link keeps the old contents",
       [](const CScratchDir& d) {
         ZtTest::WriteBytes(d / "f", Concat("old"));
         link((d / "f").c_str(), (d / "h").c_str());
       },
       "f",
       {{"f", "new"}, {"h", "old"}},
       {"f", "h"}},
      {"a name as long as the system allows",
       [](const CScratchDir&) {},
       nullptr,
       {},
       {std::string(255, 'n')}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.What);
    CScratchDir dir;
    c.Prepare(dir);
    const std::string written = c.Written != nullptr ? c.Written : std::string(255, 'n');
    const mode_t before = access((dir / written).c_str(), F_OK) == 0 ? ModeOf(dir / written) : 0;
    Replace(dir / written, "new");
    for (const auto& [name, contents] : c.Contents)
      EXPECT_EQ(ZtTest::ReadBytes(dir / name), Concat(contents)) << name;
    EXPECT_EQ(SortedEntries(dir), c.Entries);
    if (before != 0) {
      EXPECT_EQ(ModeOf(dir / written), before);
    }
    EXPECT_EQ(IsLink(dir / written), written[0] == 'l');
  }
}

TEST(ZtAtomicFile, ANewFileGetsTheUsualModeAndAMissingDirectoryIsNamed) {
  CScratchDir dir;
  const mode_t mask = umask(022);
  Replace(dir / "plain", "x");
  umask(mask);
  EXPECT_EQ(ModeOf(dir / "plain"), 0644u);
  try {
    CAtomicFile file(dir / "missing/out.png");
    ADD_FAILURE();
  } catch (const CIoError& e) {
    EXPECT_NE(std::string(e.what()).find("cannot create a file in directory '" + dir / "missing'"),
              std::string::npos)
        << e.what();
  }
}

TEST(ZtAtomicFile, AReadOnlyDirectoryIsNamedAndItsFileLeftAlone) {
  if (geteuid() == 0) GTEST_SKIP() << "root writes into read-only directories";
  CScratchDir dir;
  mkdir((dir / "ro").c_str(), 0755);
  ZtTest::WriteBytes(dir / "ro/f", Concat("old"));
  chmod((dir / "ro").c_str(), 0555);
  try {
    Replace(dir / "ro/f", "new");
    ADD_FAILURE();
  } catch (const CIoError& e) {
    EXPECT_NE(std::string(e.what()).find("directory '" + dir / "ro'"), std::string::npos)
        << e.what();
  }
  chmod((dir / "ro").c_str(), 0755);
  EXPECT_EQ(ZtTest::ReadBytes(dir / "ro/f"), Concat("old"));
}

// A child writes half a file and waits; the signal must kill it as the
// signal would, with the temporary file gone and the old file untouched.
TEST(ZtAtomicFile, AFatalSignalRemovesTheTemporaryFileAndStillKills) {
  for (int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
    SCOPED_TRACE(strsignal(signalNumber));
    CScratchDir dir;
    ZtTest::WriteBytes(dir / "out", Concat("old"));
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      close(ready[0]);
      CAtomicFile file(dir / "out");
      std::fputs("partial", file.File());
      std::fflush(file.File());
      const char byte = 1;
      if (write(ready[1], &byte, 1) != 1) _exit(3);
      for (;;) pause();
    }
    close(ready[1]);
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    EXPECT_EQ(SortedEntries(dir).size(), 2u);  // the temporary file exists
    kill(child, signalNumber);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    if (WIFSIGNALED(status)) {
      EXPECT_EQ(WTERMSIG(status), signalNumber);
    }
    EXPECT_EQ(SortedEntries(dir), std::vector<std::string>{"out"});
    EXPECT_EQ(ZtTest::ReadBytes(dir / "out"), Concat("old"));
  }
}

// After the file, the process's own handling of the signals is back.
TEST(ZtAtomicFile, ThePreviousSignalActionsComeBack) {
  CScratchDir dir;
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  struct sigaction saved {};
  ASSERT_EQ(sigaction(SIGHUP, &ignore, &saved), 0);
  struct sigaction during {};
  {
    CAtomicFile file(dir / "f");
    sigaction(SIGHUP, nullptr, &during);
    file.Commit();
  }
  struct sigaction after {};
  sigaction(SIGHUP, nullptr, &after);
  sigaction(SIGHUP, &saved, nullptr);
  EXPECT_EQ(during.sa_handler, SIG_IGN);  // an ignored signal stays ignored
  EXPECT_EQ(after.sa_handler, SIG_IGN);
  struct sigaction term {};
  sigaction(SIGTERM, nullptr, &term);
  EXPECT_EQ(term.sa_handler, SIG_DFL);
}

}  // namespace
