// Reading record items from a stream with the bounds DESerialize.h promises: strings never sized
// beyond what the stream still holds, containers that stop once the stream is used up.
#pragma once

#include <cstdint>
#include <string>

#include "DEStream.h"

namespace DE::detail {

class RecordInput {
 public:
  // Asks the stream once how much it still holds (unknown when it cannot seek).
  explicit RecordInput(Stream& stream);

  std::uint32_t UInt32();
  std::uint64_t UInt64();
  std::string String();
  std::wstring WString();

  // True once a read came back short or the known remainder is used up.
  bool Exhausted() const { return short_ || remaining_ == 0; }
  // A bound for reserving room for elements of at least minBytes each.
  std::size_t ReserveHint(std::uint32_t count, unsigned minBytes) const;

 private:
  // Reads up to n bytes into out, returning how many came; the rest is left as it was.
  std::size_t Fill(char* out, std::size_t n);
  // How many of `wanted` bytes to take for a string: clamped to the known remainder.
  std::size_t Limit(std::uint32_t wanted) const;
  // Reads up to n bytes, step by step when the remainder is unknown and n is large; the result
  // is zero-filled after a short read and ends with the last byte that arrived when stepping.
  std::string Bytes(std::size_t n);

  Stream& stream_;
  long long remaining_;  // -1: unknown
  bool short_ = false;
};

}  // namespace DE::detail
