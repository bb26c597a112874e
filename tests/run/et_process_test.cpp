// Runs of the real ExifTool through the default binaries folder.
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "test_support.hpp"

using namespace lorvane;
using lorvane::test::copyOfPlainJpeg;
using lorvane::test::TemporaryFolder;

// Start and end on the caller's thread, progress on the reading thread, once per file.
TEST(ETProcess, ReadsRealJpegsAsJsonAndCallsEachHandlerOnItsThread) {
  TemporaryFolder folder;
  ETInput input;
  input.arguments = {"-json", "-G1"};
  for (int i = 1; i <= 4; ++i) {
    input.arguments.push_back(
        copyOfPlainJpeg(folder.path(), "photo " + std::to_string(i) + ".jpg").string());
  }
  const auto caller = std::this_thread::get_id();
  std::mutex mutex;
  std::vector<std::string> seen;
  std::atomic<bool> progressOnCallerThread = false;
  input.onStartHandler = [&](ETProcess& process) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    EXPECT_EQ(process.input().arguments, input.arguments);  // already this run's input
    EXPECT_TRUE(process.output().isRunning);
    EXPECT_EQ(process.output().progress, 0);
    seen.push_back("start");
  };
  input.onProgressHandler = [&](ETProcess& process) {
    progressOnCallerThread = progressOnCallerThread || std::this_thread::get_id() == caller;
    const std::lock_guard lock(mutex);
    seen.push_back(std::to_string(process.output().progress));
  };
  input.onEndHandler = [&](ETProcess& process) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    EXPECT_FALSE(process.output().isRunning);
    EXPECT_EQ(process.output().progress, 1);
    EXPECT_FALSE(process.output().binaryData.empty());  // complete before the end handler
    seen.push_back("end");
  };

  const ETOutput output = ETProcess::run(input);
  EXPECT_EQ(seen, (std::vector<std::string>{"start", std::to_string(0.25), std::to_string(0.5),
                                            std::to_string(0.75), std::to_string(1.0), "end"}));
  EXPECT_FALSE(progressOnCallerThread);
  EXPECT_FALSE(output.isRunning);
  EXPECT_EQ(output.progress, 1);
  EXPECT_TRUE(output.processLogs.empty());
  EXPECT_EQ(nlohmann::json::parse(output.decodeOutData().value()).size(), 4u);
}

