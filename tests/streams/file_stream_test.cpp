// FileStream and HandleStream over real files: the mode word, transfers, file pointer, error codes, and
// sharing within one process and between two (Windows semantics, checked under Wine, are the reference).
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "DESerialize.h"
#include "DEStream.h"
#include "common/child_process.h"
#include "common/temp_dir.h"

namespace {

namespace fs = std::filesystem;
constexpr unsigned int kSharingViolation = 32;
constexpr int kChildTimeoutMs = 60000;

std::wstring WideFolder(const fs::path& dir) {
  return dir.wstring() + static_cast<wchar_t>(fs::path::preferred_separator);
}

// Opens root + name with a mode word; returns 0 or the Win32 code the open failed with.
unsigned int OpenError(const std::wstring& root, const std::wstring& name, unsigned int mode) {
  DE::SimpleFileItem item;
  item.Name = name;
  DE::HandleSimpleFile file(root, item);
  return file.Open(mode) ? 0u : file.GetLastErrorCode();
}

// Child: tries to open a file; exits with 0 or the Win32 code.
TEST_CHILD_MAIN(open_file) {
  const fs::path path = fs::u8path(args.at(0));
  return static_cast<int>(OpenError(WideFolder(path.parent_path()), path.filename().wstring(),
                                    std::stoul(args.at(1), nullptr, 0)));
}

// Child: opens a file, announces it by creating "<file>.ready", and holds it until killed.
TEST_CHILD_MAIN(hold_file) {
  const fs::path path = fs::u8path(args.at(0));
  DE::FileStream file(path.wstring(), std::stoul(args.at(1), nullptr, 0));
  if (!file.IsOpened()) return 101;
  test::WriteFileBytes(path.string() + ".ready", "");
  std::this_thread::sleep_for(std::chrono::minutes(5));
  return 0;
}

TEST(FileStream, ModeWord) {
  test::TempDir dir;
  const std::wstring root = WideFolder(dir.Path());
  const fs::path path = dir.File("data.bin");
  ASSERT_TRUE(test::WriteFileBytes(path, "hello world"));

  fs::create_directory(dir.File("folder"));
  // Bits above the low 16, bits 2-3 and bits 8-15 are ignored.
  const struct {
    const wchar_t* name;
    unsigned int mode, error;
  } kOpens[] = {{L"data.bin", 3, 87},     {L"data.bin", 0x50, 87}, {L"data.bin", 0x10000, 0},
                {L"data.bin", 0x0F0C, 0}, {L"missing.bin", 0, 2},  {L"no-folder/new.bin", 0xFFFF, 3},
                {L"folder", 0, 5},        {L"folder", 0xFFFF, 5}};
  for (const auto& open : kOpens) {
    EXPECT_EQ(open.error, OpenError(root, open.name, open.mode)) << std::hex << open.mode;
  }

  // 0xFFFF creates, or truncates an existing file.
  {
    DE::FileStream created(path.wstring(), 0xFFFF);
    ASSERT_TRUE(created.IsOpened());
    EXPECT_EQ(0, created.Size());
    EXPECT_EQ(2u, created.Write("ab", 2));
  }
  EXPECT_EQ("ab", test::ReadFileBytes(path));
  EXPECT_TRUE(DE::FileStream(dir.File("new.bin").string(), 0xFFFF).IsOpened());  // narrow path, ANSI
  EXPECT_TRUE(fs::exists(dir.File("new.bin")));
}

TEST(FileStream, TransfersAndFilePointer) {
  test::TempDir dir;
  // A name outside ASCII: the wide name must reach the same file as its UTF-8 form.
  const fs::path path = dir.Path() / fs::u8path(u8"caf\u00e9 \u4e2d.bin");
  const std::wstring widePath = WideFolder(dir.Path()) + L"caf\u00e9 \u4e2d.bin";
  ASSERT_TRUE(test::WriteFileBytes(path, "0123456789"));
  char buf[32] = {};
  {
    DE::FileStream reader(widePath, 0);
    ASSERT_TRUE(reader.IsOpened());
    EXPECT_EQ(4u, reader.Read(buf, 4));
    EXPECT_EQ("0123", std::string(buf, 4));
    EXPECT_EQ(10, reader.Size());
    EXPECT_EQ(4, reader.Position());  // Size() puts the pointer back
    EXPECT_EQ(6u, reader.Read(buf, sizeof buf));
    EXPECT_EQ(0u, reader.Write("x", 1));  // read-only
    EXPECT_EQ(-1, reader.Seek(-1, DE::Begin));
    EXPECT_EQ(100, reader.Seek(100, DE::Begin));
    EXPECT_EQ(0u, reader.Read(buf, sizeof buf));
    reader.SetSize(3);  // no write access: the file keeps its size
  }
  EXPECT_EQ("0123456789", test::ReadFileBytes(path));
  {
    DE::FileStream writer(widePath, 1);
    EXPECT_EQ(0u, writer.Read(buf, 4));  // write-only
    EXPECT_EQ(2u, writer.Write("ab", 2));
    EXPECT_EQ(12, writer.Seek(2, DE::End));
    EXPECT_EQ(1u, writer.Write("!", 1));  // past the end: the gap reads as zeros
  }
  EXPECT_EQ(std::string("ab23456789\0\0!", 13), test::ReadFileBytes(path));
  {
    DE::FileStream both(widePath, 2);
    both.SetSize(4);
    EXPECT_EQ(4, both.Position());
    both.SetSize(6);  // grows with zeros
    DE::MemoryrStream copy;
    EXPECT_EQ(6, copy.CopyFrom(both, 0));
    EXPECT_EQ(std::string("ab23\0\0", 6), copy.ToString());
  }
}

TEST(HandleStream, BorrowedNullAndFailedHandles) {
  test::TempDir dir;
  ASSERT_TRUE(test::WriteFileBytes(dir.File("h.bin"), "abc"));
  HANDLE handle = DE::FileOpen(dir.File("h.bin").wstring(), 2);
  ASSERT_NE(INVALID_HANDLE_VALUE, handle);
  { DE::HandleStream stream(handle); }  // does not close the borrowed handle
  char buf[3] = {};
  EXPECT_EQ(3u, DE::HandleStream(handle).Read(buf, 3));
  EXPECT_TRUE(DE::FileClose(handle));
  EXPECT_FALSE(DE::FileClose(INVALID_HANDLE_VALUE));

  // A null handle counts as open but moves nothing.
  DE::HandleStream null(nullptr);
  EXPECT_TRUE(null.IsOpened());
  EXPECT_EQ(0u, null.Read(buf, 3));
  EXPECT_EQ(-1, null.Size());

  DE::FileStream failed(dir.File("missing").wstring(), 0);
  EXPECT_TRUE(!failed);
  EXPECT_EQ(nullptr, static_cast<void*>(failed));
  EXPECT_EQ(INVALID_HANDLE_VALUE, failed.Handle());
}

// Windows' rule: a second open succeeds when the first shares what the second wants and the
// second shares what the first has. Access bits: 1 read, 2 write.
bool Compatible(unsigned first, unsigned second) {
  const auto access = [](unsigned mode) { return (mode & 3) + 1; };  // 0 read, 1 write, 2 both
  const auto shares = [](unsigned mode) { return (mode & 0xF0) < 0x20 ? 0u : ((mode & 0xF0) >> 4) - 1; };
  return (access(second) & ~shares(first)) == 0 && (access(first) & ~shares(second)) == 0;
}

TEST(FileSharing, TwoOpensInOneProcess) {
  test::TempDir dir;
  const std::wstring root = WideFolder(dir.Path());
  ASSERT_TRUE(test::WriteFileBytes(dir.File("shared.bin"), "data"));
  // Every access (0-2) under every sharing (0x00-0x40) first; the second always names its sharing.
  for (unsigned mode1 = 0; mode1 <= 0x42; mode1 += (mode1 & 3) == 2 ? 14 : 1) {
    DE::FileStream first(dir.File("shared.bin").wstring(), mode1);
    ASSERT_TRUE(first.IsOpened()) << std::hex << mode1;
    for (unsigned mode2 = 0x10; mode2 <= 0x42; mode2 += (mode2 & 3) == 2 ? 14 : 1) {
      EXPECT_EQ(Compatible(mode1, mode2) ? 0u : kSharingViolation, OpenError(root, L"shared.bin", mode2))
          << std::hex << "first 0x" << mode1 << ", second 0x" << mode2;
    }
  }
  EXPECT_EQ(0u, OpenError(root, L"shared.bin", 0x12));  // the first is closed again

  // A refused create leaves the file as it was.
  {
    DE::FileStream reader(dir.File("shared.bin").wstring(), 0x20);
    EXPECT_EQ(kSharingViolation, OpenError(root, L"shared.bin", 0xFFFF));
  }
  EXPECT_EQ("data", test::ReadFileBytes(dir.File("shared.bin")));
  DE::FileStream creator(dir.File("shared.bin").wstring(), 0xFFFF);
  ASSERT_TRUE(creator.IsOpened());
  EXPECT_EQ(kSharingViolation, OpenError(root, L"shared.bin", 0x40));
}

TEST(FileSharing, TwoProcesses) {
  test::TempDir dir;
  const fs::path path = dir.File("across.bin");
  ASSERT_TRUE(test::WriteFileBytes(path, "data"));
  const std::string pathArg = path.u8string();
  const unsigned cases[][2] = {{0x10, 0x40}, {0x40, 0x40}, {0x20, 0x20},
                               {0x20, 0x21}, {0x30, 0x21}, {0x31, 0x30}};
  for (const auto& c : cases) {
    DE::FileStream held(path.wstring(), c[0]);
    ASSERT_TRUE(held.IsOpened());
    EXPECT_EQ(Compatible(c[0], c[1]) ? 0 : static_cast<int>(kSharingViolation),
              test::RunSelf({"open_file", pathArg, std::to_string(c[1])}, kChildTimeoutMs))
        << std::hex << "parent 0x" << c[0] << ", child 0x" << c[1];
  }
  // A process that ends while holding the file gives it up.
  test::ChildProcess holder;
  ASSERT_TRUE(holder.Start({"hold_file", pathArg, "16"}));
  const fs::path ready = path.string() + ".ready";
  for (int i = 0; i < 3000 && !fs::exists(ready) && holder.Running(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ASSERT_TRUE(fs::exists(ready)) << "the holder did not start";
  EXPECT_EQ(kSharingViolation, OpenError(WideFolder(dir.Path()), L"across.bin", 0x40));
  holder.Kill();
  EXPECT_EQ(0u, OpenError(WideFolder(dir.Path()), L"across.bin", 0x10));
}

}  // namespace
