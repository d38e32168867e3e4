#include "filter/filtfilt.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "filter/coefficients.h"
#include "filter/linerfilter.h"
#include "filter/settling.h"
#include "filter/zi_coef.h"
#include "util/edge_extension.h"
#include "util/exceptions.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

Extension extension_of(int pad_type, int pad_len, int src_n) {
    switch (pad_type) {
        case 1:
        case 2:
            if (pad_len >= src_n) {
                throw SorvoInvalidArgument("Invalid pad_len value.");
            }
            return pad_type == 1 ? Extension::odd : Extension::reflect;
        case 3:
            return Extension::constant;
        default:
            throw SorvoInvalidArgument("Invalid pad_type.");
    }
}

std::vector<double> scaled(std::vector<double> state, double factor) {
    for (double& z : state) {
        z = factor * z;
    }
    return state;
}

/// The signal with `pad_n` samples of extension at both ends, of which only these are stored.
class ExtendedSignal {
  public:
    ExtendedSignal(const float* src, int src_n, int pad_n, int pad_type)
        : src_(src), src_n_(static_cast<std::size_t>(src_n)) {
        if (pad_n == 0) {
            return;
        }
        const Extension extension = extension_of(pad_type, pad_n, src_n);
        head_ = make_zeros<float>(static_cast<std::uint64_t>(pad_n));
        tail_ = make_zeros<float>(static_cast<std::uint64_t>(pad_n));
        extract_segment(head_, src, src_n, -static_cast<std::int64_t>(pad_n), extension);
        extract_segment(tail_, src, src_n, src_n, extension);
    }

    std::size_t size() const { return src_n_ + 2 * head_.size(); }
    float front() const { return head_.empty() ? src_[0] : head_[0]; }

    /// Calls visit(samples, position, count) for the pieces of [begin, end), in order.
    template <class Visitor>
    void for_each_piece(std::size_t begin, std::size_t end, Visitor visit) const {
        const std::pair<const float*, std::size_t> parts[] = {
            {head_.data(), head_.size()}, {src_, src_n_}, {tail_.data(), tail_.size()}};
        std::size_t part_begin = 0;
        for (const auto& [data, n] : parts) {
            const std::size_t first = std::clamp(begin, part_begin, part_begin + n);
            const std::size_t last = std::clamp(end, part_begin, part_begin + n);
            if (first < last) {
                visit(data + (first - part_begin), first, last - first);
            }
            part_begin += n;
        }
    }

  private:
    const float* src_;
    std::size_t src_n_;
    std::vector<float> head_;
    std::vector<float> tail_;
};

/// Samples of a section, few enough for the cache.
constexpr std::size_t section_n = 65536;
/// Looking further ahead of a section would cost too much.
constexpr std::size_t max_ahead_n = section_n / 16;

using State = std::vector<double>;

/// A part of the extended signal.
struct Section {
    std::size_t begin;
    std::size_t end;
    State forward;   ///< of the forward pass at the begin
    State backward;  ///< of the backward pass at the end, perhaps guessed
    State left;      ///< of the backward pass at the begin
};

bool equal_bits(const State& a, const State& b) {
    return a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

bool overlap(const float* a, std::size_t a_n, const float* b, std::size_t b_n) {
    const std::less<const float*> before;
    return before(a, b + b_n) && before(b, a + a_n);
}

/// The two passes over sections of a signal. Positions are those of the extended signal, of which
/// the samples from dst_begin on make the result.
class Passes {
  public:
    Passes(float* dst, std::size_t dst_begin, std::size_t dst_end, const ExtendedSignal& x,
           const FilterCoefficients& coef, std::size_t max_section_n, SimdLevel level)
        : dst_(dst),
          dst_begin_(dst_begin),
          dst_end_(dst_end),
          x_(x),
          coef_(coef),
          level_(level),
          y_(make_zeros<double>(max_section_n)) {}

    /// Where the section begins whose samples are filtered.
    void move_to(std::size_t begin) { begin_ = begin; }

    void run_forward(std::size_t begin, std::size_t end, State& state) {
        x_.for_each_piece(begin, end, [&](const float* piece, std::size_t first, std::size_t n) {
            run_filter(&forward_output(first), piece, coef_, state.data(), n, false, level_);
        });
    }

    double& forward_output(std::size_t position) { return y_[position - begin_]; }

    /// To dst what belongs there. Nobody asks for the state at the beginning of the signal.
    void run_backward(std::size_t begin, std::size_t end, State& state) {
        const std::size_t kept_end = std::clamp(dst_end_, begin, end);
        const std::size_t kept_begin = std::clamp(dst_begin_, begin, kept_end);
        run_backward_in_place(kept_end, end, state);
        if (kept_begin < kept_end) {
            run_filter(dst_ + (kept_begin - dst_begin_), &forward_output(kept_begin), coef_,
                       state.data(), kept_end - kept_begin, true, level_);
        }
        if (begin > 0) {
            run_backward_in_place(begin, kept_begin, state);
        }
    }

    /// Only for the state.
    void run_backward_in_place(std::size_t begin, std::size_t end, State& state) {
        if (begin < end) {
            double* const samples = &forward_output(begin);
            run_filter(samples, samples, coef_, state.data(), end - begin, true, level_);
        }
    }

  private:
    float* dst_;
    std::size_t dst_begin_;
    std::size_t dst_end_;
    const ExtendedSignal& x_;
    const FilterCoefficients& coef_;
    SimdLevel level_;
    std::size_t begin_ = 0;
    std::vector<double> y_;
};

}  // namespace

