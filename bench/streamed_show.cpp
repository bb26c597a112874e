// `lorvane show` over many files as it streams them: its peak memory, how soon the first file
// is on standard output, and its processor and wall time against plain ExifTool reading the
// same files (`exiftool -j -l -G0:1`, without the runs' `-progress -v0`): `--jobs 1` against
// one such command, `--jobs 2` against two over the halves side by side. Processor time is that
// of the whole process tree (user and system, the tools included): other work on the machine
// changes it far less than wall time. Each round times every kind back to back in a rotating
// order; ratios are taken within a round, medians over the rounds, with their range.
//
//   lorvane-bench-streamed_show ROUNDS FOLDER [COUNT...]
//
// FOLDER holds the files (tools/make-many-files.py FOLDER --count 10000); the first COUNT files
// in name order make each set (default 200 2000 10000).

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench_support.hpp"

namespace {

using lorvane::bench::loadAverage;
using lorvane::bench::median;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Outcome {
  double wall = 0;         // seconds until the last process ended
  double processor = 0;    // user and system seconds of the processes and their children
  double firstOutput = 0;  // seconds until the first byte on standard output
  double peakMegabytes = 0;
};

// Runs the commands side by side, their standard output read (and dropped) here.
Outcome runSideBySide(const std::vector<std::vector<std::string>>& commands) {
  const auto start = Clock::now();
  std::vector<pid_t> children;
  std::vector<int> outputs;
  for (const auto& command : commands) {
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) {
      std::perror("pipe");
      std::exit(1);
    }
    const pid_t child = ::fork();
    if (child == 0) {
      ::dup2(pipeEnds[1], STDOUT_FILENO);
      const int null = ::open("/dev/null", O_WRONLY);
      ::dup2(null, STDERR_FILENO);
      ::close(pipeEnds[0]);
      ::close(pipeEnds[1]);
      std::vector<char*> argv;
      for (const auto& word : command) {
        argv.push_back(const_cast<char*>(word.c_str()));
      }
      argv.push_back(nullptr);
      ::execvp(argv[0], argv.data());
      ::_exit(127);
    }
    ::close(pipeEnds[1]);
    children.push_back(child);
    outputs.push_back(pipeEnds[0]);
  }
  Outcome outcome;
  // All outputs at once: a command whose pipe nobody reads stops at a full pipe, and the
  // commands would run one after the other.
  std::vector<pollfd> open;
  for (const int output : outputs) {
    open.push_back({output, POLLIN, 0});
  }
  char buffer[1 << 16];
  while (!open.empty()) {
    ::poll(open.data(), open.size(), -1);
    for (auto it = open.begin(); it != open.end();) {
      const ssize_t got = it->revents != 0 ? ::read(it->fd, buffer, sizeof buffer) : 1;
      if (got > 0 && it->revents != 0 && outcome.firstOutput == 0) {
        outcome.firstOutput = std::chrono::duration<double>(Clock::now() - start).count();
      }
      if (got <= 0) {
        ::close(it->fd);
        it = open.erase(it);
      } else {
        ++it;
      }
    }
  }
  for (const pid_t child : children) {
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1) {
      std::fprintf(stderr, "a command failed: %s ...\n", commands.front().front().c_str());
      std::exit(1);
    }
    // Its waited-for children count in: the kept tools of the program.
    for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
      outcome.processor +=
          static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    }
    // The process itself, or the largest of its waited-for children (kilobytes on Linux).
    outcome.peakMegabytes =
        std::max(outcome.peakMegabytes, static_cast<double>(usage.ru_maxrss) / 1024.0);
  }
  outcome.wall = std::chrono::duration<double>(Clock::now() - start).count();
  return outcome;
}

