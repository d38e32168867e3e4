// Failures as the user sees them, and the exit codes that follow.
#pragma once

#include <exception>
#include <string>

namespace sorvo_tool {

enum class Exit { done = 0, input_failed = 1, usage = 2, cannot_write = 3, internal = 4 };

// Of several failures the one that the program reports; beyond "some input failed" the larger code
// is the graver one.
inline Exit worse(Exit a, Exit b) {
    return a > b ? a : b;
}

// A failure in parts: the file or option it concerns, what happened, the limit that was passed, if
// any, and what to do about it.
class Failure : public std::exception {
  public:
    Failure(Exit exit, std::string subject, std::string problem, std::string limit,
            std::string advice);

    const char* what() const noexcept override { return text_.c_str(); }

    Exit exit() const { return exit_; }
    const std::string& subject() const { return subject_; }
    const std::string& problem() const { return problem_; }
    const std::string& limit() const { return limit_; }
    const std::string& advice() const { return advice_; }

  private:
    Exit exit_;
    std::string subject_;
    std::string problem_;
    std::string limit_;
    std::string advice_;
    std::string text_;
};

// Turns a status of the library into a Failure about `file`; SORVO_AUDIO_OK passes.
void check_status(int status, const char* function, const std::string& file);

}  // namespace sorvo_tool
