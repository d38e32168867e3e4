#include "support/failure.h"

#include <sorvo_audio.h>

#include <utility>

namespace sorvo_tool {

Failure::Failure(Exit exit, std::string subject, std::string problem, std::string limit,
                 std::string advice)
    : exit_(exit),
      subject_(std::move(subject)),
      problem_(std::move(problem)),
      limit_(std::move(limit)),
      advice_(std::move(advice)) {
    text_ = subject_ + ": " + problem_;
    if (!limit_.empty()) text_ += " (" + limit_ + ")";
    if (!advice_.empty()) text_ += "; " + advice_;
}

void check_status(int status, const char* function, const std::string& file) {
    if (status == SORVO_AUDIO_OK) return;
    if (status == SORVO_AUDIO_ERROR_MEMORY)
        throw Failure(Exit::input_failed, file, "the result needs more memory than can be had",
                      std::string(function) + " returned -5",
                      "split the sound or choose smaller transforms");
    throw Failure(Exit::internal, file,
                  std::string(function) + " returned status " + std::to_string(status), "",
                  "please report this with the command line");
}

}  // namespace sorvo_tool
