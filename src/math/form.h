#pragma once

namespace sorvo::audio {

/// How a function of the C library is computed for arrays: in lanes, in one of the forms of
/// math/lanes.h, or by calling it for each element.
enum class MathForm { rounded, classic, called };

// The form whose results are those of the C library at hand, or with SORVO_AUDIO_MATH=own the
// rounded one. Decided once, by comparing some thousand results.

MathForm log10f_form();
MathForm log1pf_form();
MathForm atan2f_form();

/// Of sinf and cosf together; they have no rounded form.
MathForm sincosf_form();

}  // namespace sorvo::audio
