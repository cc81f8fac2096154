// The library's binary record format: big-endian numbers and 32-bit length prefixes on any
// Stream, the Serialize* byte-string helpers, and self-saving records (BaseItem, SimpleFileItem).
//
// Wire encoding (every number big-endian):
//   Int32/UInt32 4 bytes; Int64/UInt64 8 bytes;
//   String   UInt32 byte count n, then the n bytes as held (no terminator, no code-page change);
//   WString  UInt32 byte count n = 2 x UTF-16 units, then each unit big-endian (both builds:
//            on Linux a character above U+FFFF travels as a surrogate pair and comes back whole);
//            a string of 0x40000000 units or more is not written at all, not even its count;
//   Float    the value printed with "%f", written as a String;
//   FileTime dwLowDateTime then dwHighDateTime, each a UInt32;
//   vectors  UInt32 count, then the elements (ints as Int32, strings as String / WString);
//   maps     UInt32 count, then key and value per entry in ascending key order.
//
// Reading never fails: what the stream does not deliver reads as zeros or empty values. Bounds
// against hostile input:
//   - a string is never sized beyond what the stream still holds (Size() - Position(), when the
//     stream can tell); when it cannot, a count above 64 KiB is read in 64 KiB steps and the
//     string ends with the last byte that arrived; within those bounds a short read leaves zeros;
//   - a vector, map or item list stops at the first element that finds the stream used up (an
//     element cut short is kept, zero-filled), whatever its count says.
// Only ReadFloat throws: std::stof's invalid_argument / out_of_range for text that is not a
// float. Readers and writers hold only a reference to the stream; neither may be shared between
// threads, nor may the stream beneath them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "DEStream.h"
#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE {

class UTIL_API StreamWriter {
 public:
  explicit StreamWriter(Stream& stream);
  virtual ~StreamWriter();

  // Each writes its encoding with Stream::Write; the bytes written are not checked.
  void WriteInt32(const int& value);
  void WriteUInt32(const unsigned int& value);
  void WriteInt64(const long long& value);
  void WriteUInt64(const unsigned long long& value);
  void WriteFloat(const float& value);
  void WriteString(const std::string& value);
  void WriteWString(const std::wstring& value);
  void WriteIntVector(const std::vector<int>& values);
  void WriteIntVector(const std::vector<unsigned int>& values);
  void WriteStringVector(const std::vector<std::string>& values);
  void WriteStringVector(const std::vector<std::wstring>& values);
  void WriteStringMap(const std::map<std::string, std::string>& values);
  void WriteStringMap(const std::map<std::wstring, std::wstring>& values);
  void WriteFileTime(const FILETIME& value);

 private:
  Stream& stream_;
};

class UTIL_API StreamReader {
 public:
  explicit StreamReader(Stream& stream);
  virtual ~StreamReader();

  int ReadInt32();
  unsigned int ReadUInt32();
  long long ReadInt64();
  unsigned long long ReadUInt64();
  // Throws std::invalid_argument / std::out_of_range (from std::stof) for text that is no float.
  float ReadFloat();
  // "" for a count below 1.
  std::string ReadString();
  // "" for a count below 1 or odd (the data bytes are then left unread).
  std::wstring ReadWString();
  // The elements are added to what the containers already hold (maps: an entry read replaces
  // one with the same key).
  void ReadIntVector(std::vector<int>& values);
  void ReadIntVector(std::vector<unsigned int>& values);
  void ReadStringVector(std::vector<std::string>& values);
  void ReadStringVector(std::vector<std::wstring>& values);
  void ReadStringMap(std::map<std::string, std::string>& values);
  void ReadStringMap(std::map<std::wstring, std::wstring>& values);
  FILETIME ReadFileTime();

 private:
  Stream& stream_;
};

// The StringVector / StringMap encodings as byte strings (never "": the count is always there).
UTIL_API std::string SerializeStringVector(const std::vector<std::string>& values);
UTIL_API std::string SerializeWStringVector(const std::vector<std::wstring>& values);
UTIL_API std::string SerializeStringMap(const std::map<std::string, std::string>& values);
UTIL_API std::string SerializeWStringMap(const std::map<std::wstring, std::wstring>& values);
// The containers such bytes encode (empty ones for "" or bytes of another shape).
UTIL_API std::vector<std::string> UnSerializeStringVector(std::string bytes);
UTIL_API std::vector<std::wstring> UnSerializeWStringVector(std::string bytes);
UTIL_API std::map<std::string, std::string> UnSerializeStringMap(std::string bytes);
UTIL_API std::map<std::wstring, std::wstring> UnSerializeWStringMap(std::string bytes);

// A record that saves and loads itself in the record format.
class UTIL_API BaseItem {
 public:
  virtual ~BaseItem();
  // Copies other through its encoding: other.SaveToStream into a memory stream, then
  // LoadFromStream from it; records of compatible layout copy into each other.
  virtual void Assign(BaseItem& other);
  virtual void SaveToStream(Stream& stream) = 0;
  virtual void LoadFromStream(Stream& stream) = 0;

  // Deletes every non-null element and empties the vector.
  static void ClearItemList(std::vector<BaseItem*>& items);
};

// A file entry: exactly these fourteen items, in this order, with no header or version.
// Flag, Value64 and Values are opaque numbers whose meaning belongs to the code that fills them.
class UTIL_API SimpleFileItem : public BaseItem {
 public:
  SimpleFileItem();

  void SaveToStream(Stream& stream) override;
  void LoadFromStream(Stream& stream) override;
  // Path followed directly by Name (no separator is inserted).
  std::wstring FullPathName() const;

  // Reads a UInt32 count and that many items (stopping early when the stream is used up),
  // appending them; an item whose allocation fails is appended as null. The caller owns the
  // items and frees them with ClearItemList.
  static void ReadItemListFromStream(std::vector<SimpleFileItem*>& items, Stream& stream);
  using BaseItem::ClearItemList;
  static void ClearItemList(std::vector<SimpleFileItem*>& items);

  bool Flag;                // UInt32 0 or 1; any non-zero value reads as true
  std::wstring Path;        // the folder; WString
  std::wstring Name;        // the file name; WString
  long long Value64;        // Int64
  unsigned int Values[10];  // ten UInt32
};

// Opens the file a SimpleFileItem names, below a root folder.
class UTIL_API HandleSimpleFile {
 public:
  // Copies both; no file is opened.
  HandleSimpleFile(const std::wstring& rootPath, SimpleFileItem& item);
  ~HandleSimpleFile();  // closes
  HandleSimpleFile(const HandleSimpleFile&) = delete;
  HandleSimpleFile& operator=(const HandleSimpleFile&) = delete;

  // True at once when open. Otherwise FileOpen(rootPath + item.Name, mode) (DEStream.h's mode
  // word); on failure keeps the system error code and its message (SysErrorMessageW) and
  // returns false.
  bool Open(unsigned int mode);
  // Closes the handle and drops the stream; nothing when closed.
  void Close();

  std::wstring GetRootPath() const { return rootPath_; }
  SimpleFileItem& GetSimpleFileItem() { return item_; }
  // Null while closed.
  HandleStream* GetHandleStream() const { return stream_; }
  // 0 until an Open fails.
  unsigned int GetLastErrorCode() const { return lastErrorCode_; }
  std::wstring GetLastErrorMessage() const { return lastErrorMessage_; }

 private:
  unsigned int lastErrorCode_;
  std::wstring lastErrorMessage_;
  std::wstring rootPath_;
  SimpleFileItem item_;
  HandleStream* stream_;
};

}  // namespace DE
