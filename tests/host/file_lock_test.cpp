// The lock that runs take turns on for the user's files, and the writer that replaces a file whole:
// another process is kept out while the lock is held, nothing is left behind, and a replaced file
// keeps what made it the user's (its permissions, the link to it).
#include "host/file_lock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "../support/run_program.h"
#include "host/text_files.h"

namespace tv::host {
namespace {

namespace fs = std::filesystem;
using test_support::FilesIn;
using test_support::ReadFile;
using test_support::TempDir;
using test_support::WriteFile;

// Whether a process of its own gets the lock of `path` within a tenth of a second.
bool OtherProcessGetsLock(const std::string& path) {
  const pid_t pid = fork();
  if (pid == 0) {
    bool held = false;
    {
      FileLock lock(path, std::chrono::milliseconds(100));
      held = lock.held();
    }
    _exit(held ? 0 : 1);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

unsigned Mode(const fs::path& p) {
  struct stat st {};
  ::stat(p.c_str(), &st);
  return st.st_mode & 0777;
}

TEST(FileLock, KeepsOtherProcessesOutUntilLetGoAndLeavesNoFileBehind) {
  TempDir dir("tv_lock");
  const std::string file = (dir / "BPlot_TK.tk").string();
  {
    FileLock lock(file);
    ASSERT_TRUE(lock.held());
    EXPECT_TRUE(fs::exists(file + ".lock"));
    EXPECT_FALSE(OtherProcessGetsLock(file));
    {
      // A writer called inside an update locks the same file again: that must not wait on itself.
      FileLock nested(file, std::chrono::milliseconds(0));
      EXPECT_TRUE(nested.held());
    }
    EXPECT_FALSE(OtherProcessGetsLock(file)) << "the nested lock let the outer one go";
  }
  EXPECT_TRUE(OtherProcessGetsLock(file));
  EXPECT_TRUE(FilesIn(dir.path()).empty());
}

TEST(FileLock, AFolderThatTakesNoFileGivesNoLock) {
  TempDir dir("tv_lock");
  FileLock lock((dir / "no/such/folder/file.cfg").string(), std::chrono::milliseconds(0));
  EXPECT_FALSE(lock.held());
}

TEST(ReplacingWrite, TheFileIsReplacedWholeAndKeepsWhatMakesItTheUsers) {
  TempDir dir("tv_replace");
  const fs::path file = dir / "BPlot_Cfg.cfg";

  ASSERT_TRUE(WriteTextFileReplacing(file.string(), "20240329\n"));
  EXPECT_EQ(ReadFile(file), "20240329\n");

  // An existing file keeps its permissions.
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  ASSERT_TRUE(WriteTextFileReplacing(file.string(), "图框\n"));
  EXPECT_EQ(Mode(file), 0640u);
  EXPECT_EQ(ReadFile(file), "\xCD\xBC\xBF\xF2\n");  // in the ANSI code page

  // A link stays a link: the file it names gets the text.
  const fs::path real = dir / "real.tk";
  WriteFile(real, "old\n");
  const fs::path link = dir / "link.tk";
  fs::create_symlink(real, link);
  ASSERT_TRUE(WriteTextFileReplacing(link.string(), "new\n"));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(ReadFile(real), "new\n");

  // Nothing of the writes is left beside the files.
  EXPECT_EQ(FilesIn(dir.path()), (std::vector<std::string>{"BPlot_Cfg.cfg", "link.tk", "real.tk"}));
}

TEST(ReplacingWrite, WhatCannotBeWrittenIsLeftAsItWas) {
  if (geteuid() == 0) GTEST_SKIP() << "permissions don't bind the superuser";
  TempDir dir("tv_replace");
  const fs::path file = dir / "Tarvex.Ini";
  WriteFile(file, "20240329\n1\n0\n0\n");
  fs::permissions(file, fs::perms::owner_read);
  EXPECT_FALSE(WriteTextFileReplacing(file.string(), "20240329\n0\n0\n0\n"));
  EXPECT_EQ(ReadFile(file), "20240329\n1\n0\n0\n");
  EXPECT_EQ(Mode(file), 0400u);
}

TEST(ReplacingWrite, AMissingFolderOrADirectoryIsNoTarget) {
  TempDir dir("tv_replace");
  EXPECT_FALSE(WriteTextFileReplacing((dir / "missing/BPlot_TK.tk").string(), "0\n"));
  fs::create_directory(dir / "folder.tk");
  EXPECT_FALSE(WriteTextFileReplacing((dir / "folder.tk").string(), "0\n"));
  EXPECT_TRUE(fs::is_directory(dir / "folder.tk"));
  EXPECT_EQ(FilesIn(dir.path()), (std::vector<std::string>{"folder.tk"}));
}

}  // namespace
}  // namespace tv::host
