// FileStream and HandleStream over real files: the mode word, transfers, file pointer and end
// of file, error codes, and sharing between opens in one process and between two processes.
// Windows semantics are the reference; the Windows build under Wine checks the expectations.
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

constexpr unsigned int kSharingViolation = 32;
constexpr int kChildTimeoutMs = 60000;

// Opens root + name with a mode word; returns 0 or the Win32 code the open failed with.
unsigned int OpenError(const std::wstring& root, const std::wstring& name, unsigned int mode) {
  DE::SimpleFileItem item;
  item.Name = name;
  DE::HandleSimpleFile file(root, item);
  return file.Open(mode) ? 0u : file.GetLastErrorCode();
}

std::wstring WideFolder(const test::TempDir& dir) {
  return dir.Path().wstring() + static_cast<wchar_t>(std::filesystem::path::preferred_separator);
}

// Child: tries to open a file; exits with 0 or the Win32 code.
TEST_CHILD_MAIN(open_file) {
  if (args.size() != 2) return 100;
  const std::filesystem::path path = std::filesystem::u8path(args[0]);
  return static_cast<int>(OpenError(
      path.parent_path().wstring() + static_cast<wchar_t>(std::filesystem::path::preferred_separator),
      path.filename().wstring(), std::stoul(args[1], nullptr, 0)));
}

// Child: opens a file, announces it by creating "<file>.ready", and holds it until killed.
TEST_CHILD_MAIN(hold_file) {
  if (args.size() != 2) return 100;
  const std::filesystem::path path = std::filesystem::u8path(args[0]);
  DE::FileStream file(path.wstring(), std::stoul(args[1], nullptr, 0));
  if (!file.IsOpened()) return 101;
  test::WriteFileBytes(path.string() + ".ready", "");
  std::this_thread::sleep_for(std::chrono::minutes(5));
  return 0;
}

TEST(FileStream, ModeWord) {
  test::TempDir dir;
  const std::wstring root = WideFolder(dir);
  const std::filesystem::path path = dir.File("data.bin");
  ASSERT_TRUE(test::WriteFileBytes(path, "hello world"));

  EXPECT_FALSE(DE::FileStream(path.wstring(), 3).IsOpened());
  EXPECT_FALSE(DE::FileStream(path.wstring(), 0x50).IsOpened());
  EXPECT_FALSE(DE::FileStream(path.wstring(), 0xF2).IsOpened());
  EXPECT_EQ(87u, OpenError(root, L"data.bin", 3));
  EXPECT_EQ(87u, OpenError(root, L"data.bin", 0x50));
  // Bits above the low 16 are ignored; bits 2-3 and 8-15 too.
  EXPECT_EQ(0u, OpenError(root, L"data.bin", 0x10000));
  EXPECT_EQ(0u, OpenError(root, L"data.bin", 0x0F0C));
  EXPECT_EQ(0u, OpenError(root, L"data.bin", 0x00));

  EXPECT_EQ(2u, OpenError(root, L"missing.bin", 0));
  EXPECT_EQ(3u, OpenError(root, L"no-folder/missing.bin", 0));
  EXPECT_EQ(3u, OpenError(root, L"no-folder/new.bin", 0xFFFF));
  std::filesystem::create_directory(dir.File("folder"));
  EXPECT_EQ(5u, OpenError(root, L"folder", 0));
  EXPECT_EQ(5u, OpenError(root, L"folder", 0xFFFF));

  // 0xFFFF creates, or truncates an existing file.
  {
    DE::FileStream created(path.wstring(), 0xFFFF);
    ASSERT_TRUE(created.IsOpened());
    EXPECT_EQ(0, created.Size());
    EXPECT_EQ(2u, created.Write("ab", 2));
  }
  EXPECT_EQ("ab", test::ReadFileBytes(path));
  {
    DE::FileStream fresh(dir.File("new.bin").string(), 0xFFFF);  // narrow path, ANSI
    EXPECT_TRUE(fresh.IsOpened());
  }
  EXPECT_TRUE(std::filesystem::exists(dir.File("new.bin")));
}