TEST(ETProcess, WritingRunsOnOneInstanceGiveNoChangesNothingToWriteAndMovesInOrder) {
  TemporaryFolder folder;
  const auto untouched = copyOfPlainJpeg(folder.path(), "untouched.jpg");
  const auto moving = copyOfPlainJpeg(folder.path(), "old name.jpg");
  const auto sidecar = folder.path() / "new.xmp";
  const auto renamed = folder.path() / "new name.jpg";

  // Both streams parsed: the messages of writing go to standard output.
  ETInput input;
  input.parsesOutPipe = true;
  std::vector<double> progressAtStart;
  input.onStartHandler = [&](ETProcess& process) {
    progressAtStart.push_back(process.output().progress);
  };
  ETProcess process;
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"-ThumbnailImage=", untouched.string()},
           {"-FileName=y.xmp", sidecar.string()},
           {"-FileName=" + renamed.filename().string(), moving.string()}}) {
    input.arguments = arguments;
    process.execute(input);
  }
  const ETOutput output = process.output();

  EXPECT_EQ(progressAtStart, (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(output.progress, 1);
  EXPECT_FALSE(output.isRunning);
  EXPECT_NO_THROW(output.throwIfErrors());
  EXPECT_TRUE(output.binaryData.empty());
  ASSERT_EQ(output.processLogs.size(), 4u);
  EXPECT_EQ(std::get<ETOutput::NoChanges>(output.processLogs[0]).path, untouched.string());
  // The sidecar's would-be move (standard output) and the error that nothing was written
  // (standard error) come from two streams, in no fixed order.
  const auto& sidecarLogs = std::span(output.processLogs).subspan(1, 2);
  const auto nothingToWrite = std::ranges::find_if(sidecarLogs, [](const auto& log) {
    return std::holds_alternative<ETOutput::NothingToWrite>(log);
  });
  ASSERT_NE(nothingToWrite, sidecarLogs.end());
  EXPECT_EQ(std::get<ETOutput::NothingToWrite>(*nothingToWrite).path, sidecar.string());
  const auto& move = std::get<ETOutput::FileMoved>(output.processLogs[3]);
  EXPECT_EQ(move.from, moving.string());
  EXPECT_EQ(move.to, renamed.string());
  EXPECT_TRUE(std::filesystem::exists(renamed));
}

TEST(ETProcess, ARunStartedDuringARunReturnsAtOnceAndLeavesItAlone) {
  TemporaryFolder folder;
  ETInput input;
  input.arguments = {"-json", copyOfPlainJpeg(folder.path(), "a.jpg").string(),
                     copyOfPlainJpeg(folder.path(), "b.jpg").string()};
  ETInput intruder;
  intruder.arguments = {"-ver"};
  int intruderStarts = 0;
  intruder.onStartHandler = [&](ETProcess&) { ++intruderStarts; };
  int progressCalls = 0;
  input.onProgressHandler = [&](ETProcess& process) {
    ++progressCalls;
    process.execute(intruder);                               // from inside the run
    std::thread([&] { process.execute(intruder); }).join();  // and from another thread
    EXPECT_EQ(process.input().arguments, input.arguments);
    EXPECT_TRUE(process.output().isRunning);
  };

  ETProcess process;
  process.execute(input);
  EXPECT_EQ(progressCalls, 2);
  EXPECT_EQ(intruderStarts, 0);
  EXPECT_EQ(process.input().arguments, input.arguments);
  EXPECT_EQ(nlohmann::json::parse(process.output().decodeOutData().value()).size(), 2u);
}

TEST(ETProcess, ArgumentsReachTheToolExactlyAsGiven) {
  // Names relative to the working folder, which the child shares, so that each starts with
  // what the tool's reading of argument lines would otherwise change.
  TemporaryFolder folder;
  const auto home = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  const std::vector<std::string> names = {"line\nbreak.jpg", " lead.jpg", "#hash.jpg",
                                          "trail .jpg"};
  ETInput input;
  input.arguments = {"-json", "-FileName"};
  for (const auto& name : names) {
    copyOfPlainJpeg(folder.path(), name);
    input.arguments.push_back(name);
  }
  input.arguments.push_back("/x/none.jpg\n-ver");  // one missing file, not "-ver"
  std::vector<double> progress;
  input.onProgressHandler = [&](ETProcess& process) {
    progress.push_back(process.output().progress);
  };
  const ETOutput output = ETProcess::run(input);

  // Entries that need the tool's C-string form but hold "$" or "@", which that form can't carry.
  input.arguments = {"-json", "#$x.jpg"};
  const ETOutput refused = ETProcess::run(input);
  input.arguments = {"-echo", " @y"};
  const ETOutput refusedAt = ETProcess::run(input);
  // Bytes above ASCII are neither blanks nor name letters to the tool, and a carriage return
  // only goes at the end of a line, so the first three need no C-string form and keep their "$"
  // and "@"; as plain lines the others would lose white space, a backslash or a line end.
  const std::vector<std::string> echoes = {"\xA0$x.jpg",  "-X\xAB= @y",
                                           "a\r$b",       "",
                                           "\tx",         "\rx",
                                           "a\\b\r",      "-Comment = x",
                                           "-Comment= x", "-XMP-dc:Title_2#\t+= x",
                                           "-Tag\v-= x",  "-Tag<= x",
                                           "-Comment=x "};
  input.arguments.clear();
  std::string expectedEcho;
  for (const auto& echo : echoes) {
    input.arguments.insert(input.arguments.end(), {"-echo", echo});
    expectedEcho += echo + "\n";
  }
  const ETOutput echoed = ETProcess::run(input);
  std::filesystem::current_path(home);

  const auto tags = nlohmann::json::parse(output.decodeOutData().value());  // no version text
  ASSERT_EQ(tags.size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(tags[i]["SourceFile"], names[i]);
    EXPECT_EQ(tags[i]["FileName"], names[i]);
  }
  // The tool prints names as they are: a progress line cut by a line feed still counts as one,
  // while the message about a missing file stays cut.
  EXPECT_EQ(progress, (std::vector<double>{0.2, 0.4, 0.6, 0.8}));
  EXPECT_EQ(lorvane::test::unknownLines(output),
            (std::vector<std::string>{"Error: File not found - /x/none.jpg\n", "-ver\n"}));

  const std::string echoedText(reinterpret_cast<const char*>(echoed.binaryData.data()),
                               echoed.binaryData.size());
  EXPECT_EQ(echoedText, expectedEcho);

  EXPECT_TRUE(refused.binaryData.empty());  // no tool was started
  EXPECT_TRUE(refusedAt.binaryData.empty());
  EXPECT_EQ(lorvane::test::unknownLines(refusedAt).size(), 1u);
  EXPECT_EQ(lorvane::test::unknownLines(refused),
            (std::vector<std::string>{
                "the argument \"#$x.jpg\" can't reach ExifTool unchanged: it needs the tool's "
                "C-string form, which reads \"$\" and \"@\" with a backslash in front\n"}));
}
