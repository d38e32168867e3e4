#pragma once

#include <vector>

namespace sorvo::audio::kelpon::fft {

/// One stage of a transform: it merges groups of `radix` transforms of length `span`.
struct CooleyTukeyFactor {
    unsigned radix;
    unsigned span;
};

/// The stages of a transform of length `column_n * row_n`. Its first stages transform the columns
/// of the input, written as a matrix of `column_n` rows; the others then merge these.
struct CooleyTukeyFactors {
    unsigned column_n;
    unsigned row_n;
    std::vector<CooleyTukeyFactor> columns;
    std::vector<CooleyTukeyFactor> rows;
};

/// Factors n so that both groups of stages fill their vectors well and hold few stages.
/// Throws SorvoInvalidArgument if n is 0.
CooleyTukeyFactors choose_factors(unsigned n);

/// The place of input that stages working in place expect: entry i is the index of the input which
/// has to stand at i.
std::vector<unsigned> CooleyTukeyIndex(const std::vector<CooleyTukeyFactor>& factors);

}  // namespace sorvo::audio::kelpon::fft