// An argument file for `exiftool -@`: one file per line.
std::string argumentFile(const std::vector<std::string>& files, const std::string& name) {
  const fs::path path = fs::temp_directory_path() / name;
  std::ofstream out(path);
  for (const auto& file : files) {
    out << file << "\n";
  }
  return path.string();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s ROUNDS FOLDER [COUNT...]\n", argv[0]);
    return 2;
  }
  const int rounds = std::max(1, std::atoi(argv[1]));
  std::vector<std::string> all;
  for (const auto& entry : fs::directory_iterator(argv[2])) {
    all.push_back(entry.path().string());
  }
  std::sort(all.begin(), all.end());
  std::vector<std::size_t> counts;
  for (int i = 3; i < argc; ++i) {
    counts.push_back(static_cast<std::size_t>(std::atol(argv[i])));
  }
  if (counts.empty()) {
    counts = {200, 2000, 10000};
  }
  const std::string program = LORVANE_PROGRAM;
  std::printf("load average before: %s\n", loadAverage().c_str());
  std::printf("%d rounds; medians over rounds, ratios taken within a round\n", rounds);
  std::printf("%6s %-21s %6s %7s %6s %21s %21s %7s %7s %8s\n", "files", "", "cpu s", "wall s",
              "peak MB", "cpu / 1 exiftool", "cpu / 2 exiftools", "wall/1", "wall/2", "first s");
  for (const std::size_t count : counts) {
    if (count > all.size()) {
      std::printf("%zu files: only %zu in the folder, skipped\n", count, all.size());
      continue;
    }
    const std::vector<std::string> files(all.begin(), all.begin() + static_cast<long>(count));
    const auto half = files.begin() + static_cast<long>(count / 2);
    const std::string allFiles = argumentFile(files, "lorvane-bench-all.txt");
    const std::string firstHalf =
        argumentFile(std::vector<std::string>(files.begin(), half), "lorvane-bench-first.txt");
    const std::string secondHalf =
        argumentFile(std::vector<std::string>(half, files.end()), "lorvane-bench-second.txt");
    const std::vector<std::string> exiftool = {"exiftool", "-j", "-l", "-G0:1", "-@"};
    const auto tool = [&](const std::string& list) {
      auto command = exiftool;
      command.push_back(list);
      return command;
    };
    const auto show = [&](const char* jobs) {
      return std::vector<std::string>{program,  "show", "--lang",       "en",
                                      "--jobs", jobs,   "--files-from", allFiles};
    };
    const std::vector<std::vector<std::vector<std::string>>> kinds = {
        {tool(allFiles)},
        {tool(firstHalf), tool(secondHalf)},
        {show("1")},
        {show("2")},
    };
    std::vector<std::vector<Outcome>> outcomes(kinds.size());
    runSideBySide(kinds[0]);  // warm the page cache
    for (int round = 0; round < rounds; ++round) {
      std::vector<Outcome> now(kinds.size());
      for (std::size_t step = 0; step < kinds.size(); ++step) {
        const std::size_t kind = (step + static_cast<std::size_t>(round)) % kinds.size();
        now[kind] = runSideBySide(kinds[kind]);
      }
      for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        outcomes[kind].push_back(now[kind]);
      }
    }
    const char* names[] = {"exiftool -j -l -G0:1", "2 exiftools, halves", "show --jobs 1",
                           "show --jobs 2"};
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
      std::vector<double> processors, walls, firsts, peaks, cpuToOne, cpuToTwo, toOne, toTwo;
      for (std::size_t round = 0; round < outcomes[kind].size(); ++round) {
        const Outcome& outcome = outcomes[kind][round];
        processors.push_back(outcome.processor);
        walls.push_back(outcome.wall);
        firsts.push_back(outcome.firstOutput);
        peaks.push_back(outcome.peakMegabytes);
        cpuToOne.push_back(outcome.processor / outcomes[0][round].processor);
        cpuToTwo.push_back(outcome.processor / outcomes[1][round].processor);
        toOne.push_back(outcome.wall / outcomes[0][round].wall);
        toTwo.push_back(outcome.wall / outcomes[1][round].wall);
      }
      const auto range = [](const std::vector<double>& values) {
        char text[64];
        std::snprintf(text, sizeof text, "%.3f (%.3f-%.3f)", median(values),
                      *std::min_element(values.begin(), values.end()),
                      *std::max_element(values.begin(), values.end()));
        return std::string(text);
      };
      std::printf("%6zu %-21s %6.2f %7.2f %7.1f %21s %21s %7.3f %7.3f %8.3f\n", count, names[kind],
                  median(processors), median(walls), median(peaks), range(cpuToOne).c_str(),
                  range(cpuToTwo).c_str(), median(toOne), median(toTwo), median(firsts));
    }
    for (const auto& list : {allFiles, firstHalf, secondHalf}) {
      fs::remove(list);
    }
  }
  std::printf("load average after: %s\n", loadAverage().c_str());
}
