#include "support/sndfile.h"

#include <mutex>

namespace sorvo_tool {
namespace {

// libsndfile keeps the reason of a failure for the process only.
template <typename Open>
SndfileHandle open_with(const Open& open, std::string& reason) {
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    SndfileHandle file(open());
    if (!file) reason = sf_strerror(nullptr);
    while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
    return file;
}

}  // namespace

SndfileHandle open_sound(const std::string& path, int mode, SF_INFO& info, std::string& reason) {
    return open_with([&] { return sf_open(path.c_str(), mode, &info); }, reason);
}

SndfileHandle open_sound(int descriptor, int mode, SF_INFO& info, std::string& reason) {
    return open_with([&] { return sf_open_fd(descriptor, mode, &info, SF_FALSE); }, reason);
}

SndfileHandle open_sound(SF_VIRTUAL_IO& access, void* self, int mode, SF_INFO& info,
                         std::string& reason) {
    return open_with([&] { return sf_open_virtual(&access, mode, &info, self); }, reason);
}

}  // namespace sorvo_tool
