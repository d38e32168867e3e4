#include "settings/trim_settings.h"

#include "support/options.h"

namespace sorvo_tool {

void add_trim_options(CLI::App& app, TrimSettings& settings) {
    app.add_option("--top-db", settings.top_db,
                   "Keep what is less than this below the loudest frame [60]")
        ->check(at_least(0))
        ->type_name("DB");
    app.add_option("--frame-length", settings.frame_n, "Samples whose level is measured [2048]")
        ->check(at_least(1))
        ->type_name("N");
    app.add_option("--hop-length", settings.hop_n, "Samples from frame to frame [512]")
        ->check(at_least(1))
        ->type_name("N");
}

}  // namespace sorvo_tool
