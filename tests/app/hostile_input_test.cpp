// The program against what a hostile or careless user gives it, with the real ExifTool: file
// names the tool could read as options or that aren't UTF-8, and signals, down to SIGKILL.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "processes.hpp"
#include "test_support.hpp"

namespace {

namespace fs = std::filesystem;
using lorvane::test::dataFolder;
using lorvane::test::fileContents;
using lorvane::test::TemporaryFolder;

struct Result {
  int status = -1;  // the exit status; -1 when a signal ended the program
  std::string out;
  std::string err;
};

// The program started in `folder` with these arguments, its output going to files there.
class Program {
public:
  Program(const fs::path& folder, const std::vector<std::string>& arguments)
      : out_(folder / ".out"), err_(folder / ".err") {
    std::vector<std::string> words{LORVANE_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& word : words) {
      argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
      const int out = ::open(out_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      const int err = ::open(err_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      if (::chdir(folder.c_str()) != 0 || ::dup2(out, 1) < 0 || ::dup2(err, 2) < 0) {
        ::_exit(126);
      }
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
  }
  ~Program() {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      wait();
    }
  }

  pid_t pid() const { return pid_; }
  // Waits for the end, at most a minute (then SIGKILL: a hang fails the test, not the suite).
  Result wait() {
    Result result;
    int raw = 0;
    if (!waitFor(pid_, std::chrono::seconds(60), raw)) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, &raw, 0);
    }
    pid_ = -1;
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = fileContents(out_);
    result.err = fileContents(err_);
    fs::remove(out_);
    fs::remove(err_);
    return result;
  }

