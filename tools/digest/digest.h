// One short number for what each function of the library computes: equal numbers mean equal bits.
// Depends on nothing but the public header, so that it runs wherever the library does.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sorvo_tool {

// The lines of python/sorvo_audio/digest_calls.txt, which explains itself.
extern const std::vector<const char*> digest_calls;

struct Digest {
    std::string name;
    std::uint64_t value;
};

// One for each function, in the order of the calls, then one over these, named "all".
std::vector<Digest> make_digests(const std::vector<const char*>& calls);

}  // namespace sorvo_tool
