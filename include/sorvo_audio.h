/* sorvo_audio.h - audio feature extraction for neural-network models.
 *
 * Transforms, spectrograms, mel spectrograms, filters, resampling and the small operations around
 * them, with the numeric conventions of the toolkits that models are trained with, and the same
 * bits on every processor (docs/platforms.md: where that was compared).
 *
 * CONVENTIONS
 *
 * Samples and features are 32-bit floats in arrays that the caller owns. The library never keeps a
 * pointer beyond the call and never allocates anything that the caller has to free.
 *
 * Counts (`..._n`) are numbers of elements, not of bytes. Lengths of windows, hops and frames are
 * in samples, frequencies and rates in Hz.
 *
 * A complex number is a pair of floats, real part first. "n complex values" are 2 n floats; element
 * j is at floats 2j and 2j + 1.
 *
 * Layouts are written [rows][columns], the last index running fastest:
 *   complex spectrogram  [freq_n][frame_n][2]   element (k, t, c) at (k * frame_n + t) * 2 + c
 *   mel spectrogram      [mel_n][frame_n]       element (m, t)    at m * frame_n + t
 *   mel filter bank      [mel_n][freq_n]        element (m, k)    at m * freq_n + k
 * where freq_n = fft_n / 2 + 1 (integer division) is the number of bins from 0 Hz to the Nyquist
 * frequency; bin k of a transform of fft_n samples stands for k * sample_rate / fft_n Hz.
 *
 * Parameters come as outputs first, then inputs, then counts, then options.
 *
 * Every function returns a status and nothing else; numbers are written through pointers. Arguments
 * are checked in this order: null pointers, then values in the order in which each function lists
 * them. When a check fails (SORVO_AUDIO_ERROR_ARGUMENT), no output has been touched. After any
 * other error the contents of output arrays are undefined, but never written beyond their
 * documented size.
 *
 * NaN is not an error: comparisons with NaN are false, so a NaN parameter passes a range check. NaN
 * and infinite samples propagate as the formulas say.
 *
 * Input and output arrays must not overlap, except where a function says that they may be equal.
 *
 * Results do not depend on the processor, and only on x86-64 with glibc on the C library: there those
 * that pass through log10f, log1pf or atan2f (decibels, HTK mel banks, log1p, phases) are what glibc
 * gives, which rounds these correctly from 2.41 on and did not before. A library built with
 * SORVO_AUDIO_MATH=own, the default everywhere else, computes them itself, correctly rounded. The
 * sign and the payload of a NaN are the processor's.
 *
 * There is nothing to initialise. Any number of threads may call any function at once. Tables
 * (twiddle factors, windows, filter banks, resampling filters) are computed on first use, shared by
 * the process, and kept until it ends. The process may fork while its threads make calls: the child
 * may make any call, too. So may exit handlers, destructors of static objects, and threads that are
 * still running while main returns. dlclose() leaves the library loaded.
 *
 * Results are promised for threads in the default floating-point mode: rounding to nearest, no
 * traps, denormal numbers kept. In another mode values may differ, and a trap that is not masked
 * may occur; calls on ordinary samples raise neither FE_INVALID nor FE_DIVBYZERO nor FE_OVERFLOW.
 * Tables are always computed in the default mode, so no thread's mode changes another's results,
 * and no call changes the mode.
 */
#ifndef SORVO_AUDIO_H
#define SORVO_AUDIO_H

#define SORVO_AUDIO_VERSION_MAJOR 0 /* raised by incompatible changes, as is the soname */
#define SORVO_AUDIO_VERSION_MINOR 1 /* raised by additions */
#define SORVO_AUDIO_VERSION_PATCH 0 /* raised by everything else */

/* Marks what the shared object exports; for Windows, the build does so. */
#if !defined(SORVO_AUDIO_API) && defined(__GNUC__) && !defined(_WIN32)
#define SORVO_AUDIO_API __attribute__((visibility("default")))
#elif !defined(SORVO_AUDIO_API)
#define SORVO_AUDIO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------
 * Status codes
 */

