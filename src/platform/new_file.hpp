#pragma once

#include <string>

namespace lorvane::platform {

enum class NewCopy {
  made,    // `to` now holds a copy of `from`
  exists,  // something already has the name `to`: left as it was
  failed,  // `from` could not be read or `to` not written (nothing is left at `to`)
};

// Copies a file's bytes, permission bits and modification time to a name that must not exist
// yet: the name is taken atomically, so two copies at once never share it and an older file
// of that name is never overwritten.
NewCopy copyToNewFile(const std::string& from, const std::string& to);

}  // namespace lorvane::platform
