// A run that survives its caller and its tool: handlers that throw, a caller that changes its
// input, a tool that must be stopped. Fake tools, since the real one neither hangs nor forks.
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>

#include "processes.hpp"
#include "test_support.hpp"

using namespace lorvane;
using lorvane::test::FakeTool;
using lorvane::test::script;
using lorvane::test::unknownLines;

namespace {

using Lines = std::vector<std::string>;

// Processes of the group that are still alive. A killed process may take a moment to finish
// dying after it closed its streams, so this waits up to two seconds for the group to go.
std::vector<int> livingMembersOfGroup(int group) {
  std::vector<int> living;
  for (int attempt = 0; attempt < 200; ++attempt) {
    living.clear();
    for (const auto& process : lorvane::test::allProcesses()) {
      if (process.group == group && process.state != 'Z' && process.state != 'X') {
        living.push_back(process.pid);
      }
    }
    if (living.empty()) {
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return living;
}

// The tool's process id, which it printed first on standard output; it also numbers its group.
int toolProcess(const ETOutput& output) {
  const auto text = output.decodeOutData().value_or("");
  int pid = 0;
  std::from_chars(text.data(), text.data() + text.size(), pid);
  return pid;
}

}  // namespace

TEST(RunControl, WhatHandlersThrowNeverLeavesTheRunAndIsReportedOnce) {
  FakeTool tool(script(R"(print STDERR "======== a [1/2]\n======== b [2/2]\n";)"));
  ETInput input;
  int progressCalls = 0;
  input.onStartHandler = [](ETProcess&) { throw std::runtime_error("start went wrong"); };
  input.onProgressHandler = [&](ETProcess&) {
    ++progressCalls;
    throw 42;  // on the reader's thread, and no std::exception
  };
  input.onEndHandler = [](ETProcess&) { throw 42; };

  ETProcess process;
  process.execute(input);
  const ETOutput output = process.output();
  EXPECT_EQ(progressCalls, 2);
  EXPECT_FALSE(output.isRunning);
  EXPECT_EQ(output.progress, 1);
  EXPECT_EQ(unknownLines(output),
            (Lines{"the start handler threw: start went wrong\n",
                   "the progress handler threw: an exception that is no std::exception\n",
                   "the end handler threw: an exception that is no std::exception\n"}));

  // The instance isn't stuck, and the class operation returns the end handler's fault too.
  process.execute(input);
  EXPECT_EQ(progressCalls, 4);
  EXPECT_THROW(ETProcess::run(input).throwIfErrors(), ETError);
}

TEST(RunControl, TheRunWorksOnItsOwnCopyOfTheInput) {
  FakeTool tool(script(R"(print $batch;)"));
  ETInput input;
  input.arguments = {"-first"};
  bool originalEnd = false;
  bool replacedEnd = false;
  input.onStartHandler = [&](ETProcess&) {
    input.arguments = {"-changed"};
    input.parsesOutPipe = true;
    input.onEndHandler = [&](ETProcess&) { replacedEnd = true; };
  };
  input.onEndHandler = [&](ETProcess&) { originalEnd = true; };

  ETProcess process;
  process.execute(input);
  EXPECT_EQ(process.output().decodeOutData(), "-first\n-stay_open\n0\n-execute");
  EXPECT_TRUE(originalEnd);
  EXPECT_FALSE(replacedEnd);
  EXPECT_EQ(process.input().arguments, Lines{"-first"});
}

TEST(RunControl, CancelFromAnotherThreadOrAHandlerEndsTheToolAndAllItStarted) {
  // The tool and its child both ignore SIGTERM, so only the SIGKILL after the grace ends them;
  // the child holds both streams open.
  FakeTool tool(script(R"(
    $SIG{TERM} = 'IGNORE';
    print "$$\n";
    if (fork() == 0) { sleep 1000; exit 0; }
    print STDERR "======== a [1/2]\n";
    sleep 1000;
  )"));
  for (const bool fromHandler : {false, true}) {
    SCOPED_TRACE(fromHandler ? "from the progress handler" : "from another thread");
    ETProcess process;
    std::atomic<bool> toolIsUp = false;
    ETInput input;
    input.onProgressHandler = [&](ETProcess& running) {
      if (fromHandler) {
        running.cancel();
      }
      toolIsUp = true;
    };
    int ends = 0;
    input.onEndHandler = [&](ETProcess&) { ++ends; };
    std::thread canceller;
    if (!fromHandler) {
      canceller = std::thread([&] {
        while (!toolIsUp) {
          std::this_thread::yield();
        }
        process.cancel();
      });
    }
    process.execute(input);
    if (canceller.joinable()) {
      canceller.join();
    }

    const ETOutput output = process.output();
    EXPECT_EQ(unknownLines(output), Lines{"the run was cancelled\n"});
    EXPECT_FALSE(output.isRunning);
    EXPECT_EQ(output.progress, 1);
    EXPECT_EQ(ends, 1);
    ASSERT_GT(toolProcess(output), 0);
    EXPECT_EQ(livingMembersOfGroup(toolProcess(output)), std::vector<int>{});
  }
}

TEST(RunControl, CancelBeforeTheToolStartsPreventsItAndOutsideARunDoesNothing) {
  FakeTool tool(script(R"(print "started";)"));
  ETProcess process;
  process.cancel();  // not running: no effect on the run that follows
  process.execute(ETInput{});
  EXPECT_EQ(process.output().decodeOutData(), "started");
  EXPECT_TRUE(process.output().processLogs.empty());

  ETInput input;
  input.onStartHandler = [](ETProcess& running) { running.cancel(); };
  const ETOutput output = ETProcess::run(input);
  EXPECT_TRUE(output.binaryData.empty());  // never started
  EXPECT_EQ(unknownLines(output), Lines{"the run was cancelled\n"});
  EXPECT_FALSE(output.isRunning);
}

TEST(RunControl, ATimeLimitEndsAToolThatSleepsOrWhoseChildHoldsItsStreams) {
  struct Case {
    const char* name;
    const char* body;
  };
  for (const auto& [name, body] : {
           Case{"a tool that sleeps", R"(print "$$\n"; sleep 1000;)"},
           Case{"a tool that exits, its child holding the streams",
                R"(print "$$\n"; if (fork() == 0) { sleep 1000; } exit 0;)"},
       }) {
    SCOPED_TRACE(name);
    FakeTool tool(script(body));
    ETInput input;
    input.timeLimit = std::chrono::milliseconds(300);
    const ETOutput output = ETProcess::run(input);
    EXPECT_EQ(unknownLines(output), Lines{"the tool did not finish within 300 ms\n"});
    EXPECT_FALSE(output.isRunning);
    ASSERT_GT(toolProcess(output), 0);
    EXPECT_EQ(livingMembersOfGroup(toolProcess(output)), std::vector<int>{});
  }
}
