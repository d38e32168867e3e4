#include <algorithm>
#include <memory>

#include "filter/difference_equation.h"
#include "filter/filtfilt.h"
#include "filter/linerfilter.h"
#include "filter/zi_coef.h"
#include "rows.h"
#include "signals.h"
#include "sorvo_audio.h"
#include "util/edge_extension.h"

namespace sorvo::bench {
namespace {

struct FilterTask {
    std::vector<float> x = make_signal(16000, 30.0);
    Filter filter;

    int sample_n() const { return static_cast<int>(x.size()); }
    int b_n() const { return static_cast<int>(filter.b.size()); }
    int a_n() const { return static_cast<int>(filter.a.size()); }
    audio::FilterCoefficients coefficients() const {
        return {filter.b.data(), filter.a.data(), b_n(), a_n()};
    }
};

Row filter_row(const Filter& filter) {
    const auto task = std::make_shared<FilterTask>();
    task->filter = filter;
    Row row{task->x.size(), 1e-6, {}, {}};
    row.ours = [task](float* dst, audio::SimdLevel level) {
        audio::linerfilter<float, float, float, float>(
            dst, task->x.data(), task->filter.b.data(), task->filter.a.data(), nullptr,
            task->sample_n(), task->sample_n(), task->b_n(), task->a_n(), 0, false, level);
    };
    row.others.push_back({"plain", [task](float* dst) {
                              const audio::FilterCoefficients coef = task->coefficients();
                              std::vector<float> state(coef.b.size() - 1);
                              audio::run_difference_equation(dst, task->x.data(), coef,
                                                             state.data(), task->x.size(), false);
                          }});
    return row;
}

/// Odd extension by three times the number of coefficients.
int extension_n(const FilterTask& task) {
    return 3 * task.b_n();
}

/// Two passes of the definition over the whole extended signal.
void filtfilt_plainly(float* dst, const FilterTask& task) {
    const int pad_n = extension_n(task);
    std::vector<float> x(task.x.size() + 2 * static_cast<std::size_t>(pad_n));
    audio::extract_segment_sample_center_odd(x, task.x.data(), task.sample_n(), 0, pad_n);
    const audio::FilterCoefficients coef = task.coefficients();
    std::vector<double> zi(coef.b.size() - 1);
    audio::create_zi_coef(zi.data(), task.filter.b.data(), task.filter.a.data(),
                          static_cast<int>(zi.size()), task.b_n(), task.a_n());
    const auto steady_state = [&zi](double x0) {
        std::vector<double> state = zi;
        for (double& z : state) z *= x0;
        return state;
    };
    std::vector<double> y(x.size());
    std::vector<double> state = steady_state(static_cast<double>(x.front()));
    audio::run_difference_equation(y.data(), x.data(), coef, state.data(), y.size(), false);
    state = steady_state(y.back());
    audio::run_difference_equation(y.data(), y.data(), coef, state.data(), y.size(), true);
    std::transform(y.begin() + pad_n, y.end() - pad_n, dst,
                   [](double value) { return static_cast<float>(value); });
}

Row filtfilt_row(const Filter& filter) {
    const auto task = std::make_shared<FilterTask>();
    task->filter = filter;
    Row row{task->x.size(), 1e-6, {}, {}};
    row.ours = [task](float* dst, audio::SimdLevel level) {
        audio::filtfilt(dst, task->x.data(), task->filter.b.data(), task->filter.a.data(),
                        task->sample_n(), task->sample_n(), task->b_n(), task->a_n(),
                        SORVO_AUDIO_PAD_ODD, extension_n(*task), level);
    };
    row.others.push_back({"plain", [task](float* dst) { filtfilt_plainly(dst, *task); }});
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
