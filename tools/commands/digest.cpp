#include "digest/digest.h"

#include <cinttypes>
#include <cstdio>

#include "commands/command.h"
#include "support/options.h"

namespace sorvo_tool {
namespace {

Exit run() {
    for (const Digest& digest : make_digests(digest_calls))
        std::printf("%-31s %016" PRIx64 "\n", digest.name.c_str(), digest.value);
    return Exit::done;
}

}  // namespace

Command add_digest_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand(
        "digest", "One short number for the results of each function of the library");
    add_examples(*app, {"digest"});
    return {app, run};
}

}  // namespace sorvo_tool