/* What every function returns. */
enum {
    SORVO_AUDIO_OK = 0,               /* all outputs are written */
    SORVO_AUDIO_ERROR_ARGUMENT = -1,  /* a required pointer is null, or a value is out of range */
    SORVO_AUDIO_ERROR_MEMORY = -5,    /* memory could not be obtained; the call may be repeated */
    SORVO_AUDIO_ERROR_INTERNAL = -128 /* anything else, such as a length that does not fit an int */
};

/* ---------------------------------------------------------------------------------------------------
 * Option values
 */

/* win_type: the analysis window of n samples, with angle a = 2 pi i / n. Both are periodic: the
 * value that would follow the last sample equals the first. */
enum {
    SORVO_AUDIO_WINDOW_HANN = 1,   /* 0.5 - 0.5 cos(a)   */
    SORVO_AUDIO_WINDOW_HAMMING = 2 /* 0.54 - 0.46 cos(a) */
};

/* center: where frame t lies in the signal. */
enum {
    SORVO_AUDIO_CENTER_NONE = 0,    /* samples t * hop_n ... t * hop_n + fft_n - 1 */
    SORVO_AUDIO_CENTER_REFLECT = 1, /* centred at sample t * hop_n; the ends are reflected, without
                                       repeating the edge sample: c b [a b c d] c b */
    SORVO_AUDIO_CENTER_ZEROS = 2    /* centred at sample t * hop_n; zeros beyond the ends */
};

/* norm_type, fft_norm_type: what every spectrum is multiplied by. */
enum {
    SORVO_AUDIO_NORM_NONE = 0,   /* 1 */
    SORVO_AUDIO_NORM_WINDOW = 1, /* 1 / sqrt(sum of the squared window) */
    SORVO_AUDIO_NORM_LENGTH = 2  /* 2 / fft_n */
};

/* mel_formula: the mel scale. */
enum {
    SORVO_AUDIO_MEL_SLANEY = 0, /* linear below 1 kHz (200/3 Hz a mel), logarithmic above */
    SORVO_AUDIO_MEL_HTK = 1     /* 2595 log10(1 + f / 700) */
};

/* mel_norm: the height of the mel triangles. */
enum {
    SORVO_AUDIO_MEL_NORM_NONE = 0, /* 1 at the centre frequency */
    SORVO_AUDIO_MEL_NORM_AREA = 1  /* 2 / (upper edge - lower edge, in Hz): equal areas */
};

/* phase_form: how a phase is written. */
enum {
    SORVO_AUDIO_PHASE_ANGLE = 0,  /* one float, the angle in radians, -pi ... pi */
    SORVO_AUDIO_PHASE_COMPLEX = 1 /* two floats, (cos, sin) of the angle */
};

/* pad_type: how a signal is extended at both ends before zero-phase filtering. */
enum {
    SORVO_AUDIO_PAD_NONE = 0,    /* not at all */
    SORVO_AUDIO_PAD_ODD = 1,     /* reflected about the edge value: 2 x[0] - x[d] */
    SORVO_AUDIO_PAD_REFLECT = 2, /* reflected, without repeating the edge sample: x[d] */
    SORVO_AUDIO_PAD_CONSTANT = 3 /* the edge sample repeated: x[0] */
};

/* ---------------------------------------------------------------------------------------------------
 * Fourier transform
 */

/* Discrete Fourier transform of a real signal; the full complex spectrum, unscaled:
 *   dst[k] = sum over j = 0 ... fft_n - 1 of src[j] e^(-2 pi i j k / fft_n),   k = 0 ... fft_n - 1
 *
 *   dst     out: fft_n complex values (2 fft_n floats)
 *   src     fft_n real samples
 *   fft_n   length, >= 1; any length works
 *
 * Powers of two take a radix-4 transform. Other lengths take a mixed-radix transform whose time
 * grows with n times the sum of the prime factors of n, so that a large prime costs n^2 operations.
 * `dst` may overlap `src`.
 */
SORVO_AUDIO_API int sorvoAudioFFT(float* dst, const float* src, int fft_n);

/* Inverse discrete Fourier transform of a complex spectrum, scaled by 1 / fft_n:
 *   dst[j] = 1/fft_n * sum over k = 0 ... fft_n - 1 of src[k] e^(+2 pi i j k / fft_n)
 *
 *   dst     out: fft_n complex values; of a spectrum with Hermitian symmetry the imaginary parts
 *           are rounding residue
 *   src     fft_n complex values
 *   fft_n   length, >= 1; any length works
 *
 * `dst` may overlap `src`.
 */