TEST(FileStream, TransfersAndFilePointer) {
  test::TempDir dir;
  // A name outside ASCII: the wide name must reach the same file as its UTF-8 form.
  const std::filesystem::path path = dir.Path() / std::filesystem::u8path(u8"caf\u00e9 \u4e2d.bin");
  const std::wstring widePath = WideFolder(dir) + L"caf\u00e9 \u4e2d.bin";
  ASSERT_TRUE(test::WriteFileBytes(path, "0123456789"));

  {
    DE::FileStream reader(widePath, 0);
    ASSERT_TRUE(reader.IsOpened());
    EXPECT_FALSE(!reader);
    EXPECT_EQ(static_cast<void*>(&reader), static_cast<void*>(reader));
    char buf[32] = {};
    EXPECT_EQ(4u, reader.Read(buf, 4));
    EXPECT_EQ("0123", std::string(buf, 4));
    EXPECT_EQ(4, reader.Position());
    EXPECT_EQ(10, reader.Size());
    EXPECT_EQ(4, reader.Position());
    EXPECT_EQ(6u, reader.Read(buf, sizeof buf));
    EXPECT_EQ(0u, reader.Read(buf, sizeof buf));
    EXPECT_EQ(0u, reader.Write("x", 1));  // read-only
    EXPECT_EQ(-1, reader.Seek(-1, DE::Begin));
    EXPECT_EQ(100, reader.Seek(100, DE::Begin));
    EXPECT_EQ(0u, reader.Read(buf, sizeof buf));
    reader.SetSize(3);  // no write access: the file keeps its size
  }
  EXPECT_EQ("0123456789", test::ReadFileBytes(path));

  {
    DE::FileStream writer(widePath, 1);
    ASSERT_TRUE(writer.IsOpened());
    char buf[4];
    EXPECT_EQ(0u, writer.Read(buf, 4));  // write-only
    EXPECT_EQ(2u, writer.Write("ab", 2));
    EXPECT_EQ(12, writer.Seek(2, DE::End));
    EXPECT_EQ(1u, writer.Write("!", 1));  // past the end: the gap reads as zeros
  }
  EXPECT_EQ(std::string("ab23456789\0\0!", 13), test::ReadFileBytes(path));

  {
    DE::FileStream both(widePath, 2);
    ASSERT_TRUE(both.IsOpened());
    both.SetSize(4);
    EXPECT_EQ(4, both.Position());
    EXPECT_EQ(4, both.Size());
    both.SetSize(6);  // grows with zeros
    both.Seek(0, DE::Begin);
    DE::MemoryrStream copy;
    EXPECT_EQ(6, copy.CopyFrom(both, 0));
    EXPECT_EQ(std::string("ab23\0\0", 6), copy.ToString());
  }
}

TEST(HandleStream, BorrowedHandles) {
  test::TempDir dir;
  const std::filesystem::path path = dir.File("h.bin");
  ASSERT_TRUE(test::WriteFileBytes(path, "abc"));
  HANDLE handle = DE::FileOpen(path.wstring(), 2);
  ASSERT_NE(INVALID_HANDLE_VALUE, handle);
  {
    DE::HandleStream stream(handle);
    EXPECT_EQ(handle, stream.Handle());
    EXPECT_TRUE(stream.IsOpened());
    EXPECT_EQ(3, stream.Size());
  }
  // The stream did not close the borrowed handle.
  char buf[3] = {};
  DE::HandleStream again(handle);
  EXPECT_EQ(3u, again.Read(buf, 3));
  EXPECT_TRUE(DE::FileClose(handle));
  EXPECT_FALSE(DE::FileClose(INVALID_HANDLE_VALUE));

  // A null handle counts as open but moves nothing.
  DE::HandleStream null(nullptr);
  EXPECT_TRUE(null.IsOpened());
  EXPECT_EQ(0u, null.Read(buf, 3));
  EXPECT_EQ(-1, null.Seek(0, DE::Begin));
  EXPECT_EQ(-1, null.Size());

  DE::FileStream failed(dir.File("missing").wstring(), 0);
  EXPECT_FALSE(failed.IsOpened());
  EXPECT_TRUE(!failed);
  EXPECT_EQ(nullptr, static_cast<void*>(failed));
  EXPECT_EQ(INVALID_HANDLE_VALUE, failed.Handle());
  EXPECT_EQ(0u, failed.Read(buf, 3));
  EXPECT_EQ(-1, failed.Seek(0, DE::Begin));
}

