// Byte streams: the abstract Stream with block copies, HandleStream over an operating-system
// file handle, FileStream that opens a file by name, and MemoryrStream, a growable memory buffer
// that can also wrap a caller's buffer.
//
// Sizes and positions are signed 64-bit; one transfer is an unsigned 32-bit count. Nothing here
// throws or logs: failures show as 0 bytes moved, -1 as a position, an invalid handle, or an
// unchanged stream. One stream object must not be used by two threads at once.
//
// Stream's destructor is not virtual (the classes keep their historical layout): destroy a
// stream through its own type, never through a Stream* or HandleStream* that points at a
// derived object.
#pragma once

#include <iosfwd>
#include <string>

#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE {

// The same numbers as the platform's file-pointer origins.
enum SeekOrigin { Begin = 0, Current = 1, End = 2 };

// Opens a file with a mode word (low 16 bits; higher bits are ignored):
//   0xFFFF         create: read and write, no sharing, always create (an existing file is
//                  truncated), attributes normal;
//   bits 0-1       0 read, 1 write, 2 read and write (open existing); 3 fails;
//   bits 4-7       sharing: 0x00 and 0x10 none, 0x20 others may read, 0x30 others may write,
//                  0x40 others may read and write; above 0x40 fails.
// Narrow paths are in the ANSI code page. Returns INVALID_HANDLE_VALUE on failure, with the
// thread's last error set (a mode that fails by itself: ERROR_INVALID_PARAMETER, 87; another
// opener's sharing: ERROR_SHARING_VIOLATION, 32). On Linux sharing is kept between all users
// of this library (advisory locks) and the path is used as given, in UTF-8.
UTIL_API HANDLE FileOpen(const std::string& path, unsigned long mode);
UTIL_API HANDLE FileOpen(const std::wstring& path, unsigned long mode);
// Closes a handle from FileOpen; false for an invalid handle.
UTIL_API bool FileClose(HANDLE handle);

class UTIL_API Stream {
 public:
  virtual unsigned int Read(void* buf, unsigned int count) = 0;
  virtual unsigned int Write(const void* buf, unsigned int count) = 0;
  // The new position, or -1 on failure.
  virtual long long Seek(long long offset, SeekOrigin origin) = 0;
  // Seek(0, End) with the position put back; -1 when the stream cannot seek.
  virtual long long Size();
  // The base keeps only the low 32 bits (sign-extended) and hands them to the subclass's own
  // SetSize; every stream here overrides it, so only an explicit Stream::SetSize call lands here.
  virtual void SetSize(long long newSize);

  long long Position();
  void SetPosition(long long position);

  // One Read / Write; nothing when buf is null or count is 0. Short transfers are not reported.
  void ReadBuffer(void* buf, unsigned int count);
  void WriteBuffer(const void* buf, unsigned int count);

  // Copies count bytes from src at its position (count 0: all of src from its start) in blocks
  // of 61440 bytes. Returns the count asked for, 0 when count <= 0 or no copy buffer.
  long long CopyFrom(Stream& src, long long count);
  // The same with this stream as the source.
  long long CopyTo(Stream& dst, long long count);
  // Copies everything the standard stream yields; returns the bytes written here.
  long long CopyFrom(std::istream& src);
  // Copies from this stream's position to its end; returns the bytes handed to dst.
  long long CopyTo(std::ostream& dst);
};

// A stream over a handle the caller owns: destruction does not close it.
class UTIL_API HandleStream : public Stream {
 public:
  explicit HandleStream(void* handle);

  // One system read; 0 for a null buf or a null handle, or on failure.
  unsigned int Read(void* buf, unsigned int count) override;
  // One system write; 0 for a null buf or on failure.
  unsigned int Write(const void* buf, unsigned int count) override;
  // -1 for a null handle or on failure.
  long long Seek(long long offset, SeekOrigin origin) override;
  // Seeks to newSize and, when that lands exactly there, ends the file there.
  void SetSize(long long newSize) override;
  // True unless the handle is INVALID_HANDLE_VALUE (a null handle counts as open).
  virtual bool IsOpened() const;

  void* Handle() const { return handle_; }
  operator void*() const;  // this when IsOpened(), else null
  bool operator!() const;

 protected:
  void* handle_;
};

// Opens a file by name with a FileOpen mode word and closes it on destruction. A failed open
// leaves INVALID_HANDLE_VALUE, which IsOpened() reports.
class UTIL_API FileStream : public HandleStream {
 public:
  FileStream(const std::string& path, unsigned long mode);
  FileStream(const std::wstring& path, unsigned long mode);
  ~FileStream();
  FileStream(const FileStream&) = delete;
  FileStream& operator=(const FileStream&) = delete;
};