SORVO_AUDIO_API int sorvoAudioIFFT(float* dst, const float* src, int fft_n);

/* ---------------------------------------------------------------------------------------------------
 * Short-time Fourier analysis and synthesis
 */

/* Analysis window.
 *
 *   dst        out: window_n floats
 *   window_n   length in samples, >= 1
 *   win_type   SORVO_AUDIO_WINDOW_HANN or SORVO_AUDIO_WINDOW_HAMMING
 */
SORVO_AUDIO_API int sorvoAudioGetWindow(float* dst, int window_n, int win_type);

/* Number of frames that a signal yields, in float arithmetic:
 *   0                                        for sample_n < fft_n, in every mode
 *   floor((sample_n - fft_n) / hop_n + 1)    SORVO_AUDIO_CENTER_NONE
 *   floor(sample_n / hop_n + 1)              SORVO_AUDIO_CENTER_REFLECT
 *   ceil(sample_n / hop_n) + 1               SORVO_AUDIO_CENTER_ZEROS
 *
 *   frame_n    out: the number of frames; -2147483648 where it does not fit an int (hop_n 0
 *              included)
 *   sample_n   signal length, > 0
 *   fft_n      frame length, > 0
 *   hop_n      distance between frame starts, >= 0
 *   center     SORVO_AUDIO_CENTER_...
 *
 * Beyond 2^24 samples float arithmetic rounds the count; frames that it puts past the end of the
 * signal are made of what `center` puts there (zeros without centring).
 */
SORVO_AUDIO_API int sorvoAudioGetFrameLen(int* frame_n, int sample_n, int fft_n, int hop_n,
                                          int center);

/* Spectrogram (short-time Fourier transform) of a signal. Each frame is weighted by the window,
 * which is centred in it, transformed, and normalised; bins 0 ... fft_n / 2 are kept.
 *
 *   dst           out: [freq_n][max_frame_n][2], freq_n = fft_n / 2 + 1.
 *                 power > 0: (|X|^power, 0); power = 0 or NaN: X, real and imaginary part
 *   src           sample_n samples
 *   sample_n      signal length, > 0
 *   fft_n         frame and transform length, > 0; any length, powers of two are fastest
 *   hop_n         distance between frame starts, >= 0; 0 yields no frames
 *   win_n         window length, > 0. Shorter than fft_n: zeros on both sides; where the difference
 *                 is odd, the right side gets one zero more. Longer than fft_n: cropped about its
 *                 middle
 *   win_type      SORVO_AUDIO_WINDOW_...
 *   max_frame_n   frames that dst has room for, > 0; it is the row length of dst in any case
 *   center        SORVO_AUDIO_CENTER_...
 *   power         exponent of the magnitude, >= 0: 1 magnitude, 2 power, 0 complex
 *   norm_type     SORVO_AUDIO_NORM_...
 *
 * min(max_frame_n, frames by sorvoAudioGetFrameLen()) frames are computed; columns beyond them are
 * left untouched. No frame at all (sample_n < fft_n) is a success that writes nothing.
 *
 *   int frame_n;
 *   sorvoAudioGetFrameLen(&frame_n, sample_n, 400, 160, SORVO_AUDIO_CENTER_REFLECT);
 *   float* power = malloc(sizeof(float) * 2 * 201 * frame_n);
 *   sorvoAudioGetSpectrogram(power, x, sample_n, 400, 160, 400, SORVO_AUDIO_WINDOW_HANN, frame_n,
 *                            SORVO_AUDIO_CENTER_REFLECT, 2.0f, SORVO_AUDIO_NORM_NONE);
 */
SORVO_AUDIO_API int sorvoAudioGetSpectrogram(float* dst, const float* src, int sample_n, int fft_n,
                                             int hop_n, int win_n, int win_type, int max_frame_n,
                                             int center, float power, int norm_type);

