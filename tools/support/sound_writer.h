// Sound written in blocks, to files and pipes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "support/sound_reader.h"

namespace sorvo_tool {

// Where blocks of samples go.
class SampleSink {
  public:
    virtual ~SampleSink() = default;
    virtual void write(const Block& block) = 0;
    virtual void commit() = 0;
    virtual std::size_t clipped_n() const { return 0; }  // samples beyond full scale
};

class SoundWriter {
  public:
    // `ending` says how: .wav, .flac, .raw (floats of all channels in turn), or .npy and .csv
    // ([channels][samples], one dimension less for one channel).
    SoundWriter(const std::string& path, const std::string& ending, const SoundFormat& format);

    void write(const Block& block);  // of all channels; may be empty
    void commit();                   // the sound is complete

    // Tells how much has been written, and what is wrong with it.
    void describe(Report& report) const;

  private:
    std::unique_ptr<SampleSink> sink_;
    std::size_t sample_n_ = 0;
    std::size_t not_finite_n_ = 0;
};

}  // namespace sorvo_tool
