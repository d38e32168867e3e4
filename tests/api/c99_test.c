/* Calls every function from plain C, through the shared library. */
#include "sorvo_audio.h"

#include <math.h>
#include <stdio.h>

static int failures = 0;

static void expect(int holds, const char* what) {
    if (!holds) {
        fprintf(stderr, "failed: %s\n", what);
        ++failures;
    }
}

#define OK(call) expect((call) == SORVO_AUDIO_OK, #call)
#define NEAR(value, expected) \
    expect(fabs((double)(value) - (expected)) < 1e-5, #value " = " #expected)

enum { SAMPLE_N = 64, FFT_N = 16, HOP_N = 4, FREQ_N = FFT_N / 2 + 1, FRAME_N = 17, MEL_N = 4 };

int main(void) {
    static float x[SAMPLE_N], y[SAMPLE_N], spectrum[2 * SAMPLE_N], time[2 * SAMPLE_N];
    static float stft[FREQ_N * FRAME_N * 2], bank[MEL_N * FREQ_N], mel[MEL_N * FRAME_N];
    static float power[FREQ_N * FRAME_N], converted[MEL_N * FRAME_N], phase[FREQ_N * FRAME_N];
    const float b[2] = {0.5f, 0.5f}, a[1] = {1.0f};
    float window[4], zi[1], state[1] = {0.0f}, fixed[6];
    int n = 0, pos = 0, len = 0, i;

    for (i = 0; i < SAMPLE_N; ++i) x[i] = (float)sin(0.7 * i);

    OK(sorvoAudioFFT(spectrum, x, SAMPLE_N));
    OK(sorvoAudioIFFT(time, spectrum, SAMPLE_N));
    NEAR(time[2 * 5], sin(0.7 * 5));
    OK(sorvoAudioGetWindow(window, 4, SORVO_AUDIO_WINDOW_HANN));
    NEAR(window[1], 0.5);

    OK(sorvoAudioGetFrameLen(&n, SAMPLE_N, FFT_N, HOP_N, SORVO_AUDIO_CENTER_REFLECT));
    expect(n == FRAME_N, "number of frames");
    OK(sorvoAudioGetSpectrogram(stft, x, SAMPLE_N, FFT_N, HOP_N, FFT_N, SORVO_AUDIO_WINDOW_HANN,
                                FRAME_N, SORVO_AUDIO_CENTER_REFLECT, 0.0f, SORVO_AUDIO_NORM_NONE));
    OK(sorvoAudioGetSampleLen(&n, FRAME_N, FREQ_N, HOP_N, SORVO_AUDIO_CENTER_REFLECT));
    expect(n == SAMPLE_N, "number of samples");
    OK(sorvoAudioGetInverseSpectrogram(y, stft, FRAME_N, FREQ_N, HOP_N, FFT_N,
                                       SORVO_AUDIO_WINDOW_HANN, SAMPLE_N,
                                       SORVO_AUDIO_CENTER_REFLECT, SORVO_AUDIO_NORM_NONE));
    NEAR(y[20], sin(0.7 * 20));

    OK(sorvoAudioGetFBMatrix(bank, FREQ_N, 0.0f, 4000.0f, MEL_N, 8000, SORVO_AUDIO_MEL_NORM_AREA,
                             SORVO_AUDIO_MEL_SLANEY));
    OK(sorvoAudioGetMelSpectrogram(mel, x, SAMPLE_N, 8000, FFT_N, HOP_N, FFT_N,
                                   SORVO_AUDIO_WINDOW_HANN, FRAME_N, SORVO_AUDIO_CENTER_REFLECT,
                                   2.0f, SORVO_AUDIO_NORM_NONE, 0.0f, 4000.0f, MEL_N,
                                   SORVO_AUDIO_MEL_NORM_AREA, SORVO_AUDIO_MEL_SLANEY));
    OK(sorvoAudioMagPhase(power, phase, stft, FREQ_N, FRAME_N, SORVO_AUDIO_PHASE_ANGLE, 2.0f));
    OK(sorvoAudioConvertToMel(converted, power, bank, FREQ_N, FRAME_N, MEL_N));
    NEAR(mel[20], (double)converted[20]);
    OK(sorvoAudioComplexNorm(y, stft, 10, 2.0f));
    NEAR(y[9], (double)power[9]);

    OK(sorvoAudioGetLinerFilterZiCoef(zi, b, a, 1, 2, 1));
    NEAR(zi[0], 0.5);
    OK(sorvoAudioLinerFilter(y, x, b, a, state, SAMPLE_N, SAMPLE_N, 2, 1, 1));
    NEAR(y[1], 0.5 * sin(0.7));
    OK(sorvoAudioFilterFilter(y, x, b, a, SAMPLE_N, SAMPLE_N, 2, 1, SORVO_AUDIO_PAD_ODD, 6));
    NEAR(y[3], 0.25 * sin(1.4) + 0.5 * sin(2.1) + 0.25 * sin(2.8));
    OK(sorvoAudioGetResampleLen(&n, 8000, SAMPLE_N, 16000));
    expect(n == SAMPLE_N / 2, "number of resampled samples");
    OK(sorvoAudioResample(y, x, 8000, n, 16000, SAMPLE_N));
    expect(y[n - 1] != 0.0f, "resampled signal");

    OK(sorvoAudioConvertPowerToDB(y, power, 20, 60.0f));
    OK(sorvoAudioLog1p(y, x, 2));
    NEAR(y[1], log(1.0 + sin(0.7)));
    OK(sorvoAudioStandardize(y, b, 2));
    NEAR(y[0], 0.0);
    OK(sorvoAudioGetNonSilentPos(&pos, &len, x, SAMPLE_N, 16, 8, 30.0f));
    expect(pos == 0 && len == SAMPLE_N, "a steady tone is not silent anywhere");
    OK(sorvoAudioFixFrameLen(fixed, window, 2, 3, 2, -1.0f));
    expect(fixed[2] == -1.0f && fixed[3] == window[2], "rows of fixed length");

    expect(sorvoAudioFFT(NULL, x, 4) == SORVO_AUDIO_ERROR_ARGUMENT, "null is refused");
    printf("version %d.%d.%d, %d failures\n", SORVO_AUDIO_VERSION_MAJOR, SORVO_AUDIO_VERSION_MINOR,
           SORVO_AUDIO_VERSION_PATCH, failures);
    return failures == 0 ? 0 : 1;
}