// A memory buffer. A growable stream owns its buffer and grows it in 8192-byte steps, keeping
// two spare bytes past the capacity for terminators; bytes it gains without a write (SetSize
// growth, a gap left by writing past the end) read as zeros, and the two bytes after its data
// are zero until overwritten. A fixed stream (built over or from a caller's buffer) never
// reallocates or frees its buffer, and Write does not check its capacity: its users must never
// write past it. A failed allocation leaves the stream as it was (Write then moves 0 bytes).
class UTIL_API MemoryrStream : public Stream {
 public:
  MemoryrStream();
  // size bytes allocated (zeros), position 0.
  explicit MemoryrStream(unsigned long long size);
  // null data or len < 1: an empty growable stream. Otherwise a fixed stream of len bytes:
  // attach true uses data in place (the caller keeps it); false copies it into a new buffer
  // that is then fixed too, and so is never freed (it lives as long as the process).
  MemoryrStream(char* data, int len, bool attach);
  // Growable copies; the position ends after the data.
  MemoryrStream(const char* data, int len);
  MemoryrStream(const char* text);
  MemoryrStream(MemoryrStream& other);
  MemoryrStream& operator=(const MemoryrStream&) = delete;
  // Frees a growable buffer; a fixed one is left alone.
  ~MemoryrStream();

  // 0 when buf is null, the position is negative or at/after the end.
  unsigned int Read(void* buf, unsigned int count) override;
  // Grows a growable stream as needed; returns count (0 for null buf, count 0, a negative
  // position, a 32-bit end of 0, or a failed allocation).
  unsigned int Write(const void* buf, unsigned int count) override;
  // No bounds check: a position past the end is allowed (and reads 0 bytes).
  long long Seek(long long offset, SeekOrigin origin) override;
  // Reallocates a growable stream for newSize; the position moves to the end when past it.
  void SetSize(long long newSize) override;

  // Growable streams only: capacity rounded up to a multiple of 8192, computed in 32 bits.
  void SetCapacity(long long newCapacity);
  long long GetCapacity() const { return capacity_; }
  char* Memory() const { return memory_; }

  // Growable: frees the buffer. Fixed: keeps it. Either way size and position become 0.
  void Clear();
  // The buffer with NUL terminators written after the data (where a fixed buffer has room);
  // "" for a stream that has never held data.
  const char* c_str();
  std::string ToString() const;
  // The bytes as UTF-16 units in memory order, (size + 1) / 2 of them (an odd size takes the
  // byte after the data, 0 when that is outside the buffer).
  std::wstring ToWString() const;

  // -1 for null s; s empty: 0 if this is empty, else 1; this empty: -1; otherwise the sign of
  // a byte compare over max(size, strlen(s)) + 1 bytes, so the bytes after the data take part
  // (a stream cut shorter keeps its old bytes there until c_str()). Results are -1, 0 or 1.
  // Bytes past the text's terminator, past a fixed buffer, or past a growable stream's two
  // terminator places compare as 0.
  int Compare(const char* s) const;
  int Compare(MemoryrStream& other) const;
  // As Compare, with ASCII letters folded to lower case.
  int CompareNoCase(const char* s) const;

  void Assign(MemoryrStream& other);
  void Assign(const char* data, int len);
  void Assign(const char* text);
  void Assign(char ch, int count);
  void Append(MemoryrStream& other);
  void Append(const char* data, int len);
  void Append(const char* text);
  void Append(char ch, int count);

  void SaveToStream(Stream& dst);
  void LoadFromStream(Stream& src);
  // Creates or truncates the file (mode 0xFFFF) and writes the data; failures are silent.
  void SaveToFile(const std::string& path);
  void SaveToFile(const std::wstring& path);
  // Empties the stream and reads the whole file (mode 0); a missing file leaves it empty.
  void LoadFromFile(const std::string& path);
  void LoadFromFile(const std::wstring& path);

 private:
  bool IsFixed() const { return fixedCapacity_ >= 1; }
  bool IsEmpty() const { return size_ < 1 || memory_ == nullptr; }
  // Byte i of the allocation, 0 outside it.
  unsigned char ByteAt(long long i) const;
  // Reallocation for a requested capacity (growable streams); false when memory ran out.
  bool Reallocate(long long requested);
  // Compare / CompareNoCase against a text.
  int CompareText(const char* s, bool foldCase) const;

  char* memory_;
  long long size_;
  long long position_;
  long long capacity_;
  long long fixedCapacity_;
};

}  // namespace DE
