#include "support/batch.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <thread>

#include "support/options.h"
#include "support/output_file.h"
#include "support/plan.h"
#include "support/progress.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

// The first Ctrl-C lets the running jobs end, so that nothing half-made stays; a second one kills.
volatile std::sig_atomic_t interrupted = 0;

void stop_softly() {
    struct sigaction action {};
    action.sa_handler = [](int) { interrupted = 1; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void refuse_existing(const std::string& path) {
    if (!path.empty() && !is_stream(path) && std::filesystem::exists(path))
        throw Failure(Exit::cannot_write, path, "exists already and is kept", "",
                      "give --force to replace it or --skip-existing to go on without it");
}

// Runs one job; every exception becomes a Failure about its input.
std::optional<Failure> run_job(const BatchCommand& command, bool force, const Job& job,
                               Report& report) {
    try {
        if (!force) {
            refuse_existing(job.output);
            refuse_existing(job.picture);
        }
        report = command.run(job);
        return std::nullopt;
    } catch (const Failure& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return Failure(Exit::input_failed, job.input, "needs more memory than can be had", "",
                       "split the file, or lower -j");
    } catch (const std::exception& error) {
        return Failure(Exit::internal, job.input, error.what(), "",
                       "please report this with the command line");
    }
}

Facts json_facts(const BatchCommand& command, const Job& job, const Report& report,
                 const std::optional<Failure>& failure) {
    Facts facts;
    facts.add("command", command.name);
    facts.add("input", job.input);
    facts.add("status", std::string(failure                  ? "failed"
                                    : report.defects.empty() ? "done"
                                                             : "not_finite"));
    if (failure) {
        facts.add("exit_code", number(static_cast<int>(failure->exit())));
        facts.add("subject", failure->subject());
        facts.add("problem", failure->problem());
        facts.add("limit", failure->limit());
        facts.add("advice", failure->advice());
    } else {
        if (!job.output.empty()) facts.add("output", job.output);
        if (!job.picture.empty()) facts.add("picture", job.picture);
        facts.append(report.facts);
        facts.add("notes", report.notes);
        facts.add("defects", report.defects);
    }
    return facts;
}

// Reports go where the output does not.
std::FILE* report_channel(const Job& job) {
    return is_stream(job.output) || is_stream(job.picture) ? stderr : stdout;
}

void print_report(const Job& job, const Report& report) {
    std::FILE* const channel = report_channel(job);
    std::fprintf(channel, "%s\n%s", job.input.c_str(), report.facts.as_lines().c_str());
    for (const std::string& note : report.notes)
        std::fprintf(channel, "  note: %s\n", note.c_str());
    for (const std::string& made : {job.output, job.picture})
        if (!made.empty()) std::fprintf(channel, "  wrote %s\n", made.c_str());
}

// Collects what the threads report.
class Results {
  public:
    Results(const BatchOptions& options, const BatchCommand& command, const Plan& plan)
        : options_(options),
          command_(command),
          plan_(plan),
          progress_(command.name, plan.jobs.size()),
          failures_(plan.failures) {
        if (options.json)
            for (const Failure& failure : plan.failures)
                print_json({failure.subject(), "", "", ""}, {}, failure);
    }

    void take(const Job& job, const Report& report, const std::optional<Failure>& failure) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (options_.json)
            print_json(job, report, failure);
        else if (plan_.is_single && !failure && !options_.quiet)
            print_report(job, report);
        if (failure) failures_.push_back(*failure);
        for (const std::string& note : report.notes) noted_[note].push_back(job.input);
        if (!report.defects.empty())
            failures_.emplace_back(
                Exit::input_failed, job.input,
                "its output holds infinite values or NaN: " +
                    joined(report.defects, ", ", [](const auto& defect) { return defect; }),
                "", "look for the cause in the sound, or in a filter that is not stable");
        defective_n_ += !report.defects.empty();
        ++ended_n_;
        done_n_ += !failure;
        if (!plan_.is_single && !options_.quiet)
            progress_.job_ended(report.seconds, failure.has_value());
    }

    Exit summarise() {
        const std::size_t left_n = plan_.jobs.size() - ended_n_;
        if (options_.quiet) {
            // Failures alone are said.
        } else if (!plan_.is_single) {
            progress_.clear();
            for (const auto& [note, inputs] : noted_)
                std::fprintf(stderr, "note: %s: %s\n",
                             inputs.size() == 1 ? inputs.front().c_str()
                                                : counted(inputs.size(), "input").c_str(),
                             note.c_str());
            std::fprintf(stderr,
                         "%s: %zu done, %zu skipped, %zu failed in %.1f s (%.0f x real time)\n",
                         command_.name.c_str(), done_n_, plan_.skipped_n,
                         ended_n_ + plan_.failures.size() - done_n_, progress_.elapsed(),
                         progress_.times_real_time());
            if (defective_n_ > 0)
                std::fprintf(stderr, "%s: %s of those done not finite\n", command_.name.c_str(),
                             counted(defective_n_, "result").c_str());
        } else if (plan_.skipped_n > 0 && !options_.json) {
            std::printf("%s: skipped, its outputs exist\n", options_.inputs.front().c_str());
        }
        Exit exit = Exit::done;
        for (const Failure& failure : failures_) {
            std::fprintf(stderr, "sorvo-audio %s: %s\n", command_.name.c_str(), failure.what());
            exit = worse(exit, failure.exit());
        }
        if (left_n > 0) {
            std::fprintf(stderr,
                         "sorvo-audio %s: interrupted, %s not begun; run it again with "
                         "--skip-existing to go on\n",
                         command_.name.c_str(), counted(left_n, "input").c_str());
            exit = worse(exit, Exit::input_failed);
        }
        return exit;
    }

  private:
    void print_json(const Job& job, const Report& report, const std::optional<Failure>& failure) {
        std::fprintf(report_channel(job), "%s\n",
                     json_facts(command_, job, report, failure).as_json().c_str());
    }

    const BatchOptions& options_;
    const BatchCommand& command_;
    const Plan& plan_;
    Progress progress_;
    std::mutex mutex_;
    std::vector<Failure> failures_;
    std::map<std::string, std::vector<std::string>> noted_;  // inputs by their note
    std::size_t ended_n_ = 0;
    std::size_t done_n_ = 0;  // without those that failed
    std::size_t defective_n_ = 0;
};

}  // namespace

