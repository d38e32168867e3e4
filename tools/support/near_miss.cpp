#include "support/near_miss.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace sorvo_tool {
namespace {

// Letters to insert, remove or replace, by Levenshtein's recurrence.
std::size_t change_n(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] != to[j]);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string nearest(const std::string& given, const std::vector<std::string>& known) {
    std::string best;
    std::size_t best_n = 1 + std::max<std::size_t>(given.size() / 3, 1);
    for (const std::string& word : known) {
        std::size_t n = change_n(given, word);
        // The beginning of a longer word, as in --hop for --hop-length, comes before other guesses.
        if (given.size() > 3 && word.compare(0, given.size(), given) == 0)
            n = std::min(n, std::size_t{1});
        if (n < best_n) {
            best_n = n;
            best = word;
        }
    }
    return best;
}

}  // namespace sorvo_tool
