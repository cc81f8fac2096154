// Base64: the RFC 4648 section 10 vectors both ways, and where decoding stops.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "DEString.h"

namespace {

std::string Encode(const std::string& bytes) {
  std::string copy = bytes;
  return DE::Base64Encode(reinterpret_cast<unsigned char*>(&copy[0]), static_cast<unsigned int>(copy.size()));
}

TEST(Base64, Rfc4648Vectors) {
  const std::pair<std::string, std::string> vectors[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
  };
  for (const auto& v : vectors) {
    EXPECT_EQ(Encode(v.first), v.second);
    EXPECT_EQ(DE::Base64Decode(v.second), v.first);
  }
  EXPECT_EQ(DE::Base64Encode(nullptr, 3), "");
  // The last two alphabet characters.
  EXPECT_EQ(Encode("\xFB\xFF"), "+/8=");
  EXPECT_EQ(DE::Base64Decode("+/8="), "\xFB\xFF");
}

TEST(Base64, AllBytesRoundTrip) {
  std::string bytes;
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i ^ (round * 0x55)));
  }
  for (std::size_t len : {bytes.size(), bytes.size() - 1, bytes.size() - 2}) {
    const std::string encoded = Encode(bytes.substr(0, len));
    EXPECT_EQ(encoded.size(), (len + 2) / 3 * 4);
    EXPECT_EQ(encoded.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="),
              std::string::npos);
    EXPECT_EQ(DE::Base64Decode(encoded), bytes.substr(0, len));
  }
}

TEST(Base64, DecodingStopsAtPaddingOrForeignCharacters) {
  EXPECT_EQ(DE::Base64Decode("TWE="), "Ma");
  EXPECT_EQ(DE::Base64Decode("TW!E"), "M");
  EXPECT_EQ(DE::Base64Decode("TWFu"), "Man");
  EXPECT_EQ(DE::Base64Decode("TWF"), "Ma");  // unpadded groups of 3 and 2
  EXPECT_EQ(DE::Base64Decode("TW"), "M");
  EXPECT_EQ(DE::Base64Decode("TWFuT"), "Man");  // a lone trailing character gives nothing
  EXPECT_EQ(DE::Base64Decode("T"), "");
  EXPECT_EQ(DE::Base64Decode("TWFu=TWFu"), "Man");
  EXPECT_EQ(DE::Base64Decode("TWFu\r\nTWFu"), "Man");
  EXPECT_EQ(DE::Base64Decode("TW E"), "M");
  EXPECT_EQ(DE::Base64Decode("TW\xC3\xA9"), "M");
  EXPECT_EQ(DE::Base64Decode("=TWFu"), "");
  EXPECT_EQ(DE::Base64Decode(std::string("TWFu\0TWFu", 9)), "Man");
}

}  // namespace
