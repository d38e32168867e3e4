// Every argument check of every export: its status, its message, its place in the order, and that
// the outputs stay as they were.
//
// No exception leaves the library, so messages are read where they are thrown: the linker puts this
// program's __wrap___cxa_throw in front of the runtime's function.

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

#include "sorvo_audio.h"
#include "support/guarded.h"
#include "util/exceptions.h"

namespace {

const std::string nothing_thrown = "(nothing thrown)";
std::string thrown = nothing_thrown;

}  // namespace

using Destructor = void (*)(void*);
extern "C" {
[[noreturn]] void __real___cxa_throw(void* object, std::type_info* type, Destructor destructor);
[[noreturn]] void __wrap___cxa_throw(void* object, std::type_info* type, Destructor destructor);
}

void __wrap___cxa_throw(void* object, std::type_info* type, Destructor destructor) {
    if (*type == typeid(sorvo::audio::SorvoInvalidArgument)) {
        thrown = static_cast<sorvo::audio::SorvoInvalidArgument*>(object)->what();
    }
    __real___cxa_throw(object, type, destructor);
}

namespace {

using sorvo::test::Guarded;

constexpr std::size_t room = 4096;
Guarded<float> out_buffer(room);
Guarded<float> out2_buffer(room);
Guarded<int> int_buffer(1);
Guarded<int> int2_buffer(1);
float* const out = out_buffer.data();
float* const out2 = out2_buffer.data();
int* const int_out = int_buffer.data();
int* const int_out2 = int2_buffer.data();

// Ones: valid samples, spectra and coefficients alike.
const std::vector<float> ones(room, 1.0F);
const float* const in = ones.data();
const float nan = std::nanf("");

struct Entry {
    std::string name;
    std::function<void()> verify;
};

/// An export with arguments that it accepts, and its checks in their order.
template <class... P>
class Export {
  public:
    Export(std::string name, int (*function)(P...), P... good)
        : name_(std::move(name)), function_(function), good_(good...) {}

    template <std::size_t... i>
    Export null() {
        (checks_.push_back({i, [](Arguments& a) { std::get<i>(a) = nullptr; }, nothing_thrown}),
         ...);
        return *this;
    }
    template <std::size_t i>
    Export bad(std::vector<std::tuple_element_t<i, std::tuple<P...>>> values,
               const std::string& message) {
        for (const auto value : values) {
            checks_.push_back({i, [=](Arguments& a) { std::get<i>(a) = value; }, message});
        }
        return *this;
    }
    template <std::size_t i>
    Export accepts(std::vector<std::tuple_element_t<i, std::tuple<P...>>> values) {
        for (const auto value : values) {
            accepted_.push_back([=](Arguments& a) { std::get<i>(a) = value; });
        }
        return *this;
    }
    template <std::size_t i>
    Export count(const std::string& message) {
        return bad<i>({0, -1, INT_MIN}, message);
    }

    operator Entry() const {
        return {name_, [*this] { verify(); }};
    }

  private:
    using Arguments = std::tuple<P...>;
    using Change = std::function<void(Arguments&)>;
    struct Check {
        std::size_t argument;
        Change spoil;
        std::string message;
    };

    int call(const Arguments& arguments) const {
        for (Guarded<float>* buffer : {&out_buffer, &out2_buffer}) buffer->reset();
        for (Guarded<int>* buffer : {&int_buffer, &int2_buffer}) buffer->reset();
        thrown = nothing_thrown;
        return std::apply(function_, arguments);
    }

    void expect_refusal(const Arguments& arguments, const std::string& message) const {
        EXPECT_EQ(call(arguments), SORVO_AUDIO_ERROR_ARGUMENT);
        EXPECT_EQ(thrown, message);
        EXPECT_TRUE(out_buffer.untouched() && out2_buffer.untouched() && int_buffer.untouched() &&
                    int2_buffer.untouched());
    }

