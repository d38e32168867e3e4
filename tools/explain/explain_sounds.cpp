#include <numeric>

#include "explain/code.h"
#include "explain/explanation.h"

namespace sorvo_tool {
namespace {

std::string coefficients(const std::vector<float>& b, const std::vector<float>& a) {
    return "b, a = [" + list_of(b) + "], [" + list_of(a) + "]\n";
}

std::string c_coefficients(const std::vector<float>& b, const std::vector<float>& a) {
    return "const float b[] = {" + list_of(b, true) + "}, a[] = {" + list_of(a, true) + "};\n";
}

std::string sections(const FilterDesign& design) {
    std::string rows;
    for (const Section& section : design.sections)
        rows += (rows.empty() ? "[" : ",\n       [") + list_of(section.b()) + ", " +
                list_of(section.a()) + "]";
    return "sos = [" + rows + "]\n";
}

Explanation explain_cascade(const FilterSettings& filter) {
    const auto python = [&](const std::string& module, const std::string& scale) {
        const std::string begin = sections(filter.design) + "z = " + module + ".sosfilt(sos, y";
        if (!filter.settled) return begin + ")";
        return begin + ", zi=" + module + ".sosfilt_zi(sos)" + scale + ")[0]";
    };
    return {{"C", "/* sorvoAudioLinerFilter() for each section, from y to z, then in place */", ""},
            {"Python", python("sorvo_audio", " * y[:1]"), ""},
            {"scipy", python("scipy.signal", " * y[0]"), "rounding to float behind every section"}};
}

Explanation explain_cascade(const ZeroPhaseSettings& filter) {
    std::vector<std::string> arguments{"sos", "y"};
    if (*filter.pad_type == SORVO_AUDIO_PAD_NONE) {
        arguments.emplace_back("padtype=None");
    } else {
        arguments.push_back(keyword("padtype", word_of(pad_choices, *filter.pad_type)));
        arguments.push_back(keyword("padlen", *filter.pad_n));
    }
    const std::string begin = sections(filter.design);
    return {{"C",
             "/* y extended at both ends; sorvoAudioLinerFilter() for each section, from the state "
             "of\n   sorvoAudioGetLinerFilterZiCoef() times the gain so far and the first sample; "
             "reversed;\n   the same again */",
             ""},
            {"Python", begin + call("z = sorvo_audio.sosfiltfilt", arguments), ""},
            {"scipy", begin + call("z = scipy.signal.sosfiltfilt", arguments),
             "rounding to float behind every section"}};
}

}  // namespace

Explanation explain_resample(int from_rate, int to_rate) {
    const int divisor = std::gcd(from_rate, to_rate);
    const std::string up = std::to_string(to_rate / divisor);
    const std::string down = std::to_string(from_rate / divisor);
    const std::string from = std::to_string(from_rate);
    const std::string to = std::to_string(to_rate);
    const char* const zeros = "so that the end is complete";
    const std::string other_filter =
        "another filter: near the cut-off the levels differ" +
        std::string((to_rate / divisor) % 2 == 0 ? ", and times by half a step of the filter" : "");
    return {
        {"C",
         "/* y is followed by two zeros, " + std::string(zeros) + " */\n" +
             call("sorvoAudioGetResampleLen", {"&z_n", to, "y_n", from}) + ";\n" +
             call("sorvoAudioResample", {"z", "y", to, "z_n", from, "y_n + 2"}) + ";",
         ""},
        {"Python",
         "z = sorvo_audio.resample(np.append(y, np.zeros(2, np.float32)), orig_sr=" + from +
             ", target_sr=" + to + ")\nz = z[:-(-len(y) * " + up + " // " + down + ")]",
         ""},
        {"scipy",
         "up, down = " + up + ", " + down +
             "\nt = (np.arange(65 * up) - (65 * up - 1) / 2) / up\n"
             "cutoff = min(1, up / down)\n"
             "h = cutoff * np.sinc(cutoff * t) * (0.42 + 0.5 * np.cos(2 * np.pi * t / 65)\n"
             "                                    + 0.08 * np.cos(4 * np.pi * t / 65))\n"
             "z = scipy.signal.resample_poly(y, up, down, window=h / up)",
         "rounding in single precision"},
        {"librosa", call("z = librosa.resample", {"y", "orig_sr=" + from, "target_sr=" + to}),
         other_filter},
        {"torchaudio",
         call("z = torchaudio.functional.resample", {"torch.from_numpy(y)", from, to}) + ".numpy()",
         other_filter}};
}

Explanation explain(const FilterSettings& filter) {
    if (filter.design.is_cascade()) return explain_cascade(filter);
    const std::vector<float> b = filter.design.sections.front().b();
    const std::vector<float> a = filter.design.sections.front().a();
    const std::string b_n = std::to_string(b.size());
    const std::string a_n = std::to_string(a.size());
    const std::string zi_n = std::to_string(std::max(b.size(), a.size()) - 1);
    const bool is_settled = filter.settled && zi_n != "0";
    const std::string settled_c =
        is_settled ? call("sorvoAudioGetLinerFilterZiCoef", {"zi", "b", "a", zi_n, b_n, a_n}) +
                         ";\n/* each zi[i] times y[0] */\n"
                   : "";
    const auto python = [&](const std::string& module) {
        if (!is_settled) return coefficients(b, a) + "z = " + module + ".lfilter(b, a, y)";
        return coefficients(b, a) + "z = " + module + ".lfilter(b, a, y, zi=" + module +
               ".lfilter_zi(b, a) * y[0])[0]";
    };
    Explanation result{
        {"C",
         c_coefficients(b, a) + settled_c +
             call("sorvoAudioLinerFilter", {"z", "y", "b", "a", is_settled ? "zi" : "NULL", "y_n",
                                            "y_n", b_n, a_n, is_settled ? zi_n : "0"}) +
             ";",
         ""},
        {"Python", python("sorvo_audio"), ""},
        {"scipy", python("scipy.signal"), "rounding of the result to float"}};
    if (!is_settled && b.size() == a.size())
        result.push_back(
            {"torchaudio",
             coefficients(b, a) +
                 "z = torchaudio.functional.lfilter(torch.from_numpy(y), torch.tensor(a), "
                 "torch.tensor(b), clamp=False).numpy()",
             "it computes in single precision"});
    return result;
}

Explanation explain(const ZeroPhaseSettings& filter) {
    if (filter.design.is_cascade()) return explain_cascade(filter);
    const std::vector<float> b = filter.design.sections.front().b();
    const std::vector<float> a = filter.design.sections.front().a();
    const int pad_n = *filter.pad_n;
    const std::string word = word_of(pad_choices, *filter.pad_type);
    const auto python = [&](const std::string& module) {
        std::vector<std::string> arguments{"b", "a", "y"};
        if (*filter.pad_type == SORVO_AUDIO_PAD_NONE) {
            arguments.emplace_back("padtype=None");
        } else {
            arguments.push_back(keyword("padtype", word));
            arguments.push_back(keyword("padlen", pad_n));
        }
        return coefficients(b, a) + call("z = " + module + ".filtfilt", arguments);
    };
    return {{"C",
             c_coefficients(b, a) +
                 call("sorvoAudioFilterFilter",
                      {"z", "y", "b", "a", "y_n", "y_n", std::to_string(b.size()),
                       std::to_string(a.size()), c_pad(*filter.pad_type), std::to_string(pad_n)}) +
                 ";",
             ""},
            {"Python", python("sorvo_audio"), ""},
            {"scipy", python("scipy.signal"), "rounding of the result to float"}};
}

Explanation explain(const TrimSettings& trim) {
    const std::vector<std::string> arguments{"y", keyword("top_db", trim.top_db),
                                             keyword("frame_length", trim.frame_n),
                                             keyword("hop_length", trim.hop_n)};
    return {{"C",
             call("sorvoAudioGetNonSilentPos",
                  {"&pos", "&len", "y", "y_n", std::to_string(trim.frame_n),
                   std::to_string(trim.hop_n), literal(trim.top_db, true)}) +
                 ";",
             ""},
            {"Python", call("z, (start, end) = sorvo_audio.trim", arguments), ""},
            {"librosa", call("z, (start, end) = librosa.effects.trim", arguments),
             "beyond the ends it takes zeros, this program a reflection: the first and last frame "
             "may differ"}};
}

}  // namespace sorvo_tool
