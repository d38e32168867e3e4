#include <sorvo_audio.h>

#include <iostream>
#include <vector>

int main() {
    int frame_n = 0;
    sorvoAudioGetFrameLen(&frame_n, 16000, 400, 160, SORVO_AUDIO_CENTER_REFLECT);
    std::vector<float> bank(80 * 201);
    const int status = sorvoAudioGetFBMatrix(bank.data(), 201, 0.0F, 8000.0F, 80, 16000,
                                             SORVO_AUDIO_MEL_NORM_AREA, SORVO_AUDIO_MEL_SLANEY);
    std::cout << "frames " << frame_n << ", bands " << bank.size() / 201 << '\n';
    return status;
}
