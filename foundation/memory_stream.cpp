// MemoryrStream: the growable (or caller-fixed) memory buffer stream.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "DEStream.h"
#include "foundation/utf16.h"

namespace DE {
namespace {

constexpr long long kGrowthStep = 8192;
// The rounding mask is a 32-bit one: the rounded capacity is taken modulo 2^32, as it always was.
constexpr long long kGrowthMask = static_cast<long long>(0xFFFFE000u);
constexpr long long kSpareBytes = 2;  // room for two terminators past the capacity

int Sign(int value) { return (value > 0) - (value < 0); }

unsigned char FoldAscii(unsigned char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c;
}

// The sign of the first difference over `length` bytes, byte i of each side given by a(i), b(i).
// The comparisons run over max(size, other size) + 1 bytes, so the terminators take part.
template <typename ByteA, typename ByteB>
int CompareBytes(long long length, ByteA a, ByteB b, bool foldCase) {
  for (long long i = 0; i < length; ++i) {
    const unsigned char x = foldCase ? FoldAscii(a(i)) : a(i);
    const unsigned char y = foldCase ? FoldAscii(b(i)) : b(i);
    if (x != y) return Sign(static_cast<int>(x) - static_cast<int>(y));
  }
  return 0;
}

}  // namespace

MemoryrStream::MemoryrStream() : memory_(nullptr), size_(0), position_(0), capacity_(0), fixedCapacity_(0) {}

MemoryrStream::MemoryrStream(unsigned long long size) : MemoryrStream() {
  SetSize(static_cast<long long>(size));
}

MemoryrStream::MemoryrStream(char* data, int len, bool attach) : MemoryrStream() {
  if (data == nullptr || len < 1) return;
  if (attach) {
    memory_ = data;
  } else {
    Write(data, static_cast<unsigned int>(len));
    if (memory_ == nullptr) return;  // no memory for the copy: stay an empty growable stream
  }
  // Both ways the stream is fixed from here on, so a copied buffer is not freed either.
  size_ = capacity_ = fixedCapacity_ = len;
  position_ = 0;
}

MemoryrStream::MemoryrStream(const char* data, int len) : MemoryrStream() {
  if (data != nullptr && len >= 1) Write(data, static_cast<unsigned int>(len));
}

MemoryrStream::MemoryrStream(const char* text) : MemoryrStream() {
  if (text != nullptr && *text != '\0') Write(text, static_cast<unsigned int>(std::strlen(text)));
}

MemoryrStream::MemoryrStream(MemoryrStream& other) : MemoryrStream() {
  if (other.memory_ != nullptr) Write(other.memory_, static_cast<unsigned int>(other.size_));
}

MemoryrStream::~MemoryrStream() {
  if (!IsFixed()) Reallocate(0);
  size_ = 0;
  position_ = 0;
}

bool MemoryrStream::Reallocate(long long requested) {
  long long n = requested;
  if (n >= 1 && n != size_) n = (n + kGrowthStep - 1) & kGrowthMask;
  if (n == capacity_) return true;
  if (n < 0) return false;
  if (n == 0) {
    std::free(memory_);
    memory_ = nullptr;
    capacity_ = 0;
    return true;
  }
  const long long newAllocation = n + kSpareBytes;
  if (static_cast<unsigned long long>(newAllocation) > SIZE_MAX) return false;
  // realloc keeps the first size bytes (they fit in both blocks when newAllocation >= size) and
  // can often grow in place; only a block too small for the data is zeroed instead.
  char* grown = static_cast<char*>(std::realloc(memory_, static_cast<std::size_t>(newAllocation)));
  if (grown == nullptr) return false;
  if (memory_ != nullptr && newAllocation < size_)
    std::memset(grown, 0, static_cast<std::size_t>(newAllocation));
  memory_ = grown;
  capacity_ = n;
  return true;
}

unsigned int MemoryrStream::Read(void* buf, unsigned int count) {
  if (buf == nullptr || position_ < 0 || memory_ == nullptr) return 0;
  if (static_cast<std::uint32_t>(position_) == static_cast<std::uint32_t>(size_)) return 0;
  if (position_ >= size_) return 0;
  std::uint32_t n = static_cast<std::uint32_t>(size_) - static_cast<std::uint32_t>(position_);
  if (n > count) n = count;
  // Sizes set beyond the buffer (a fixed buffer, or a capacity cut by the 32-bit rounding) never
  // make a read leave it.
  const long long extent = IsFixed() ? fixedCapacity_ : capacity_;
  if (position_ >= extent) return 0;
  if (n > extent - position_) n = static_cast<std::uint32_t>(extent - position_);
  std::memcpy(buf, memory_ + position_, n);
  position_ += n;
  return n;
}

unsigned int MemoryrStream::Write(const void* buf, unsigned int count) {
  if (buf == nullptr || count == 0 || position_ < 0) return 0;
  const std::uint32_t end = static_cast<std::uint32_t>(position_) + count;
  if (end == 0) return 0;
  bool extended = false;
  if (end > size_) {
    if (end > capacity_) {
      SetCapacity(end);
      if (!IsFixed() && capacity_ < end) return 0;  // out of memory: nothing changed
    }
    // A gap left by writing past the end of a growable stream reads as zeros.
    extended = !IsFixed();
    if (extended && position_ > size_) {
      std::memset(memory_ + size_, 0, static_cast<std::size_t>(position_ - size_));
    }
    size_ = end;
  }
  std::memcpy(memory_ + position_, buf, count);
  if (extended) {
    // The two spare bytes after the new end start as terminators, so no byte a reader can
    // reach is left uninitialised.
    memory_[end] = '\0';
    memory_[end + 1] = '\0';
  }
  position_ = end;
  return count;
}

long long MemoryrStream::Seek(long long offset, SeekOrigin origin) {
  switch (origin) {
    case Begin:
      position_ = offset;
      break;
    case Current:
      position_ += offset;
      break;
    case End:
      position_ = size_ + offset;
      break;
  }
  return position_;
}

void MemoryrStream::SetSize(long long newSize) {
  const long long saved = position_;
  if (!IsFixed()) {
    if (!Reallocate(newSize)) return;
    // Bytes gained without a write read as zeros, terminators included.
    const long long zeroEnd = std::min(newSize, capacity_) + kSpareBytes;
    if (memory_ != nullptr && newSize > size_ && size_ >= 0 && zeroEnd > size_) {
      std::memset(memory_ + size_, 0, static_cast<std::size_t>(zeroEnd - size_));
    }
  }
  size_ = newSize;
  if (static_cast<std::int32_t>(saved) > newSize) Seek(0, End);
}

void MemoryrStream::SetCapacity(long long newCapacity) {
  if (!IsFixed()) Reallocate(newCapacity);
}

void MemoryrStream::Clear() {
  if (!IsFixed()) Reallocate(0);
  SetSize(0);
  Seek(0, Begin);
}

const char* MemoryrStream::c_str() {
  if (memory_ == nullptr) return "";
  if (!IsFixed()) {
    if (size_ >= 0 && size_ <= capacity_) {  // always, unless a size beyond 4 GiB cut the capacity
      memory_[size_] = '\0';
      memory_[size_ + 1] = '\0';
    }
  } else {
    if (size_ >= 0 && size_ < fixedCapacity_) memory_[size_] = '\0';
    if (size_ >= 0 && size_ + 1 < fixedCapacity_) memory_[size_ + 1] = '\0';
  }
  return memory_;
}

std::string MemoryrStream::ToString() const {
  if (size_ < 1 || memory_ == nullptr) return std::string();
  return std::string(memory_, static_cast<std::size_t>(size_));
}

unsigned char MemoryrStream::ByteAt(long long i) const {
  // A growable buffer is read no further than its two terminator places: bytes past them may
  // never have been written.
  const long long readable = IsFixed() ? fixedCapacity_ : std::min(capacity_, size_) + kSpareBytes;
  if (memory_ == nullptr || i < 0 || i >= readable) return 0;
  return static_cast<unsigned char>(memory_[i]);
}

std::wstring MemoryrStream::ToWString() const {
  if (size_ < 1 || memory_ == nullptr) return std::wstring();
  const long long count = (size_ + 1) / 2;
  std::vector<std::uint16_t> units(static_cast<std::size_t>(count));
  for (long long i = 0; i < count; ++i) {
    units[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(ByteAt(2 * i) | ByteAt(2 * i + 1) << 8);
  }
  return detail::FromUtf16(units.data(), units.size());
}

int MemoryrStream::CompareText(const char* s, bool foldCase) const {
  if (s == nullptr) return -1;
  if (*s == '\0') return IsEmpty() ? 0 : 1;
  if (IsEmpty()) return -1;
  // The text has strlen + 1 readable bytes (data and its terminator); past those a byte counts as 0.
  const long long textSize = static_cast<long long>(std::strlen(s));
  return CompareBytes(
      std::max(size_, textSize) + 1, [this](long long i) { return ByteAt(i); },
      [&](long long i) -> unsigned char { return i <= textSize ? static_cast<unsigned char>(s[i]) : 0; },
      foldCase);
}

int MemoryrStream::Compare(const char* s) const { return CompareText(s, false); }

int MemoryrStream::Compare(MemoryrStream& other) const {
  if (other.IsEmpty()) return IsEmpty() ? 0 : 1;
  if (IsEmpty()) return -1;
  return CompareBytes(
      std::max(size_, other.size_) + 1, [this](long long i) { return ByteAt(i); },
      [&other](long long i) { return other.ByteAt(i); }, false);
}

int MemoryrStream::CompareNoCase(const char* s) const { return CompareText(s, true); }

void MemoryrStream::Assign(MemoryrStream& other) {
  Clear();
  if (other.memory_ == nullptr || other.memory_ == memory_) return;
  Write(other.memory_, static_cast<unsigned int>(other.size_));
}

void MemoryrStream::Assign(const char* data, int len) {
  Clear();
  if (data != nullptr && len >= 1) Write(data, static_cast<unsigned int>(len));
}

void MemoryrStream::Assign(const char* text) {
  Clear();
  if (text != nullptr && *text != '\0') Write(text, static_cast<unsigned int>(std::strlen(text)));
}

void MemoryrStream::Assign(char ch, int count) {
  Clear();
  if (count < 1) return;
  SetSize(count);
  if (size_ != count || memory_ == nullptr) return;
  std::memset(memory_, ch, static_cast<std::size_t>(count));
  position_ = size_;
}

void MemoryrStream::Append(MemoryrStream& other) {
  if (other.memory_ == nullptr || other.size_ < 1) return;
  Seek(0, End);
  Write(other.memory_, static_cast<unsigned int>(other.size_));
}

void MemoryrStream::Append(const char* data, int len) {
  if (data == nullptr || len < 1) return;
  Seek(0, End);
  Write(data, static_cast<unsigned int>(len));
}

void MemoryrStream::Append(const char* text) {
  if (text == nullptr || *text == '\0') return;
  Seek(0, End);
  Write(text, static_cast<unsigned int>(std::strlen(text)));
}

void MemoryrStream::Append(char ch, int count) {
  if (count < 1) return;
  Seek(0, End);
  const long long target = size_ + count;
  SetSize(target);
  if (size_ != target || memory_ == nullptr) return;
  std::memset(memory_ + position_, ch, static_cast<std::size_t>(size_ - position_));
  position_ = size_;
}

void MemoryrStream::SaveToStream(Stream& dst) {
  if (size_ != 0 && memory_ != nullptr) dst.Write(memory_, static_cast<unsigned int>(size_));
}

void MemoryrStream::LoadFromStream(Stream& src) {
  Clear();
  CopyFrom(src, 0);
}

void MemoryrStream::SaveToFile(const std::string& path) {
  FileStream file(path, 0xFFFF);
  SaveToStream(file);
}

void MemoryrStream::SaveToFile(const std::wstring& path) {
  FileStream file(path, 0xFFFF);
  SaveToStream(file);
}

void MemoryrStream::LoadFromFile(const std::string& path) {
  FileStream file(path, 0);
  LoadFromStream(file);
}

void MemoryrStream::LoadFromFile(const std::wstring& path) {
  FileStream file(path, 0);
  LoadFromStream(file);
}

}  // namespace DE