void add_batch_options(CLI::App& app, BatchOptions& options, const BatchCommand& command) {
    const auto word = [](const std::string& ending) { return ending.substr(1); };
    const std::string formats = joined(command.formats, "|", word);
    app.add_option("INPUT", options.inputs,
                   std::string(command.reads_sound ? "Sound files" : ".npy files") +
                       ", folders of them, or - for a pipe")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", options.output,
                   "File to write (" + formats + "), a folder for many inputs, or - for a pipe")
        ->type_name("PATH");
    if (command.draws_pictures)
        app.add_option("--picture", options.picture, "Picture to draw (png), or a folder")
            ->type_name("PATH");
    std::vector<std::string> words;
    for (const std::string& ending : command.formats) words.push_back(word(ending));
    app.add_option("--format", options.format,
                   "Kind of the files in an output folder, and of - [" + words.front() + "]")
        ->check(CLI::IsMember(words).description(""))
        ->type_name(formats);
    app.add_option("-j,--jobs", options.thread_n, "Inputs worked on at once [1]")
        ->check(at_least(1))
        ->check(at_most(1024))
        ->type_name("N");
    app.add_flag("--force", options.force, "Replace files that exist");
    app.add_flag("--skip-existing", options.skip_existing,
                 "Leave out what exists already, to go on after an interruption");
    if (command.reads_sound) {
        app.add_option("--rate", options.reading.rate,
                       "Sample rate of raw floats and .npy; of others instead of the header's")
            ->check(at_least(1))
            ->type_name("HZ");
        app.add_option("--channels", options.reading.channel_n,
                       "Channels of raw floats, which lie side by side [1]")
            ->check(at_least(1))
            ->check(at_most(1024))
            ->type_name("N");
        app.add_flag("--allow-truncated", options.reading.allow_truncated,
                     "Take what there is of a file that is shorter than its header says");
    }
    app.add_flag("--json", options.json, "Print one JSON object a line for each input");
    app.add_flag("-q,--quiet", options.quiet, "Print neither reports nor progress, only errors");
}

void add_ratio_option(CLI::App& app, ReadingOptions& options) {
    app.add_option("--max-ratio", options.most_ratio,
                   "Largest factor between sample rates, since headers may be wrong [64]")
        ->check(at_least(1))
        ->type_name("R");
}

Exit run_batch(const BatchOptions& options, const BatchCommand& command) {
    const Plan plan = make_plan(options, command);
    Results results(options, command, plan);
    stop_softly();

    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        while (interrupted == 0) {
            const std::size_t i = next++;
            if (i >= plan.jobs.size()) break;
            Report report;
            const auto failure = run_job(command, options.force, plan.jobs[i], report);
            results.take(plan.jobs[i], report, failure);
        }
    };
    const std::size_t thread_n =
        std::min(static_cast<std::size_t>(options.thread_n), plan.jobs.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 1; i < thread_n; ++i) threads.emplace_back(work);
    work();
    for (std::thread& thread : threads) thread.join();
    return results.summarise();
}

}  // namespace sorvo_tool
