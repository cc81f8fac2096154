// Digest command: the upper-case hex SHA-1 or SHA-256 of a file or of a text.
#include "DEHash.h"
#include "DEString.h"
#include "command.h"

namespace utl {
namespace {

// utl hash sha1|sha256 --file <path> | --text <text>. The text is hashed as its
// UTF-8 bytes; an empty text prints an empty line, as the library gives "" for
// empty input.
int Hash(const std::vector<std::string>& args) {
  if (args.size() != 3) return UsageError("hash", "expects an algorithm, --file or --text, and a value");
  const bool sha1 = args[0] == "sha1";
  if (!sha1 && args[0] != "sha256") return UsageError("hash", "unknown algorithm '" + args[0] + "'");
  if (args[1] == "--text") {
    PrintLine(sha1 ? DE::GetStringSha1Hex(args[2]) : DE::GetStringSha256Hex(args[2]));
    return 0;
  }
  if (args[1] != "--file") return UsageError("hash", "expects --file or --text, not '" + args[1] + "'");
  const std::wstring path = DE::StringProc::StringToWStringByUTF8(args[2]);
  const std::string hex = sha1 ? DE::GetFileSha1Hex(path) : DE::GetFileSha256Hex(path);
  if (hex.empty()) return Failure("cannot open '" + args[2] + "' for reading (missing, or in use)");
  PrintLine(hex);
  return 0;
}

UTL_COMMAND("hash", "sha1|sha256 --file <path>|--text <text>", "upper-case hex digest of a file or text",
            Hash);

}  // namespace
}  // namespace utl
