// Stream's block copies, the handle and file streams, and the FileOpen mode word.
#include <istream>
#include <memory>
#include <new>
#include <ostream>

#include "DEStream.h"
#include "DEString.h"
#include "foundation/file_io.h"
#include "foundation/last_error.h"

namespace DE {
namespace {

constexpr unsigned int kCopyBlock = 61440;
constexpr DWORD kErrorInvalidParameter = 87;
constexpr unsigned long kCreateMode = 0xFFFF;
// Flags and attributes given for an open-existing request; they have no effect on an existing
// file and are kept as the library has always passed them.
constexpr DWORD kReadOnlyOpenFlags = 0xA7;
constexpr DWORD kOtherOpenFlags = 0xA6;
constexpr DWORD kAttributeNormal = 0x80;

// The request a mode word stands for; false for a mode that fails by itself.
bool DecodeMode(unsigned long mode, detail::file_io::OpenRequest* request) {
  using namespace detail::file_io;
  mode &= 0xFFFF;
  if (mode == kCreateMode) {
    request->access = kAccessRead | kAccessWrite;
    request->share = 0;
    request->disposition = Disposition::CreateAlways;
    request->flagsAndAttributes = kAttributeNormal;
    return true;
  }
  static const unsigned kAccess[] = {kAccessRead, kAccessWrite, kAccessRead | kAccessWrite};
  const unsigned long accessBits = mode & 0x3;
  const unsigned long shareBits = mode & 0xF0;
  if (accessBits == 3 || shareBits > 0x40) return false;
  static const unsigned kShare[] = {0, 0, kShareRead, kShareWrite, kShareRead | kShareWrite};
  request->access = kAccess[accessBits];
  request->share = kShare[shareBits >> 4];
  request->disposition = Disposition::OpenExisting;
  request->flagsAndAttributes = accessBits == 0 ? kReadOnlyOpenFlags : kOtherOpenFlags;
  return true;
}

// A copy buffer, zero-filled so that a short read never passes on stale heap bytes.
std::unique_ptr<char[]> NewCopyBuffer() {
  return std::unique_ptr<char[]>(new (std::nothrow) char[kCopyBlock]());
}

long long CopyBlocks(Stream& from, Stream& to, long long count) {
  std::unique_ptr<char[]> buffer = NewCopyBuffer();
  if (!buffer) return 0;
  if (count == 0) {
    from.Seek(0, Begin);
    count = from.Size();
  }
  if (count <= 0) return 0;
  for (long long remaining = count; remaining > 0;) {
    const unsigned int chunk = remaining < kCopyBlock ? static_cast<unsigned int>(remaining) : kCopyBlock;
    from.Read(buffer.get(), chunk);  // what was actually read is not checked, as ever
    to.Write(buffer.get(), chunk);
    remaining -= chunk;
  }
  return count;
}

}  // namespace

HANDLE FileOpen(const std::wstring& path, unsigned long mode) {
  detail::file_io::OpenRequest request;
  if (!DecodeMode(mode, &request)) {
    detail::SetLastErrorCode(kErrorInvalidParameter);
    return INVALID_HANDLE_VALUE;
  }
  return detail::file_io::Open(path, request);
}

HANDLE FileOpen(const std::string& path, unsigned long mode) {
  return FileOpen(StringProc::StringToWString(path), mode);
}

bool FileClose(HANDLE handle) {
  if (handle == INVALID_HANDLE_VALUE) return false;
  return detail::file_io::Close(handle);
}

// ---- Stream

long long Stream::Size() {
  const long long saved = Seek(0, Current);
  const long long size = Seek(0, End);
  Seek(saved, Begin);
  return size;
}

void Stream::SetSize(long long newSize) {
  // A subclass that keeps this slot would come straight back here; the guard ends that loop
  // (there is then nothing to resize).
  static thread_local bool forwarding = false;
  if (forwarding) return;
  forwarding = true;
  SetSize(static_cast<long long>(static_cast<int>(newSize)));
  forwarding = false;
}

long long Stream::Position() { return Seek(0, Current); }

void Stream::SetPosition(long long position) { Seek(position, Begin); }

void Stream::ReadBuffer(void* buf, unsigned int count) {
  if (buf != nullptr && count != 0) Read(buf, count);
}

void Stream::WriteBuffer(const void* buf, unsigned int count) {
  if (buf != nullptr && count != 0) Write(buf, count);
}

long long Stream::CopyFrom(Stream& src, long long count) { return CopyBlocks(src, *this, count); }

long long Stream::CopyTo(Stream& dst, long long count) { return CopyBlocks(*this, dst, count); }

long long Stream::CopyFrom(std::istream& src) {
  std::unique_ptr<char[]> buffer = NewCopyBuffer();
  if (!buffer) return 0;
  src.read(buffer.get(), kCopyBlock);
  long long got = src.gcount();
  if (got < 1) return 0;
  long long total = 0;
  do {
    Write(buffer.get(), static_cast<unsigned int>(got));
    total += got;
    if (src.eof()) break;
    src.read(buffer.get(), kCopyBlock);
    got = src.gcount();
  } while (got > 0);
  return total;
}

long long Stream::CopyTo(std::ostream& dst) {
  std::unique_ptr<char[]> buffer = NewCopyBuffer();
  if (!buffer) return 0;
  long long total = 0;
  for (unsigned int got = Read(buffer.get(), kCopyBlock); got != 0; got = Read(buffer.get(), kCopyBlock)) {
    if (dst.eof()) break;
    total += got;
    dst.write(buffer.get(), got);
  }
  return total;
}

// ---- HandleStream

HandleStream::HandleStream(void* handle) : handle_(handle) {}

unsigned int HandleStream::Read(void* buf, unsigned int count) {
  if (buf == nullptr || handle_ == nullptr) return 0;
  DWORD done = 0;
  return detail::file_io::Read(handle_, buf, count, &done) ? done : 0;
}

unsigned int HandleStream::Write(const void* buf, unsigned int count) {
  if (buf == nullptr) return 0;
  DWORD done = 0;
  return detail::file_io::Write(handle_, buf, count, &done) ? done : 0;
}

long long HandleStream::Seek(long long offset, SeekOrigin origin) {
  if (handle_ == nullptr) return -1;
  long long position = 0;
  return detail::file_io::Seek(handle_, offset, static_cast<DWORD>(origin), &position) ? position : -1;
}

void HandleStream::SetSize(long long newSize) {
  if (Seek(newSize, Begin) == newSize) detail::file_io::SetEnd(handle_);
}

bool HandleStream::IsOpened() const { return handle_ != INVALID_HANDLE_VALUE; }

HandleStream::operator void*() const { return IsOpened() ? const_cast<HandleStream*>(this) : nullptr; }

bool HandleStream::operator!() const { return !IsOpened(); }

// ---- FileStream

FileStream::FileStream(const std::string& path, unsigned long mode) : HandleStream(FileOpen(path, mode)) {}

FileStream::FileStream(const std::wstring& path, unsigned long mode) : HandleStream(FileOpen(path, mode)) {}

FileStream::~FileStream() {
  if (handle_ != INVALID_HANDLE_VALUE) detail::file_io::Close(handle_);
}

}  // namespace DE
