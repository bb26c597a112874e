// A kept session against the physical limit of its design: files read one at a time with
// `-j -l -G0:1`, through an ETSession and through a minimal driver of one bare
// `exiftool -stay_open True -@ -` that sends the same arguments with `-execute<N>` and reads
// standard output up to `{ready<N>}`. Beside them, in the same rounds: one ETProcess::run per
// file, the first read of a fresh session (with its tool start), and a pool of 2 over all files
// against two bare drivers side by side. Each round runs every kind once, in a rotating order;
// ratios are taken within a round, and the median of the rounds is printed.
//
//   lorvane-bench-session [rounds] [folder]
//
// The folder defaults to a fresh one made by tools/make-many-files.py (800 files), removed at
// the end; the single reads take its first 200 files, the plain runs its first 20. The load
// average is printed before and after: on a shared machine the figures are only as good as it
// is quiet.

#include <lorvane/lorvane.hpp>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/child_process.hpp"
#include "platform/pipe.hpp"

#include "bench_support.hpp"

namespace {

using lorvane::bench::loadAverage;
using lorvane::bench::median;

namespace fs = std::filesystem;
using namespace lorvane;
using Clock = std::chrono::steady_clock;

constexpr std::size_t singleFiles = 200;
constexpr std::size_t plainRunFiles = 20;

std::vector<std::string> readArguments(const std::string& file) {
  return {"-j", "-l", "-G0:1", file};
}

// One bare kept ExifTool: the arguments and `-execute<N>` in, standard output up to
// `{ready<N>}` out, standard error thrown away. Nothing else.
class BareDriver {
public:
  BareDriver() {
    const auto binaries = ETSettings::shared().binariesFolderURL();
    input_ = platform::makePipe();
    output_ = platform::makePipe(1024 * 1024);
    platform::FileDescriptor null(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    child_.emplace(platform::LaunchOptions{
        .executable = binaries / "perl",
        .arguments = {(binaries / "exiftool").string(), "-stay_open", "True", "-@", "-"},
        .environment =
            std::map<std::string, std::string>{{"LC_CTYPE", "C.UTF-8"},
                                               {"PERL5LIB", (binaries / "perllib").string()}},
        .standardInput = input_.readEnd.get(),
        .standardOutput = output_.writeEnd.get(),
        .standardError = null.get()});
    input_.readEnd.close();
    output_.writeEnd.close();
  }
  ~BareDriver() {
    send("-stay_open\nFalse\n");
    input_.writeEnd.close();
    child_->waitForExit();
  }

  std::string read(const std::vector<std::string>& arguments) {
    std::string command;
    for (const auto& argument : arguments) {
      command += argument + "\n";
    }
    const std::string number = std::to_string(++commands_);
    command += "-execute" + number + "\n";
    send(command);
    const std::string marker = "{ready" + number + "}\n";
    std::string text;
    char buffer[65536];
    while (!text.ends_with(marker)) {
      const ssize_t count = ::read(output_.readEnd.get(), buffer, sizeof buffer);
      if (count <= 0) {
        throw std::runtime_error("the bare tool ended");
      }
      text.append(buffer, static_cast<std::size_t>(count));
    }
    text.resize(text.size() - marker.size());
    return text;
  }

private:
  void send(std::string_view text) {
    while (!text.empty()) {
      const ssize_t count = ::write(input_.writeEnd.get(), text.data(), text.size());
      if (count <= 0) {
        return;
      }
      text.remove_prefix(static_cast<std::size_t>(count));
    }
  }

  platform::Pipe input_;
  platform::Pipe output_;
  std::optional<platform::ChildProcess> child_;
  std::size_t commands_ = 0;
};

double secondsOf(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void mustBeRead(const ETOutput& output) {
  if (output.binaryData.empty()) {
    throw std::runtime_error("a read through the library gave nothing");
  }
}

// Seconds of each kind in one round.
struct Round {
  double bare = 0;
  double session = 0;
  double sessionWithoutProgress = 0;
  double plainRunPerFile = 0;
  double firstRead = 0;
  double bareSingleRead = 0;  // a bare read per file, for the first read and the plain runs
  double barePair = 0;
  double pool = 0;
};

Round measureRound(const std::vector<std::string>& files, std::size_t rotation) {
  const std::vector<std::string> single(files.begin(),
                                        files.begin() + std::min(singleFiles, files.size()));
  std::vector<ETInput> inputs;
  for (const auto& file : files) {
    inputs.emplace_back().arguments = readArguments(file);
  }
  Round round;
  std::vector<std::function<void()>> kinds{
      [&] {
        BareDriver bare;
        bare.read({"-ver"});  // started, as the session's tool is when it is timed
        round.bare = secondsOf([&] {
          for (const auto& file : single) {
            if (bare.read(readArguments(file)).empty()) {
              throw std::runtime_error("a bare read gave nothing");
            }
          }
        });
      },
      [&] {
        ETSession session;
        round.firstRead = secondsOf([&] { mustBeRead(session.run(inputs[0])); });
        round.session = secondsOf([&] {
          for (std::size_t i = 0; i < single.size(); ++i) {
            mustBeRead(session.run(inputs[i]));
          }
        });
      },
      [&] {
        ETSession session({.toolProgress = false});
        mustBeRead(session.run(inputs[0]));
        round.sessionWithoutProgress = secondsOf([&] {
          for (std::size_t i = 0; i < single.size(); ++i) {
            mustBeRead(session.run(inputs[i]));
          }
        });
      },
      [&] {
        const std::size_t count = std::min(plainRunFiles, inputs.size());
        round.plainRunPerFile = secondsOf([&] {
                                  for (std::size_t i = 0; i < count; ++i) {
                                    mustBeRead(ETProcess::run(inputs[i]));
                                  }
                                }) /
                                static_cast<double>(count);
      },
      [&] {
        // Two drivers side by side, each taking the next file not yet taken.
        std::atomic<std::size_t> next{0};
        const auto drive = [&] {
          BareDriver bare;
          for (std::size_t i; (i = next.fetch_add(1)) < files.size();) {
            bare.read(readArguments(files[i]));
          }
        };
        round.barePair = secondsOf([&] {
          std::jthread other(drive);
          drive();
        });
      },
      [&] {
        ETSessionPool pool(2);
        round.pool = secondsOf([&] {
          for (const auto& output : pool.runAll(inputs)) {
            mustBeRead(output);
          }
        });
      },
  };
  std::rotate(kinds.begin(), kinds.begin() + static_cast<std::ptrdiff_t>(rotation % kinds.size()),
              kinds.end());
  for (const auto& kind : kinds) {
    kind();
  }
  round.bareSingleRead = round.bare / static_cast<double>(single.size());
  return round;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 3;
  fs::path folder;
  bool madeFolder = false;
  if (argc > 2) {
    folder = argv[2];
  } else {
    std::string pattern = (fs::temp_directory_path() / "lorvane-session-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    madeFolder = true;
    const std::string command = std::string(LORVANE_SOURCE_DIR) + "/tools/make-many-files.py '" +
                                folder.string() + "' --count 800";
    if (std::system(command.c_str()) != 0) {
      std::fprintf(stderr, "cannot make the files\n");
      return 1;
    }
  }
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path().string());
    }
  }
  std::sort(files.begin(), files.end());
  std::printf("%zu files, %d rounds; load average before: %s\n", files.size(), rounds,
              loadAverage().c_str());

