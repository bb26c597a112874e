#pragma once

#include <string>
#include <vector>

namespace lorvane {

// The text sent to the tool's standard input: each argument on a line of its own. A run adds
// the lines that make the tool leave its stay-open mode and exit once the batch is done; a kept
// tool gets the lines that end one command instead.
//
// The tool reads such a line as an argument only after changing some of them: it drops white
// space in front, line ends behind, a line that starts with "#" (a comment) or is empty, and
// blanks around the "=" of "-TAG=VALUE"; and a line feed inside an argument would end its line.
// An argument that one of these would change goes as a C-string line instead ("#[CSTR]" and the
// argument with "\\", "\n" and "\r" escaped), which the tool reads back unchanged. All others go
// byte for byte.
struct ToolBatch {
  std::string text;
  // Why an argument can't reach the tool unchanged, and so the batch must not be sent; empty
  // when all can. The tool reads "$" and "@" of a C-string line with a backslash in front, so
  // an argument that needs that form and holds either has no exact form at all.
  std::string refusal;
};

// Each argument on a line of its own, each line ended by a line feed.
ToolBatch encodeArguments(const std::vector<std::string>& arguments);

// A run's whole batch: the arguments, then "-stay_open", "0", "-execute", with no line end
// behind the last.
ToolBatch makeToolBatch(const std::vector<std::string>& arguments);

}  // namespace lorvane
