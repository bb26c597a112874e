// Runs ExifTool through Lorvane on the files given and prints what came back: the tool's
// output as text, then every message it printed.
#include <lorvane/lorvane.hpp>

#include <cstdio>
#include <string>
#include <type_traits>
#include <variant>

namespace {

std::string describe(const lorvane::ETOutput::ProcessLog& log) {
  using namespace lorvane;
  return std::visit(
      [](const auto& entry) -> std::string {
        using Entry = std::decay_t<decltype(entry)>;
        if constexpr (std::is_same_v<Entry, ETOutput::NoChanges>) {
          return "no changes: " + entry.path;
        } else if constexpr (std::is_same_v<Entry, ETOutput::NothingToWrite>) {
          return "nothing to write: " + entry.path;
        } else if constexpr (std::is_same_v<Entry, ETOutput::FileMoved>) {
          return "moved: " + entry.from + " -> " + entry.to;
        } else if constexpr (std::is_same_v<Entry, ETOutput::IccDeletedMayAffectColor>) {
          return "ICC profile deleted, colours may change: " + entry.path;
        } else if constexpr (std::is_same_v<Entry, ETOutput::IccNoInformationToWrite>) {
          return "no ICC information to write: " + entry.path;
        } else {
          return "tool said: " + entry.line;
        }
      },
      log);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s FILE...\n", argv[0]);
    return 2;
  }
  lorvane::ETInput input;
  input.arguments = {"-G1", "-s"};
  input.arguments.insert(input.arguments.end(), argv + 1, argv + argc);
  input.onProgressHandler = [](lorvane::ETProcess& process) {
    std::fprintf(stderr, "progress %.0f%%\n", 100 * process.output().progress);
  };

  const lorvane::ETOutput output = lorvane::ETProcess::run(input);
  std::fputs(output.decodeOutData().value_or("(output is not UTF-8 text)\n").c_str(), stdout);
  for (const auto& log : output.processLogs) {
    std::fprintf(stderr, "%s\n", describe(log).c_str());
  }
  try {
    output.throwIfErrors();
  } catch (const lorvane::ETError& error) {
    std::fprintf(stderr, "ExifTool reported errors:\n%s", error.what());
    return 1;
  }
  return 0;
}
