// utl: the command-line face of the Util library.
#include <cstdio>
#include <cstring>
#include <iostream>

#include "DEString.h"
#include "command.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

namespace utl {
namespace {

std::vector<Command>& Registry() {
  static std::vector<Command> commands;
  return commands;
}

const Command* FindCommand(const std::string& name) {
  for (const Command& command : Registry()) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

void PrintUsage(std::FILE* to) {
  std::fprintf(to, "usage: utl <command> [arguments]\n\ncommands:\n");
  for (const Command& command : Registry()) {
    std::fprintf(to, "  %-12s %-34s %s\n", command.name, command.usage, command.summary);
  }
}

int Run(const std::vector<std::string>& args) {
  if (args.empty() || args[0] == "help" || args[0] == "--help" || args[0] == "-h") {
    PrintUsage(args.empty() ? stderr : stdout);
    return args.empty() ? 2 : 0;
  }
  const Command* command = FindCommand(args[0]);
  if (command == nullptr) {
    std::fprintf(stderr, "utl: unknown command '%s'\n\n", args[0].c_str());
    PrintUsage(stderr);
    return 2;
  }
  return command->run(std::vector<std::string>(args.begin() + 1, args.end()));
}

}  // namespace

bool RegisterCommand(const Command& command) {
  Registry().push_back(command);
  return true;
}

const std::vector<Command>& Commands() { return Registry(); }

int UsageError(const std::string& name, const std::string& message) {
  const Command* command = FindCommand(name);
  std::fprintf(stderr, "utl %s: %s\nusage: utl %s %s\n", name.c_str(), message.c_str(), name.c_str(),
               command != nullptr ? command->usage : "");
  return 2;
}

int Failure(const std::string& message) {
  std::fprintf(stderr, "utl: %s\n", message.c_str());
  return 1;
}

void WriteOut(const std::string& bytes) {
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  std::fflush(stdout);
}

void PrintLine(const std::string& utf8) { WriteOut(utf8 + "\n"); }

}  // namespace utl

#if defined(_WIN32)
int wmain(int argc, wchar_t** argv) {
  // Commands move bytes: no CR/LF translation, no end of input at a 0x1A byte.
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  std::vector<std::string> args;
  for (int i = 1; i < argc; ++i) args.push_back(DE::StringProc::WStringToStringByUTF8(argv[i]));
  return utl::Run(args);
}
#else
int main(int argc, char** argv) { return utl::Run(std::vector<std::string>(argv + 1, argv + argc)); }
#endif
