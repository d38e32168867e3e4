// What the commands that turn sound into features share.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "blocks/frame_cutter.h"
#include "blocks/resampler.h"
#include "digest/sum.h"
#include "settings/frame_settings.h"
#include "support/batch.h"
#include "support/picture.h"
#include "support/sound_reader.h"
#include "support/table.h"

namespace sorvo_tool {

// --raw, --colormap, --width, --height and, where rows are evenly spaced, --log-frequency.
void add_picture_options(CLI::App& app, PictureStyle& style, bool with_log_frequency);

// A sound as one channel, at the rate that is wanted (0: its own), in blocks.
class SignalReader {
  public:
    SignalReader(const std::string& path, const ReadingOptions& options, int sample_rate);

    bool read(std::vector<float>& samples);  // possibly none; false at the end
    int sample_rate() const { return sample_rate_; }
    void describe(Report& report) const;

  private:
    SoundReader reader_;
    int sample_rate_;
    Resampler resampler_;
    Block block_;
    bool has_ended_ = false;
};

// So many frames at a time keep the memory small that transforms take.
int frames_at_once(const FrameSettings& frame);

Failure too_short(const FrameSettings& frame, std::int64_t sample_n, const std::string& file);

using Change = std::function<void(std::vector<float>& cells)>;

// Decibels below the largest power of a table, cell by cell.
class Decibels {
  public:
    // `to_powers` makes powers of the cells.
    Decibels(const Table& table, Change to_powers, float top_db, std::string file);

    void operator()(std::vector<float>& cells) const;

  private:
    Change to_powers_;
    float top_db_;
    std::string file_;
    float largest_ = 0;
};

// Squares of magnitudes that have been raised to `power`.
Change powers_of(float power);

// The smallest, largest and mean value, where the largest is, and the digest of all.
class Range {
  public:
    void take(const std::vector<float>& cells);

    // `with_numbers`: not only whether all are finite, and the digest.
    void describe(Report& report, bool with_numbers) const;
    std::size_t peak() const { return peak_; }

  private:
    float lowest_ = 0;
    float highest_ = 0;
    double sum_ = 0;
    Sum digest_;
    std::size_t value_n_ = 0;
    std::size_t peak_ = 0;
    std::size_t not_finite_n_ = 0;
};

// Writes the cells of a table, changed by `finish`, and draws them in decibels, each if the job
// wants it. `picture` has its axes; `decibels` is only called for pictures.
Range write_features(const Job& job, const Table& table, const Change& finish,
                     const Change& decibels, Picture& picture, const PictureStyle& style);

bool is_drawn(const Job& job);

// Where a job has room for temporary files.
std::string folder_of(const Job& job);

}  // namespace sorvo_tool