// Windows' rule: a second open succeeds when the first shares what the second wants and the
// second shares what the first has. Access from bits 0-1 (0 read, 1 write, 2 both); sharing
// 0x10 none, 0x20 read, 0x30 write, 0x40 both.
bool Compatible(unsigned first, unsigned second) {
  const auto access = [](unsigned mode) { return (mode & 3) == 0 ? 1u : (mode & 3) == 1 ? 2u : 3u; };
  const auto shares = [](unsigned mode) {
    switch (mode & 0xF0) {
      case 0x20:
        return 1u;
      case 0x30:
        return 2u;
      case 0x40:
        return 3u;
      default:
        return 0u;
    }
  };
  return (access(second) & ~shares(first)) == 0 && (access(first) & ~shares(second)) == 0;
}

TEST(FileSharing, TwoOpensInOneProcess) {
  test::TempDir dir;
  const std::wstring root = WideFolder(dir);
  ASSERT_TRUE(test::WriteFileBytes(dir.File("shared.bin"), "data"));
  for (unsigned share1 : {0x00u, 0x10u, 0x20u, 0x30u, 0x40u}) {
    for (unsigned access1 : {0u, 1u, 2u}) {
      DE::SimpleFileItem item;
      item.Name = L"shared.bin";
      DE::HandleSimpleFile first(root, item);
      ASSERT_TRUE(first.Open(share1 | access1)) << std::hex << (share1 | access1);
      for (unsigned share2 : {0x10u, 0x20u, 0x30u, 0x40u}) {
        for (unsigned access2 : {0u, 1u, 2u}) {
          const unsigned mode1 = share1 | access1, mode2 = share2 | access2;
          EXPECT_EQ(Compatible(mode1, mode2) ? 0u : kSharingViolation, OpenError(root, L"shared.bin", mode2))
              << std::hex << "first 0x" << mode1 << ", second 0x" << mode2;
        }
      }
    }
  }
  // Once the first is closed, anything opens again.
  EXPECT_EQ(0u, OpenError(root, L"shared.bin", 0x12));

  // A refused create leaves the file as it was.
  {
    DE::FileStream reader(dir.File("shared.bin").wstring(), 0x20);
    ASSERT_TRUE(reader.IsOpened());
    EXPECT_EQ(kSharingViolation, OpenError(root, L"shared.bin", 0xFFFF));
  }
  EXPECT_EQ("data", test::ReadFileBytes(dir.File("shared.bin")));
  {
    DE::FileStream creator(dir.File("shared.bin").wstring(), 0xFFFF);
    ASSERT_TRUE(creator.IsOpened());
    EXPECT_EQ(kSharingViolation, OpenError(root, L"shared.bin", 0x40));
  }
}

TEST(FileSharing, TwoProcesses) {
  test::TempDir dir;
  const std::filesystem::path path = dir.File("across.bin");
  ASSERT_TRUE(test::WriteFileBytes(path, "data"));
  const std::string pathArg = path.u8string();
  struct Case {
    unsigned parent, child;
  };
  for (const Case& c :
       {Case{0x10, 0x40}, Case{0x10, 0x00}, Case{0x40, 0x40}, Case{0x42, 0x42}, Case{0x42, 0x10},
        Case{0x20, 0x20}, Case{0x20, 0x21}, Case{0x30, 0x21}, Case{0x31, 0x30}, Case{0x31, 0x21}}) {
    DE::FileStream held(path.wstring(), c.parent);
    ASSERT_TRUE(held.IsOpened());
    EXPECT_EQ(Compatible(c.parent, c.child) ? 0 : static_cast<int>(kSharingViolation),
              test::RunSelf({"open_file", pathArg, std::to_string(c.child)}, kChildTimeoutMs))
        << std::hex << "parent 0x" << c.parent << ", child 0x" << c.child;
  }
  // Nothing held: the child opens without sharing.
  EXPECT_EQ(0, test::RunSelf({"open_file", pathArg, "16"}, kChildTimeoutMs));

  // A process that ends while holding the file gives it up.
  test::ChildProcess holder;
  ASSERT_TRUE(holder.Start({"hold_file", pathArg, "16"}));
  const std::filesystem::path ready = path.string() + ".ready";
  for (int i = 0; i < 3000 && !std::filesystem::exists(ready) && holder.Running(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ASSERT_TRUE(std::filesystem::exists(ready)) << "the holder did not start";
  EXPECT_EQ(kSharingViolation, OpenError(WideFolder(dir), L"across.bin", 0x40));
  holder.Kill();
  EXPECT_EQ(0u, OpenError(WideFolder(dir), L"across.bin", 0x10));
}

}  // namespace
