#include "filter/filtfilt.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "filter/coefficients.h"
#include "filter/linerfilter.h"
#include "filter/zi_coef.h"
#include "stft/framing.h"
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

/// Where a pass is so fast that a third one costs less than the memory for a whole signal of
/// doubles, the forward pass only notes its state at these distances, and each section is filtered
/// again when the backward pass needs it.
constexpr std::size_t section_n = 65536;

}  // namespace

void filtfilt(float* dst, const float* src, const float* n_coef, const float* d_coef, int dst_n,
              int src_n, int n_coef_n, int d_coef_n, int pad_type, int pad_len, CpuLevel level) {
    const int pad_n = pad_type == 0 ? 0 : std::max(pad_len, 0);
    const ExtendedSignal x(src, src_n, pad_n, pad_type);
    const FilterCoefficients coef(n_coef, d_coef, n_coef_n, d_coef_n);
    const std::size_t state_n = coef.b.size() - 1;
    auto steady = make_zeros<double>(state_n);
    create_zi_coef(steady.data(), n_coef, d_coef, static_cast<int>(state_n), n_coef_n, d_coef_n);

    const std::size_t length = x.size();
    const std::size_t y_n = runs_side_by_side(coef) ? std::min(section_n, length) : length;
    auto y = make_zeros<double>(y_n);
    const auto run_forward = [&](std::size_t begin, std::size_t end, double* state) {
        x.for_each_piece(begin, end, [&](const float* piece, std::size_t first, std::size_t n) {
            run_filter(&y[first - begin], piece, coef, state, n, false, level);
        });
    };
    std::vector<double> state = scaled(steady, static_cast<double>(x.front()));
    std::vector<std::vector<double>> section_states;
    std::size_t begin = 0;
    for (;; begin += y_n) {
        section_states.push_back(state);
        const std::size_t end = std::min(begin + y_n, length);
        run_forward(begin, end, state.data());
        if (end == length) {
            break;
        }
    }

    const std::size_t pad = static_cast<std::size_t>(pad_n);
    const std::size_t dst_end = std::min(length, pad + static_cast<std::size_t>(dst_n));
    state = scaled(steady, y[length - 1 - begin]);
    std::size_t end = length;
    for (;;) {
        const std::size_t kept_end = std::clamp(dst_end, begin, end);
        const std::size_t kept_begin = std::clamp(pad, begin, kept_end);
        run_filter(&y[kept_end - begin], &y[kept_end - begin], coef, state.data(), end - kept_end,
                   true, level);
        run_filter(dst + (kept_begin - pad), &y[kept_begin - begin], coef, state.data(),
                   kept_end - kept_begin, true, level);
        if (begin <= pad) {
            break;
        }
        end = begin;
        begin -= y_n;
        section_states.pop_back();
        run_forward(begin, end, section_states.back().data());
    }
}

}  // namespace sorvo::audio