    void verify() const {
        for (std::size_t i = 0; i < checks_.size(); ++i) {
            Arguments one_bad = good_;
            checks_[i].spoil(one_bad);
            SCOPED_TRACE(testing::Message() << "check " << i << ": " << checks_[i].message);
            expect_refusal(one_bad, checks_[i].message);
            for (std::size_t later = i + 1; later < checks_.size(); ++later) {
                if (checks_[later].argument == checks_[i].argument) continue;
                Arguments two_bad = one_bad;
                checks_[later].spoil(two_bad);
                SCOPED_TRACE(testing::Message()
                             << "and " << later << ": " << checks_[later].message);
                expect_refusal(two_bad, checks_[i].message);
            }
        }
        EXPECT_EQ(call(good_), SORVO_AUDIO_OK);
        for (const Change& change : accepted_) {
            Arguments changed = good_;
            change(changed);
            EXPECT_EQ(call(changed), SORVO_AUDIO_OK);
            EXPECT_EQ(thrown, nothing_thrown);
        }
    }

    std::string name_;
    int (*function_)(P...);
    Arguments good_;
    std::vector<Check> checks_;
    std::vector<Change> accepted_;
};

template <class... P>
Export<P...> of(const char* name, int (*function)(P...), std::common_type_t<P>... good) {
    return {name, function, good...};
}

const std::vector<int> not_1_2 = {0, 3, -1};
const std::vector<int> not_0_1 = {2, -1};
const std::vector<int> not_0_1_2 = {3, -1};

// clang-format off
std::vector<Entry> table() {
    return {
        of("FFT", sorvoAudioFFT, out, in, 8).null<0, 1>().count<2>("Invalid fft_n size."),
        of("IFFT", sorvoAudioIFFT, out, in, 8).null<0, 1>().count<2>("Invalid fft_n size."),
        of("GetWindow", sorvoAudioGetWindow, out, 8, 1).null<0>()
            .count<1>("Invalid window_n size.").bad<2>(not_1_2, "Invalid win_type format.").accepts<2>({2}),
        of("GetFrameLen", sorvoAudioGetFrameLen, int_out, 100, 16, 4, 0).null<0>()
            .count<1>("Invalid sample_n value.").count<2>("Invalid fft_n value.")
            .bad<3>({-1}, "Invalid hop_n value.").bad<4>(not_0_1_2, "Invalid center format.")
            .accepts<3>({0}).accepts<4>({1, 2}),
        of("GetSpectrogram", sorvoAudioGetSpectrogram, out, in, 64, 16, 4, 16, 1, 13, 0, 1, 0).null<0, 1>()
            .count<2>("Invalid sample_n size.").count<3>("Invalid fft_n value.")
            .bad<4>({-1}, "Invalid hop_n value.").count<5>("Invalid win_n value.")
            .bad<6>(not_1_2, "Invalid win_type format.").count<7>("Invalid max_frame_n size.")
            .bad<8>(not_0_1_2, "Invalid center format.").bad<9>({-1e-30F, -INFINITY}, "Invalid power value.")
            .bad<10>(not_0_1_2, "Invalid norm_type format.")
            .accepts<4>({0}).accepts<6>({2}).accepts<8>({1, 2}).accepts<9>({0, -0.0F, nan}).accepts<10>({1, 2}),
        of("GetInverseSpectrogram", sorvoAudioGetInverseSpectrogram, out, in, 5, 9, 4, 16, 1, 32, 0, 0).null<0, 1>()
            .count<2>("Invalid frame_n size.").count<3>("Invalid freq_n value.")
            .bad<4>({-1}, "Invalid hop_n value.").count<5>("Invalid win_n value.")
            .bad<6>(not_1_2, "Invalid win_type format.").count<7>("Invalid max_sample_n size.")
            .bad<8>(not_0_1_2, "Invalid center format.").bad<9>(not_0_1_2, "Invalid norm_type format.")
            .bad<3>({1}, "Invalid value of fft points.")
            .accepts<4>({0}).accepts<6>({2}).accepts<8>({1, 2}).accepts<9>({1, 2}),
        of("GetSampleLen", sorvoAudioGetSampleLen, int_out, 5, 9, 4, 0).null<0>()
            .count<1>("Invalid frame_n value.").count<2>("Invalid freq_n value")
            .bad<3>({-1}, "Invalid hop_n value.").bad<4>(not_0_1_2, "Invalid center format.")
            .accepts<2>({1}).accepts<3>({0}).accepts<4>({1, 2}),
        of("GetFBMatrix", sorvoAudioGetFBMatrix, out, 33, 100, 4000, 10, 8000, 0, 0).null<0>()
            .count<1>("Invalid freq_n value.").bad<2>({-1, -INFINITY}, "Invalid f_min value.")
            .bad<3>({-1}, "Invalid f_max value.").bad<3>({0, 50, 100}, "f_max must be greater than f_min.")
            .count<4>("Invalid mel_n size.").bad<4>({33, INT_MAX}, "mel_n must be lesser than freq_n.")
            .count<5>("Invalid sample_rate value.").bad<6>(not_0_1, "Invalid mel_norm format.")
            .bad<7>(not_0_1, "Invalid mel_formula format.")
            .accepts<2>({0, -0.0F, nan}).accepts<3>({9000, nan, INFINITY}).accepts<4>({32}).accepts<6>({1}).accepts<7>({1}),
        of("GetMelSpectrogram", sorvoAudioGetMelSpectrogram, out, in, 64, 8000, 16, 4, 16, 1, 13, 0, 2, 0, 100, 4000, 8, 0, 0).null<0, 1>()
            .count<2>("Invalid sample_n size.").count<3>("Invalid sample_rate value.")
            .count<4>("Invalid fft_n value.").bad<5>({-1}, "Invalid hop_n value.")
            .count<6>("Invalid win_n value.").bad<7>(not_1_2, "Invalid win_type format.")
            .count<8>("Invalid max_frame_n size.").bad<9>(not_0_1_2, "Invalid center format.")
            .bad<10>({-1e-30F}, "Invalid power value.").bad<11>(not_0_1_2, "Invalid fft_norm_type format.")
            .bad<12>({-1}, "Invalid f_min value.").bad<13>({-1}, "Invalid f_max value.")
            .bad<13>({0, 50, 100}, "f_max must be greater than f_min.").count<14>("Invalid mel_n size.")
            .bad<14>({9, INT_MAX}, "mel_n must be lesser than freq_n( fft_n / 2 + 1).")
            .bad<15>(not_0_1, "Invalid mel_norm format.").bad<16>(not_0_1, "Invalid mel_formula format.")
            .accepts<5>({0}).accepts<7>({2}).accepts<9>({1, 2}).accepts<10>({0, nan}).accepts<11>({1, 2})
            .accepts<12>({0, nan}).accepts<13>({9000, nan}).accepts<14>({1}).accepts<15>({1}).accepts<16>({1}),
        of("ConvertToMel", sorvoAudioConvertToMel, out, in, in, 9, 5, 4).null<0, 1, 2>()
            .count<3>("Invalid freq_n value.").count<5>("Invalid mel_n size.")
            .bad<5>({9}, "mel_n must be lesser than freq_n.").count<4>("Invalid frame_n value.").accepts<5>({8}),
        of("LinerFilter", sorvoAudioLinerFilter, out, in, in, in, nullptr, 8, 8, 3, 3, 0).null<0, 1, 2, 3>()
            .count<5>("Invalid dst_n size.").count<6>("Invalid src_n size.")
            .count<7>("Invalid n_coef_n size.").count<8>("Invalid n_coef_n size.")
            .accepts<4>({out2}).accepts<9>({-1}),
        of("GetLinerFilterZiCoef", sorvoAudioGetLinerFilterZiCoef, out, in, in, 2, 3, 3).null<0, 1, 2>()
            .count<3>("Invalid dst_n size.").count<4>("Invalid n_coef_n size.").count<5>("Invalid n_coef_n size."),
        of("FilterFilter", sorvoAudioFilterFilter, out, in, in, in, 8, 8, 3, 3, 1, 4).null<0, 1, 2, 3>()
            .count<4>("Invalid dst_n size.").count<5>("Invalid src_n size.")
            .count<6>("Invalid n_coef_n size.").count<7>("Invalid n_coef_n size.")
            .bad<8>({-1, 4}, "Invalid pad_type format.").bad<9>({-1}, "Invalid pad_len value.")
            .bad<9>({8, INT_MAX}, "Invalid pad_len value.").accepts<8>({0, 2, 3}).accepts<9>({0, 7}),
        of("Resample", sorvoAudioResample, out, in, 8000, 8, 16000, 16).null<0, 1>()
            .count<2>("Invalid dst_sample_rate value.").count<3>("Invalid dst_n size.")
            .count<4>("Invalid src_sample_rate value.").count<5>("Invalid src_n size."),
        of("GetResampleLen", sorvoAudioGetResampleLen, int_out, 8000, 16, 16000).null<0>()
            .count<1>("Invalid dst_sample_rate value.").count<3>("Invalid src_sample_rate value.")
            .count<2>("Invalid src_sample_n value."),
        of("ComplexNorm", sorvoAudioComplexNorm, out, in, 8, 2).null<0, 1>()
            .count<2>("Invalid src_n size.").bad<3>({0, -0.0F, -1}, "Invalid power value.").accepts<3>({nan, 1e-30F}),
        of("MagPhase", sorvoAudioMagPhase, out, out2, in, 4, 3, 0, 1).null<0, 1, 2>()
            .count<3>("Invalid freq_n value.").count<4>("Invalid frame_n value.")
            .bad<6>({-1e-30F}, "Invalid power value.").bad<5>(not_0_1, "Invalid phase_form format.")
            .accepts<5>({1}).accepts<6>({0, -0.0F, nan}),
        of("ConvertPowerToDB", sorvoAudioConvertPowerToDB, out, in, 8, 80).null<0, 1>()
            .count<2>("Invalid src_n size.").accepts<3>({-1, nan, INFINITY}),
        of("Log1p", sorvoAudioLog1p, out, in, 8).null<0, 1>().count<2>("Invalid src_n size."),
        of("Standardize", sorvoAudioStandardize, out, in, 8).null<0, 1>().count<2>("Invalid src_n size."),
        of("GetNonSilentPos", sorvoAudioGetNonSilentPos, int_out, int_out2, in, 64, 16, 4, 20).null<0, 1, 2>()
            .count<3>("Invalid sample_n size.").count<4>("Invalid win_n value.")
            .bad<5>({-1}, "Invalid hop_n value.").bad<6>({-1e-30F, -INFINITY}, "Invalid thr_db value.")
            .accepts<5>({0}).accepts<6>({0, -0.0F, nan}),
        of("FixFrameLen", sorvoAudioFixFrameLen, out, in, 3, 5, 4, 0).null<0, 1>()
            .count<2>("Invalid freq_n size.").count<3>("Invalid dst_frame_n size.")
            .count<4>("Invalid src_frame_n size."),
    };
}
// clang-format on

class Arguments : public testing::TestWithParam<Entry> {};

TEST_P(Arguments, AreCheckedInOrderBeforeAnythingIsWritten) {
    GetParam().verify();
}

INSTANTIATE_TEST_SUITE_P(Exports, Arguments, testing::ValuesIn(table()),
                         [](const auto& entry) { return entry.param.name; });

TEST(Arguments, TableHoldsEveryExport) {
    EXPECT_EQ(table().size(), 22U);
}

}  // namespace
