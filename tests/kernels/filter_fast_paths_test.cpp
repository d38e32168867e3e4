#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "filter/coefficients.h"
#include "filter/filtfilt.h"
#include "filter/fir_filter.h"
#include "filter/lane_filter.h"
#include "filter/linerfilter.h"
#include "filter/zi_coef.h"
#include "kernels/levels.h"
#include "kernels/signals.h"
#include "stft/framing.h"

namespace {

using namespace sorvo::audio;

constexpr float inf = std::numeric_limits<float>::infinity();

struct Filter {
    std::string name;
    std::vector<float> b;
    std::vector<float> a;

    FilterCoefficients coef() const {
        return {b.data(), a.data(), static_cast<int>(b.size()), static_cast<int>(a.size())};
    }
};

/// Two poles at radius r and angle w.
Filter resonator(const std::string& name, float r, float w) {
    return {name, {0.1F, 0.05F, -0.1F}, {1.0F, -2.0F * r * std::cos(w), r * r}};
}

std::vector<Filter> filters() {
    return {{"one_pole", {0.2F}, {1.0F, -0.8F}},
            {"one_pole_scaled", {0.2F, -0.1F}, {-2.0F, 1.5F}},
            {"integrator", {1.0F}, {1.0F, -1.0F}},
            {"alternating", {1.0F, 0.5F}, {1.0F, 1.0F}},
            {"unstable_1", {1.0F}, {1.0F, -1.01F}},
            resonator("resonator", 0.9F, 0.3F),
            resonator("lasting_resonator", 0.97F, 0.3F),
            resonator("slow_resonator", 0.999F, 0.1F),
            resonator("oscillator", 1.0F, 0.7F),
            resonator("unstable_2", 1.02F, 1.0F),
            {"double_zero_pole", {1.0F, -2.0F, 1.0F}, {1.0F, 0.0F, 0.25F}},
            {"infinite_coefficient", {1.0F, inf}, {1.0F, 0.5F}},
            {"divided_by_zero", {1.0F, 0.5F}, {0.0F, 0.5F}},
            {"order_3", {0.1F, 0.2F, 0.1F, 0.05F}, {1.0F, -0.5F, 0.2F, 0.1F}},
            {"order_9", std::vector<float>(10, 0.1F), {1.0F, -0.9F}},
            {"gain", {0.7F}, {1.0F}},
            {"pre_emphasis", {1.0F, -0.97F}, {1.0F}},
            {"delay", {0.0F, 0.0F, 1.0F}, {1.0F}},
            {"fir_33", test::noise(33, 1.0F, 5), {1.0F}},
            {"fir_sparse", {0.0F, 1.0F, 0.0F, -1.0F, -0.0F}, {-1.0F, 0.0F, -0.0F}},
            {"fir_1100", test::noise(1100, 1.0F, 6), {0.5F}},
            {"fir_overflow", {1e30F, 1e30F, 1e30F}, {1e-10F}},
            {"zeros", {0.0F, 0.0F}, {1.0F}}};
}

template <class T>
struct Result {
    std::vector<T> y;
    std::vector<double> z;
};

template <class Out, class In, class State, class Run>
Result<Out> run(const std::vector<In>& x, const Filter& filter, bool in_place, Run run_it) {
    std::vector<State> z(filter.coef().b.size() - 1);
    for (std::size_t k = 0; k < z.size(); ++k) {
        z[k] = static_cast<State>(0.25) / static_cast<State>(k + 1);
    }
    std::vector<Out> y(x.size());
    if constexpr (std::is_same_v<Out, In>) {
        y = in_place ? x : y;
        run_it(y.data(), in_place ? y.data() : x.data(), z.data());
    } else {
        run_it(y.data(), x.data(), z.data());
    }
    return {y, {z.begin(), z.end()}};
}

template <class Out, class In, class State>
void expect_plain_bits(const std::vector<float>& signal, const Filter& filter, bool reverse,
                       bool in_place) {
    const std::vector<In> x(signal.begin(), signal.end());
    const FilterCoefficients coef = filter.coef();
    const auto plain = run<Out, In, State>(x, filter, false, [&](Out* y, const In* from, State* z) {
        run_filter_plain(y, from, coef, z, x.size(), reverse);
    });
    test::for_each_level([&](SimdLevel level) {
        const auto fast =
            run<Out, In, State>(x, filter, in_place, [&](Out* y, const In* from, State* z) {
                run_filter(y, from, coef, z, x.size(), reverse, level);
            });
        EXPECT_EQ(test::first_difference(fast.y, plain.y), test::none);
        EXPECT_EQ(test::first_difference(fast.z, plain.z), test::none) << "state";
    });
}

TEST(FastFilters, EqualThePlainFilter) {
    for (const std::size_t n : {min_fir_filter_n, min_lane_filter_n + 77, std::size_t{20000}}) {
        for (const test::Signal& signal : test::test_signals(n)) {
            for (const Filter& filter : filters()) {
                SCOPED_TRACE(filter.name + ", " + signal.name + ", " + std::to_string(n));
                expect_plain_bits<float, float, float>(signal.x, filter, false, n % 2 == 0);
                expect_plain_bits<double, float, double>(signal.x, filter, false, false);
                expect_plain_bits<double, double, double>(signal.x, filter, true, n % 2 == 1);
                expect_plain_bits<float, double, double>(signal.x, filter, true, false);
            }
        }
    }
}

/// In silence a filter's state fades away to denormals, and then two runs need never meet.
std::vector<float> noise_with_silence(std::size_t n, std::size_t begin, std::size_t end) {
    std::vector<float> x = test::noise(n, 1.0F);
    std::fill(x.data() + begin, x.data() + end, 0.0F);
    return x;
}

TEST(FastFilters, EqualThePlainFilterAfterSilenceAndInPlace) {
    const std::vector<float> x = noise_with_silence(300000, 9000, 110000);
    for (const Filter& filter : filters()) {
        for (const bool reverse : {false, true}) {
            SCOPED_TRACE(filter.name);
            expect_plain_bits<float, float, float>(x, filter, reverse, true);
            expect_plain_bits<double, double, double>(x, filter, reverse, true);
        }
    }
}

/// Both passes over the whole extended signal, with everything between in one array.
std::vector<float> plain_filtfilt(const std::vector<float>& x, const Filter& filter, int dst_n,
                                  int pad_type, int pad_n) {
    constexpr Extension extensions[] = {Extension::zeros, Extension::odd, Extension::reflect,
                                        Extension::constant};
    const auto pad = static_cast<std::size_t>(pad_type == 0 ? 0 : pad_n);
    std::vector<float> extended(x.size() + 2 * pad);
    extract_segment(extended, x.data(), static_cast<int>(x.size()), -static_cast<int>(pad),
                    extensions[pad_type]);
    const FilterCoefficients coef = filter.coef();
    std::vector<double> steady(coef.b.size() - 1);
    create_zi_coef(steady.data(), filter.b.data(), filter.a.data(), static_cast<int>(steady.size()),
                   static_cast<int>(filter.b.size()), static_cast<int>(filter.a.size()));
    std::vector<double> y(extended.begin(), extended.end());
    for (const bool reverse : {false, true}) {
        std::vector<double> z = steady;
        for (double& value : z) {
            value *= reverse ? y.back() : y.front();
        }
        run_filter_plain(y.data(), y.data(), coef, z.data(), y.size(), reverse);
    }
    std::vector<float> dst(static_cast<std::size_t>(dst_n), 9.0F);
    for (std::size_t i = 0; i < std::min(dst.size(), y.size() - pad); ++i) {
        dst[i] = static_cast<float>(y[pad + i]);
    }
    return dst;
}

void expect_two_plain_passes(const std::vector<float>& x, const Filter& filter, int dst_n,
                             int pad_type, bool in_place) {
    SCOPED_TRACE(filter.name + ", pad " + std::to_string(pad_type) + ", " +
                 std::to_string(x.size()) + " to " + std::to_string(dst_n));
    const std::vector<float> expected = plain_filtfilt(x, filter, dst_n, pad_type, 30);
    test::for_each_level([&](SimdLevel level) {
        std::vector<float> dst = in_place ? x : std::vector<float>(expected.size(), 9.0F);
        filtfilt(dst.data(), in_place ? dst.data() : x.data(), filter.b.data(), filter.a.data(),
                 dst_n, static_cast<int>(x.size()), static_cast<int>(filter.b.size()),
                 static_cast<int>(filter.a.size()), pad_type, 30, level);
        EXPECT_EQ(test::first_difference(dst, expected), test::none);
    });
}

TEST(FastFilters, ForwardAndBackwardEqualTwoPlainPasses) {
    for (const int n : {40, 70001}) {
        const std::vector<float> x = test::noise(static_cast<std::size_t>(n), 1.0F);
        for (const Filter& filter : filters()) {
            for (const int pad_type : {0, 1, 2, 3}) {
                for (const int dst_n : {n / 3, n, n + 50}) {
                    expect_two_plain_passes(x, filter, dst_n, pad_type, false);
                }
            }
        }
    }
}

TEST(FastFilters, ForwardAndBackwardEqualTwoPlainPassesInSilenceAndInPlace) {
    const std::vector<float> x = noise_with_silence(300000, 60000, 210000);
    for (const Filter& filter : filters()) {
        for (const bool in_place : {false, true}) {
            expect_two_plain_passes(x, filter, static_cast<int>(x.size()), 1, in_place);
        }
    }
}

}  // namespace
