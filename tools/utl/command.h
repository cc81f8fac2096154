// The tool's subcommands. Each cmd_*.cpp registers its commands with UTL_COMMAND; main() finds
// them by name, so a new family of commands is one new file.
#pragma once

#include <string>
#include <vector>

namespace utl {

// Arguments after the subcommand name, as UTF-8 (Windows arguments arrive as UTF-16 and are
// converted). Returns the process exit code.
using CommandFunction = int (*)(const std::vector<std::string>& args);

struct Command {
  const char* name;
  const char* usage;    // the arguments, e.g. "<from> <to> [text]"
  const char* summary;  // one line for the usage text
  CommandFunction run;
};

bool RegisterCommand(const Command& command);
const std::vector<Command>& Commands();

// Prints "utl <name>: <message>" and the command's usage to stderr; returns exit code 2.
int UsageError(const std::string& name, const std::string& message);
// Prints "utl: <message>" to stderr; returns exit code 1.
int Failure(const std::string& message);

// Writes bytes to stdout unchanged (binary mode on Windows).
void WriteOut(const std::string& bytes);
// Writes a line of UTF-8 text to stdout.
void PrintLine(const std::string& utf8);

}  // namespace utl

#define UTL_CONCAT_INNER(a, b) a##b
#define UTL_CONCAT(a, b) UTL_CONCAT_INNER(a, b)
#define UTL_COMMAND(name, usage, summary, function)         \
  static const bool UTL_CONCAT(utl_registered_, __LINE__) = \
      ::utl::RegisterCommand({name, usage, summary, function})
