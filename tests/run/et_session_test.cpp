// Kept sessions with the real ExifTool: the same answers as runs, one tool for many runs, and a
// tool that hangs, dies or idles replaced without anything left behind. A fake tool only for a
// tool that falls out of step.
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "outside_tool.hpp"
#include "processes.hpp"
#include "test_support.hpp"

using namespace lorvane;
using lorvane::test::entriesIn;
using lorvane::test::processStatus;
using lorvane::test::TemporaryFolder;
using lorvane::test::unknownLines;

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// Our children that run ExifTool and haven't exited.
std::set<int> livingTools() {
  std::set<int> tools;
  for (const auto& process : lorvane::test::allProcesses()) {
    const auto commandLine = "/proc/" + std::to_string(process.pid) + "/cmdline";
    if (process.parent == getpid() && process.state != 'Z' &&
        lorvane::test::procFile(commandLine).find("exiftool") != std::string::npos) {
      tools.insert(process.pid);
    }
  }
  return tools;
}

int theLivingTool() {
  const auto tools = livingTools();
  EXPECT_EQ(tools.size(), 1u);
  return tools.empty() ? -1 : *tools.begin();
}

// Waits up to ten seconds for the process to be gone altogether: neither running nor a zombie.
bool isReaped(int pid) {
  for (int attempt = 0; attempt < 1000 && processStatus(pid); ++attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return !processStatus(pid);
}

// Everything a caller can see of an output, as text, so that two outputs compare at once.
std::string described(const ETOutput& output) {
  std::string text = "running " + std::to_string(output.isRunning) + ", progress " +
                     std::to_string(output.progress) + ", bytes [" +
                     std::string(reinterpret_cast<const char*>(output.binaryData.data()),
                                 output.binaryData.size()) +
                     "]";
  for (const auto& log : output.processLogs) {
    text += "\n" + std::to_string(log.index()) + ": ";
    std::visit(
        [&](const auto& entry) {
          if constexpr (requires { entry.path; }) {
            text += entry.path;
          } else if constexpr (requires { entry.line; }) {
            text += entry.line;
          } else {
            text += entry.from + " -> " + entry.to;
          }
        },
        log);
  }
  return text;
}

ETInput reading(const std::vector<std::string>& arguments, bool parsesOut = false) {
  ETInput input;
  input.arguments = arguments;
  input.parsesOutPipe = parsesOut;
  return input;
}

// A FIFO that nobody writes: the tool told `-@` it blocks there, a real hang.
struct Hang {
  Hang() { mkfifo(fifo.c_str(), 0600); }
  ETInput input() const { return reading({"-@", fifo.string()}); }
  // Blocks until the tool has opened the FIFO, so that it is surely inside the command.
  void waitUntilTheToolHangs() {
    while ((writer = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) < 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  ~Hang() {
    if (writer >= 0) {
      ::close(writer);
    }
  }
  TemporaryFolder folder;
  fs::path fifo = folder.path() / "nobody writes";
  int writer = -1;
};

}  // namespace

TEST(Session, HundredsOfRunsAnswerAsRunsDoWithOneTool) {
  TemporaryFolder folder;
  const auto sample = (folder.path() / "sample.jpg").string();
  fs::copy_file(lorvane::test::dataFolder() / "sample.jpg", sample);
  // A comment of bytes that hold the tool's own end-of-command text, a NUL and no line end.
  const auto binary = lorvane::test::copyOfPlainJpeg(folder.path(), "binary.jpg").string();
  constexpr char raw[] = "{ready}\n{ready12}\n\0\xff\xfe{ready";
  const std::string bytes(raw, sizeof raw - 1);
  std::ofstream(folder.path() / "bytes.bin", std::ios::binary) << bytes;
  lorvane::test::outsideToolOutput(
      "exiftool",
      {"-q", "-overwrite_original", "-Comment<=" + (folder.path() / "bytes.bin").string(), binary});
  const auto written = lorvane::test::copyOfPlainJpeg(folder.path(), "written.jpg").string();

  const std::vector<ETInput> inputs{
      reading({"-s", "-G1", "--System:all", "--Composite:all", sample}),
      reading({"-j", "-l", "-G0:1", "--System:all", "--Composite:all", sample}),
      reading({"-lang", "de", "-j", "-l", "--System:all", "--Composite:all",
               sample}),  // and English again after it
      reading({"-b", "-Comment", binary}),
      reading({"-j", (folder.path() / "missing.jpg").string()}),
      reading({"-overwrite_original", "-XMP-dc:Title=Same title", "-BogusTag=1", written}),
      reading({"-s3", "-FileName", sample, binary}, true),  // progress on standard output
      reading({"-echo4", "echoed on standard error", "-ver"}),
  };
  std::vector<std::string> expected;
  for (const auto& input : inputs) {
    expected.push_back(described(ETProcess::run(input)));
  }
  EXPECT_NE(expected[3].find(bytes), std::string::npos);
  EXPECT_NE(expected[4].find("Error: File not found"), std::string::npos);
  EXPECT_NE(expected[5].find("BogusTag"), std::string::npos);
  EXPECT_NE(expected[7].find("echoed on standard error"), std::string::npos);

  ETSession session;
  const auto caller = std::this_thread::get_id();
  int starts = 0;
  int ends = 0;
  for (int round = 0; round < 40; ++round) {
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      ETInput input = inputs[i];
      input.onStartHandler = [&](ETProcess& process) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_TRUE(process.output().isRunning);
        EXPECT_EQ(process.input().arguments, inputs[i].arguments);
        ++starts;
      };
      input.onEndHandler = [&](ETProcess& process) {
        EXPECT_FALSE(process.output().isRunning);
        ++ends;
      };
      // Every other round each run sends the next input ahead, which the next run then is.
      const ETOutput output = round % 2 == 1 ? session.run(input, inputs[(i + 1) % inputs.size()])
                                             : session.run(input);
      ASSERT_EQ(described(output), expected[i]) << "round " << round << ", input " << i;
    }
  }
  EXPECT_EQ(starts, 40 * inputs.size());
  EXPECT_EQ(ends, 40 * inputs.size());
  EXPECT_EQ(session.toolStarts(), 1u);
}

