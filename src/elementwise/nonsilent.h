#pragma once

namespace sorvo::audio {

/// The span from the first to the last frame that is louder than thr_db below the loudest one: its
/// first sample and its length in samples; -1 and 0 where there is none. Frames of win_n samples
/// are centred every hop_n samples, with reflection at the ends; energies are floored at 1e-10.
void detect_nonsilent_pos(int* pos, int* len, const float* src, int sample_n, int win_n, int hop_n,
                          float thr_db);

}  // namespace sorvo::audio
