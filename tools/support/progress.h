// How far a batch has come, on stderr.
#pragma once

#include <chrono>
#include <string>

namespace sorvo_tool {

// On a terminal a bar that is redrawn in place; otherwise one line for each tenth of the work.
class Progress {
  public:
    Progress(std::string name, std::size_t job_n);

    void job_ended(double sound_seconds, bool failed);
    void clear();  // takes the bar away, before other text is written

    double elapsed() const;
    double times_real_time() const;

  private:
    void draw_bar();
    void print_tenth(std::size_t done_before);

    std::string name_;
    std::size_t job_n_;
    std::size_t done_n_ = 0;
    std::size_t failed_n_ = 0;
    double sound_seconds_ = 0;
    std::chrono::steady_clock::time_point start_;
    std::chrono::steady_clock::time_point drawn_;
    bool is_terminal_;
};

}  // namespace sorvo_tool
