#include "support/plan.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "support/output_file.h"
#include "support/sound_reader.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

namespace fs = std::filesystem;

Failure usage(const std::string& subject, const std::string& problem, const std::string& advice) {
    return {Exit::usage, subject, problem, "", advice};
}

// A file to read, and its name below the folder that was given, without the ending.
struct Input {
    fs::path path;
    fs::path stem;
};

// Takes the inputs below a folder, in sorted order.
void list_folder(const fs::path& folder, const BatchCommand& command, std::vector<Input>& inputs) {
    const std::size_t before_n = inputs.size();
    const auto is_wanted = [&](const fs::path& path) {
        return command.reads_sound ? has_sound_ending(path.string()) : path.extension() == ".npy";
    };
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error))
        if (entry->is_regular_file() && is_wanted(entry->path()))
            inputs.push_back(
                {entry->path(), entry->path().lexically_relative(folder).replace_extension()});
    std::sort(inputs.begin() + static_cast<std::ptrdiff_t>(before_n), inputs.end(),
              [](const Input& a, const Input& b) { return a.path < b.path; });
    if (error)
        throw Failure(Exit::input_failed, folder.string(), "cannot be listed: " + error.message(),
                      "", "make the folder and those below it readable");
    if (inputs.size() == before_n)
        throw Failure(Exit::input_failed, folder.string(),
                      std::string("holds no ") + (command.reads_sound ? "sound" : ".npy") + " file",
                      "", "give a folder with recordings, or files by name");
}

// What cannot be listed goes to `failures`.
std::vector<Input> list_inputs(const BatchOptions& options, const BatchCommand& command,
                               std::vector<Failure>& failures) {
    std::vector<Input> inputs;
    for (const std::string& given : options.inputs) {
        if (!fs::is_directory(given)) {
            inputs.push_back({given, fs::path(given).stem()});
            continue;
        }
        try {
            list_folder(given, command, inputs);
        } catch (const Failure& failure) {
            failures.push_back(failure);
        }
    }
    return inputs;
}

bool names_a_folder(const std::string& path) {
    return !path.empty() && (path.back() == '/' || fs::is_directory(path));
}

void check_ending(const std::string& option, const std::string& path,
                  const std::vector<std::string>& endings) {
    if (path.empty() || is_stream(path)) return;
    const std::string ending = fs::path(path).extension().string();
    if (std::find(endings.begin(), endings.end(), ending) != endings.end()) return;
    const auto same = [](const std::string& text) { return text; };
    throw Failure(Exit::usage, option,
                  path + " has " + (ending.empty() ? "no ending" : "the ending " + ending),
                  "known here: " + joined(endings, " ", same),
                  "choose one of these, or end the name of a folder in /");
}

// What the output is; a stream may be what --format says.
std::string ending_of(const std::string& output, const BatchOptions& options,
                      const BatchCommand& command) {
    const std::string ending = fs::path(output).extension().string();
    const auto& known = command.formats;
    if (!is_stream(output) || std::find(known.begin(), known.end(), ending) != known.end())
        return ending;
    return options.format.empty() ? known.front() : "." + options.format;
}

void refuse_collisions(const std::vector<Job>& jobs) {
    std::map<std::string, std::string> input_of;
    for (const Job& job : jobs)
        for (const std::string& made : {job.output, job.picture}) {
            if (made.empty()) continue;
            const auto [earlier, is_new] =
                input_of.emplace(fs::weakly_canonical(made).string(), job.input);
            if (!is_new)
                throw usage(made, "would be made of " + earlier->second + " and of " + job.input,
                            "put the outputs into different folders or rename an input");
        }
}

bool exists(const std::string& path) {
    return !path.empty() && !is_stream(path) && fs::exists(path);
}

}  // namespace

Plan make_plan(const BatchOptions& options, const BatchCommand& command) {
    Plan plan;
    const std::vector<Input> inputs = list_inputs(options, command, plan.failures);
    plan.is_single = options.inputs.size() == 1 && !fs::is_directory(options.inputs.front()) &&
                     !names_a_folder(options.output) && !names_a_folder(options.picture);
    if (options.force && options.skip_existing)
        throw usage("--force", "contradicts --skip-existing", "give one of them");
    if (options.inputs.size() > 1 &&
        std::count(options.inputs.begin(), options.inputs.end(), "-") > 0)
        throw usage("-", "stands beside other inputs", "read the standard input alone");
    if (options.output.empty() && options.picture.empty())
        throw usage(
            "-o", "no output is named",
            "give -o with a name ending in " + command.formats.front() + ", or with a folder");

    if (plan.is_single) {
        check_ending("-o", options.output, command.formats);
        check_ending("--picture", options.picture, {".png"});
        plan.jobs.push_back({inputs.front().path.string(), options.output, options.picture,
                             ending_of(options.output, options, command)});
    } else {
        const std::string ending =
            options.format.empty() ? command.formats.front() : "." + options.format;
        for (const std::string& folder : {options.output, options.picture})
            if (!folder.empty() && !names_a_folder(folder) && fs::path(folder).has_extension())
                throw usage(folder,
                            "is the name of one file, for " + counted(inputs.size(), "input"),
                            "name a folder, with / at its end");
        const auto below = [](const std::string& folder, const fs::path& stem,
                              const std::string& end) {
            return folder.empty() ? std::string() : (fs::path(folder) / stem).string() + end;
        };
        for (const Input& input : inputs)
            plan.jobs.push_back({input.path.string(), below(options.output, input.stem, ending),
                                 below(options.picture, input.stem, ".png"),
                                 options.output.empty() ? "" : ending});
    }
    refuse_collisions(plan.jobs);

    if (options.skip_existing) {
        for (Job& job : plan.jobs) {
            if (exists(job.output)) job.output = job.ending = "";
            if (exists(job.picture)) job.picture.clear();
        }
        const auto is_made = [](const Job& job) {
            return job.output.empty() && job.picture.empty();
        };
        const auto made = std::remove_if(plan.jobs.begin(), plan.jobs.end(), is_made);
        plan.skipped_n = static_cast<std::size_t>(plan.jobs.end() - made);
        plan.jobs.erase(made, plan.jobs.end());
    }
    return plan;
}

}  // namespace sorvo_tool
