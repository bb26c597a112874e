#pragma once

#include <string>
#include <string_view>

#include "et_pipe.hpp"

namespace lorvane {

// The reader that understands the tool's messages. It cuts the stream into lines as they
// complete: a progress line moves `progress` and calls the progress handler, five known
// message forms become typed log entries, and any other line becomes an unknown line.
//
// Each chunk is decoded by itself: a chunk that isn't valid UTF-8 is dropped whole (a
// character split across two chunks thus loses both). A line ends at a line feed that doesn't
// directly follow a carriage return within the same chunk.
class ETParserPipe final : public ETPipe {
public:
  using ETPipe::ETPipe;
  ~ETParserPipe() override { waitForEndOfStream(); }

  void readAvailableData(std::span<const std::byte> data) override;
  // Decodes the last line when the stream ended without a line end; stored without one.
  void flushPendingData() override;

private:
  // Tries the recognisers in order; a line none takes is stored whole, with a line feed
  // behind it when `append`.
  void decodeData(std::string_view line, bool append);
  bool decodeFileProgress(std::string_view line);
  bool decodeNoChangesInFile(std::string_view line);
  bool decodeNothingToWrite(std::string_view line);
  bool decodeFileMovedChange(std::string_view line);
  bool decodeICCNoInformationToWrite(std::string_view line);
  bool decodeICCDeletedMayAffectColor(std::string_view line);
  void setProgessChange(double progress);
  void appendProcessLog(ETOutput::ProcessLog log);

  // The text of the unfinished last line of the chunks read so far.
  std::string pendingLine_;
};

}  // namespace lorvane