TEST(Session, ACommandSentAheadButNotRunIsDoneAndItsAnswerDropped) {
  TemporaryFolder folder;
  const auto file = lorvane::test::copyOfPlainJpeg(folder.path(), "file.jpg").string();
  const ETInput titleOf = reading({"-s3", "-XMP-dc:Title", file}, true);
  const ETInput write = reading({"-overwrite_original", "-XMP-dc:Title=Written ahead", file});
  ETSession session;
  session.run(reading({"-ver"}), write);
  // Not the write: it is done first, and this run gets its own answer only.
  const ETOutput title = session.run(titleOf);
  EXPECT_EQ(described(title), described(ETProcess::run(titleOf)));
  EXPECT_NE(described(title).find("Written ahead"), std::string::npos);
  EXPECT_EQ(session.toolStarts(), 1u);
}

TEST(Session, CallersOnSeveralThreadsAndThePoolEachGetTheirOwnFile) {
  TemporaryFolder folder;
  std::vector<ETInput> inputs;
  std::vector<std::string> expected;  // what a run gives, the file's own name in it
  for (const char* name : {"a.jpg", "b.jpg", "c.jpg", "d.jpg"}) {
    inputs.push_back(
        reading({"-j", "-FileName", lorvane::test::copyOfPlainJpeg(folder.path(), name).string()}));
    expected.push_back(described(ETProcess::run(inputs.back())));
    EXPECT_NE(expected.back().find("\"FileName\": \"" + std::string(name)), std::string::npos);
  }
  ETSession session;
  std::vector<std::thread> callers;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    callers.emplace_back([&, i] {
      for (int n = 0; n < 15; ++n) {
        EXPECT_EQ(described(session.run(inputs[i])), expected[i]);
      }
    });
  }
  for (auto& caller : callers) {
    caller.join();
  }
  EXPECT_EQ(session.toolStarts(), 1u);

  std::vector<ETInput> many;
  for (std::size_t i = 0; i < 40; ++i) {
    many.push_back(inputs[i % inputs.size()]);
  }
  ETSessionPool pool(2);
  EXPECT_EQ(livingTools().size(), 1u);  // the session's; the pool starts none before a run
  const auto outputs = pool.runAll(many);
  ASSERT_EQ(outputs.size(), many.size());
  for (std::size_t i = 0; i < many.size(); ++i) {
    EXPECT_EQ(described(outputs[i]), expected[i % inputs.size()]) << i;
  }
  EXPECT_LE(livingTools().size(), 3u);
}

