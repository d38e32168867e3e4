#pragma once

#include <cstdint>
#include <vector>

#include "mel/mel_kernels.h"
#include "util/table_cache.h"

namespace sorvo::audio {

/// Everything that a mel filter bank depends on.
struct MelFilterBankParam {
    std::int32_t freq_n;
    float f_min;
    float f_max;
    std::int32_t mel_n;
    std::int32_t sample_rate;
    std::int32_t mel_norm;
    bool htk;

    /// Lexicographic in field order. A NaN decides nothing, so keys with a NaN have no place in
    /// this order; MFBTable keeps them out of its cache.
    bool operator<(const MelFilterBankParam& other) const;
};

/// Process-wide cache of mel filter banks (mel_n rows of freq_n weights). A bank is built on its
/// first request and never changed, moved or removed afterwards, so references to it are read
/// without a lock for the life of the process.
class MFBTable {
  public:
    static MFBTable& instance();
    MFBTable(const MFBTable&) = delete;
    MFBTable& operator=(const MFBTable&) = delete;

    const std::vector<std::vector<float>>& ref_table(int freq_n, float f_min, float f_max,
                                                     int mel_n, int sample_rate, int mel_norm,
                                                     bool htk);
    const std::vector<std::vector<float>>& ref_table(const MelFilterBankParam& key);

    /// The bands of the same bank without their zeros.
    const std::vector<MelBand>& ref_bands(const MelFilterBankParam& key);

  private:
    struct Entry {
        std::vector<std::vector<float>> bank;
        std::vector<MelBand> bands;
    };

    MFBTable() = default;
    const Entry& ref(MelFilterBankParam key);
    static Entry init_mfb_table(const MelFilterBankParam& key);

    TableCache<MelFilterBankParam, Entry> table_{Cache::mel};
};

}  // namespace sorvo::audio
