// Base64: the RFC 4648 section 10 vectors both ways, and where decoding stops.
#include <gtest/gtest.h>

#include <string>

#include "DEString.h"

namespace {

std::string Encode(std::string bytes) {
  return DE::Base64Encode(reinterpret_cast<unsigned char*>(&bytes[0]),
                          static_cast<unsigned int>(bytes.size()));
}

TEST(Base64, Rfc4648VectorsAndAllBytes) {
  // Pairs of plain text and its encoding.
  const std::string vectors[] = {
      "",     "",         "f",     "Zg==",     "fo",     "Zm8=",     "foo",      "Zm9v",
      "foob", "Zm9vYg==", "fooba", "Zm9vYmE=", "foobar", "Zm9vYmFy", "\xFB\xFF", "+/8="};
  for (std::size_t i = 0; i < 16; i += 2) {
    EXPECT_EQ(Encode(vectors[i]), vectors[i + 1]);
    EXPECT_EQ(DE::Base64Decode(vectors[i + 1]), vectors[i]);
  }
  EXPECT_EQ(DE::Base64Encode(nullptr, 3), "");

  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
  for (std::size_t len : {bytes.size(), bytes.size() - 1, bytes.size() - 2}) {
    const std::string encoded = Encode(bytes.substr(0, len));
    EXPECT_EQ(encoded.size(), (len + 2) / 3 * 4);
    EXPECT_EQ(DE::Base64Decode(encoded), bytes.substr(0, len));
  }
}

TEST(Base64, DecodingStopsAtPaddingOrForeignCharacters) {
  EXPECT_EQ(DE::Base64Decode("TW!E"), "M");
  EXPECT_EQ(DE::Base64Decode("TWF"), "Ma");     // unpadded groups of 3 and 2
  EXPECT_EQ(DE::Base64Decode("TWFuT"), "Man");  // a lone trailing character gives nothing
  EXPECT_EQ(DE::Base64Decode("T"), "");
  EXPECT_EQ(DE::Base64Decode("TWFu=TWFu"), "Man");
  EXPECT_EQ(DE::Base64Decode("TW\xC3\xA9"), "M");
  EXPECT_EQ(DE::Base64Decode("=TWFu"), "");
  EXPECT_EQ(DE::Base64Decode(std::string("TWFu\0TWFu", 9)), "Man");
}

}  // namespace