TEST(Session, AToolKilledTimedOutOrCancelledIsEndedAndTheNextRunHasAFreshOne) {
  const ETInput version = reading({"-ver"});
  ETSession session;
  session.cancel();  // outside a run: nothing
  ASSERT_TRUE(session.run(version).processLogs.empty());
  const int first = theLivingTool();
  ::kill(first, SIGKILL);
  EXPECT_TRUE(isReaped(first));  // by the session, before any run asks
  const ETOutput after = session.run(version);
  EXPECT_TRUE(after.processLogs.empty());
  EXPECT_FALSE(after.binaryData.empty());

  // During a run that hangs: the tool killed, the time limit passed, the run cancelled.
  struct Case {
    std::string line;
    std::optional<std::chrono::milliseconds> timeLimit;
    std::function<void(int tool)> stop;
  };
  for (const Case& ending : {
           Case{
               "the kept tool ended during the run\n", {}, [](int tool) { ::kill(tool, SIGKILL); }},
           Case{"the tool did not finish within 300 ms\n", std::chrono::milliseconds(300), {}},
           Case{"the run was cancelled\n", {}, [&](int) { session.cancel(); }},
       }) {
    SCOPED_TRACE(ending.line);
    Hang hang;
    ETInput input = hang.input();
    input.timeLimit = ending.timeLimit;
    const int tool = theLivingTool();
    std::thread stopper([&] {
      if (ending.stop) {
        hang.waitUntilTheToolHangs();
        ending.stop(tool);
      }
    });
    const ETOutput stopped = session.run(input);
    stopper.join();
    EXPECT_EQ(unknownLines(stopped), Lines{ending.line});
    EXPECT_FALSE(stopped.isRunning);
    EXPECT_EQ(stopped.progress, 1);
    EXPECT_TRUE(isReaped(tool));
    EXPECT_TRUE(session.run(version).processLogs.empty());
  }
  EXPECT_EQ(session.toolStarts(), 5u);
}

TEST(Session, MaxRunsPerToolAndIdleTimeoutReplaceTheToolAsProcShows) {
  const ETInput version = reading({"-ver"});
  {
    ETSession session({.maxRunsPerTool = 2});
    std::set<int> tools;
    for (int run = 0; run < 5; ++run) {
      EXPECT_TRUE(session.run(version).processLogs.empty());
      const auto living = livingTools();
      EXPECT_LE(living.size(), 1u);
      tools.insert(living.begin(), living.end());
    }
    EXPECT_EQ(tools.size(), 3u);
    EXPECT_EQ(session.toolStarts(), 3u);
  }
  {
    // A long-lived tool's successor starts ten runs ahead and takes over at the limit.
    ETSession session({.maxRunsPerTool = 100});
    std::set<int> tools;
    for (int run = 1; run <= 101; ++run) {
      EXPECT_TRUE(session.run(version).processLogs.empty());
      const auto living = livingTools();
      if (run == 89 || run == 90) {
        EXPECT_EQ(living.size(), static_cast<std::size_t>(run - 88)) << "after run " << run;
      }
      tools.insert(living.begin(), living.end());
    }
    EXPECT_EQ(tools.size(), 2u);
    EXPECT_EQ(session.toolStarts(), 2u);
  }
  ETSession session({.idleTimeout = std::chrono::milliseconds(200)});
  EXPECT_TRUE(session.run(version).processLogs.empty());
  EXPECT_TRUE(isReaped(theLivingTool()));
  EXPECT_TRUE(livingTools().empty());
  EXPECT_TRUE(session.run(version).processLogs.empty());
  EXPECT_EQ(session.toolStarts(), 2u);
}