// The backward pass takes its input from the end on, but to keep a long signal of doubles until
// then costs time and memory. So each section is filtered both ways at once, the way back from a
// guess of its state: that which comes out of filtering from rest so many samples ahead that the
// filter should have forgotten the rest. Afterwards the sections are looked through from the last
// to the first; where a guess was not, in every bit, the state in which the pass leaves the section
// ahead, the section is filtered again. There is one section only where the filter forgets too
// slowly, and where the result overwrites samples that might be needed again.
void filtfilt(float* dst, const float* src, const float* n_coef, const float* d_coef, int dst_n,
              int src_n, int n_coef_n, int d_coef_n, int pad_type, int pad_len, SimdLevel level) {
    const int pad_n = pad_type == 0 ? 0 : std::max(pad_len, 0);
    const ExtendedSignal x(src, src_n, pad_n, pad_type);
    const FilterCoefficients coef(n_coef, d_coef, n_coef_n, d_coef_n);
    State steady = make_zeros<double>(coef.b.size() - 1);
    create_zi_coef(steady.data(), n_coef, d_coef, static_cast<int>(steady.size()), n_coef_n,
                   d_coef_n);

    const std::size_t length = x.size();
    const auto dst_begin = static_cast<std::size_t>(pad_n);
    const std::size_t dst_end = std::min(length, dst_begin + static_cast<std::size_t>(dst_n));
    const std::size_t ahead_n = settling_n<double>(coef);
    const bool in_sections = ahead_n <= max_ahead_n && !overlap(dst, dst_end - dst_begin, src,
                                                                static_cast<std::size_t>(src_n));
    const std::size_t y_n = in_sections ? std::min(section_n + ahead_n, length) : length;
    Passes passes(dst, dst_begin, dst_end, x, coef, y_n, level);

    std::vector<Section> sections;
    sections.reserve(in_sections ? length / section_n + 1 : 1);
    State forward = scaled(steady, static_cast<double>(x.front()));
    for (std::size_t begin = 0; begin < length; begin = sections.back().end) {
        const bool last = length - begin <= y_n;
        Section section{begin, last ? length : begin + section_n, forward, {}, {}};
        passes.move_to(begin);
        passes.run_forward(begin, section.end, forward);
        if (last) {
            section.backward = scaled(steady, passes.forward_output(length - 1));
        } else {
            State state = forward;
            passes.run_forward(section.end, section.end + ahead_n, state);
            section.backward.resize(steady.size());
            passes.run_backward_in_place(section.end, section.end + ahead_n, section.backward);
        }
        section.left = section.backward;
        passes.run_backward(begin, section.end, section.left);
        sections.push_back(std::move(section));
    }
    for (std::size_t i = sections.size() - 1; i-- > 0;) {
        Section& section = sections[i];
        if (!equal_bits(section.backward, sections[i + 1].left)) {
            section.left = sections[i + 1].left;
            passes.move_to(section.begin);
            passes.run_forward(section.begin, section.end, section.forward);
            passes.run_backward(section.begin, section.end, section.left);
        }
    }
}

}  // namespace sorvo::audio