  // Reaps `pid` once it ends within `limit`; false when it is still there then.
  static bool waitFor(pid_t pid, std::chrono::milliseconds limit, int& raw) {
    const auto until = std::chrono::steady_clock::now() + limit;
    // Not ours yet (an orphan on its way to us) counts as still there.
    while (::waitpid(pid, &raw, WNOHANG) != pid) {
      if (std::chrono::steady_clock::now() > until) {
        return false;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
  }

private:
  fs::path out_;
  fs::path err_;
  pid_t pid_ = -1;
};

Result runProgram(const fs::path& folder, const std::vector<std::string>& arguments) {
  return Program(folder, arguments).wait();
}

// The children of `parent` that have /dev/zero open, from /proc.
std::vector<pid_t> readersOfZero(pid_t parent) {
  std::vector<pid_t> tools;
  for (const auto& process : lorvane::test::allProcesses()) {
    if (process.parent != parent) {
      continue;
    }
    std::error_code error;
    const fs::path descriptors = "/proc/" + std::to_string(process.pid) + "/fd";
    for (const auto& fd : fs::directory_iterator(descriptors, error)) {
      if (fs::read_symlink(fd.path(), error) == "/dev/zero") {
        tools.push_back(process.pid);
        break;
      }
    }
  }
  return tools;
}

// The tool of `program` that reads /dev/zero, once it does.
pid_t toolOf(const Program& program) {
  for (int attempt = 0; attempt < 3000; ++attempt) {
    if (const auto tools = readersOfZero(program.pid()); tools.size() == 1) {
      return tools.front();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return -1;
}

// Every file of the folder with its size and a hash of its bytes, short enough to read in a
// failure.
std::map<std::string, std::string> snapshot(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string bytes = fileContents(entry.path());
    files[entry.path().filename().string()] = std::to_string(bytes.size()) + " bytes, hash " +
                                              std::to_string(std::hash<std::string>{}(bytes));
  }
  return files;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

// A name the tool reads as an option would strip, delete, write, run commands or hang; each
// reaches it as a file, and the user reads of it under the name given.
TEST(HostileNames, FileNamesThatLookLikeOptionsAreFilesToEveryCommand) {
  TemporaryFolder folder;
  const std::vector<std::string> dashNames = {
      "-all=", "-overwrite_original", "-@", "-delete_original!", "-o", "-stay_open", "-ver", "-"};
  for (const auto& name : dashNames) {
    fs::copy_file(dataFolder() / "sample.jpg", folder.path() / name);
  }
  // Read as the file of "-@", it would run a command of the user's choosing.
  std::ofstream(folder.path() / "-json") << "-if\nsystem(\"touch pwned\")\n";
  for (const std::string name : {"a.jpg", "b.jpg", "b.jpg_original"}) {
    fs::copy_file(dataFolder() / "sample.jpg", folder.path() / name);
  }
  const auto before = snapshot(folder.path());
  std::vector<std::string> files;
  for (const auto& [name, bytes] : before) {
    files.push_back(name);
  }

  // Each command over all the files, as the shell's "*" gives them: the folder stays as it was.
  using Check = std::function<void(const Result&)>;
  const std::vector<std::pair<std::vector<std::string>, Check>> commands = {
      {{"show", "--json"},
       [&](const Result& shown) {
         const auto objects = nlohmann::json::parse(shown.out);
         ASSERT_EQ(objects.size(), files.size()) << shown.out;
         for (std::size_t i = 0; i < files.size(); ++i) {
           EXPECT_EQ(objects[i]["file"], files[i]);
           EXPECT_FALSE(objects[i].contains("error")) << files[i];
         }
       }},
      {{"show", "--raw"},
       [&](const Result& shown) {
         std::vector<std::string> sources;
         for (const auto& object : nlohmann::json::parse(shown.out)) {
           sources.push_back(object["SourceFile"]);
         }
         EXPECT_EQ(sources, files);
       }},
      // Deleting a tag the pictures lack: the tool changes nothing, and says so per file.
      {{"set", "XMP:Label=", "--"},
       [&](const Result& written) {
         EXPECT_EQ(written.status, 1);  // the tool writes no text file
         for (const auto& name : files) {
           const std::string said = name == "-json" ? "\n-json: not written: "
                                                    : "\n" + name + ": unchanged";
           EXPECT_TRUE(contains("\n" + written.out + "\n" + written.err, said))
               << name << "\n"
               << written.out << written.err;
         }
       }},
  };
  for (auto [arguments, check] : commands) {
    SCOPED_TRACE(arguments[0] + " " + arguments[1]);
    arguments.insert(arguments.end(), files.begin(), files.end());
    check(runProgram(folder.path(), arguments));
    EXPECT_EQ(snapshot(folder.path()), before);
  }
}

// ExifTool prints a file's name as its bytes are; a name that isn't UTF-8 must not take the
// tool's messages about it, or about the files next to it, away.
TEST(HostileNames, NamesThatAreNotUTF8KeepTheirMessagesAndShowEscaped) {
  TemporaryFolder folder;
  const std::vector<std::string> missing = {"gone1.jpg", "gone\xFF.jpg", "gone2.jpg"};
  const std::vector<std::string> shownNames = {"gone1.jpg", "gone\\xFF.jpg", "gone2.jpg"};

  auto set = std::vector<std::string>{"set", "XMP:Title=x", "--"};
  set.insert(set.end(), missing.begin(), missing.end());
  const auto written = runProgram(folder.path(), set);
  EXPECT_EQ(written.status, 1);
  EXPECT_FALSE(contains(written.out, "updated")) << written.out;
  for (const auto& name : shownNames) {
    EXPECT_TRUE(contains(written.err, name + ": not written: File not found\n")) << name << "\n"
                                                                                 << written.err;
  }

  fs::copy_file(dataFolder() / "sample.jpg", folder.path() / "pic\xFE.jpg");
  auto show = std::vector<std::string>{"show", "--jobs", "1", "pic\xFE.jpg"};
  show.insert(show.end(), missing.begin(), missing.end());
  const auto shown = runProgram(folder.path(), show);
  EXPECT_EQ(shown.status, 1);
  EXPECT_TRUE(contains(shown.out, "== pic\\xFE.jpg\n")) << shown.out;
  EXPECT_TRUE(contains(shown.out, "Demo title")) << shown.out;
  for (const auto& name : shownNames) {
    EXPECT_TRUE(contains(shown.err, "lorvane: " + name + ": File not found\n")) << name << "\n"
                                                                                << shown.err;
  }
}

// ExifTool reads /dev/zero for ever: the program's tool hangs until someone stops it. The
// program ends with 128 + the signal, what it printed whole, its tools gone.
TEST(HostileSignals, ASignalStopsTheToolsAndLeavesWellFormedOutput) {
  TemporaryFolder folder;
  fs::copy_file(dataFolder() / "sample.jpg", folder.path() / "good.jpg");
  const std::vector<std::pair<int, std::string>> cases = {
      {SIGINT, "--json"}, {SIGTERM, "--raw"}, {SIGHUP, "--json-lines"}};
  for (const auto& [number, form] : cases) {
    Program program(folder.path(), {"show", "--jobs", "1", form, "good.jpg", "/dev/zero"});
    const pid_t tool = toolOf(program);
    ASSERT_GT(tool, 0);
    ::kill(program.pid(), number);
    const auto result = program.wait();
    EXPECT_EQ(result.status, 128 + number) << strsignal(number) << "\n" << result.err;
    // Nothing, or whole JSON (a line of it per file): never half of it.
    std::istringstream lines(result.out);
    const bool byLine = form == "--json-lines";
    for (std::string line; byLine && std::getline(lines, line);) {
      EXPECT_TRUE(nlohmann::json::accept(line)) << line;
    }
    if (!byLine && !result.out.empty()) {
      EXPECT_TRUE(nlohmann::json::accept(result.out)) << result.out;
    }
    // The tool and its group are gone with the program.
    EXPECT_NE(::kill(-tool, 0), 0) << strsignal(number);
    if (::kill(-tool, 0) == 0) {
      ::kill(-tool, SIGKILL);
    }
  }
}

// SIGKILL leaves the program no say: the kernel must end its tool.
TEST(HostileSignals, AToolDoesNotOutliveAProgramKilledOutright) {
  TemporaryFolder folder;
  fs::copy_file(dataFolder() / "sample.jpg", folder.path() / "good.jpg");
  // The orphaned tool comes to us, so that we can see it end (a container's init may not reap).
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  Program program(folder.path(), {"show", "--jobs", "1", "good.jpg", "/dev/zero"});
  const pid_t tool = toolOf(program);
  ASSERT_GT(tool, 0);
  ::kill(program.pid(), SIGKILL);
  program.wait();
  int raw = 0;
  const bool ended = Program::waitFor(tool, std::chrono::seconds(10), raw);
  if (!ended) {
    ::kill(-tool, SIGKILL);
    ::waitpid(tool, &raw, 0);
  }
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
  EXPECT_TRUE(ended) << "the tool was still running";
  EXPECT_TRUE(WIFSIGNALED(raw) && WTERMSIG(raw) == SIGKILL);
}
