// Every level makes what the difference equation does, bit for bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "filter/coefficients.h"
#include "filter/filtfilt.h"
#include "filter/linerfilter.h"
#include "filter/zi_coef.h"
#include "support/compare.h"
#include "support/levels.h"
#include "support/signals.h"
#include "util/edge_extension.h"

namespace {

using namespace sorvo::audio;
using sorvo::test::awkward_signals;
using sorvo::test::noise;
using sorvo::test::same_bits;

constexpr float inf = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

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
    return {{"one pole", {0.2F}, {1.0F, -0.8F}},
            {"one pole, scaled", {0.2F, -0.1F}, {-2.0F, 1.5F}},
            {"integrator", {1.0F}, {1.0F, -1.0F}},
            {"alternating", {1.0F, 0.5F}, {1.0F, 1.0F}},
            {"unstable, order 1", {1.0F}, {1.0F, -1.01F}},
            resonator("resonator", 0.9F, 0.3F),
            resonator("cycle of three", 0.6F, 2.1F),
            resonator("lasting resonator", 0.97F, 0.3F),
            resonator("slow resonator", 0.999F, 0.1F),
            resonator("oscillator", 1.0F, 0.7F),
            resonator("unstable, order 2", 1.02F, 1.0F),
            {"double zero, pole", {1.0F, -2.0F, 1.0F}, {1.0F, 0.0F, 0.25F}},
            {"infinite coefficient", {1.0F, inf}, {1.0F, 0.5F}},
            {"divided by zero", {1.0F, 0.5F}, {0.0F, 0.5F}},
            {"order 3", {0.1F, 0.2F, 0.1F, 0.05F}, {1.0F, -0.5F, 0.2F, 0.1F}},
            {"order 9", std::vector<float>(10, 0.1F), {1.0F, -0.9F}},
            {"gain", {0.7F}, {1.0F}},
            {"pre-emphasis", {1.0F, -0.97F}, {1.0F}},
            {"delay", {0.0F, 0.0F, 1.0F}, {1.0F}},
            {"mean", {0.5F, 0.5F}, {1.0F}},
            {"negative mean", {0.5F, 0.5F}, {-1.0F, 0.0F}},
            {"FIR, 33", noise(33, 1.0F, 5), {1.0F}},
            {"FIR, sparse", {0.0F, 1.0F, 0.0F, -1.0F, -0.0F}, {-1.0F, 0.0F, -0.0F}},
            {"FIR, 1100", noise(1100, 1.0F, 6), {0.5F}},
            {"FIR, overflow", {1e30F, 1e30F, 1e30F}, {1e-10F}},
            {"FIR, underflow", {1e-30F, 1e-30F, 1e-30F}, {1e10F}},
            {"zeros", {0.0F, 0.0F}, {1.0F}}};
}

template <class Out, class In, class State>
void run_as_defined(Out* y, const In* x, const FilterCoefficients& coef, std::vector<State>& z,
                    std::size_t n, bool reverse) {
    const std::vector<double>& b = coef.b;
    const std::vector<double>& a = coef.a;
    for (std::size_t j = 0; j < n; ++j) {
        const std::size_t i = reverse ? n - 1 - j : j;
        const auto in = static_cast<double>(x[i]);
        const double out = z.empty() ? in * b[0] : static_cast<double>(z[0]) + b[0] * in;
        for (std::size_t k = 1; k < z.size(); ++k) {
            z[k - 1] = static_cast<State>(b[k] * in + static_cast<double>(z[k]) - a[k] * out);
        }
        if (!z.empty()) z.back() = static_cast<State>(in * b.back() - out * a.back());
        y[i] = static_cast<Out>(out);
    }
}

class FilterLevels : public sorvo::test::AtLevel {
  protected:
    template <class Out, class In, class State>
    static void expect_definition(const std::vector<float>& signal, const Filter& filter,
                                  bool reverse, bool in_place) {
        const std::vector<In> x(signal.begin(), signal.end());
        const FilterCoefficients coef = filter.coef();
        std::vector<State> expected_z(coef.b.size() - 1);
        for (std::size_t k = 0; k < expected_z.size(); ++k) {
            expected_z[k] = static_cast<State>(0.25) / static_cast<State>(k + 1);
        }
        std::vector<State> z = expected_z;
        std::vector<Out> expected(x.size());
        run_as_defined(expected.data(), x.data(), coef, expected_z, x.size(), reverse);
        std::vector<Out> y(x.size());
        const In* from = x.data();
        if constexpr (std::is_same_v<Out, In>) {
            y = in_place ? x : y;
            from = in_place ? y.data() : from;
        }
        run_filter(y.data(), from, coef, z.data(), x.size(), reverse, GetParam());
        EXPECT_TRUE(same_bits(y, expected));
        EXPECT_TRUE(same_bits(z, expected_z)) << "state";
    }

