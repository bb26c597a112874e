// The platform layer on its own, as the atom remover uses it: a child that shares the host's
// environment and standard streams, and a launch failure that comes back as a value.
#include "platform/child_process.hpp"
#include "platform/pipe.hpp"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>

#include "test_support.hpp"

using namespace lorvane::platform;

namespace {

std::string asText(const std::vector<std::byte>& bytes) {
  return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

}  // namespace

TEST(ChildProcess, AProgramThatCantStartIsAFailureNamingItsPath) {
  ChildProcess child(LaunchOptions{.executable = "/no/such/folder/perl"});
  EXPECT_FALSE(child.isStarted());
  ASSERT_TRUE(child.failure());
  EXPECT_EQ(*child.failure(), "cannot start \"/no/such/folder/perl\": No such file or directory");
  child.waitForExit();  // nothing to wait for, and no crash
}

TEST(ChildProcess, InheritsTheHostEnvironmentUnlessOneIsGiven) {
  ::setenv("LORVANE_PLATFORM_TEST", "from the host", 1);
  auto output = makePipe();
  {
    ChildProcess child(LaunchOptions{.executable = "/bin/sh",
                                     .arguments = {"-c", "printf '%s|%s' \"$LORVANE_PLATFORM_TEST\" \"$ONLY\""},
                                     .standardOutput = output.writeEnd.get()});
    ASSERT_TRUE(child.isStarted());
    child.waitForExit();
  }
  {
    ChildProcess child(LaunchOptions{.executable = "/bin/sh",
                                     .arguments = {"-c", "printf '%s|%s' \"$LORVANE_PLATFORM_TEST\" \"$ONLY\""},
                                     .environment = std::map<std::string, std::string>{{"ONLY", "given"}},
                                     .standardOutput = output.writeEnd.get()});
    child.waitForExit();
  }
  output.writeEnd.close();
  EXPECT_EQ(asText(readToEnd(output.readEnd.get())), "from the host||given");
  ::unsetenv("LORVANE_PLATFORM_TEST");
}

TEST(Pipe, AWriteToAPipeWithoutReaderEndsWithEPIPEAndTheHostLives) {
  auto pipe = makePipe();
  pipe.readEnd.close();
  const std::vector<std::byte> bytes(100, std::byte{'x'});
  EXPECT_EQ(writeAll(pipe.writeEnd.get(), bytes), std::errc::broken_pipe);
}
