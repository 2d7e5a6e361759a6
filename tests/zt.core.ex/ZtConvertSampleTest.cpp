// The sample rule and the channels on every path, against the reference and by hand.

#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <sstream>
#include <type_traits>

#include "ZtConvertTesting.h"

using namespace ZtTest;

// Caller settings of the FP control: four roundings; flushing none, results, inputs, both.
#if defined(__x86_64__)
#include <xmmintrin.h>
using TControl = unsigned int;
static TControl ReadControl() { return _mm_getcsr(); }
static void WriteControl(TControl c) { _mm_setcsr(c); }
constexpr TControl kStatus = 0x3F, kDefault = 0x1F80;
constexpr TControl kRounding[] = {0u << 13, 1u << 13, 2u << 13, 3u << 13};
constexpr TControl kFlushes[] = {0, 0x8000, 0x40, 0x8040};  // FTZ, DAZ
#elif defined(__aarch64__)
using TControl = std::uint64_t;
static TControl ReadControl() {
  TControl c;
  __asm__ __volatile__("mrs %0, fpcr" : "=r"(c) : : "memory");
  return c;
}
static void WriteControl(TControl c) { __asm__ __volatile__("msr fpcr, %0" : : "r"(c) : "memory"); }
constexpr TControl kStatus = 0, kDefault = 0;
constexpr TControl kRounding[] = {0u << 22, 2u << 22, 1u << 22, 3u << 22};
constexpr TControl kFlushes[] = {0, 1u << 24, 1u << 25, 3u << 24};  // FZ, DN
#else
using TControl = unsigned int;
static TControl ReadControl() { return 0; }
static void WriteControl(TControl) {}
constexpr TControl kStatus = 0, kDefault = 0, kRounding[] = {0}, kFlushes[] = {0};
#endif

