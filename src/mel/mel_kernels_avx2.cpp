#include "mel/mel_kernels.h"
#include "mel/mel_kernels.inl"

namespace sorvo::audio {

const MelKernels mel_kernels_avx2 = make_mel_kernels();

}  // namespace sorvo::audio