/* Signal of a complex spectrogram: each frame's spectrum is completed by X[fft_n - k] = conj(X[k]),
 * inverse-transformed, weighted by the window and overlap-added; then every sample is divided by
 * the overlap-added squared window where that exceeds 1e-10.
 *
 *   dst            out: at most max_sample_n samples
 *   src            [freq_n][frame_n][2], as sorvoAudioGetSpectrogram() writes it with power 0
 *   frame_n        frames, > 0
 *   freq_n         bins, > 1; the transform length is fft_n = 2 freq_n - 2
 *   hop_n          distance between frame starts, >= 0
 *   win_n          window length, > 0, placed in the frame as in sorvoAudioGetSpectrogram()
 *   win_type       SORVO_AUDIO_WINDOW_...
 *   max_sample_n   samples that dst has room for, > 0
 *   center         SORVO_AUDIO_CENTER_...; any but NONE drops the first fft_n / 2 samples
 *   norm_type      SORVO_AUDIO_NORM_LENGTH undoes the same forward normalisation;
 *                  SORVO_AUDIO_NORM_WINDOW is not undone and acts as SORVO_AUDIO_NORM_NONE
 *
 * With L = (frame_n - 1) * hop_n + fft_n accumulated samples, min(L, max_sample_n) samples are
 * written: those that lie behind the dropped ones, then zeros. The rest of dst is left untouched.
 * Working memory is at most proportional to L.
 */
SORVO_AUDIO_API int sorvoAudioGetInverseSpectrogram(float* dst, const float* src, int frame_n,
                                                    int freq_n, int hop_n, int win_n, int win_type,
                                                    int max_sample_n, int center, int norm_type);

/* Nominal length of the signal of a spectrogram:
 *   (frame_n - 1) * hop_n                     centred
 *   (frame_n - 1) * hop_n + 2 freq_n - 2      SORVO_AUDIO_CENTER_NONE
 *
 *   sample_n   out: the length in samples
 *   frame_n    frames, > 0
 *   freq_n     bins, > 0
 *   hop_n      distance between frame starts, >= 0
 *   center     SORVO_AUDIO_CENTER_...
 *
 * A length that does not fit an int is SORVO_AUDIO_ERROR_INTERNAL; *sample_n is then untouched.
 */
SORVO_AUDIO_API int sorvoAudioGetSampleLen(int* sample_n, int frame_n, int freq_n, int hop_n,
                                           int center);

/* ---------------------------------------------------------------------------------------------------
 * Mel analysis
 */

/* Mel filter bank: mel_n triangles whose corners are equally spaced in mel from f_min to f_max.
 * Band m rises from corner m to corner m + 1 and falls to corner m + 2.
 *
 *   dst           out: [mel_n][freq_n]
 *   freq_n        bins, >= 1; bin k stands for k * (sample_rate / 2) / (freq_n - 1) Hz
 *   f_min         lowest frequency, >= 0
 *   f_max         highest frequency, > f_min; it may lie above sample_rate / 2 (bands without bins
 *                 are zero)
 *   mel_n         bands, 1 ... freq_n - 1
 *   sample_rate   > 0
 *   mel_norm      SORVO_AUDIO_MEL_NORM_...
 *   mel_formula   SORVO_AUDIO_MEL_SLANEY or SORVO_AUDIO_MEL_HTK
 *
 * A NaN bound is accepted and makes every weight NaN.
 */
SORVO_AUDIO_API int sorvoAudioGetFBMatrix(float* dst, int freq_n, float f_min, float f_max,
                                          int mel_n, int sample_rate, int mel_norm,
                                          int mel_formula);

