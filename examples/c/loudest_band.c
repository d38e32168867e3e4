#include <math.h>
#include <sorvo_audio.h>
#include <stdio.h>

int main(void) {
    static float x[16000], mel[80 * 101], db[80 * 101];
    for (int i = 0; i < 16000; ++i) x[i] = sinf(6.2831853f * 440.0f * (float)i / 16000.0f);
    int frame_n, loudest = 0;
    sorvoAudioGetFrameLen(&frame_n, 16000, 400, 160, SORVO_AUDIO_CENTER_REFLECT);
    sorvoAudioGetMelSpectrogram(mel, x, 16000, 16000, 400, 160, 400, SORVO_AUDIO_WINDOW_HANN,
                                frame_n, SORVO_AUDIO_CENTER_REFLECT, 2.0f, SORVO_AUDIO_NORM_NONE,
                                0.0f, 8000.0f, 80, SORVO_AUDIO_MEL_NORM_AREA,
                                SORVO_AUDIO_MEL_SLANEY);
    sorvoAudioConvertPowerToDB(db, mel, 80 * frame_n, 80.0f);
    for (int m = 1; m < 80; ++m)
        if (db[m * frame_n + 50] > db[loudest * frame_n + 50]) loudest = m;
    printf("%d frames of 80 bands, loudest band %d\n", frame_n, loudest);
    return 0;
}
