#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run/et_pipe.hpp"

namespace lorvane {

// The reader that understands the tool's messages. It cuts the stream into lines as they
// complete: a progress line moves `progress` and calls the progress handler, five known
// message forms become typed log entries, and any other line becomes an unknown line.
//
// By default each chunk is decoded by itself: a chunk that isn't valid UTF-8 is dropped whole
// (a character split across two chunks thus loses both). A reader that keeps invalid text loses
// nothing: a character cut by a chunk border waits for the rest of it, and each byte that isn't
// UTF-8 becomes U+FFFD, so such a line still reaches the recognisers. A line ends at a line feed
// that doesn't directly follow a carriage return within the same chunk.
//
// A file's name may hold line feeds, and the tool prints it as it is, so the progress line of
// such a file reaches us cut into several lines. A line that starts like a progress line but
// lacks its "[n/m]" ending is therefore held back and joined with the lines behind it until one
// has that ending; the whole then counts as one progress line. When another progress line, a
// message of the tool or the end of the stream comes first, the ending isn't coming: the held
// lines are decoded as any other line, in their place. Lines that hold no such name are read as
// they always were.
class ETParserPipe final : public ETPipe {
public:
  explicit ETParserPipe(RunState& run, bool keepsInvalidText = false)
      : ETPipe(run), keepsInvalidText_(keepsInvalidText) {}
  ~ETParserPipe() override { waitForEndOfStream(); }

  void readAvailableData(std::span<const std::byte> data) override;
  // Decodes the last line when the stream ended without a line end; stored without one.
  void finishData() override;

private:
  // Cuts decoded text into lines, the first joined to the pending line.
  void takeText(std::string_view text);
  // One finished line, or the last one without a line end when not `append`: joined to the
  // held lines, held itself, or decoded.
  void takeLine(std::string_view line, bool append);
  // Decodes the held lines one by one, as lines of their own.
  void releaseHeldLines();
  // The bytes held, with a line feed after each line.
  std::size_t heldSize() const;
  // Tries the recognisers in order; a line none takes is stored whole, with a line feed
  // behind it when `append`.
  void decodeData(std::string_view line, bool append);
  bool decodeFileProgress(std::string_view line);
  // The entry of the known message other than progress that takes the line, if one does.
  static std::optional<ETOutput::ProcessLog> decodeMessage(std::string_view line);
  static std::optional<ETOutput::ProcessLog> decodeNoChangesInFile(std::string_view line);
  static std::optional<ETOutput::ProcessLog> decodeNothingToWrite(std::string_view line);
  static std::optional<ETOutput::ProcessLog> decodeFileMovedChange(std::string_view line);
  static std::optional<ETOutput::ProcessLog> decodeICCNoInformationToWrite(std::string_view line);
  static std::optional<ETOutput::ProcessLog> decodeICCDeletedMayAffectColor(std::string_view line);
  void setProgessChange(double progress);
  void appendProcessLog(ETOutput::ProcessLog log);

  const bool keepsInvalidText_;
  // The bytes of a character cut off at the end of the last chunk, when invalid text is kept.
  std::string cutCharacter_;
  // The text of the unfinished last line of the chunks read so far.
  std::string pendingLine_;
  // The lines of a progress line still waiting for its ending, the first one in front.
  std::vector<std::string> heldLines_;
};

}  // namespace lorvane
