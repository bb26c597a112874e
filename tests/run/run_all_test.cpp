// Many inputs side by side: the real ExifTool over files spread by size, and fake tools that
// wait for each other to show how many children run at once.
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <thread>

#include "outside_tool.hpp"
#include "processes.hpp"
#include "test_support.hpp"

using namespace lorvane;
using lorvane::test::copyOfPlainJpeg;
using lorvane::test::entriesIn;
using lorvane::test::FakeTool;
using lorvane::test::script;
using lorvane::test::TemporaryFolder;

namespace {

// Reading JSON, as an application that shows many files asks for it.
void readAsJson(const std::string& file, ETInput::ArgumentsMaker& maker) {
  maker.additional = {"-json"};
  maker.extractsBinaries = false;
  maker.sourcePath = file;
}

}  // namespace

TEST(RunAll, SpreadFilesReadByTheRealToolComeBackCompleteInTheirPlacesWithOneProgress) {
  TemporaryFolder folder;
  std::vector<std::string> files;
  std::vector<std::string> writes = {"-q", "-overwrite_original"};
  for (int i = 0; i < 7; ++i) {
    files.push_back(copyOfPlainJpeg(folder.path(), "photo " + std::to_string(i) + ".jpg").string());
    writes.insert(writes.end(), {"-Artist=artist " + std::to_string(i), files.back(), "-execute"});
  }
  lorvane::test::outsideToolOutput("exiftool", writes);

  ETBatches batches = ETBatches::spread(files, 3, readAsJson);
  std::mutex mutex;
  std::vector<double> totals;
  ETCombinedProgress total(batches, [&](double progress) {
    const std::lock_guard lock(mutex);
    totals.push_back(progress);
  });
  const std::vector<ETOutput> outputs = ETProcess::runAll(batches.inputs, 2);

  ASSERT_EQ(outputs.size(), 3u);
  std::vector<std::size_t> seen;
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    EXPECT_NO_THROW(outputs[k].throwIfErrors());
    EXPECT_FALSE(outputs[k].isRunning);
    const auto tags = nlohmann::json::parse(outputs[k].decodeOutData().value());
    ASSERT_EQ(tags.size(), batches.places[k].size());
    for (std::size_t j = 0; j < tags.size(); ++j) {
      const std::size_t place = batches.places[k][j];
      EXPECT_EQ(tags[j]["SourceFile"], files[place]);
      EXPECT_EQ(tags[j]["Artist"], "artist " + std::to_string(place));
      seen.push_back(place);
    }
  }
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<std::size_t>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(std::is_sorted(totals.begin(), totals.end()));
  ASSERT_FALSE(totals.empty());
  EXPECT_EQ(totals.back(), 1);
  EXPECT_EQ(total.progress(), 1);
}

