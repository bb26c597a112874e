#pragma once

#include <functional>
#include <string>
#include <vector>

namespace lorvane {

class ETProcess;

// Everything one run of ExifTool is told: its arguments, how each output stream is read,
// and the three callbacks of the run. A plain value: copy it, change it, hand it to a run.
struct ETInput {
  using Handler = std::function<void(ETProcess&)>;

  // The tool's arguments in the order it receives them; one option or value per entry.
  std::vector<std::string> arguments;
  // true: standard output is decoded into messages and progress; false: kept as bytes.
  bool parsesOutPipe = false;
  // The same choice for standard error, decoded by default.
  bool parsesErrPipe = true;
  // On the caller's thread, before the tool starts.
  Handler onStartHandler;
  // On the thread that read a progress line, after `progress` has changed.
  Handler onProgressHandler;
  // On the caller's thread, after the tool has exited and both streams are drained.
  Handler onEndHandler;
};

}  // namespace lorvane
