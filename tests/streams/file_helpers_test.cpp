// Files and folders: existence, folder trees, the program's folder, application data, error texts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "DEFile.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"

namespace {

namespace fs = std::filesystem;
const wchar_t kSep = static_cast<wchar_t>(fs::path::preferred_separator);

TEST(FileHelpers, ExistenceAndFolderTrees) {
  test::TempDir dir;
  ASSERT_TRUE(test::WriteFileBytes(dir.File("file.txt"), "x"));
  EXPECT_TRUE(DE::FileExists(dir.File("file.txt").string()));
  EXPECT_FALSE(DE::FileExists(dir.Path().wstring()));  // a folder is not a file
  EXPECT_FALSE(DE::FileExists(dir.File("missing.txt").wstring()));
  EXPECT_FALSE(DE::FileExists(std::wstring()));

  const fs::path deep = dir.Path() / "a" / "b" / "c";
  EXPECT_TRUE(DE::ForceDirectories(deep.wstring() + kSep));
  EXPECT_TRUE(fs::is_directory(deep));
  EXPECT_TRUE(DE::ForceDirectories(deep.string()));                                 // already there
  EXPECT_FALSE(DE::ForceDirectories((dir.Path() / "file.txt" / "sub").wstring()));  // a file in the way
  EXPECT_FALSE(DE::ForceDirectories(std::wstring()));

  ASSERT_TRUE(test::WriteFileBytes(deep / "leaf.bin", "leaf"));
  EXPECT_FALSE(DE::DeleteDeepDirectoryW((dir.Path() / "file.txt").wstring()));  // not a folder
  EXPECT_TRUE(fs::exists(dir.File("file.txt")));
  EXPECT_TRUE(DE::DeleteDeepDirectoryW((dir.Path() / "a").wstring()));
  EXPECT_FALSE(fs::exists(dir.Path() / "a"));
  EXPECT_FALSE(DE::DeleteDeepDirectory((dir.Path() / "a").string()));  // gone already
}

TEST(FileHelpers, ProgramFolderAndApplicationData) {
  const std::wstring folder = DE::GetCurrentPathW();
  ASSERT_FALSE(folder.empty());
  EXPECT_EQ(kSep, folder.back());
  const std::wstring self = test::IsWindowsBuild() ? L"streams_test.exe" : L"streams_test";
  EXPECT_TRUE(DE::FileExists(folder + self)) << fs::path(folder).string();
  EXPECT_EQ(fs::path(folder).string(), DE::GetCurrentPathA());

#if defined(_WIN32)
  // Wine and Windows give programs the folder in APPDATA as well.
  const char* appData = std::getenv("APPDATA");
  ASSERT_NE(nullptr, appData);
  EXPECT_EQ(fs::path(appData).wstring() + L"\\log\\cookie_cur.txt",
            DE::GetUserAppdataFullFile(L"\\log\\cookie_cur.txt"));
  EXPECT_EQ(std::string(appData) + "\\x.txt", DE::GetUserAppdataFullFile(std::string("x.txt")));
#else
  const char* oldData = std::getenv("XDG_DATA_HOME");
  const char* oldHome = std::getenv("HOME");
  const std::string savedData = oldData ? oldData : "", savedHome = oldHome ? oldHome : "";
  setenv("XDG_DATA_HOME", "/srv/data/", 1);
  EXPECT_EQ(L"/srv/data/log/cookie_cur.txt", DE::GetUserAppdataFullFile(L"\\log\\cookie_cur.txt"));
  setenv("XDG_DATA_HOME", "relative/dir", 1);  // not absolute: ignored
  setenv("HOME", "/home/someone", 1);
  EXPECT_EQ(L"/home/someone/.local/share/x.txt", DE::GetUserAppdataFullFile(L"x.txt"));
  oldData ? setenv("XDG_DATA_HOME", savedData.c_str(), 1) : unsetenv("XDG_DATA_HOME");
  oldHome ? setenv("HOME", savedHome.c_str(), 1) : unsetenv("HOME");
#endif
}

TEST(FileHelpers, ErrorTexts) {
  for (DWORD code : {2u, 5u, 32u}) {
    const std::wstring text = DE::SysErrorMessageW(code);
    EXPECT_FALSE(text.empty()) << code;
    EXPECT_EQ(std::wstring::npos, text.find_first_of(L"\r\n")) << code;
    EXPECT_EQ(std::wstring::npos, text.find(L"Unknown error")) << code;
  }
  // A code no system knows reads the same on both platforms.
  EXPECT_EQ(L"Unknown error 3735928559", DE::SysErrorMessageW(0xDEADBEEF));
  if (!test::IsWindowsBuild()) {
    EXPECT_EQ(L"No such file or directory", DE::SysErrorMessageW(2));
  }
}

}  // namespace