    static void expect_two_defined_passes(const std::vector<float>& x, const Filter& filter,
                                          int dst_n, int pad_type, bool in_place) {
        SCOPED_TRACE(filter.name + ", pad " + std::to_string(pad_type) + ", " +
                     std::to_string(x.size()) + " to " + std::to_string(dst_n));
        constexpr Extension extensions[] = {Extension::zeros, Extension::odd, Extension::reflect,
                                            Extension::constant};
        const std::size_t pad_n = pad_type == 0 ? 0 : 30;
        const auto b_n = static_cast<int>(filter.b.size());
        const auto a_n = static_cast<int>(filter.a.size());
        std::vector<float> extended(x.size() + 2 * pad_n);
        extract_segment(extended, x.data(), static_cast<int>(x.size()),
                        -static_cast<std::int64_t>(pad_n), extensions[pad_type]);
        const FilterCoefficients coef = filter.coef();
        std::vector<double> steady(coef.b.size() - 1);
        create_zi_coef(steady.data(), filter.b.data(), filter.a.data(),
                       static_cast<int>(steady.size()), b_n, a_n);
        std::vector<double> y(extended.begin(), extended.end());
        for (const bool reverse : {false, true}) {
            std::vector<double> z = steady;
            for (double& value : z) value *= reverse ? y.back() : y.front();
            run_as_defined(y.data(), y.data(), coef, z, y.size(), reverse);
        }
        std::vector<float> dst = in_place ? x : std::vector<float>(std::size_t(dst_n), 9.0F);
        std::vector<float> expected = dst;
        for (std::size_t i = 0; i < std::min(dst.size(), y.size() - pad_n); ++i) {
            expected[i] = static_cast<float>(y[pad_n + i]);
        }
        filtfilt(dst.data(), in_place ? dst.data() : x.data(), filter.b.data(), filter.a.data(),
                 dst_n, static_cast<int>(x.size()), b_n, a_n, pad_type, 30, GetParam());
        EXPECT_TRUE(same_bits(dst, expected));
    }
};

TEST_P(FilterLevels, EqualTheDefinition) {
    for (const std::size_t n : {256U, 1133U, 20000U}) {
        for (const auto& signal : awkward_signals(n)) {
            for (const Filter& filter : filters()) {
                SCOPED_TRACE(filter.name + ", " + signal.name + ", " + std::to_string(n));
                expect_definition<float, float, float>(signal.x, filter, false, n % 2 == 0);
                expect_definition<double, float, double>(signal.x, filter, false, false);
                expect_definition<double, double, double>(signal.x, filter, true, n % 2 == 1);
                expect_definition<float, double, double>(signal.x, filter, true, false);
            }
        }
    }
}

/// In silence a filter's state fades away to denormal numbers that stay or come back, and two runs
/// need never meet.
std::vector<float> noise_with_repetitions(std::size_t n) {
    std::vector<float> x = noise(n);
    std::fill_n(x.data() + n / 32, n / 3, 0.0F);
    std::fill_n(x.data() + n / 2, 3000, -0.0F);
    for (std::size_t i = n / 2 + 5000; i < n / 2 + 30000; ++i) x[i] = x[i - 3];
    std::fill_n(x.data() + n / 4 * 3, n / 8, -0.25F);
    return x;
}

std::vector<float> noise_with_gaps(std::size_t n) {
    std::vector<float> x = noise(n);
    std::size_t gap_n = 100;
    for (std::size_t i = 3000; i + gap_n < n; i += gap_n + 1500 + n / 50, gap_n += gap_n / 2) {
        std::fill_n(x.data() + i, gap_n, 0.0F);
    }
    return x;
}

TEST_P(FilterLevels, EqualTheDefinitionWhereTheInputRepeats) {
    std::vector<float> x = noise_with_repetitions(300000);
    for (const Filter& filter : filters()) {
        for (const bool reverse : {false, true}) {
            SCOPED_TRACE(filter.name);
            expect_definition<float, float, float>(x, filter, reverse, true);
            expect_definition<double, double, double>(x, filter, reverse, true);
        }
    }
}

TEST_P(FilterLevels, EqualTheDefinitionFromAnyPlaceOfNaNOn) {
    for (const Filter& filter : filters()) {
        for (const std::size_t at : {0U, 3U, 1023U, 1055U, 1056U, 4000U, 9999U}) {
            SCOPED_TRACE(filter.name + ", at " + std::to_string(at));
            std::vector<float> x = noise(10000);
            x[at] = at % 2 == 0 ? inf : nan;
            expect_definition<float, float, float>(x, filter, false, true);
            expect_definition<double, double, double>(x, filter, true, false);
        }
    }
}

TEST_P(FilterLevels, FilterForwardAndBackwardAsDefined) {
    for (const int n : {40, 70001}) {
        const std::vector<float> x = noise(static_cast<std::size_t>(n));
        for (const Filter& filter : filters()) {
            for (const int pad_type : {0, 1, 2, 3}) {
                for (const int dst_n : {n / 3, n, n + 50}) {
                    expect_two_defined_passes(x, filter, dst_n, pad_type, false);
                }
            }
        }
    }
}

TEST_P(FilterLevels, FilterForwardAndBackwardWhereTheInputRepeats) {
    for (const auto& x : {noise_with_repetitions(300000), noise_with_gaps(100000)}) {
        for (const Filter& filter : filters()) {
            for (const bool in_place : {false, true}) {
                expect_two_defined_passes(x, filter, static_cast<int>(x.size()), 1, in_place);
            }
        }
    }
}

SORVO_TEST_AT_ALL_LEVELS(FilterLevels);

}  // namespace
