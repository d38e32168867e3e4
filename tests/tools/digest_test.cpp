// The digests of this library beside those of docs/digests.txt, which is the program's argument:
// the last column, that of correctly rounded elementary functions. Plain C++, for targets where
// GoogleTest does not run.
#include "digest/digest.h"

#include <cinttypes>
#include <cstdio>
#include <map>

int main(int argument_n, char** arguments) {
    std::FILE* const file = argument_n == 2 ? std::fopen(arguments[1], "r") : nullptr;
    if (file == nullptr) {
        std::puts("no file of digests");
        return 1;
    }
    std::map<std::string, std::uint64_t> published;
    char line[256];
    char name[64];
    std::uint64_t value = 0;
    while (std::fgets(line, sizeof(line), file) != nullptr) {
        if (std::sscanf(line, "%63s %*s %" SCNx64, name, &value) == 2 && name[0] != '#') {
            published[name] = value;
        }
    }
    std::fclose(file);

    bool equal = true;
    for (const sorvo_tool::Digest& digest : sorvo_tool::make_digests(sorvo_tool::digest_calls)) {
        const auto expected = published.find(digest.name);
        const bool same = expected != published.end() && expected->second == digest.value;
        std::printf("%-31s %016" PRIx64 "%s\n", digest.name.c_str(), digest.value,
                    same ? "" : " differs");
        published.erase(digest.name);
        equal = equal && same;
    }
    return equal && published.empty() ? 0 : 1;
}