namespace {

constexpr EDataType::ID B = EDataType::Byte, UB = EDataType::UByte, S = EDataType::Short,
                        US = EDataType::UShort, I = EDataType::Int, UI = EDataType::UInt,
                        FL = EDataType::Float, D = EDataType::Double;
using P = EPixelType;

// Every type pair and run on every path under `settings` caller settings, which stay.
void ExpectRunsMatch(std::size_t samples, std::size_t settings) {
  for (const auto& sd : kDataTypes) {
    const Bytes source = SamplesOf(sd.type, samples);
    const unsigned n = unsigned(source.size() / std::size_t(sd.bytes));
    const std::pair<EPixelType::ID, unsigned> runs[] = {
        {P::Lum, 13}, {P::Lum, n}, {P::RGB, 5}, {P::RGB, n / 3}};
    for (const auto& td : kDataTypes) {
      for (const auto& [from, pixels] : runs) {
        const EPixelType::ID to = from == P::Lum ? P::Lum : P::LumA;
        const Bytes expected =
            ZtConvertRef::ConvertImage(to, td.type, from, sd.type, pixels, source.data());
        for (EPath path : Paths()) {
          for (std::size_t setting = 0; setting < settings; ++setting) {
            const TControl caller = kDefault | kRounding[setting / std::size(kFlushes)] |
                                    kFlushes[setting % std::size(kFlushes)];
            Bytes target(expected.size());
            WriteControl(caller);
            const bool ok = ConvertOnPath(path, target.data(), source.data(),
                                          Zt::CZtImageFormat(int(pixels), 1, to, td.type),
                                          Zt::CZtImageFormat(int(pixels), 1, from, sd.type));
            const TControl after = ReadControl();
            WriteControl(kDefault);
            const std::string context = Describe(from, sd.type, to, td.type) + " x" +
                                        std::to_string(pixels) + " " + PathName(path) + " #" +
                                        std::to_string(setting);
            ASSERT_TRUE(ok) << context;
            ASSERT_EQ(caller, after & ~kStatus) << "caller's settings changed: " << context;
            ASSERT_TRUE(target == expected) << "results differ: " << context;
          }
        }
      }
    }
  }
}

// The log names the paths run, so that a run shows what it covered.
TEST(ConvertSample, DenseSamplesOfEveryTypeThroughEveryTarget) {
  for (EPath path : Paths()) std::printf("conversion path run: %s\n", PathName(path));
  ExpectRunsMatch(60000, 1);
}

// valgrind models none of these settings: the memcheck runs leave this out.
TEST(ConvertEnvironment, ResultsAreTheRulesUnderAnyCallerSettings) {
  ExpectRunsMatch(9000, std::size(kRounding) * std::size(kFlushes));
}

// Float to nine digits, Double exact; a target of All: one sample in B, UB, S, US, I, UI, FL, D.
constexpr EDataType::ID All = EDataType::ID(0);
struct FixedRow {
  EDataType::ID from, to;
  const char* text;  // "source samples > expected samples"
  EPixelType::ID sp = P::Lum, tp = P::Lum;
};

const FixedRow kFixed[] = {
    // Samples of each type in every type.
    {B, All, "-1 > -1 0 -256 0 -16777216 0 -0.0078125 -0.0078125"},
    {B, All, "64 > 64 128 16512 33025 1082196483 2164392967 0.503937006 0.5039370078740157"},
    {UB, All, "128 > 63 128 16447 32896 1077952575 2155905152 0.501960814 0.5019607843137255"},
    {S, All, "16384 > 63 127 16384 32768 1073774592 2147549185 0.500015259 0.500015259254738"},
    {US, All, "65534 > 126 254 32766 65534 2147450878 4294901758 0.999984741 0.9999847409781033"},
    {I, All, "-1 > 0 0 0 0 -1 0 -4.65661287e-10 -4.656612873077393e-10"},
    {I, All, "1073741824 > 63 127 16383 32767 1073741824 2147483648 0.5 0.5000000002328306"},
    {UI, All, "2147483648 > 63 127 16383 32767 1073741823 2147483648 0.5 0.5000000001164153"},
    {FL, All, "-0.5 > -64 0 -16384 0 -1073741824 0 -0.5 -0.5"},
    {D, All, "0.75 > 95 191 24575 49151 1610612735 3221225471 0.75 0.75"},
    // Truncation, saturation of the scaled value, division, lost precision.
    {S, B, "16384 -16384 -255 -256 > 63 -64 0 -1"},
    {S, UB, "128 129 > 0 1"},
    {UI, I, "3 > 1"},
    {D, B, "1.5 -1.5 0.5 -0.1 > 127 -128 63 -12"},
    {I, FL, "-2147483647 2147483646 > -1 1"},
    {I, UI, "2147483646 > 4294967293"},
    {FL, I, "0.999 > 2145336191"},
    {D, I, "0.999 > 2145336163"},
    // Infinities saturate, -0.0 and NaN give 0 (NaN: INT32_MIN in Int); Float does not clamp.
    {D, All, "inf > 127 255 32767 65535 2147483647 4294967295 inf inf"},
    {D, All, "-inf > -128 0 -32768 0 -2147483648 0 -inf -inf"},
    {D, All, "-0.0 > 0 0 0 0 0 0 -0.0 -0.0"},
    {D, All, "nan > 0 0 0 0 -2147483648 0 nan nan"},
    {FL, All, "inf > 127 255 32767 65535 2147483647 4294967295 inf inf"},
    {FL, All, "-inf > -128 0 -32768 0 -2147483648 0 -inf -inf"},
    {FL, All, "-0.0 > 0 0 0 0 0 0 -0.0 -0.0"},
    {FL, All, "nan > 0 0 0 0 -2147483648 0 nan nan"},
    {D, FL, "1e300 -1e300 1e20 1e-46 -1e-46 4.9e-324 > inf -inf 1e20 0 -0 0"},
    {D, I, "4.9e-324 -4.9e-324 2.2e-308 > 0 0 0"},
    {FL, D,
     "1e-45 -1e-45 1.17549435e-38 > 1.401298464324817e-45 -1.401298464324817e-45 "
     "1.1754943508222875e-38"},
    // Luminance is red, the fill the target's top, alpha a sample, Bayer luminance.
    {D, D, "0.1 0.2 0.4 > 0.1", P::RGB, P::Lum},
    {D, D, "0.1 0.2 0.4 > 0.4", P::BGR, P::Lum},
    {UB, FL, "255 0 128 > 0.501960814 0 1 1", P::RGB, P::BGRA},
    {S, B, "-1 > 0 127", P::Lum, P::LumA},
    {FL, B, "0.5 0.25 0.75 0 0.5 0.25 0.75 2 > 63 0 63 127", P::RGBA, P::LumA},
    {UB, UB, "7 9 > 7 7 7 9", P::LumA, P::RGBA},
    {US, UB, "65535 > 255 255 255", P::BayerRG, P::RGB}};

// Samples of `type` from words of text up to ">" (or only one) to raw bytes.
Bytes Parse(EDataType::ID type, std::istream& in, bool one = false) {
  Bytes bytes;
  for (std::string word; (!one || bytes.empty()) && in >> word && word != ">";) {
    // Float and Double straight from the text: valgrind keeps long double to 64 bits.
    ZtConvertRef::WithSampleType(type, [&](auto t) {
      using T = decltype(t);
      if constexpr (std::is_same_v<T, float>) {
        Append(bytes, std::strtof(word.c_str(), nullptr));
      } else {
        Append(bytes, T(std::strtod(word.c_str(), nullptr)));
      }
    });
  }
  return bytes;
}

TEST(ConvertSample, ReferenceTablesWorkedExamplesSpecialValuesAndChannels) {
  for (const FixedRow& row : kFixed) {
    std::istringstream in(row.text);
    const Bytes source = Parse(row.from, in);
    const unsigned count =
        unsigned(source.size() / std::size_t(SampleBytes(row.from) * Components(row.sp)));
    for (const auto& to : kDataTypes) {
      if (row.to != All && row.to != to.type) continue;
      const Bytes expected = Parse(to.type, in, row.to == All);
      ASSERT_EQ(expected.size(), count * std::size_t(to.bytes * Components(row.tp))) << row.text;
      EXPECT_TRUE(MatchesReference(expected, row.tp, to.type, row.sp, row.from, count,
                                   source.data(), false))
          << row.text;
    }
  }
}

// How many samples survive a trip through another type and back.
TEST(ConvertSample, RoundTripsLoseExactlyWhatTheRuleLoses) {
  const std::tuple<EDataType::ID, EDataType::ID, unsigned> trips[] = {
      {UB, D, 256},  {B, D, 256},   {S, D, 65536},   {US, D, 65536},  {UB, US, 256},
      {UB, UI, 256}, {UB, FL, 256}, {US, UI, 65536}, {US, FL, 32641}, {B, S, 130},
      {S, I, 32770}, {B, UB, 2},    {UB, B, 2}};
  for (const auto& [type, via, expected] : trips) {
    const Bytes source = SamplesOf(type, 0);
    const std::size_t size = std::size_t(SampleBytes(type));
    const unsigned count = unsigned(source.size() / size);
    for (EPath path : Paths()) {
      const unsigned char* back = RunGuarded(
          path, P::Lum, type, P::Lum, via, count,
          RunGuarded(path, P::Lum, via, P::Lum, type, count, source.data(), false), false);
      unsigned survivors = 0;
      for (std::size_t i = 0; back != nullptr && i < source.size(); i += size)
        survivors += std::memcmp(&back[i], &source[i], size) == 0 ? 1u : 0u;
      EXPECT_EQ(survivors, expected)
          << Describe(P::Lum, type, P::Lum, via) << " and back, " << PathName(path);
    }
  }
}

// On every input: Int/UInt quotients against the baseline; Float to narrow types against AVX2.
TEST(VectorRoutes, EqualTheirReferenceOnEveryInput) {
  const std::tuple<EDataType::ID, EDataType::ID, std::uint64_t, std::uint64_t, EPath> rows[] = {
      {I, D, 1, 0x80000000u, EPath::Baseline}, {UI, D, 1, 0x100000000u, EPath::Baseline},
      {FL, B, 0, 0x100000000u, EPath::Avx2},   {FL, UB, 0, 0x100000000u, EPath::Avx2},
      {FL, S, 0, 0x100000000u, EPath::Avx2},   {FL, US, 0, 0x100000000u, EPath::Avx2}};
  const std::vector<EPath> paths = Paths();
  constexpr unsigned kChunk = 1u << 16;  // stays in the cache
  std::vector<std::uint32_t> source(kChunk);
  Bytes expected(kChunk * 8), actual(kChunk * 8);
  for (const auto& [from, to, first, end, reference] : rows) {
    if (std::find(paths.begin(), paths.end(), reference) == paths.end()) continue;
    for (EPath path : paths) {
      if (path == reference || path == EPath::Baseline) continue;
      SCOPED_TRACE(Describe(P::Lum, from, P::Lum, to) + " on " + PathName(path) + " against " +
                   PathName(reference));
      for (std::uint64_t begin = first; begin < end; begin += kChunk) {
        const unsigned count = unsigned(std::min<std::uint64_t>(kChunk, end - begin));
        for (unsigned i = 0; i < count; ++i) source[i] = std::uint32_t(begin + i);
        const Zt::CZtImageFormat sourceFormat(int(count), 1, P::Lum, from);
        const Zt::CZtImageFormat targetFormat(int(count), 1, P::Lum, to);
        ConvertOnPath(reference, expected.data(), source.data(), targetFormat, sourceFormat);
        ConvertOnPath(path, actual.data(), source.data(), targetFormat, sourceFormat);
        ASSERT_EQ(std::memcmp(actual.data(), expected.data(), count * std::size_t(SampleBytes(to))),
                  0)
            << "in the inputs from " << begin;
      }
    }
  }
}

}  // namespace