TEST(Session, NothingIsLeftAfterTheSessionAndCloseTakesUpNewSettings) {
  std::thread([] {}).join();  // a sanitizer's own thread, started with the first one, counts before
  const std::size_t descriptors = entriesIn("/proc/self/fd");
  const std::size_t threads = entriesIn("/proc/self/task");
  int tool = -1;
  {
    ETSession session;
    EXPECT_TRUE(session.run(reading({"-ver"})).processLogs.empty());
    tool = theLivingTool();
  }
  EXPECT_FALSE(processStatus(tool));  // not even a zombie, at once
  EXPECT_EQ(entriesIn("/proc/self/fd"), descriptors);
  EXPECT_EQ(entriesIn("/proc/self/task"), threads);

  lorvane::test::SettingsGuard settings;
  ETSession session;
  // A refused argument and a tool that can't start read as in a run.
  const ETInput refused = reading({"#$HOME"});
  EXPECT_EQ(described(session.run(refused)), described(ETProcess::run(refused)));
  EXPECT_EQ(session.toolStarts(), 0u);
  // A handler's run on its own session would wait for itself: refused at once.
  ETInput nested = reading({"-ver"});
  ETOutput inner;
  nested.onEndHandler = [&](ETProcess&) { inner = session.run(reading({"-ver"})); };
  EXPECT_TRUE(session.run(nested).processLogs.empty());
  EXPECT_EQ(unknownLines(inner),
            Lines{"a session's run can't start inside a run of the same session\n"});
  ETSettings::shared().setBinariesFolderURL("/nowhere");
  EXPECT_TRUE(session.run(reading({"-ver"})).processLogs.empty());  // the kept tool
  session.close();
  const ETOutput noTool = session.run(reading({"-ver"}));
  EXPECT_EQ(described(noTool), described(ETProcess::run(reading({"-ver"}))));
  EXPECT_EQ(unknownLines(noTool),
            Lines{"cannot start \"/nowhere/perl\": No such file or directory\n"});
  EXPECT_EQ(session.toolStarts(), 1u);
}

TEST(Session, AToolOutOfStepIsNeverTrustedAgain) {
  // Answers each command with the wrong number, or with output behind its end.
  for (const std::string answer : {R"("{ready${1}9}\n")", R"("{ready$1}\nstray\n")"}) {
    SCOPED_TRACE(answer);
    lorvane::test::FakeTool tool(R"(
      $| = 1;
      my $line = '';
      while (sysread(STDIN, my $chunk, 1) > 0) {
        $line .= $chunk;
        next unless $chunk eq "\n";
        if ($line =~ /^-execute(\d+)$/) {
          print STDERR "{ready$1}\n";
          print )" + answer + R"(;
        }
        $line = '';
      }
    )");
    ETSession session;
    for (const std::size_t starts : {1u, 2u}) {
      const ETOutput output = session.run(reading({"-ver"}));
      ASSERT_EQ(unknownLines(output).size(), 1u);
      EXPECT_TRUE(unknownLines(output)[0].starts_with("the kept tool fell out of step")) << starts;
      EXPECT_EQ(session.toolStarts(), starts);
    }
  }
}