/* Mel spectrogram of a signal: the spectrogram of sorvoAudioGetSpectrogram(), magnitudes to
 * `power`, projected on the filter bank of sorvoAudioGetFBMatrix():
 *   dst(m, t) = sum over k = 0 ... freq_n - 1 of bank(m, k) * |X(k, t)|^power
 *
 *   dst             out: [mel_n][frame_n], where frame_n is the smaller of max_frame_n and the
 *                   number of frames by sorvoAudioGetFrameLen(). frame_n, not max_frame_n, is the
 *                   row length; give dst room for mel_n * max_frame_n floats
 *   src             sample_n samples
 *   sample_n        signal length, >= 1
 *   sample_rate     >= 1
 *   fft_n           frame and transform length, >= 1
 *   hop_n           distance between frame starts, >= 0; 0 yields no frames
 *   win_n           window length, >= 1, placed as in sorvoAudioGetSpectrogram()
 *   win_type        SORVO_AUDIO_WINDOW_...
 *   max_frame_n     upper bound of the number of frames, >= 1
 *   center          SORVO_AUDIO_CENTER_...
 *   power           exponent of the magnitude, >= 0; 0 makes every bin 1
 *   fft_norm_type   SORVO_AUDIO_NORM_...
 *   f_min           lowest frequency of the bank, >= 0
 *   f_max           highest frequency of the bank, > f_min
 *   mel_n           bands, 1 ... fft_n / 2
 *   mel_norm        SORVO_AUDIO_MEL_NORM_...
 *   mel_formula     SORVO_AUDIO_MEL_SLANEY or SORVO_AUDIO_MEL_HTK
 *
 * No frame at all (sample_n < fft_n) is a success that writes nothing. The result is linear; see
 * sorvoAudioConvertPowerToDB() and sorvoAudioLog1p() for logarithms.
 */
SORVO_AUDIO_API int sorvoAudioGetMelSpectrogram(float* dst, const float* src, int sample_n,
                                                int sample_rate, int fft_n, int hop_n, int win_n,
                                                int win_type, int max_frame_n, int center,
                                                float power, int fft_norm_type, float f_min,
                                                float f_max, int mel_n, int mel_norm,
                                                int mel_formula);

/* Projects a spectrogram on a filter bank:
 *   dst(m, t) = sum over k = 0 ... freq_n - 1 of fb(m, k) * src(k, t)
 *
 *   dst       out: [mel_n][frame_n]
 *   src       [freq_n][frame_n], real
 *   fb        [mel_n][freq_n], for instance of sorvoAudioGetFBMatrix()
 *   freq_n    bins, >= 1
 *   frame_n   frames, >= 1
 *   mel_n     bands, 1 ... freq_n - 1
 *
 * Checked in the order freq_n, mel_n, frame_n.
 */
SORVO_AUDIO_API int sorvoAudioConvertToMel(float* dst, const float* src, const float* fb,
                                           int freq_n, int frame_n, int mel_n);

/* ---------------------------------------------------------------------------------------------------
 * Linear filters
 *
 * A filter is a ratio of polynomials in 1/z, numerator n_coef (b) over denominator d_coef (a), each
 * divided by d_coef[0], which must not be 0 for finite results:
 *   a[0] y[i] = b[0] x[i] + b[1] x[i-1] + ... - a[1] y[i-1] - ...
 * It runs in transposed direct form II with N - 1 state values, N = max(n_coef_n, d_coef_n).
 *
 * "Liner" is the fixed spelling of these names.
 */

/* Filters a signal from an initial state; the arithmetic is double, output and state are stored as
 * float.
 *
 *   dst        out: min(dst_n, src_n) samples; the rest is left untouched
 *   src        src_n samples
 *   n_coef     numerator, n_coef_n coefficients
 *   d_coef     denominator, d_coef_n coefficients
 *   zi         in and out, may be null: state before the first sample, then after the last. Null,
 *              or fewer than N - 1 values: the filter starts from rest and zi is left untouched
 *   dst_n      > 0
 *   src_n      > 0
 *   n_coef_n   > 0
 *   d_coef_n   > 0
 *   zi_n       values of zi; those beyond N - 1 are left untouched
 *
 * A signal filtered in blocks, with zi carried from call to call, gives the same bits as in one
 * call. `dst` may equal `src`.
 */
SORVO_AUDIO_API int sorvoAudioLinerFilter(float* dst, const float* src, const float* n_coef,
                                          const float* d_coef, float* zi, int dst_n, int src_n,
                                          int n_coef_n, int d_coef_n, int zi_n);

/* State of a filter that has settled on a constant input of 1. Scaled by the first sample and given
 * as zi to sorvoAudioLinerFilter(), it avoids the transient at the start.
 *
 *   dst        out: dst_n values, the first N - 1 of the state, then zeros
 *   n_coef     numerator, n_coef_n coefficients
 *   d_coef     denominator, d_coef_n coefficients
 *   dst_n      > 0; N - 1 is what sorvoAudioLinerFilter() takes
 *   n_coef_n   > 0
 *   d_coef_n   > 0
 *
 * A denominator whose coefficients sum to 0 has no such state; the values are infinite or NaN.
 */
