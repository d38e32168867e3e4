// The functions in lanes, at every level and in both forms.
#include <gtest/gtest.h>

#include <cfenv>
#include <functional>

#include "kernels/levels.h"
#include "math/arrays.h"
#include "math/called.h"
#include "math/function_kernels.h"
#include "math/functions.h"
#include "math/samples.h"
#include "support/compare.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;
using sorvo::audio::test::first_difference;
using sorvo::audio::test::for_each_level;
using sorvo::audio::test::none;

/// Complex numbers whose parts are of all sizes; of every second one they are of similar size.
std::vector<float> complex_numbers() {
    const std::vector<float> all = floats_of_every_size();
    std::vector<float> z;
    for (std::size_t i = 0; i < all.size(); ++i) {
        z.push_back(all[i]);
        z.push_back(i % 2 == 0 ? all[i * 7919 % all.size()] : all[i] * 0.7F);
    }
    for (const float im : {0.0F, -0.0F, 1.0F, -1.0F, HUGE_VALF}) {
        for (const float re : {0.0F, -0.0F, 1.0F, -1.0F, -HUGE_VALF}) {
            z.insert(z.end(), {re, im});
        }
    }
    return z;
}

struct Function {
    const char* name;
    FunctionKernels::Kernel (FunctionKernels::*kernels)[2];
    std::vector<float> src;
    std::size_t src_n;  // floats of an argument
    std::function<long double(const float*)> value;
};

std::vector<Function> functions() {
    return {{"log10f", &FunctionKernels::log10f, floats_of_every_size(), 1,
             [](const float* x) { return std::log10(static_cast<long double>(*x)); }},
            {"log1pf", &FunctionKernels::log1pf, floats_of_every_size(), 1,
             [](const float* x) { return std::log1p(static_cast<long double>(*x)); }},
            {"atan2f", &FunctionKernels::angles, complex_numbers(), 2, [](const float* z) {
                 return std::atan2(static_cast<long double>(z[1]), static_cast<long double>(z[0]));
             }}};
}

TEST(FunctionsInLanes, RoundedResultsAreTheNearestFloats) {
    for (const Function& f : functions()) {
        SCOPED_TRACE(f.name);
        for_each_level([&](SimdLevel level) {
            std::vector<float> got(f.src.size() / f.src_n);
            (function_kernels(level).*f.kernels)[0](got.data(), f.src.data(), got.size());
            for (std::size_t i = 0; i < got.size(); ++i) {
                const float* const x = &f.src[f.src_n * i];
                ASSERT_TRUE(is_nearest(got[i], f.value(x))) << *x << ": " << got[i];
            }
        });
    }
}

TEST(FunctionsInLanes, ClassicResultsAreTheSameAtEveryLevelAndWithinAUnit) {
    for (const Function& f : functions()) {
        SCOPED_TRACE(f.name);
        std::vector<float> first;
        for_each_level([&](SimdLevel level) {
            std::vector<float> got(f.src.size() / f.src_n);
            (function_kernels(level).*f.kernels)[1](got.data(), f.src.data(), got.size());
            first = first.empty() ? got : first;
            EXPECT_EQ(first_difference(got, first), none);
        });
        for (std::size_t i = 0; i < first.size(); ++i) {
            const long double value = f.value(&f.src[f.src_n * i]);
            ASSERT_TRUE(is_nearest(first[i], value) || ulp_error(first[i], value) < 2.0)
                << f.src[f.src_n * i] << ": " << first[i];
        }
    }
}

#if defined(__GLIBC__) && defined(__x86_64__)

// What the classic forms and the steps of sinf, cosf and powf are for. Half of this is tested with
// a C library before glibc 2.41, the other half with a later one.
TEST(FunctionsInLanes, OneFormGivesTheResultsOfGlibc) {
    const std::vector<FunctionKernels::Kernel> called = {call_log10f, call_log1pf, call_atan2f};
    const std::vector<Function> all = functions();
    for (std::size_t k = 0; k < all.size(); ++k) {
        SCOPED_TRACE(all[k].name);
        std::vector<float> expected(all[k].src.size() / all[k].src_n);
        called[k](expected.data(), all[k].src.data(), expected.size());
        for_each_level([&](SimdLevel level) {
            const auto& forms = function_kernels(level).*all[k].kernels;
            std::vector<float> rounded(expected.size());
            std::vector<float> classic(expected.size());
            forms[0](rounded.data(), all[k].src.data(), expected.size());
            forms[1](classic.data(), all[k].src.data(), expected.size());
            EXPECT_TRUE(first_difference(rounded, expected) == none ||
                        first_difference(classic, expected) == none);
        });
    }
}

