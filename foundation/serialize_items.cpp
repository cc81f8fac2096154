// Self-saving records: BaseItem, SimpleFileItem, and HandleSimpleFile that opens an item's file.
#include <new>

#include "DEFile.h"
#include "DESerialize.h"
#include "foundation/last_error.h"
#include "foundation/record_input.h"

namespace DE {
namespace {

constexpr int kValueCount = 10;
constexpr unsigned int kErrorNotEnoughMemory = 8;

void LoadItem(detail::RecordInput& in, SimpleFileItem& item) {
  item.Flag = in.UInt32() != 0;
  item.Path = in.WString();
  item.Name = in.WString();
  item.Value64 = static_cast<long long>(in.UInt64());
  for (unsigned int& value : item.Values) value = in.UInt32();
}

}  // namespace

// ---- BaseItem

BaseItem::~BaseItem() = default;

void BaseItem::Assign(BaseItem& other) {
  MemoryrStream stream;
  other.SaveToStream(stream);
  stream.Seek(0, Begin);
  LoadFromStream(stream);
}

void BaseItem::ClearItemList(std::vector<BaseItem*>& items) {
  for (BaseItem* item : items) delete item;
  items.clear();
}

// ---- SimpleFileItem

SimpleFileItem::SimpleFileItem() : Flag(false), Value64(0), Values{} {}

void SimpleFileItem::SaveToStream(Stream& stream) {
  StreamWriter writer(stream);
  writer.WriteUInt32(Flag ? 1u : 0u);
  writer.WriteWString(Path);
  writer.WriteWString(Name);
  writer.WriteInt64(Value64);
  for (const unsigned int& value : Values) writer.WriteUInt32(value);
}

void SimpleFileItem::LoadFromStream(Stream& stream) {
  detail::RecordInput in(stream);
  LoadItem(in, *this);
}

std::wstring SimpleFileItem::FullPathName() const { return Path + Name; }

void SimpleFileItem::ReadItemListFromStream(std::vector<SimpleFileItem*>& items, Stream& stream) {
  detail::RecordInput in(stream);
  const std::uint32_t count = in.UInt32();
  for (std::uint32_t i = 0; i < count && !in.Exhausted(); ++i) {
    SimpleFileItem* item = new (std::nothrow) SimpleFileItem;
    if (item != nullptr) {
      LoadItem(in, *item);
    } else {
      // Without memory for the item its record is still consumed, so the next one lines up.
      SimpleFileItem skipped;
      LoadItem(in, skipped);
    }
    items.push_back(item);
  }
}

void SimpleFileItem::ClearItemList(std::vector<SimpleFileItem*>& items) {
  for (SimpleFileItem* item : items) delete item;
  items.clear();
}

static_assert(sizeof(SimpleFileItem::Values) / sizeof(SimpleFileItem::Values[0]) == kValueCount,
              "a file record carries ten values");

// ---- HandleSimpleFile

HandleSimpleFile::HandleSimpleFile(const std::wstring& rootPath, SimpleFileItem& item)
    : lastErrorCode_(0), rootPath_(rootPath), item_(item), stream_(nullptr) {}

HandleSimpleFile::~HandleSimpleFile() { Close(); }

bool HandleSimpleFile::Open(unsigned int mode) {
  if (stream_ != nullptr) return true;
  const HANDLE handle = FileOpen(rootPath_ + item_.Name, mode);
  if (handle == INVALID_HANDLE_VALUE) {
    lastErrorCode_ = detail::GetLastErrorCode();
    lastErrorMessage_ = SysErrorMessageW(lastErrorCode_);
    return false;
  }
  stream_ = new (std::nothrow) HandleStream(handle);
  if (stream_ == nullptr) {
    FileClose(handle);
    lastErrorCode_ = kErrorNotEnoughMemory;
    lastErrorMessage_ = SysErrorMessageW(lastErrorCode_);
    return false;
  }
  return true;
}

void HandleSimpleFile::Close() {
  if (stream_ == nullptr) return;
  if (stream_->IsOpened()) FileClose(stream_->Handle());
    // The object is exactly a HandleStream (made in Open), so the non-virtual destructor of the
    // stream classes is the right one here; the compiler cannot know that and would warn.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdelete-non-virtual-dtor"
#endif
  delete stream_;
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
  stream_ = nullptr;
}

}  // namespace DE