SORVO_AUDIO_API int sorvoAudioGetLinerFilterZiCoef(float* dst, const float* n_coef,
                                                   const float* d_coef, int dst_n, int n_coef_n,
                                                   int d_coef_n);

/* Zero-phase filtering: forward, then backward, each pass from the settled state of its first
 * sample. The magnitude response is squared. Everything between input and output is double.
 *
 *   dst        out: min(dst_n, src_n) samples. With an extension, dst_n > src_n receives up to
 *              pad_len samples more, those of the extension at the end; the rest is left untouched
 *   src        src_n samples
 *   n_coef     numerator, n_coef_n coefficients
 *   d_coef     denominator, d_coef_n coefficients
 *   dst_n      > 0
 *   src_n      > 0
 *   n_coef_n   > 0
 *   d_coef_n   > 0
 *   pad_type   SORVO_AUDIO_PAD_...
 *   pad_len    samples of extension at each end, >= 0; ignored for SORVO_AUDIO_PAD_NONE; below
 *              src_n for SORVO_AUDIO_PAD_ODD and SORVO_AUDIO_PAD_REFLECT. 3 N is a usual choice
 *
 * Working memory is at most proportional to src_n + 2 pad_len.
 */
SORVO_AUDIO_API int sorvoAudioFilterFilter(float* dst, const float* src, const float* n_coef,
                                           const float* d_coef, int dst_n, int src_n, int n_coef_n,
                                           int d_coef_n, int pad_type, int pad_len);

/* ---------------------------------------------------------------------------------------------------
 * Sample-rate conversion
 */

/* Converts a signal to another sample rate, by windowed-sinc interpolation with 65 taps (Blackman)
 * in double. The cut-off is the lower of the two Nyquist frequencies.
 *
 *   dst               out: dst_n samples: those that the conversion yields, then zeros
 *   src               src_n samples; zeros are assumed before and after
 *   dst_sample_rate   target rate, > 0
 *   dst_n             > 0; see sorvoAudioGetResampleLen()
 *   src_sample_rate   source rate, > 0
 *   src_n             > 0
 *
 * With dst_sample_rate / src_sample_rate = up / down in lowest terms, output i lies at input time
 * i * down / up, and 0.5 / up of an input sample earlier where `up` is even. Outputs later than
 * half an input sample before the last one are not computed: they are zero. Append two zeros to the
 * source to get them all.
 *
 * The filters of a ratio take somewhat over 1 KiB * up and are kept: with coprime rates `up` is the
 * target rate.
 */
SORVO_AUDIO_API int sorvoAudioResample(float* dst, const float* src, int dst_sample_rate, int dst_n,
                                       int src_sample_rate, int src_n);

/* Number of samples that sorvoAudioResample() yields:
 *   ceil(dst_sample_rate / src_sample_rate * src_sample_n), in double
 *
 *   dst_sample_n      out: the number of samples
 *   dst_sample_rate   target rate, > 0
 *   src_sample_n      input length, > 0
 *   src_sample_rate   source rate, > 0
 *
 * Checked in the order dst_sample_rate, src_sample_rate, src_sample_n. A length that does not fit
 * an int is SORVO_AUDIO_ERROR_INTERNAL; *dst_sample_n is then untouched.
 */
SORVO_AUDIO_API int sorvoAudioGetResampleLen(int* dst_sample_n, int dst_sample_rate,
                                             int src_sample_n, int src_sample_rate);

/* ---------------------------------------------------------------------------------------------------
 * Element-wise operations and measures
 */

/* Magnitudes of complex values, to a power: dst[i] = (re^2 + im^2)^(power / 2).
 *
 *   dst     out: src_n floats
 *   src     src_n complex values
 *   src_n   > 0
 *   power   > 0: 1 magnitude, 2 squared magnitude (0 is refused here, unlike elsewhere)
 *
 * `dst` may equal `src`.
 */
