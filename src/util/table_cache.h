#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "util/build_lock.h"
#include "util/float_mode.h"

namespace sorvo::audio {

/// An ordered map from keys to tables, which are built on their first request and never changed,
/// moved or removed afterwards. Looking up a table that exists takes no lock; building one takes
/// the lock of the cache and is done in the default floating-point mode, whatever the caller's is.
///
/// It is meant for static storage, which needs neither construction nor destruction: it can be used
/// before the first line of a program and during its exit, and tables live until the process ends.
///
/// A skip list: every entry is linked with the next one, every fourth or so also with the next of
/// these, and so on. Links are only ever set to entries that are complete.
template <class Key, class Table>
class TableCache {
  public:
    constexpr explicit TableCache(Cache cache) : cache_(cache) {}

    /// The table of the key, or nullptr where there is none yet.
    const Table* find(const Key& key) {
        const Entry* const entry = next(*links_before(key, [](std::size_t, Links&) {}), 0);
        return entry != nullptr && !(key < entry->key) ? &entry->table : nullptr;
    }

    /// The table of the key, which is build() where there is none yet. What build() throws is
    /// passed on, and leaves the cache as it was; build() uses no cache of the same lock.
    template <class Build>
    const Table& ref(const Key& key, const Build& build) {
        const Table* const table = find(key);
        return table != nullptr ? *table : ref_built(key, build);
    }

  private:
    struct Entry;
    static constexpr std::size_t max_height = 8;
    using Links = std::array<std::atomic<Entry*>, max_height>;
    struct Entry {
        Key key;
        Table table;
        Links links;
    };

    static Entry* next(const Links& links, std::size_t level) {
        return links[level].load(std::memory_order_acquire);
    }

    /// The links of the last entry before the key. On the way there visit(level, links) gets those
    /// that pass the key at each level.
    template <class Visit>
    Links* links_before(const Key& key, const Visit& visit) {
        Links* links = &first_;
        for (std::size_t level = max_height; level-- > 0;) {
            for (Entry* entry = next(*links, level); entry != nullptr && entry->key < key;
                 entry = next(*links, level)) {
                links = &entry->links;
            }
            visit(level, *links);
        }
        return links;
    }

    template <class Build>
    const Table& ref_built(const Key& key, const Build& build) {
        const BuildLock lock(cache_);
        const DefaultFloatMode mode;
        // Searched anew: by now another thread may have built it, and keys of floating-point
        // numbers compare otherwise where denormal numbers count as zero.
        const Table* const table = find(key);
        return table != nullptr ? *table : insert(make_entry(key, build));
    }

    /// Not inlined: see DefaultFloatMode.
    template <class Build>
    [[gnu::noinline]] static Entry* make_entry(const Key& key, const Build& build) {
        return new Entry{key, build(), {}};
    }

    const Table& insert(Entry* entry) {
        std::array<Links*, max_height> before;
        links_before(entry->key, [&](std::size_t level, Links& links) { before[level] = &links; });
        const std::size_t height = random_height();
        for (std::size_t level = 0; level < height; ++level) {
            entry->links[level] = next(*before[level], level);
            (*before[level])[level].store(entry, std::memory_order_release);
        }
        return entry->table;
    }

    /// 1 in three of four cases, 2 in three of four others, ...
    std::size_t random_height() {
        random_ ^= random_ << 13U;
        random_ ^= random_ >> 17U;
        random_ ^= random_ << 5U;
        std::size_t height = 1;
        for (std::uint32_t bits = random_; bits % 4 == 0 && height < max_height; bits /= 4) {
            ++height;
        }
        return height;
    }

    Links first_{};
    Cache cache_;
    std::uint32_t random_ = 1;
};

}  // namespace sorvo::audio