TEST(FunctionsInLanes, UnitNumbersAreThoseOfGlibc) {
    std::vector<float> angles;
    for (const float x : floats_of_every_size()) {
        if (!(std::fabs(x) >= 16.0F)) angles.push_back(x);
    }
    for (int i = -4000; i <= 4000; ++i) angles.push_back(static_cast<float>(i) * 0.004F);
    std::vector<float> expected(2 * angles.size());
    call_cexpf(expected.data(), angles.data(), angles.size());
    for_each_level([&](SimdLevel level) {
        std::vector<float> got(expected.size());
        function_kernels(level).unit_numbers(got.data(), angles.data(), angles.size());
        EXPECT_EQ(first_difference(got, expected), none);
    });
    for (const float x : angles) {
        EXPECT_TRUE(std::isnan(x) || bits_of(math::sinf(x)) == bits_of(::sinf(x))) << x;
        EXPECT_TRUE(std::isnan(x) || bits_of(math::cosf(x)) == bits_of(::cosf(x))) << x;
    }
}

#endif

TEST(FunctionsInLanes, FormsInUseGiveWhatTheFunctionsOfOneNumberGive) {
    const std::vector<float> x = floats_of_every_size();
    std::vector<float> got(x.size());
    ASSERT_NE(log10f_form(), MathForm::called);
    for_each_level([&](SimdLevel level) {
        in_form(function_kernels(level).log10f, log10f_form())(got.data(), x.data(), x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            const float expected = math::log10f(x[i]);
            ASSERT_TRUE(bits_of(got[i]) == bits_of(expected) || std::isnan(expected)) << x[i];
        }
    });
}

// Divisions by zero among them would end a program that has them trapped.
TEST(FunctionsInLanes, OrdinaryArgumentsRaiseNoException) {
    const std::vector<float> z = {0.0F, 0.0F,  1.0F,  0.0F,  -1.0F, 0.0F,  0.0F, 1.0F,
                                  0.0F, -1.0F, -0.0F, -0.0F, -0.0F, 0.25F, 3.0F, -4.0F};
    const std::vector<float> x = {0.0F, 1e-10F, 0.5F, 1.0F, 1e10F};
    for_each_level([&](SimdLevel level) {
        std::vector<float> got(2 * z.size());
        const FunctionKernels& kernels = function_kernels(level);
        std::feclearexcept(FE_ALL_EXCEPT);
        for (const std::size_t form : {0U, 1U}) {
            kernels.angles[form](got.data(), z.data(), z.size() / 2);
            kernels.log1pf[form](got.data(), x.data(), x.size());
            kernels.log10f[form](got.data(), x.data() + 1, x.size() - 1);
        }
        kernels.unit_numbers(got.data(), x.data(), x.size() - 1);
        EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0);
    });
}

TEST(FunctionsInLanes, StopAtTheEndAndWorkInPlace) {
    for (std::size_t n = 0; n < 70; ++n) {
        for_each_level([&](SimdLevel level) {
            std::vector<float> x(n + 1, 1.5F);
            take_log1p(x.data(), x.data(), n, level);
            EXPECT_EQ(x[n], 1.5F);
            EXPECT_TRUE(n == 0 || x[n - 1] == x[0]);
            std::vector<float> z(2 * n, 1.0F);
            std::vector<float> angles(n + 1, 7.0F);
            take_angles(angles.data(), z.data(), n, level);
            EXPECT_EQ(angles[n], 7.0F);
            EXPECT_TRUE(n == 0 || angles[n - 1] == angles[0]);
            std::vector<float> units(2 * n + 1, 7.0F);
            take_unit_numbers(units.data(), angles.data(), n, level);
            EXPECT_EQ(units[2 * n], 7.0F);
            EXPECT_TRUE(n == 0 || units[2 * n - 1] == units[1]);
        });
    }
}

}  // namespace
