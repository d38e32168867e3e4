#include <sorvo_audio.h>
#include <stdio.h>

static float signal[16000];
static float mel[80 * 101];

int main(void) {
    int frame_n = 0;
    if (sorvoAudioGetFrameLen(&frame_n, 16000, 400, 160, SORVO_AUDIO_CENTER_REFLECT) !=
        SORVO_AUDIO_OK) {
        return 1;
    }
    signal[8000] = 1.0f;
    if (sorvoAudioGetMelSpectrogram(
            mel, signal, 16000, 16000, 400, 160, 400, SORVO_AUDIO_WINDOW_HANN, frame_n,
            SORVO_AUDIO_CENTER_REFLECT, 2.0f, SORVO_AUDIO_NORM_NONE, 0.0f, 8000.0f, 80,
            SORVO_AUDIO_MEL_NORM_AREA, SORVO_AUDIO_MEL_SLANEY) != SORVO_AUDIO_OK) {
        return 1;
    }
    printf("frames %d, bands %d\n", frame_n, mel[50] > 0.0f ? 80 : 0);
    return 0;
}
