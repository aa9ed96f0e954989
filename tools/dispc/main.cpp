// dispc: looks into, draws and checks the files of the display core (a
// sketch, a graphic list, an SMD poly or model). Every error ends here as one
// line on standard error and an exit code; nothing escapes as a crash.
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "dispc/version.h"
#include "foundation/exception.h"
#include "tools/dispc/command_p.h"

namespace {

using namespace dispctool;

int usage(const std::string& where, const std::string& message) {
  std::cerr << where << ": " << message << "\nTry '" << where << " --help'.\n";
  return kExitUsage;
}

int run(int argc, char** argv) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) return usage("dispc", "no command given");
  const std::string& first = args[0];
  if (first == "--help" || first == "-h" || first == "help") {
    if (args.size() > 1) {
      const Command* command = findCommand(args[1]);
      if (command == nullptr) return usage("dispc", "unknown command '" + args[1] + "'");
      printCommandHelp(*command, std::cout);
    } else {
      printToolHelp(std::cout);
    }
    return kExitOk;
  }
  if (first == "--version") {
    std::cout << "dispc " << kfDispcVersion() << '\n';
    return kExitOk;
  }
  const Command* command = findCommand(first);
  if (command == nullptr) return usage("dispc", "unknown command '" + first + "'");
  const std::string where = std::string("dispc ") + command->name;
  const std::span<const std::string> rest(args.begin() + 1, args.end());
  for (const std::string& a : rest)
    if (a == "--help" || a == "-h") {
      printCommandHelp(*command, std::cout);
      return kExitOk;
    }
  try {
    const Invocation in(*command, rest);
    return command->run(in);
  } catch (const UsageError& e) {
    return usage(where, e.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  // Failures carry their whole text; library errors that reach this far
  // (an output that cannot be written) carry the library's.
  try {
    return run(argc, argv);
  } catch (const Failure& e) {
    std::cerr << "dispc: " << e.what() << '\n';
  } catch (const kcException& e) {
    std::cerr << "dispc: " << e.what() << '\n';
  } catch (const std::bad_alloc&) {
    std::cerr << "dispc: out of memory\n";
  } catch (const std::exception& e) {
    std::cerr << "dispc: " << e.what() << '\n';
  }
  return kExitFailed;
}
