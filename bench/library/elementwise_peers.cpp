#include "elementwise_peers.h"

#include "simd/level.h"

namespace sorvo::bench {

namespace avx2 {
extern const ElementwisePeer peer;
}
namespace avx512 {
extern const ElementwisePeer peer;
}

std::vector<ElementwisePeer> elementwise_peers() {
    std::vector<ElementwisePeer> peers = {avx2::peer};
    if (sorvo::audio::is_supported(sorvo::audio::SimdLevel::avx512)) peers.push_back(avx512::peer);
    return peers;
}

}  // namespace sorvo::bench
