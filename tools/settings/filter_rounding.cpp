#include "settings/filter_rounding.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "support/text.h"

namespace sorvo_tool {
namespace {

using Complex = std::complex<double>;
using Sections = std::vector<Section>;

constexpr double tolerated = 0.01;  // 0.09 dB
const double pi = std::acos(-1.0);

// Schur and Cohn: all reflection coefficients of the denominator are below 1.
bool is_stable(const Section& section) {
    std::vector<double> a = section.denominator;
    const double first = a.front();
    for (double& coefficient : a) coefficient /= first;
    while (a.size() > 1) {
        const double reflection = a.back();
        if (!(std::abs(reflection) < 1)) return false;
        std::vector<double> lower(a.size() - 1);
        for (std::size_t i = 0; i < lower.size(); ++i)
            lower[i] = (a[i] - reflection * a[a.size() - 1 - i]) / (1 - reflection * reflection);
        a = lower;
    }
    return true;
}

Complex value_at(const std::vector<double>& polynomial, Complex delay) {
    Complex value = 0;
    for (auto at = polynomial.rbegin(); at != polynomial.rend(); ++at) value = value * delay + *at;
    return value;
}

Complex response(const Sections& sections, double angle) {
    const Complex delay = std::polar(1.0, -angle);
    Complex result = 1;
    for (const Section& section : sections)
        result *= value_at(section.numerator, delay) / value_at(section.denominator, delay);
    return result;
}

// All poles at once, by Weierstrass's iteration.
std::vector<Complex> poles(const Section& section) {
    std::vector<Complex> roots(section.denominator.size() - 1);
    for (std::size_t i = 0; i < roots.size(); ++i)
        roots[i] = std::pow(Complex(0.4, 0.9), static_cast<double>(i));
    for (int round = 0; round < 200; ++round)
        for (std::size_t i = 0; i < roots.size(); ++i) {
            Complex value = 0;
            for (const double coefficient : section.denominator)
                value = value * roots[i] + coefficient;
            Complex others = section.denominator.front();
            for (std::size_t j = 0; j < roots.size(); ++j)
                if (j != i) others *= roots[i] - roots[j];
            if (others != 0.0) roots[i] -= value / others;
        }
    return roots;
}

// Angles where the response may be farthest off: poles, and the ends, at which those of narrow
// filters lie.
std::vector<double> angles(const Sections& design, const Sections& rounded) {
    std::vector<double> result{0, pi};
    constexpr int grid_n = 1000;
    for (int i = 0; i < grid_n; ++i) {
        const double angle = 1e-6 * std::pow(pi / 1e-6, static_cast<double>(i) / grid_n);
        result.push_back(angle);
        result.push_back(pi - angle);
    }
    for (const Sections* sections : {&design, &rounded})
        for (const Section& section : *sections)
            for (const Complex pole : poles(section)) result.push_back(std::arg(pole));
    return result;
}

}  // namespace

std::string describe_rounding(const FilterDesign& design) {
    const Sections& sections = design.sections;
    Sections rounded;
    for (const Section& section : sections) {
        const auto b = section.b();
        const auto a = section.a();
        rounded.push_back({{b.begin(), b.end()}, {a.begin(), a.end()}});
    }
    const auto has_feedback = [](const Section& section) { return section.denominator.size() > 1; };
    if (std::none_of(sections.begin(), sections.end(), has_feedback) ||
        !std::all_of(sections.begin(), sections.end(), is_stable))
        return "";
    const std::string begin = "with its coefficients rounded to single precision, the filter ";
    const std::string advice = design.is_cascade() || sections.front().denominator.size() <= 3
                                   ? "; filter at a lower sample rate"
                                   : "; give it in sections, by --sos";
    double largest = 0;
    double error = 0;
    for (const double angle : angles(sections, rounded)) {
        const Complex meant = response(sections, angle);
        const double off = std::abs(response(rounded, angle) - meant);
        largest = std::max(largest, std::abs(meant));
        if (!(off <= error)) error = off;  // NaN as well
    }
    // Infinite with a pole on the unit circle.
    if (!std::all_of(rounded.begin(), rounded.end(), is_stable) || !std::isfinite(error / largest))
        return begin + "is not stable" + advice;
    if (error <= tolerated * largest) return "";
    return begin + "has a response that is " + short_number(std::round(100 * error / largest)) +
           " % off" + advice;
}

}  // namespace sorvo_tool