TEST(RunAll, AtMostNChildrenRunAtOnceOutputsKeepTheInputsOrderAndNothingIsLeftBehind) {
  // Each child counts itself in, then waits until as many as allowed have been running at
  // once, so the test shows the limit reached without timing anything; later inputs end first.
  TemporaryFolder counter;
  FakeTool tool(script(R"(
    use Fcntl qw(:flock);
    my ($folder, $id, $count, $limit) = @arguments;
    sub number { my $file = shift; open(my $in, '<', $file) or return 0; return <$in> // 0; }
    sub store { my ($file, $value) = @_; open(my $out, '>', $file) or die; print $out $value; }
    sub count {
      open(my $lock, '>>', "$folder/lock") or die;
      flock($lock, LOCK_EX) or die;
      my $now = number("$folder/now") + shift;
      store("$folder/now", $now);
      store("$folder/most", $now) if $now > number("$folder/most");
    }
    count(1);
    for (1 .. 400) { last if number("$folder/most") >= $limit; select(undef, undef, undef, 0.05); }
    select(undef, undef, undef, 0.05 * ($count - $id));
    count(-1);
    print "id: $id\n";
    opendir(my $fds, "/proc/self/fd") or die;
    for my $fd (sort { $a <=> $b } grep { /^\d+$/ } readdir $fds) {
      my $target = readlink("/proc/self/fd/$fd") // '';
      print "fd: $fd\n" unless $target =~ m{^/proc/\d+/fd$};  # the listing's own
    }
  )"));
  std::thread([] {}).join();  // ThreadSanitizer starts a thread of its own with the first one
  const auto threadsBefore = entriesIn("/proc/self/task");
  const auto descriptorsBefore = entriesIn("/proc/self/fd");

  for (const std::size_t limit : {1u, 3u}) {
    std::filesystem::remove(counter.path() / "most");
    constexpr std::size_t count = 6;
    std::vector<ETInput> inputs(count);
    std::mutex mutex;
    std::set<std::thread::id> threads;
    for (std::size_t i = 0; i < count; ++i) {
      inputs[i].arguments = {counter.path().string(), std::to_string(i), std::to_string(count),
                             std::to_string(limit)};
      inputs[i].onStartHandler = [&](ETProcess&) {
        const std::lock_guard lock(mutex);
        threads.insert(std::this_thread::get_id());
      };
    }
    const std::vector<ETOutput> outputs = ETProcess::runAll(inputs, limit);

    ASSERT_EQ(outputs.size(), count);
    for (std::size_t i = 0; i < count; ++i) {
      EXPECT_EQ(outputs[i].decodeOutData(), "id: " + std::to_string(i) + "\nfd: 0\nfd: 1\nfd: 2\n");
      EXPECT_TRUE(outputs[i].processLogs.empty()) << outputs[i].joinUnknownErrors().value_or("");
    }
    EXPECT_EQ(lorvane::test::fileContents(counter.path() / "most"), std::to_string(limit));
    EXPECT_EQ(threads.size(), limit);
  }
  EXPECT_EQ(entriesIn("/proc/self/task"), threadsBefore);
  EXPECT_EQ(entriesIn("/proc/self/fd"), descriptorsBefore);
  errno = 0;
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
  EXPECT_TRUE(ETProcess::runAll({}).empty());
}

TEST(RunAll, ACancelEndsOnlyItsOwnInput) {
  // The second tool would sleep for a minute; its progress handler cancels it at once.
  FakeTool tool(script(R"(
    my ($id) = @arguments;
    if ($id eq 'hang') { print STDERR "======== /a.jpg [1/2]\n"; sleep 60; }
    print "id: $id\n";
  )"));
  std::vector<ETInput> inputs(3);
  inputs[0].arguments = {"0"};
  inputs[1].arguments = {"hang"};
  inputs[2].arguments = {"2"};
  inputs[1].onProgressHandler = [](ETProcess& process) { process.cancel(); };

  std::vector<std::string> seen;
  for (const ETOutput& output : ETProcess::runAll(inputs, 3)) {
    seen.push_back(output.decodeOutData().value() + "|" + output.joinUnknownErrors().value_or(""));
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"id: 0\n|", "|the run was cancelled\n\n", "id: 2\n|"}));
}

TEST(ETBatches, BigFilesGoApartAndEachBatchKeepsItsFilesInOrder) {
  using Places = std::vector<std::vector<std::size_t>>;
  // The two heaviest apart, the third with one of them, the light ones filling up the other;
  // the batch holding the first element comes first.
  EXPECT_EQ(ETBatches::balance(std::vector<std::uint64_t>{1, 30, 2, 30, 3, 10}, 2),
            (Places{{0, 2, 3, 4}, {1, 5}}));
  // Weights of 0 spread by count; never an empty batch, however many are asked for.
  EXPECT_EQ(ETBatches::balance(std::vector<std::uint64_t>{0, 0, 0}, 2), (Places{{0, 2}, {1}}));
  EXPECT_EQ(ETBatches::balance(std::vector<std::uint64_t>{5, 5, 5}, 8), (Places{{0}, {1}, {2}}));

  TemporaryFolder folder;
  std::vector<std::filesystem::path> files;
  for (const std::size_t size : {0u, 2'000'000u, 10u, 20u, 30u}) {
    files.push_back(folder.path() / ("f" + std::to_string(files.size())));
    std::ofstream(files.back()) << std::string(size, 'x');
  }
  EXPECT_EQ(ETBatches::fileWeight(files[1]), ETBatches::fileWeight(files[0]) + 2'000'000);
  EXPECT_EQ(ETBatches::fileWeight(folder.path() / "missing"), ETBatches::fileWeight(files[0]));

  const auto block = [](const std::filesystem::path& file, ETInput::ArgumentsMaker& maker) {
    maker.sourcePath = file.string();
  };
  // The big file's size counts on top of the share every file has.
  EXPECT_EQ(ETBatches::spread(files, 2, block).places, (Places{{0, 3, 4}, {1, 2}}));
  // Weights of the caller's own; no input for no element.
  EXPECT_EQ(ETBatches::spread(
                files, 2, [](const auto&) { return 1; }, block)
                .places,
            (Places{{0, 2, 4}, {1, 3}}));
  EXPECT_TRUE(ETBatches::spread(std::vector<std::string>{}, 2, readAsJson).inputs.empty());
}

TEST(ETCombinedProgress, WeighsEachRunsProgressCountsAnEndedRunAsDoneAndKeepsOtherHandlers) {
  TemporaryFolder folder;
  const auto photo = [&](const char* name) {
    return copyOfPlainJpeg(folder.path(), name).string();
  };
  std::vector<ETInput> inputs(3);
  inputs[0].arguments = {"-json", photo("a.jpg")};
  inputs[1].arguments = {"-json", photo("b.jpg"), photo("c.jpg"), photo("d.jpg")};
  inputs[2].arguments = {"-ver"};  // no progress line at all
  int ownCalls = 0;
  inputs[1].onProgressHandler = [&](ETProcess&) { ++ownCalls; };
  std::vector<double> totals;
  const std::vector<double> weights = {1, 3, 4};
  ETCombinedProgress total(inputs, weights, [&](double progress) { totals.push_back(progress); });

  ETProcess::runAll(inputs, 1);
  EXPECT_EQ(totals, (std::vector<double>{0.125, 0.25, 0.375, 0.5, 1}));
  EXPECT_EQ(ownCalls, 3);
  EXPECT_EQ(total.progress(), 1);
}

// Two readers of one run may report its progress out of order; a share once reached stays.
TEST(ETCombinedProgress, ARunsProgressThatStepsBackKeepsItsShareForTheOtherRuns) {
  FakeTool tool(script(R"(print STDERR "======== /a.jpg [2/2]\n======== /b.jpg [1/2]\n";)"));
  std::vector<ETInput> inputs(2);
  // The second run goes while the first stands stepped back, before its end counts it done.
  inputs[0].onEndHandler = [&](ETProcess&) { ETProcess::run(inputs[1]); };
  std::vector<double> totals;
  ETCombinedProgress total(inputs, std::vector<double>{1, 1},
                           [&](double progress) { totals.push_back(progress); });
  ETProcess::run(inputs[0]);
  EXPECT_EQ(totals, (std::vector<double>{0.5, 1}));
}
