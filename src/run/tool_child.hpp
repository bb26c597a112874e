#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/child_process.hpp"
#include "platform/wait.hpp"
#include "run/run_state.hpp"

namespace lorvane {

// The tool's child as a run and a kept session both start, watch and stop it.

// The child's whole environment, from ETSettings as they are now; with `passesTimeZone` also
// the host's TZ, where it is set.
std::map<std::string, std::string> makeProcessEnv(bool passesTimeZone = false);

// The child's arguments after the interpreter: the script and the options that keep it reading
// arguments from standard input. Without progress, "-progress" and "-v0" are left out.
std::vector<std::string> makeProcessArgs(bool withProgress = true);

// The tool's launch from the binaries folder, in a process group of its own, with its standard
// streams wired to these descriptors.
platform::LaunchOptions makeToolLaunch(int standardInput, int standardOutput, int standardError,
                                       bool withProgress = true, bool passesTimeZone = false);

enum class Ending { finished, stopRequested, timeLimitPassed };

// Whether the wait is over; told whether the child has exited. Without one, the wait ends when
// the child has exited and both of its streams have ended.
using IsDone = std::function<bool(bool exited)>;

// Feeds what is left of `pending` to the child's standard input and waits until `isDone`, or
// until `until` passes or (when `heedsStop`) a stop is requested. A batch the child stops taking
// sets `writeFailure`. Nothing here blocks longer than that, so a child that never reads, never
// exits or whose own children hold its streams open keeps no one waiting beyond a stop or a
// time limit.
Ending superviseChild(const platform::ChildProcess& child, int standardInput,
                      std::span<const std::byte>& pending, const ChildSignals& signals,
                      std::optional<platform::Clock::time_point> until, bool heedsStop,
                      std::optional<std::string>& writeFailure, const IsDone& isDone = {});

// Ends the child and everything in its group: a request first, then force for whatever is still
// there when the child and its streams are done or the grace period is over. The streams then
// end, unless a descendant left the group.
void stopChild(const platform::ChildProcess& child, const ChildSignals& signals);

}  // namespace lorvane
