#pragma once

#include <chrono>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace lorvane {

class ETProcess;

// Everything one run of ExifTool is told: its arguments, how each output stream is read,
// and the three callbacks of the run. A plain value: copy it, change it, hand it to a run.
struct ETInput {
  using Handler = std::function<void(ETProcess&)>;

  // The tool's arguments in the order it receives them; one option or value per entry. Each
  // reaches the tool exactly as it is, line feeds, blanks and a leading "#" included.
  std::vector<std::string> arguments;
  // true: standard output is decoded into messages and progress; false: kept as bytes.
  bool parsesOutPipe = false;
  // The same choice for standard error, decoded by default.
  bool parsesErrPipe = true;
  // How a decoded stream treats text that isn't UTF-8. false (the default): a chunk of the
  // stream that isn't valid UTF-8 is dropped with every line in it, and a character cut by the
  // border of two chunks drops both. true: nothing is lost; a cut character is joined again,
  // and a line holding bytes that aren't UTF-8 (a file name in a message, say) is decoded as
  // any other, each such byte shown as U+FFFD.
  bool keepsInvalidText = false;
  // How long the tool may take from its start; when that has passed, the run ends as if
  // cancelled. Nothing: as long as the tool takes.
  std::optional<std::chrono::milliseconds> timeLimit;
  // On the caller's thread, before the tool starts.
  Handler onStartHandler;
  // On the thread that read a progress line, after `progress` has changed.
  Handler onProgressHandler;
  // On the caller's thread, after the tool has exited and both streams are drained.
  Handler onEndHandler;

  // Named options of one tool command; see <lorvane/arguments_maker.hpp>.
  struct ArgumentsMaker;

  // Lets `block` fill a fresh maker and appends what it makes to `arguments`. A block that
  // changes nothing still appends the default options.
  void addArguments(const std::function<void(ArgumentsMaker&)>& block);

  // The same for each element, in order, each with a fresh maker of its own, and one append of
  // the whole at the end; an empty list appends nothing. The commands run together into one
  // unless the block sets `forceExecute`.
  template <class Elements, class Block>
  void addArguments(const Elements& elements, Block&& block);
};

namespace detail {
// Fills a fresh maker through `block` and appends what it makes to `list`.
void appendMade(std::vector<std::string>& list,
                const std::function<void(ETInput::ArgumentsMaker&)>& block);
}  // namespace detail

template <class Elements, class Block>
void ETInput::addArguments(const Elements& elements, Block&& block) {
  std::vector<std::string> made;
  for (const auto& element : elements) {
    detail::appendMade(made, [&](ArgumentsMaker& maker) { block(element, maker); });
  }
  arguments.insert(arguments.end(), std::make_move_iterator(made.begin()),
                   std::make_move_iterator(made.end()));
}

}  // namespace lorvane

// The maker's fields, so that either header gives the whole of ETInput.
#include <lorvane/arguments_maker.hpp>
