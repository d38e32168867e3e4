#include <memory>

#include "plain.h"
#include "rows.h"
#include "signals.h"
#include "sorvo_audio.h"

namespace sorvo::bench {
namespace {

struct FilterTask {
    std::vector<float> x = make_signal(16000, 30.0);
    Filter filter;

    int sample_n() const { return static_cast<int>(x.size()); }
    int b_n() const { return static_cast<int>(filter.b.size()); }
    int a_n() const { return static_cast<int>(filter.a.size()); }
};

Row filter_row(const Filter& filter) {
    const auto task = std::make_shared<FilterTask>();
    task->filter = filter;
    Row row{task->x.size(), 1e-6, {}};
    row.variants.push_back({"ours", [task](float* dst) {
                                sorvoAudioLinerFilter(dst, task->x.data(), task->filter.b.data(),
                                                      task->filter.a.data(), nullptr,
                                                      task->sample_n(), task->sample_n(),
                                                      task->b_n(), task->a_n(), 0);
                            }});
    row.variants.push_back({"plain", [task](float* dst) {
                                plain_filter(dst, task->x.data(), task->sample_n(), task->filter.b,
                                             task->filter.a);
                            }});
    return row;
}

Row filtfilt_row(const Filter& filter) {
    const auto task = std::make_shared<FilterTask>();
    task->filter = filter;
    Row row{task->x.size(), 1e-6, {}};
    row.variants.push_back({"ours", [task](float* dst) {
                                sorvoAudioFilterFilter(dst, task->x.data(), task->filter.b.data(),
                                                       task->filter.a.data(), task->sample_n(),
                                                       task->sample_n(), task->b_n(), task->a_n(),
                                                       SORVO_AUDIO_PAD_ODD, 3 * task->b_n());
                            }});
    row.variants.push_back({"plain", [task](float* dst) {
                                plain_filtfilt(dst, task->x.data(), task->sample_n(),
                                               task->filter.b, task->filter.a);
                            }});
    return row;
}

}  // namespace

Rows filter_rows() {
    Rows rows;
    for (const Filter& filter : {order2_filter(), order8_filter(), fir32_filter()}) {
        rows.push_back(
            {std::string("filter/") + filter.name, [filter] { return filter_row(filter); }});
    }
    for (const Filter& filter : {order2_filter(), order8_filter()}) {
        rows.push_back(
            {std::string("filtfilt/") + filter.name, [filter] { return filtfilt_row(filter); }});
    }
    return rows;
}

}  // namespace sorvo::bench
