// Record-file commands: write a SimpleFileItem list, and show one in readable form (or, for
// bytes of another shape, as a hex dump with offsets).
#include <cstdint>
#include <cstdio>
#include <string>

#include "DESerialize.h"
#include "DEStream.h"
#include "DEString.h"
#include "command.h"

namespace utl {
namespace {

constexpr int kValueCount = 10;

std::wstring Wide(const std::string& utf8) { return DE::StringProc::StringToWStringByUTF8(utf8); }
std::string Utf8(const std::wstring& wide) { return DE::StringProc::WStringToStringByUTF8(wide); }

// Checks that the bytes are exactly a SimpleFileItem list (count, then that many complete
// items, nothing after); on failure says why and where.
class ListShape {
 public:
  explicit ListShape(const std::string& bytes) : bytes_(bytes) {}

  bool Check(std::string* problem) {
    std::uint32_t count = 0;
    if (!Number(4, &count)) return Fail("the item count is cut short", problem);
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::string item = "item " + std::to_string(i) + ": ";
      std::uint32_t flag = 0;
      if (!Number(4, &flag)) return Fail(item + "Flag is cut short", problem);
      if (flag > 1) return Fail(item + "Flag is " + std::to_string(flag) + ", not 0 or 1", problem);
      if (!WideString()) return Fail(item + "Path is not a well-formed wide string", problem);
      if (!WideString()) return Fail(item + "Name is not a well-formed wide string", problem);
      std::uint32_t ignored = 0;
      if (!Number(4, &ignored) || !Number(4, &ignored)) return Fail(item + "Value64 is cut short", problem);
      for (int k = 0; k < kValueCount; ++k) {
        if (!Number(4, &ignored)) return Fail(item + "Values are cut short", problem);
      }
    }
    if (offset_ != bytes_.size()) return Fail("bytes follow the last item", problem);
    return true;
  }

 private:
  bool Number(std::size_t width, std::uint32_t* value) {
    if (bytes_.size() - offset_ < width) return false;
    *value = 0;
    for (std::size_t i = 0; i < width; ++i)
      *value = *value << 8 | static_cast<unsigned char>(bytes_[offset_ + i]);
    offset_ += width;
    return true;
  }

  bool WideString() {
    const std::size_t start = offset_;
    std::uint32_t length = 0;
    if (!Number(4, &length)) return false;
    if (length % 2 != 0 || length > 0x7FFFFFFF || bytes_.size() - offset_ < length) {
      offset_ = start;
      return false;
    }
    offset_ += length;
    return true;
  }

  bool Fail(const std::string& what, std::string* problem) {
    *problem = what + " (offset " + std::to_string(offset_) + ")";
    return false;
  }

  const std::string& bytes_;
  std::size_t offset_ = 0;
};

void HexDump(const std::string& bytes) {
  for (std::size_t line = 0; line < bytes.size(); line += 16) {
    char text[96];
    std::string hex;
    std::string shown;
    for (std::size_t i = line; i < line + 16; ++i) {
      if (i < bytes.size()) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        std::snprintf(text, sizeof text, "%02x ", byte);
        hex += text;
        shown += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
      } else {
        hex += "   ";
      }
      if (i == line + 7) hex += ' ';
    }
    std::snprintf(text, sizeof text, "%08lx  ", static_cast<unsigned long>(line));
    PrintLine(text + hex + " |" + shown + "|");
  }
}

bool ReadWholeFile(const std::string& path, std::string* bytes) {
  DE::FileStream file(Wide(path), 0);
  if (!file.IsOpened()) return false;
  DE::MemoryrStream memory;
  memory.LoadFromStream(file);
  *bytes = memory.ToString();
  return true;
}

void PrintItem(std::size_t index, const DE::SimpleFileItem& item) {
  PrintLine("item " + std::to_string(index));
  PrintLine("  Flag     " + std::string(item.Flag ? "1" : "0"));
  PrintLine("  Path     " + Utf8(item.Path));
  PrintLine("  Name     " + Utf8(item.Name));
  PrintLine("  Value64  " + std::to_string(item.Value64));
  std::string values;
  for (const unsigned int value : item.Values) values += (values.empty() ? "" : " ") + std::to_string(value);
  PrintLine("  Values   " + values);
}

int RecordDump(const std::vector<std::string>& args) {
  if (args.size() != 1) return UsageError("record-dump", "takes one file");
  std::string bytes;
  if (!ReadWholeFile(args[0], &bytes)) return Failure("cannot open " + args[0]);
  std::string problem;
  if (!ListShape(bytes).Check(&problem)) {
    PrintLine("not a SimpleFileItem list: " + problem + "; " + std::to_string(bytes.size()) + " bytes:");
    HexDump(bytes);
    return 3;
  }
  // The shape is right: the library's own reader decodes it.
  DE::MemoryrStream stream(bytes.data(), static_cast<int>(bytes.size()));
  stream.Seek(0, DE::Begin);
  std::vector<DE::SimpleFileItem*> items;
  DE::SimpleFileItem::ReadItemListFromStream(items, stream);
  PrintLine("SimpleFileItem list: " + std::to_string(items.size()) + " item(s), " +
            std::to_string(bytes.size()) + " bytes");
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i] != nullptr) PrintItem(i, *items[i]);
  }
  DE::SimpleFileItem::ClearItemList(items);
  return 0;
}

// Item i: Flag set for even i, Path as given, Name the i-th name, Value64 (i+1) * 2^32 + i,
// Values[k] = i * 65536 + k: numbers that show byte order and every field's place.
int RecordMake(const std::vector<std::string>& args) {
  if (args.size() < 3) return UsageError("record-make", "needs a file, a path and at least one name");
  DE::MemoryrStream stream;
  DE::StreamWriter writer(stream);
  writer.WriteUInt32(static_cast<unsigned int>(args.size() - 2));
  for (std::size_t i = 2; i < args.size(); ++i) {
    const unsigned int index = static_cast<unsigned int>(i - 2);
    DE::SimpleFileItem item;
    item.Flag = index % 2 == 0;
    item.Path = Wide(args[1]);
    item.Name = Wide(args[i]);
    item.Value64 = (static_cast<long long>(index) + 1) * 0x100000000LL + index;
    for (int k = 0; k < kValueCount; ++k) item.Values[k] = index * 65536u + static_cast<unsigned int>(k);
    item.SaveToStream(stream);
  }
  DE::FileStream file(Wide(args[0]), 0xFFFF);
  if (!file.IsOpened()) return Failure("cannot create " + args[0]);
  const std::string bytes = stream.ToString();
  if (file.Write(bytes.data(), static_cast<unsigned int>(bytes.size())) != bytes.size()) {
    return Failure("cannot write " + args[0]);
  }
  return 0;
}

UTL_COMMAND("record-dump", "<file>", "show a SimpleFileItem list file (hex dump for other bytes)",
            RecordDump);
UTL_COMMAND("record-make", "<file> <path> <name>...", "write a SimpleFileItem list, one item per name",
            RecordMake);

}  // namespace
}  // namespace utl
