// Replacing files: what stays of the old name (mode, links), what happens
// where no new file may be made, and the temporary file on a fatal signal.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ZtAtomicFile.h"
#include "ZtImageIo.h"
#include "ZtToolTestSupport.h"

using namespace ZtTools;
using namespace ZtTest;

namespace {

void Replace(const std::string& path, const std::string& contents) {
  CAtomicFile file(path);
  std::fputs(contents.c_str(), file.File());
  file.Commit();
}

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(ZtAtomicFile, ReplacingKeepsModeAndLinksOfTheOldName) {
  const std::string longest(255, 'n');  // a name as long as the system allows
  // What the directory holds, the name written, then name=contents after and the entries.
  const std::string cases[][4] = {
      {"printf old >f && chmod 600 f", "f", "f=new", "f"},
      {"printf old >f && ln -s f l", "l", "f=new l=new", "f l"},
      {"mkdir sub && printf old >sub/f && ln -s sub/f l1 && ln -s l1 l2", "l2", "sub/f=new l2=new",
       "l1 l2 sub"},
      {"ln -s target l", "l", "target=new", "l target"},       // a dangling link gets its file
      {"printf old >f && ln f h", "f", "f=new h=old", "f h"},  // the other hard link keeps "old"
      {"true", longest, longest + "=new", longest},
  };
  for (const auto& [setup, written, contents, entries] : cases) {
    SCOPED_TRACE(setup);
    CScratchDir dir;
    ASSERT_TRUE(dir.Run(setup));
    const mode_t before = ModeOf(dir / written);
    Replace(dir / written, "new");
    std::istringstream after(contents);
    for (std::string pair; after >> pair;) {
      const std::string name = pair.substr(0, pair.find('='));
      EXPECT_EQ(name + "=" + ReadFile(dir / name), pair);
    }
    EXPECT_EQ(dir.Entries(), entries);
    EXPECT_TRUE(before == 0 || ModeOf(dir / written) == before)
        << before;  // kept when it was there
    struct stat status {};
    EXPECT_EQ(lstat((dir / written).c_str(), &status) == 0 && S_ISLNK(status.st_mode),
              written[0] == 'l');
  }
}

TEST(ZtAtomicFile, ANewFileGetsTheUsualModeAndADirectoryWithoutRoomIsNamed) {
  CScratchDir dir;
  const mode_t mask = umask(022);
  Replace(dir / "plain", "x");
  umask(mask);
  EXPECT_EQ(ModeOf(dir / "plain"), 0644u);
  EXPECT_TRUE(Has(MessageOf<CIoError>([&] { CAtomicFile file(dir / "missing/out.png"); }),
                  "cannot create a file in directory '" + dir / "missing'"));
  if (geteuid() == 0) GTEST_SKIP() << "root writes into read-only directories";
  ASSERT_TRUE(dir.Run("mkdir ro && printf old >ro/f && chmod 555 ro"));
  EXPECT_TRUE(
      Has(MessageOf<CIoError>([&] { Replace(dir / "ro/f", "new"); }), "directory '" + dir / "ro'"));
  chmod((dir / "ro").c_str(), 0755);
  EXPECT_EQ(ReadFile(dir / "ro/f"), "old");
}

// A child writes half a file and waits; the signal must kill it as the
// signal would, with the temporary file gone and the old file untouched.
TEST(ZtAtomicFile, AFatalSignalRemovesTheTemporaryFileAndStillKills) {
  for (int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
    SCOPED_TRACE(strsignal(signalNumber));
    CScratchDir dir;
    WriteFile(dir / "out", "old");
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      CAtomicFile file(dir / "out");
      std::fputs("partial", file.File());
      std::fflush(file.File());
      if (write(ready[1], "", 1) != 1) _exit(3);
      for (;;) pause();
    }
    close(ready[1]);
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    const std::string during = dir.Entries();  // the temporary file, then "out"
    EXPECT_TRUE(during.rfind(".out.", 0) == 0 && during.find(' ') == during.size() - 4) << during;
    kill(child, signalNumber);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signalNumber) << status;
    EXPECT_EQ(dir.Entries(), "out");
    EXPECT_EQ(ReadFile(dir / "out"), "old");
  }
}

// During the file an ignored signal stays ignored; after it, the process's
// own actions are back.
TEST(ZtAtomicFile, ThePreviousSignalActionsComeBack) {
  CScratchDir dir;
  struct sigaction ignore {
  }, saved{}, during{}, after{}, term{};
  ignore.sa_handler = SIG_IGN;
  ASSERT_EQ(sigaction(SIGHUP, &ignore, &saved), 0);
  {
    CAtomicFile file(dir / "f");
    sigaction(SIGHUP, nullptr, &during);
    file.Commit();
  }
  sigaction(SIGHUP, nullptr, &after);
  sigaction(SIGHUP, &saved, nullptr);
  sigaction(SIGTERM, nullptr, &term);
  EXPECT_EQ(during.sa_handler, SIG_IGN);
  EXPECT_EQ(after.sa_handler, SIG_IGN);
  EXPECT_EQ(term.sa_handler, SIG_DFL);
}

}  // namespace