  std::map<std::string, std::vector<double>> figures;
  for (int r = 0; r < rounds; ++r) {
    const Round round = measureRound(files, static_cast<std::size_t>(r));
    const double singles = static_cast<double>(std::min(singleFiles, files.size()));
    const std::map<std::string, double> these{
        {"a  bare driver, ms per file", round.bareSingleRead * 1000},
        {"b  session, ms per file", round.session / singles * 1000},
        {"c  session without tool progress, ms per file",
         round.sessionWithoutProgress / singles * 1000},
        {"d  session / bare", round.session / round.bare},
        {"e  session without tool progress / bare", round.sessionWithoutProgress / round.bare},
        {"f  ETProcess::run, ms per file", round.plainRunPerFile * 1000},
        {"g  ETProcess::run / session, per file",
         round.plainRunPerFile / (round.session / singles)},
        {"h  first read of a fresh session, ms", round.firstRead * 1000},
        {"i  two bare drivers, all files, s", round.barePair},
        {"j  pool of 2, all files, s", round.pool},
        {"k  pool of 2 / two bare drivers", round.pool / round.barePair},
    };
    std::printf("round %d:", r + 1);
    for (const auto& [name, value] : these) {
      figures[name].push_back(value);
      std::printf(" %.3g", value);
    }
    std::printf("\n");
  }
  std::printf("medians of %d rounds (min - max):\n", rounds);
  for (const auto& [name, values] : figures) {
    std::printf("  %-48s %8.3f  (%.3f - %.3f)\n", name.c_str(), median(values),
                *std::min_element(values.begin(), values.end()),
                *std::max_element(values.begin(), values.end()));
  }
  std::printf("load average after: %s\n", loadAverage().c_str());
  if (madeFolder) {
    fs::remove_all(folder);
  }
}
