#include <memory>

#include "resample/resampler.h"
#include "resample_peers.h"
#include "rows.h"
#include "signals.h"

namespace sorvo::bench {
namespace {

Row resample_row(int src_rate, int dst_rate) {
    const auto src = std::make_shared<const std::vector<float>>(make_signal(src_rate, 30.0));
    const int src_n = static_cast<int>(src->size());
    const int dst_n = audio::get_resample_len(dst_rate, src_n, src_rate);

    // Converters differ in what they do to the noise above the band and to the ends: a stream keeps
    // the last milliseconds back.
    Row row{static_cast<std::size_t>(dst_n), 0.05, {}, {}};
    row.ours = [=](float* dst, audio::SimdLevel level) {
        audio::resample(dst, src->data(), dst_rate, dst_n, src_rate, src_n, level);
    };
    row.others.push_back({"plain", [=](float* dst) {
                              audio::resample_plain(dst, src->data(), dst_rate, dst_n, src_rate,
                                                    src_n);
                          }});
    for (const auto& peer : resample_peers(dst_rate, src_rate)) {
        row.others.push_back(
            {peer->name(), [=](float* dst) { peer->run(dst, dst_n, src->data(), src_n); }});
    }
    return row;
}

std::string kilohertz(int rate) {
    return rate % 1000 == 0 ? std::to_string(rate / 1000)
                            : std::to_string(rate / 1000) + "." + std::to_string(rate % 1000 / 100);
}

}  // namespace

Rows resample_rows() {
    Rows rows;
    const std::pair<int, int> rates[] = {
        {44100, 16000}, {48000, 16000}, {16000, 8000}, {16000, 48000}, {44100, 48000}};
    for (const auto& [src_rate, dst_rate] : rates) {
        rows.push_back({"resample/" + kilohertz(src_rate) + "-" + kilohertz(dst_rate),
                        [from = src_rate, to = dst_rate] { return resample_row(from, to); }});
    }
    return rows;
}

}  // namespace sorvo::bench
