#include "commands/features.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <utility>

#include "support/sound.h"
#include "support/text.h"

namespace sorvo_tool {

Signal load_signal(const std::string& path, int sample_rate, Report& report) {
    const Sound sound = read_sound(path);
    report.seconds = sound.seconds();
    report.facts.add("sample_rate", number(sound.sample_rate));
    report.facts.add("channels", number(sound.channels.size()));
    report.facts.add("samples", number(sound.sample_n()));
    report.facts.add("seconds", sound.seconds());

    Signal signal{mix_down(sound), sound.sample_rate};
    if (sound.channels.size() > 1)
        report.notes.push_back(counted(sound.channels.size(), "channel") + " mixed down to one");
    if (sample_rate > 0 && sample_rate != sound.sample_rate) {
        signal.samples = resample(signal.samples, sound.sample_rate, sample_rate, path);
        signal.sample_rate = sample_rate;
        report.notes.push_back("converted from " + std::to_string(sound.sample_rate) + " to " +
                               std::to_string(sample_rate) + " Hz");
    }
    if (std::all_of(signal.samples.begin(), signal.samples.end(),
                    [](float sample) { return sample == 0; }))
        report.notes.push_back("silent: every sample is 0");
    count_not_finite(signal.samples, "sample", "read", report);
    return signal;
}

std::vector<float> to_decibels(const std::vector<float>& values, float power, float top_db,
                               const std::string& file) {
    if (values.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw Failure(Exit::input_failed, file,
                      "has " + std::to_string(values.size()) + " cells, too many for decibels",
                      "limit 2147483647", "split the sound, or leave out --db and pictures");
    std::vector<float> result = values;
    if (power != 2)  // the library takes powers
        for (float& value : result) value = std::pow(value, 2 / power);
    check_status(sorvoAudioConvertPowerToDB(result.data(), result.data(),
                                            static_cast<int>(result.size()), top_db),
                 "sorvoAudioConvertPowerToDB", file);
    return result;
}

Picture picture_of(std::vector<float> decibels, const FrameSettings& frame, int frame_n,
                   int sample_rate, const std::string& title) {
    Picture picture;
    picture.cells = std::move(decibels);
    picture.column_n = static_cast<std::size_t>(frame_n);
    picture.row_n = picture.cells.size() / picture.column_n;
    const auto [lowest, highest] = std::minmax_element(picture.cells.begin(), picture.cells.end());
    picture.highest = *highest;
    picture.lowest = *lowest;
    if (picture.lowest == picture.highest) {  // silence lies at its own maximum, but is to be dark
        picture.lowest = picture.highest - 80;
        std::fill(picture.cells.begin(), picture.cells.end(), picture.lowest);
    }
    picture.title = title;
    picture.first_seconds = first_frame_seconds(frame, sample_rate);
    picture.seconds_per_column = static_cast<double>(frame.hop_n) / sample_rate;
    return picture;
}

void write_features(const Job& job, const Array& array, const Picture& picture, bool raw) {
    const auto draw = [&](const std::string& path) {
        write_png(path, raw ? draw_raw(picture) : draw_with_axes(picture));
    };
    const std::string ending = std::filesystem::path(job.output).extension().string();
    if (ending == ".npy") write_npy(job.output, array);
    if (ending == ".csv") write_csv(job.output, array);
    if (ending == ".png") draw(job.output);
    if (!job.picture.empty()) draw(job.picture);
}

void report_range(const std::vector<float>& values, Report& report) {
    const auto [lowest, highest] = std::minmax_element(values.begin(), values.end());
    double sum = 0;
    for (const float value : values) sum += static_cast<double>(value);
    count_not_finite(values, "value", "written", report);
    report.facts.add("minimum", static_cast<double>(*lowest));
    report.facts.add("maximum", static_cast<double>(*highest));
    report.facts.add("mean", sum / static_cast<double>(values.size()));
}

}  // namespace sorvo_tool
