#include <algorithm>
#include <memory>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "fft/one_fft.h"
#include "fft_peers.h"
#include "rows.h"
#include "signals.h"

namespace sorvo::bench {
namespace {

Row fft_row(int n) {
    const auto size = static_cast<std::size_t>(n);
    const std::shared_ptr<float[]> src = aligned_floats(size);
    const std::vector<float> signal = make_signal(16000, 1.0);
    std::copy_n(signal.begin(), size, src.get());

    Row row{2 * size, 1e-6, {}, {}};
    row.ours = [=](float* dst, audio::SimdLevel level) {
        audio::real_fft(dst, src.get(), n, level);
    };
    row.others.push_back({"plain", [=](float* dst) {
                              std::vector<float> data(2 * size);
                              audio::fft_pre_process(data, src.get(), n);
                              audio::fft(data, n, audio::FftTable::instance().ref_table(n));
                              std::copy(data.begin(), data.end(), dst);
                          }});
    for (std::shared_ptr<FullSpectrum> peer : full_spectrum_peers(n)) {
        row.others.push_back({peer->name(), [=](float* dst) { peer->run(dst, src.get()); }});
    }
    return row;
}

}  // namespace

Rows fft_rows() {
    Rows rows;
    for (const int n :
         {128, 256, 512, 1024, 2048, 4096, 8192, 400, 480, 1200, 8000, 441, 1001, 202, 97}) {
        rows.push_back({"fft/" + std::to_string(n), [n] { return fft_row(n); }});
    }
    return rows;
}

}  // namespace sorvo::bench
