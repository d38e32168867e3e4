#include "commands/features.h"

#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "support/text.h"

namespace sorvo_tool {

void add_picture_options(CLI::App& app, PictureStyle& style, bool with_log_frequency) {
    CLI::Option* raw =
        app.add_flag("--raw", style.raw, "Draw one pixel for each cell, without axes");
    static const Choices colormaps{{"magma", static_cast<int>(Colormap::magma)},
                                   {"viridis", static_cast<int>(Colormap::viridis)},
                                   {"gray", static_cast<int>(Colormap::gray)}};
    add_choice(app, "--colormap", style.colormap, colormaps, "Colours of pictures [magma]");
    const auto add_size = [&](const char* name, int& target, int least, const char* text) {
        app.add_option(name, target, text)
            ->check(at_least(least))
            ->check(at_most(10000))
            ->type_name("PX")
            ->excludes(raw);
    };
    add_size("--width", style.width, 320, "Width of pictures [by the length of the sound]");
    add_size("--height", style.height, 200, "Height of pictures [by the number of rows]");
    if (with_log_frequency)
        app.add_flag("--log-frequency", style.log_frequency,
                     "Draw octaves equally high, without 0 Hz")
            ->excludes(raw);
}

SignalReader::SignalReader(const std::string& path, const ReadingOptions& options, int sample_rate)
    : reader_(path, options),
      sample_rate_(sample_rate > 0 ? sample_rate : reader_.format().sample_rate),
      resampler_(reader_.format().sample_rate, sample_rate_, options.most_ratio, path) {}

bool SignalReader::read(std::vector<float>& samples) {
    if (has_ended_) return false;
    has_ended_ = !reader_.read(block_);
    samples = has_ended_ ? resampler_.flush() : resampler_.push(mix_down(block_));
    return true;
}

void SignalReader::describe(Report& report) const {
    reader_.describe(report);
    const SoundFormat& format = reader_.format();
    if (format.channel_n > 1)
        report.notes.push_back(counted(format.channel_n, "channel") + " mixed down to one");
    if (format.sample_rate != sample_rate_)
        report.notes.push_back("converted from " + std::to_string(format.sample_rate) + " to " +
                               std::to_string(sample_rate_) + " Hz");
    const std::string aliasing = describe_aliasing(format.sample_rate, sample_rate_);
    if (!aliasing.empty()) report.notes.push_back(aliasing);
}

int frames_at_once(const FrameSettings& frame) {
    constexpr int float_n = 1 << 19;
    return std::max(1, float_n / (frame.fft_n / 2 + 1) / 2);
}

Failure too_short(const FrameSettings& frame, std::int64_t sample_n, const std::string& file) {
    return {Exit::input_failed, file,
            "is too short, " + counted(static_cast<std::size_t>(sample_n), "sample"),
            "one frame needs " + std::to_string(frame.fft_n) + ", --n-fft",
            "give a longer sound or a smaller --n-fft"};
}

Decibels::Decibels(const Table& table, Change to_powers, float top_db, std::string file)
    : to_powers_(std::move(to_powers)), top_db_(top_db), file_(std::move(file)) {
    table.for_each_piece([&](std::vector<float>& cells) {
        to_powers_(cells);
        for (const float power : cells) largest_ = power > largest_ ? power : largest_;
    });
}

void Decibels::operator()(std::vector<float>& cells) const {
    to_powers_(cells);
    cells.push_back(largest_);  // the library's decibels are relative to the largest it sees
    check_status(sorvoAudioConvertPowerToDB(cells.data(), cells.data(),
                                            static_cast<int>(cells.size()), top_db_),
                 "sorvoAudioConvertPowerToDB", file_);
    cells.pop_back();
}

Change powers_of(float power) {
    return [=](std::vector<float>& values) {
        if (power == 2) return;
        for (float& value : values) value = std::pow(value, 2 / power);
    };
}

void Range::take(const std::vector<float>& cells) {
    for (const float value : cells) {
        if (value_n_ == 0) lowest_ = highest_ = value;
        if (value < lowest_) lowest_ = value;
        if (value > highest_) {
            highest_ = value;
            peak_ = value_n_;
        }
        sum_ += static_cast<double>(value);
        digest_.add(value);
        not_finite_n_ += !std::isfinite(value);
        ++value_n_;
    }
}

void Range::describe(Report& report, bool with_numbers) const {
    if (not_finite_n_ > 0) report.defects.push_back(counted(not_finite_n_, "value") + " written");
    report.facts.add("digest", digits_of(digest_));
    if (!with_numbers) return;
    report.facts.add("minimum", static_cast<double>(lowest_));
    report.facts.add("maximum", static_cast<double>(highest_));
    report.facts.add("mean", sum_ / static_cast<double>(value_n_));
}

bool is_drawn(const Job& job) {
    return !job.picture.empty() || job.ending == ".png";
}

std::string folder_of(const Job& job) {
    return folder_for_temporaries(job.output.empty() ? job.picture : job.output);
}

Range write_features(const Job& job, const Table& table, const Change& finish,
                     const Change& decibels, Picture& picture, const PictureStyle& style) {
    std::optional<TableWriter> writer;
    if (job.ending == ".npy" || job.ending == ".csv") writer.emplace(job.output, job.ending, table);
    picture.row_n = table.row_n();
    picture.column_n = table.column_n();
    if (is_drawn(job)) begin(picture, style);
    Range range;
    table.for_each_piece([&](std::vector<float>& cells) {
        if (is_drawn(job)) {
            std::vector<float> levels = cells;
            decibels(levels);
            add(picture, levels);
        }
        finish(cells);
        range.take(cells);
        if (writer) writer->write(cells);
    });
    if (writer) writer->commit();
    if (!is_drawn(job)) return range;

    if (picture.lowest == picture.highest) {  // silence lies at its own maximum, but is to be dark
        picture.lowest = picture.highest - 80;
        std::fill(picture.cells.begin(), picture.cells.end(), picture.lowest);
    }
    const Pixels pixels = draw(picture, style);
    if (job.ending == ".png") write_png(job.output, pixels);
    if (!job.picture.empty()) write_png(job.picture, pixels);
    return range;
}

}  // namespace sorvo_tool
