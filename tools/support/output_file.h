// Files appear under their name only when they are complete.
#pragma once

#include <functional>
#include <string>

#include "support/failure.h"

namespace sorvo_tool {

// Calls `write` with a temporary name in the folder of `path`, which is made if it is missing, and
// renames the file to `path` afterwards. If anything fails, no file is left behind.
void write_then_rename(const std::string& path,
                       const std::function<void(const std::string& temporary)>& write);

// The same for contents that are at hand.
void write_bytes(const std::string& path, const std::string& bytes);

Failure cannot_write(const std::string& path, const std::string& reason);

}  // namespace sorvo_tool
