// libsndfile's handles, opened from any thread.
#pragma once

#include <sndfile.h>

#include <memory>
#include <string>

namespace sorvo_tool {

struct CloseSndfile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SndfileHandle = std::unique_ptr<SNDFILE, CloseSndfile>;

// Nothing if the file cannot be opened; `reason` then says why.
SndfileHandle open_sound(const std::string& path, int mode, SF_INFO& info, std::string& reason);
SndfileHandle open_sound(int descriptor, int mode, SF_INFO& info, std::string& reason);
SndfileHandle open_sound(SF_VIRTUAL_IO& access, void* self, int mode, SF_INFO& info,
                         std::string& reason);

}  // namespace sorvo_tool
