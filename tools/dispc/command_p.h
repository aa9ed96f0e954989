// The dispc tool's commands: one table entry per command (its name, what it
// takes, its help and the function that runs it), the parsed command line
// each one is handed, and the errors that end a run with an exit code.
#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

#include "dispc/dispcfile.h"
#include "dispc/tablet.h"
#include "foundation/shapes/rect.h"

namespace dispctool {

// Exit codes.
inline constexpr int kExitOk = 0;
// The file is invalid or cannot be read, an output cannot be written, or
// validation failed.
inline constexpr int kExitFailed = 1;
// Unknown command, missing or bad option.
inline constexpr int kExitUsage = 2;

// The largest side of a picture, in pels: Cairo's limit.
inline constexpr long kMaxPicturePels = 32767;

// A bad command line: the message says what, and the run exits 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A run that cannot go on (a damaged file, an output that cannot be
// written): the message is complete, naming the file, and the run exits 1.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One option of a command: --name, with a value named value (null: a flag).
struct Option {
  const char* name;
  const char* value;
  const char* help;
};

class Invocation;

struct Command {
  const char* name;
  // What follows the command name in its synopsis.
  const char* synopsis;
  // One line for the tool's overview.
  const char* summary;
  // The rest of its --help, after the options.
  const char* details;
  std::span<const Option> options;
  int (*run)(const Invocation& in);
};

// The command line of one command, checked against its options: one FILE,
// each option at most once, values present where an option takes one.
class Invocation {
 public:
  // UsageError for anything the command does not take.
  Invocation(const Command& command, std::span<const std::string> args);

  [[nodiscard]] const Command& command() const noexcept { return *command_; }
  [[nodiscard]] const std::string& file() const noexcept { return file_; }
  [[nodiscard]] bool has(const std::string& name) const { return given_.count(name) != 0; }
  // The value given with an option; none when it was not given.
  [[nodiscard]] std::optional<std::string> value(const std::string& name) const;
  // The value of an option the command cannot run without.
  [[nodiscard]] std::string required(const std::string& name) const;
  // Typed values; UsageError naming the option for a value that does not parse.
  [[nodiscard]] std::optional<double> positive(const std::string& name) const;
  // "X,Y".
  [[nodiscard]] std::optional<kcVector<2>> point(const std::string& name) const;
  // "WxH", each 1 to 32767 pels.
  [[nodiscard]] std::optional<kcVector<2>> size(const std::string& name) const;
  // One of the words of choices (separated by '|').
  [[nodiscard]] std::optional<std::string> choice(const std::string& name, const std::string& choices) const;

 private:
  const Command* command_;
  std::string file_;
  std::map<std::string, std::string> given_;
};

// The table of commands, and the one named name (null for none).
[[nodiscard]] std::span<const Command> commands();
[[nodiscard]] const Command* findCommand(const std::string& name);

// Help texts.
void printToolHelp(std::ostream& out);
void printCommandHelp(const Command& command, std::ostream& out);

// --- what the commands share ---

// The file's content. Failure naming the path for a file that cannot be
// read, is damaged (the library's message), or is of an unknown version.
[[nodiscard]] kcDispcFileContent loadFile(const std::string& path);
// The library's message of the exception in flight, as Failure text about path.
[[nodiscard]] std::string describeLoadError(const std::string& path);
// UsageError unless the file's content is a poly or a model.
void requireSmd(const Invocation& in, const kcDispcFileContent& content);
// The box of what the content draws, in client units: a graphic list's
// graphics (text and crosses have none), an SMD description's rounded
// outlines, and for a sketch the pels it touches played on layer on an
// identity tablet (so client units taken as pels).
[[nodiscard]] kcRect drawingBox(const kcDispcFileContent& content, kcUITablet::Layers layer);

// Numbers as the dump and info show them: stored values exactly (the
// shortest text that reads back as the same double), measured ones to six
// significant digits.
[[nodiscard]] std::string exact(double v);
[[nodiscard]] std::string rounded(double v);
// "x A .. B, y C .. D" in client units, or "empty".
[[nodiscard]] std::string boxText(const kcRect& box);
// A name or text as UTF-8, quoted.
[[nodiscard]] std::string quoted(const std::wstring& s);

// The commands.
int runInfo(const Invocation& in);
int runDump(const Invocation& in);
int runRender(const Invocation& in);
int runSynth(const Invocation& in);
int runValidate(const Invocation& in);

}  // namespace dispctool