SORVO_AUDIO_API int sorvoAudioComplexNorm(float* dst, const float* src, int src_n, float power);

/* Splits complex values into magnitudes, to a power, and phases.
 *
 *   mag_dst      out: [freq_n][frame_n], (re^2 + im^2)^(power / 2)
 *   phase_dst    out: [freq_n][frame_n] angles atan2(im, re), or [freq_n][frame_n][2] unit numbers
 *   src          [freq_n][frame_n][2]
 *   freq_n       rows, >= 1
 *   frame_n      complex values a row, >= 1
 *   phase_form   SORVO_AUDIO_PHASE_...
 *   power        >= 0; 0 makes every magnitude 1
 *
 * Checked in the order freq_n, frame_n, power, phase_form.
 */
SORVO_AUDIO_API int sorvoAudioMagPhase(float* mag_dst, float* phase_dst, const float* src,
                                       int freq_n, int frame_n, int phase_form, float power);

/* Powers in decibels relative to their maximum, with an optional floor:
 *   dst[i] = 10 log10(max(src[i], 1e-10)) - 10 log10(max(maximum of src, 1e-10))
 * and then, if top_db >= 0, at least -top_db.
 *
 *   dst      out: src_n floats, all <= 0
 *   src      src_n powers; NaN counts as 1e-10
 *   src_n    > 0
 *   top_db   dynamic range to keep, in dB; negative or NaN: no floor
 *
 * `dst` may equal `src`.
 */
SORVO_AUDIO_API int sorvoAudioConvertPowerToDB(float* dst, const float* src, int src_n,
                                               float top_db);

/* Natural logarithms: dst[i] = log(1 + src[i]), accurate near 0. -1 gives -infinity, less gives
 * NaN.
 *
 *   dst     out: src_n floats
 *   src     src_n floats
 *   src_n   > 0
 *
 * `dst` may equal `src`.
 */
SORVO_AUDIO_API int sorvoAudioLog1p(float* dst, const float* src, int src_n);

/* Standardises to zero mean and unit variance: dst[i] = (src[i] - mean) / deviation, where
 *   mean = sum(src) / src_n,   deviation = sqrt(sum(src^2) / src_n - mean^2)
 *
 *   dst     out: src_n floats
 *   src     src_n floats
 *   src_n   > 0
 *
 * Sums are kept in float. Where the variance is 0, differences are multiplied by 1e16 instead;
 * where rounding makes it negative (a large mean beside a small variance) every output is NaN.
 * `dst` may equal `src`.
 */
SORVO_AUDIO_API int sorvoAudioStandardize(float* dst, const float* src, int src_n);

/* Span of a signal that is not silent: from the first to the last frame whose mean square is less
 * than thr_db below that of the loudest frame. Frames are centred as in SORVO_AUDIO_CENTER_REFLECT;
 * their mean squares are floored at 1e-10.
 *
 *   pos        out: first sample of the span; -1 where there is none
 *   len        out: length of the span in samples; 0 where there is none
 *   src        sample_n samples
 *   sample_n   > 0
 *   win_n      frame length, > 0
 *   hop_n      distance between frames, >= 0; with 0 there is no frame, hence no span
 *   thr_db     threshold, >= 0; with 0 no frame passes
 *
 * pos = first * hop_n and len = min(sample_n, (last + 1) * hop_n) - pos. Silence between the first
 * and the last frame does not split the span.
 */
SORVO_AUDIO_API int sorvoAudioGetNonSilentPos(int* pos, int* len, const float* src, int sample_n,
                                              int win_n, int hop_n, float thr_db);

/* Gives every row of an array the same number of frames, cutting it at the end or filling it up.
 *
 *   dst           out: [freq_n][dst_frame_n]
 *   src           [freq_n][src_frame_n]
 *   freq_n        rows, > 0
 *   dst_frame_n   >= 1
 *   src_frame_n   >= 1
 *   pad_value     what new elements hold
 */
SORVO_AUDIO_API int sorvoAudioFixFrameLen(float* dst, const float* src, int freq_n, int dst_frame_n,
                                          int src_frame_n, float pad_value);

#ifdef __cplusplus
}
#endif

#endif /* SORVO_AUDIO_H */
