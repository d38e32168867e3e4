#pragma once

namespace sorvo::audio {

/// Slaney's scale: linear below 1 kHz (66.67 Hz a mel), logarithmic above.
float hz_to_mel_slaney(float hz);
float mel_to_hz_slaney(float mel);

/// The scale of HTK: 2595 log10(1 + hz / 700).
float hz_to_mel_htk(float hz);
float mel_to_hz_htk(float mel);

}  // namespace sorvo::audio
