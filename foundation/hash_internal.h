// Pieces shared by the digest sources (hash.cpp, hash_stream.cpp).
#pragma once

#include <string>

#include "DEHash.h"

namespace DE::detail {

// Final of `crypt` into a string of DigestLen() bytes, zero-filled when nothing was written.
std::string FinishDigest(CryptBase& crypt);

}  // namespace DE::detail
