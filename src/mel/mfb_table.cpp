#include "mel/mfb_table.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "mel/filter_bank.h"
#include "mel/mel_conversion.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// One NaN bound makes every weight NaN, whatever the other bound is, so all such banks are one;
/// its key has both bounds at minus infinity, which gives the same weights and keeps the
/// order of keys.
MelFilterBankParam without_nan(MelFilterBankParam key) {
    if (std::isnan(key.f_min) || std::isnan(key.f_max)) {
        key.f_min = -std::numeric_limits<float>::infinity();
        key.f_max = -std::numeric_limits<float>::infinity();
    }
    return key;
}

}  // namespace

bool MelFilterBankParam::operator<(const MelFilterBankParam& other) const {
    if (freq_n != other.freq_n) {
        return freq_n < other.freq_n;
    }
    if (f_min < other.f_min || f_min > other.f_min) {
        return f_min < other.f_min;
    }
    if (f_max < other.f_max || f_max > other.f_max) {
        return f_max < other.f_max;
    }
    if (mel_n != other.mel_n) {
        return mel_n < other.mel_n;
    }
    if (sample_rate != other.sample_rate) {
        return sample_rate < other.sample_rate;
    }
    if (mel_norm != other.mel_norm) {
        return mel_norm < other.mel_norm;
    }
    return htk < other.htk;
}

MFBTable& MFBTable::instance() {
    static MFBTable table;
    static_assert(std::is_trivially_destructible_v<MFBTable>, "used during exit, too");
    return table;
}

MFBTable::Entry MFBTable::init_mfb_table(const MelFilterBankParam& key) {
    Entry entry;
    entry.bank = make_zeros<std::vector<float>>(static_cast<std::uint64_t>(key.mel_n));
    for (std::vector<float>& row : entry.bank) {
        row = make_zeros<float>(static_cast<std::uint64_t>(key.freq_n));
    }
    create_fb_matrix(entry.bank, key.freq_n, key.f_min, key.f_max, key.mel_n, key.sample_rate,
                     key.mel_norm, key.htk);
    entry.bands.reserve(entry.bank.size());
    for (const std::vector<float>& row : entry.bank) {
        entry.bands.push_back(nonzero_band(row.data(), row.size()));
    }
    return entry;
}

const MFBTable::Entry& MFBTable::ref(MelFilterBankParam key) {
    key = without_nan(key);
    return table_.ref(key, [&] { return init_mfb_table(key); });
}

const std::vector<std::vector<float>>& MFBTable::ref_table(int freq_n, float f_min, float f_max,
                                                           int mel_n, int sample_rate, int mel_norm,
                                                           bool htk) {
    return ref_table({freq_n, f_min, f_max, mel_n, sample_rate, mel_norm, htk});
}

const std::vector<std::vector<float>>& MFBTable::ref_table(const MelFilterBankParam& key) {
    return ref(key).bank;
}

const std::vector<MelBand>& MFBTable::ref_bands(const MelFilterBankParam& key) {
    return ref(key).bands;
}

}  // namespace sorvo::audio
