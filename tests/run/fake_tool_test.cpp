// Faults the real ExifTool can't be made to show: a child that dies, stops reading or prints in
// odd chunks; and one that reports what it was started with. (How a parsed
// stream takes invalid UTF-8 and lines cut across chunks is the parser's own test.)
#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <span>
#include <sstream>
#include <thread>

#include "test_support.hpp"

using namespace lorvane;
using lorvane::test::FakeTool;
using lorvane::test::TemporaryFolder;
using lorvane::test::unknownLines;

namespace {

using lorvane::test::script;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

using Lines = std::vector<std::string>;

}  // namespace

TEST(FakeTool, TheChildGetsTheCommandLineTheBatchNineVariablesAndNoOtherDescriptor) {
  FakeTool tool(script(R"(
    print "script: $0\n";
    print "argv: ", join("|", @ARGV), "\n";
    print "batch: $_\n" for split /\n/, $batch, -1;
    print "env: $_=$ENV{$_}\n" for sort keys %ENV;
    opendir(my $folder, "/proc/self/fd") or die;
    my @fds = grep { (readlink("/proc/self/fd/$_") // '') !~ m{^/proc/\d+/fd$} }  # not the listing's
              sort { $a <=> $b } grep { /^\d+$/ } readdir $folder;
    print "fds: @fds\n";
  )"));
  auto& settings = ETSettings::shared();
  settings.setBackupFolderURL("/backups/my \"own\"");
  settings.setQuickTimeItemListLevel(-1);
  settings.setQuickTimeUserDataLevel(0);
  settings.setQuickTimeKeysLevel(5'000'000'000);  // beyond 32 bits
  // A descriptor of the host that isn't close-on-exec must stay with the host all the same.
  const int hostDescriptor = ::open("/dev/null", O_RDONLY);
  ASSERT_GE(hostDescriptor, 0);

  ETInput input;
  // Ordinary entries go byte for byte; one the tool's reading would change goes as a C string.
  input.arguments = {"-json", "a b.jpg", "/x/none.jpg\n-ver"};
  const ETOutput output = ETProcess::run(input);
  ::close(hostDescriptor);

  EXPECT_NO_THROW(output.throwIfErrors());
  const std::string bin = tool.folder().string();
  const std::string perllib = bin + "/perllib";
  EXPECT_EQ(
      linesOf(output.decodeOutData().value()),
      (Lines{"script: " + bin + "/exiftool", "argv: -progress|-v0|-stay_open|1|-q|-@|-",
             "batch: -json", "batch: a b.jpg", "batch: #[CSTR]/x/none.jpg\\n-ver",
             "batch: -stay_open", "batch: 0", "batch: -execute",
             "env: EXIFTOOL_QUICKTIME_ITEM_LIST_LEVEL=-1",
             "env: EXIFTOOL_QUICKTIME_KEYS_LEVEL=5000000000",
             "env: EXIFTOOL_QUICKTIME_USER_DATA_LEVEL=0",
             "env: EXIFTOOL_SANDBOX_DIRECTORY=/backups/my \"own\"/Writing", "env: LC_CTYPE=C.UTF-8",
             "env: PERL5LIB=" + perllib, "env: PERL_LOCAL_LIB_ROOT=" + perllib,
             "env: PERL_MB_OPT=--install_base \"" + perllib + "\"",
             "env: PERL_MM_OPT=INSTALL_BASE=\"" + perllib + "\"", "fds: 0 1 2"}));

  // An empty batch is only the closing lines, and a setting changed shows in the next run.
  settings.setQuickTimeKeysLevel(7);
  const std::string next = ETProcess::run(ETInput{}).decodeOutData().value();
  EXPECT_NE(next.find("|-@|-\nbatch: -stay_open\nbatch: 0\nbatch: -execute\nenv: "), next.npos);
  EXPECT_NE(next.find("\nenv: EXIFTOOL_QUICKTIME_KEYS_LEVEL=7\n"), next.npos);
}

// The lines left without a line end are taken at the flush, on the caller's thread.
TEST(FakeTool, AChildThatDiesMidOutputLeavesWhatItPrinted) {
  FakeTool tool(script(R"(
    print "some bytes";
    print STDERR "first line\nunfinished\n======== /a.jpg [1/2]";
    kill 'KILL', $$;
  )"));
  ETInput input;
  const auto caller = std::this_thread::get_id();
  std::vector<double> seen;
  input.onProgressHandler = [&](ETProcess& process) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    seen.push_back(process.output().progress);
  };
  const ETOutput output = ETProcess::run(input);
  EXPECT_EQ(output.decodeOutData(), "some bytes");
  EXPECT_EQ(unknownLines(output), (Lines{"first line\n", "unfinished\n"}));
  EXPECT_EQ(seen, (std::vector<double>{0.5}));
  EXPECT_EQ(output.progress, 1);
  EXPECT_FALSE(output.isRunning);
}

TEST(FakeTool, AChildThatClosesItsInputAtOnceNeitherKillsNorBlocksTheHost) {
  FakeTool tool(R"(close STDIN; print STDERR "closed\n";)");
  // Far more than a pipe holds, so the write is still under way when the reader goes.
  ETInput input;
  input.arguments.assign(200'000, "-argument");
  const ETOutput output = ETProcess::run(input);
  EXPECT_EQ(unknownLines(output), (Lines{"closed\n",
                                         "the tool stopped reading its arguments before the whole "
                                         "batch was written: Broken pipe\n"}));
  EXPECT_FALSE(output.isRunning);
}

TEST(FakeTool, BinaryOutputOfManyOddChunksArrivesWhole) {
  TemporaryFolder folder;
  const auto source = folder.path() / "random.bin";
  std::vector<char> bytes(3 * 1024 * 1024 + 17);
  std::mt19937 random(42);
  for (auto& byte : bytes) {
    byte = static_cast<char>(random());
  }
  std::ofstream(source, std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  FakeTool tool(script(R"(
    open(my $file, '<:raw', $arguments[0]) or die;
    while (my $count = read($file, my $piece, 4093)) { syswrite(STDOUT, $piece); }
  )"));

  ETInput input;
  input.arguments = {source.string()};
  const ETOutput output = ETProcess::run(input);
  EXPECT_TRUE(std::ranges::equal(output.binaryData, std::as_bytes(std::span(bytes))));
}
