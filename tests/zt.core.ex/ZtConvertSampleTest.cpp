// The sample rule, through the conversion cells on every instruction-set
// path, against the reference written out in ZtConvertReference.h and against
// fixed values worked out by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "ZtConvertTesting.h"
#include "ZtSampleRule.h"

using namespace ZtTest;

namespace {

constexpr EDataType::ID kAllTypes[] = {EDataType::Byte,   EDataType::UByte, EDataType::Short,
                                       EDataType::UShort, EDataType::Int,   EDataType::UInt,
                                       EDataType::Float,  EDataType::Double};

// The samples as a Lum run through every target type.
void ExpectAllTargetsMatch(EDataType::ID from, const std::vector<unsigned char>& samples) {
  const unsigned count = unsigned(samples.size() / std::size_t(SampleBytes(from)));
  for (EDataType::ID to : kAllTypes) {
    EXPECT_TRUE(
        MatchesReference(EPixelType::Lum, to, EPixelType::Lum, from, count, samples.data()));
  }
}

template <class T>
std::vector<unsigned char> AsBytes(const std::vector<T>& values) {
  std::vector<unsigned char> bytes(values.size() * sizeof(T));
  std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

TEST(ConvertSample, EverySampleOfThe8And16BitTypesThroughEveryTarget) {
  for (EDataType::ID from : {EDataType::Byte, EDataType::UByte}) {
    std::vector<unsigned char> all(256);
    for (int i = 0; i < 256; ++i) all[std::size_t(i)] = static_cast<unsigned char>(i);
    ExpectAllTargetsMatch(from, all);
  }
  for (EDataType::ID from : {EDataType::Short, EDataType::UShort}) {
    std::vector<std::uint16_t> all(65536);
    for (unsigned i = 0; i < 65536; ++i) all[i] = static_cast<std::uint16_t>(i);
    ExpectAllTargetsMatch(from, AsBytes(all));
  }
}

TEST(ConvertSample, DenseSamplesOfThe32BitAndFloatingTypesThroughEveryTarget) {
  // Edges, their neighbours, powers of two around the 24-bit float mantissa,
  // and random values.
  std::vector<std::uint32_t> words;
  for (std::uint32_t edge : {0u, 1u, 2u, 3u, 0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0x80000001u,
                             0xFFFFFFFEu, 0xFFFFFFFFu, 0x00FFFFFFu, 0x01000000u, 0x01000001u,
                             0xFF000000u, 0xFEFFFFFFu, 65535u, 65536u, 0x8000u}) {
    words.push_back(edge);
  }
  const std::vector<unsigned char> random = RandomBytes(4 * 60000, 7);
  for (std::size_t i = 0; i < random.size(); i += 4) {
    std::uint32_t w;
    std::memcpy(&w, &random[i], 4);
    words.push_back(w);
  }
  ExpectAllTargetsMatch(EDataType::Int, AsBytes(words));
  ExpectAllTargetsMatch(EDataType::UInt, AsBytes(words));

  // Floating sources: random bit patterns (NaNs with payloads, infinities,
  // denormals included) and random values around the normalised range.
  std::vector<float> floats;
  std::vector<double> doubles;
  for (std::size_t i = 0; i < words.size(); ++i) {
    float f;
    std::memcpy(&f, &words[i], 4);
    floats.push_back(f);
    floats.push_back(float(std::int32_t(words[i])) * 0x1p-30f);
  }
  const std::vector<unsigned char> random64 = RandomBytes(8 * 60000, 11);
  for (std::size_t i = 0; i < random64.size(); i += 8) {
    double d;
    std::uint64_t bits;
    std::memcpy(&d, &random64[i], 8);
    std::memcpy(&bits, &random64[i], 8);
    doubles.push_back(d);
    doubles.push_back(double(std::int64_t(bits)) * 0x1p-62);
  }
  ExpectAllTargetsMatch(EDataType::Float, AsBytes(floats));
  ExpectAllTargetsMatch(EDataType::Double, AsBytes(doubles));
}

// --- Fixed values ----------------------------------------------------------
// Source samples and the expected target samples as text: integers exactly,
// Float to nine significant digits (which identify a float), Double to the
// shortest text that reads back as the same double.
struct FixedRow {
  EDataType::ID from;
  const char* samples;
  EDataType::ID to;
  const char* expected;
};

constexpr EDataType::ID B = EDataType::Byte, UB = EDataType::UByte, S = EDataType::Short,
                        US = EDataType::UShort, I = EDataType::Int, UI = EDataType::UInt,
                        FL = EDataType::Float, D = EDataType::Double;

const FixedRow kFixed[] = {
    // Reference tables: five samples of each source type to every other type.
    {B, "-128 -1 1 64 127", UB, "0 0 2 128 255"},
    {B, "-128 -1 1 64 127", S, "-32768 -256 258 16512 32767"},
    {B, "-128 -1 1 64 127", US, "0 0 516 33025 65535"},
    {B, "-128 -1 1 64 127", I, "-2147483648 -16777216 16909320 1082196483 2147483647"},
    {B, "-128 -1 1 64 127", UI, "0 0 33818640 2164392967 4294967295"},
    {B, "-128 -1 1 64 127", FL, "-1 -0.0078125 0.00787401572 0.503937006 1"},
    {B, "-128 -1 1 64 127", D, "-1.0 -0.0078125 0.007874015748031496 0.5039370078740157 1.0"},
    {UB, "1 2 3 128 255", B, "0 0 1 63 127"},
    {UB, "1 2 3 128 255", S, "128 256 385 16447 32767"},
    {UB, "1 2 3 128 255", US, "257 514 771 32896 65535"},
    {UB, "1 2 3 128 255", I, "8421504 16843008 25264513 1077952575 2147483647"},
    {UB, "1 2 3 128 255", UI, "16843009 33686018 50529027 2155905152 4294967295"},
    {UB, "1 2 3 128 255", FL, "0.00392156886 0.00784313772 0.0117647061 0.501960814 1"},
    {UB, "1 2 3 128 255", D,
     "0.00392156862745098 0.00784313725490196 0.011764705882352941 0.5019607843137255 1.0"},
    {S, "-32768 -1 1 16384 32767", B, "-128 0 0 63 127"},
    {S, "-32768 -1 1 16384 32767", UB, "0 0 0 127 255"},
    {S, "-32768 -1 1 16384 32767", US, "0 0 2 32768 65535"},
    {S, "-32768 -1 1 16384 32767", I, "-2147483648 -65536 65538 1073774592 2147483647"},
    {S, "-32768 -1 1 16384 32767", UI, "0 0 131076 2147549185 4294967295"},
    {S, "-32768 -1 1 16384 32767", FL, "-1 -3.05175781e-05 3.05185094e-05 0.500015259 1"},
    {S, "-32768 -1 1 16384 32767", D,
     "-1.0 -3.0517578125e-05 3.051850947599719e-05 0.500015259254738 1.0"},
    {US, "1 257 32768 65534 65535", B, "0 0 63 126 127"},
    {US, "1 257 32768 65534 65535", UB, "0 1 127 254 255"},
    {US, "1 257 32768 65534 65535", S, "0 128 16383 32766 32767"},
    {US, "1 257 32768 65534 65535", I, "32768 8421504 1073758207 2147450878 2147483647"},
    {US, "1 257 32768 65534 65535", UI, "65537 16843009 2147516416 4294901758 4294967295"},
    {US, "1 257 32768 65534 65535", FL, "1.52590219e-05 0.00392156886 0.500007629 0.999984741 1"},
    {US, "1 257 32768 65534 65535", D,
     "1.5259021896696422e-05 0.00392156862745098 0.5000076295109483 0.9999847409781033 1.0"},
    {I, "-2147483648 -1 1 1073741824 2147483647", B, "-128 0 0 63 127"},
    {I, "-2147483648 -1 1 1073741824 2147483647", UB, "0 0 0 127 255"},
    {I, "-2147483648 -1 1 1073741824 2147483647", S, "-32768 0 0 16383 32767"},
    {I, "-2147483648 -1 1 1073741824 2147483647", US, "0 0 0 32767 65535"},
    {I, "-2147483648 -1 1 1073741824 2147483647", UI, "0 0 2 2147483648 4294967295"},
    {I, "-2147483648 -1 1 1073741824 2147483647", FL, "-1 -4.65661287e-10 4.65661287e-10 0.5 1"},
    {I, "-2147483648 -1 1 1073741824 2147483647", D,
     "-1.0 -4.656612873077393e-10 4.656612875245797e-10 0.5000000002328306 1.0"},
    {UI, "1 65536 2147483648 4294967294 4294967295", B, "0 0 63 126 127"},
    {UI, "1 65536 2147483648 4294967294 4294967295", UB, "0 0 127 254 255"},
    {UI, "1 65536 2147483648 4294967294 4294967295", S, "0 0 16383 32766 32767"},
    {UI, "1 65536 2147483648 4294967294 4294967295", US, "0 0 32767 65534 65535"},
    {UI, "1 65536 2147483648 4294967294 4294967295", I, "0 32767 1073741823 2147483646 2147483647"},
    {UI, "1 65536 2147483648 4294967294 4294967295", FL, "2.32830644e-10 1.52587891e-05 0.5 1 1"},
    {UI, "1 65536 2147483648 4294967294 4294967295", D,
     "2.3283064370807974e-10 1.5258789066052714e-05 0.5000000001164153 0.9999999997671694 1.0"},
    {FL, "-1.0 -0.5 0.25 0.75 1.0", B, "-128 -64 31 95 127"},
    {FL, "-1.0 -0.5 0.25 0.75 1.0", UB, "0 0 63 191 255"},
    {FL, "-1.0 -0.5 0.25 0.75 1.0", S, "-32768 -16384 8191 24575 32767"},
    {FL, "-1.0 -0.5 0.25 0.75 1.0", US, "0 0 16383 49151 65535"},
    {FL, "-1.0 -0.5 0.25 0.75 1.0", I, "-2147483648 -1073741824 536870911 1610612735 2147483647"},
    {FL, "-1.0 -0.5 0.25 0.75 1.0", UI, "0 0 1073741823 3221225471 4294967295"},
    {FL, "-1.0 -0.5 0.25 0.75 1.0", D, "-1.0 -0.5 0.25 0.75 1.0"},
    {D, "-1.0 -0.5 0.25 0.75 1.0", B, "-128 -64 31 95 127"},
    {D, "-1.0 -0.5 0.25 0.75 1.0", UB, "0 0 63 191 255"},
    {D, "-1.0 -0.5 0.25 0.75 1.0", S, "-32768 -16384 8191 24575 32767"},
    {D, "-1.0 -0.5 0.25 0.75 1.0", US, "0 0 16383 49151 65535"},
    {D, "-1.0 -0.5 0.25 0.75 1.0", I, "-2147483648 -1073741824 536870911 1610612735 2147483647"},
    {D, "-1.0 -0.5 0.25 0.75 1.0", UI, "0 0 1073741823 3221225471 4294967295"},
    {D, "-1.0 -0.5 0.25 0.75 1.0", FL, "-1 -0.5 0.25 0.75 1"},
    // Worked examples: truncation toward zero, saturation on the scaled value,
    // the division on the positive side, losses of precision.
    {S, "16384 -16384 -255 -256", B, "63 -64 0 -1"},
    {B, "1 -1", S, "258 -256"},
    {UB, "128 33", B, "63 16"},
    {UB, "33", US, "8481"},
    {B, "64 -128", UB, "128 0"},
    {S, "128 129", UB, "0 1"},
    {US, "65535", I, "2147483647"},
    {UI, "3", I, "1"},
    {D, "1.5 -1.5 0.5 -0.1", B, "127 -128 63 -12"},
    {D, "0.5", UB, "127"},
    {I, "-2147483647 2147483646", FL, "-1 1"},
    {UI, "4294967294", FL, "1"},
    {I, "2147483646", UI, "4294967293"},
    {FL, "0.999", I, "2145336191"},
    {D, "0.999", I, "2145336163"},
    // Specials: infinities saturate, -0.0 gives 0, NaN gives 0 except in Int,
    // Float neither clamps nor keeps what it cannot hold.
    {D, "inf -inf -0.0 nan", B, "127 -128 0 0"},
    {D, "inf -inf -0.0 nan", UB, "255 0 0 0"},
    {D, "inf -inf -0.0 nan", S, "32767 -32768 0 0"},
    {D, "inf -inf -0.0 nan", US, "65535 0 0 0"},
    {D, "inf -inf -0.0 nan", I, "2147483647 -2147483648 0 -2147483648"},
    {D, "inf -inf -0.0 nan", UI, "4294967295 0 0 0"},
    {FL, "inf -inf -0.0 nan", I, "2147483647 -2147483648 0 -2147483648"},
    {FL, "inf -inf -0.0 nan", UB, "255 0 0 0"},
    {D, "1e300 -1e300 1e20 1e-46 -1e-46 4.9e-324", FL, "inf -inf 1e20 0 -0 0"},
    {D, "4.9e-324 -4.9e-324 2.2e-308", I, "0 0 0"},
    {FL, "1e-45 -1e-45 1.17549435e-38", D,
     "1.401298464324817e-45 -1.401298464324817e-45 1.1754943508222875e-38"},
    {FL, "inf -inf -0.0 1e-45", D, "inf -inf -0.0 1.401298464324817e-45"},
};

// Text to the raw bytes of one sample of `type`.
std::vector<unsigned char> Parse(EDataType::ID type, const std::string& text) {
  std::vector<unsigned char> bytes(std::size_t(SampleBytes(type)));
  if (type == EDataType::Float) {
    const float f = std::strtof(text.c_str(), nullptr);
    std::memcpy(bytes.data(), &f, 4);
  } else if (type == EDataType::Double) {
    const double d = std::strtod(text.c_str(), nullptr);
    std::memcpy(bytes.data(), &d, 8);
  } else {
    const long long v = std::strtoll(text.c_str(), nullptr, 10);
    std::memcpy(bytes.data(), &v, bytes.size());  // little-endian: the low bytes
  }
  return bytes;
}

std::vector<unsigned char> ParseAll(EDataType::ID type, const char* text) {
  std::istringstream in(text);
  std::vector<unsigned char> bytes;
  for (std::string word; in >> word;) {
    const std::vector<unsigned char> one = Parse(type, word);
    bytes.insert(bytes.end(), one.begin(), one.end());
  }
  return bytes;
}

bool IsNaN(EDataType::ID type, const unsigned char* sample) {
  if (type == EDataType::Float) {
    float f;
    std::memcpy(&f, sample, 4);
    return std::isnan(f);
  }
  if (type == EDataType::Double) {
    double d;
    std::memcpy(&d, sample, 8);
    return std::isnan(d);
  }
  return false;
}

TEST(ConvertSample, ReferenceTablesWorkedExamplesAndSpecialValues) {
  for (const FixedRow& row : kFixed) {
    const std::vector<unsigned char> source = ParseAll(row.from, row.samples);
    const std::vector<unsigned char> expected = ParseAll(row.to, row.expected);
    const unsigned count = unsigned(source.size() / std::size_t(SampleBytes(row.from)));
    const std::size_t size = std::size_t(SampleBytes(row.to));
    ASSERT_EQ(expected.size(), count * size) << row.samples;
    for (EPath path : Paths()) {
      const std::vector<unsigned char> actual =
          ConvertOn(path, EPixelType::Lum, row.to, EPixelType::Lum, row.from, count, source.data());
      for (unsigned i = 0; i < count; ++i) {
        const unsigned char* a = &actual[i * size];
        const unsigned char* e = &expected[i * size];
        const bool same = std::memcmp(a, e, size) == 0 || (IsNaN(row.to, a) && IsNaN(row.to, e));
        EXPECT_TRUE(same) << Describe(EPixelType::Lum, row.from, EPixelType::Lum, row.to)
                          << ", sample " << i << " of \"" << row.samples << "\", "
                          << PathName(path);
      }
    }
  }
}

// Facts of the rule that follow from it without restating it: how many
// samples survive a trip through another type and back.
TEST(ConvertSample, RoundTripsLoseExactlyWhatTheRuleLoses) {
  struct Trip {
    EDataType::ID type;
    EDataType::ID via;
    unsigned survivors;
  };
  const Trip trips[] = {
      {UB, D, 256},  {B, D, 256},   {S, D, 65536},   {US, D, 65536},  {UB, US, 256},
      {UB, UI, 256}, {UB, FL, 256}, {US, UI, 65536}, {US, FL, 32641}, {B, S, 130},
      {S, I, 32770}, {B, UB, 2},    {UB, B, 2},
  };
  for (const Trip& trip : trips) {
    const unsigned count = SampleBytes(trip.type) == 1 ? 256 : 65536;
    std::vector<std::uint16_t> all(count);
    for (unsigned i = 0; i < count; ++i) all[i] = static_cast<std::uint16_t>(i);
    std::vector<unsigned char> source(count * std::size_t(SampleBytes(trip.type)));
    for (unsigned i = 0; i < count; ++i) {
      std::memcpy(&source[i * std::size_t(SampleBytes(trip.type))], &all[i],
                  std::size_t(SampleBytes(trip.type)));
    }
    for (EPath path : Paths()) {
      const auto there = ConvertOn(path, EPixelType::Lum, trip.via, EPixelType::Lum, trip.type,
                                   count, source.data());
      const auto back = ConvertOn(path, EPixelType::Lum, trip.type, EPixelType::Lum, trip.via,
                                  count, there.data());
      unsigned survivors = 0;
      const std::size_t size = std::size_t(SampleBytes(trip.type));
      for (unsigned i = 0; i < count; ++i) {
        survivors += std::memcmp(&back[i * size], &source[i * size], size) == 0 ? 1u : 0u;
      }
      EXPECT_EQ(survivors, trip.survivors)
          << Describe(EPixelType::Lum, trip.type, EPixelType::Lum, trip.via) << " and back, "
          << PathName(path);
    }
  }
}

// The rule's own routines agree with the cells' results above; checked on
// the edges of the scaled range, where the saturating selects meet.
TEST(ConvertSample, RoutinesOfTheRuleMeetAtTheSaturationEdges) {
  using Zt::Sample::ConvertSample;
  using Zt::Sample::DecodeSample;
  using Zt::Sample::EncodeSample;
  const double edges[] = {1.0,
                          -1.0,
                          std::nextafter(1.0, 2.0),
                          std::nextafter(-1.0, -2.0),
                          std::nextafter(1.0, 0.0),
                          0.0,
                          -0.0,
                          std::numeric_limits<double>::quiet_NaN()};
  for (double x : edges) {
    EXPECT_EQ(EncodeSample<EDataType::Short>(x), ZtConvertRef::Encode<std::int16_t>(x)) << x;
    EXPECT_EQ(EncodeSample<EDataType::Int>(x), ZtConvertRef::Encode<std::int32_t>(x)) << x;
    EXPECT_EQ(EncodeSample<EDataType::UInt>(x), ZtConvertRef::Encode<std::uint32_t>(x)) << x;
    std::int16_t s = 1;
    std::int32_t i = 1;
    Zt::Sample::StoreSaturatedShort(&s, x);
    Zt::Sample::StoreSaturatedInt(&i, x);
    EXPECT_EQ(s, EncodeSample<EDataType::Short>(x)) << x;
    EXPECT_EQ(i, EncodeSample<EDataType::Int>(x)) << x;
  }
  EXPECT_EQ(DecodeSample<EDataType::Byte>(-128), -1.0);
  EXPECT_FALSE(std::signbit(DecodeSample<EDataType::Short>(0)));
  EXPECT_EQ((ConvertSample<EDataType::UByte, EDataType::UShort>(33)), 8481);
}

// --- The vector routes on every input ----------------------------------------
// Each row names a pair of types, the 32-bit source patterns to run, and the
// path whose results are taken as the reference for the other vector paths:
//  - the decode's fused quotient of Int and UInt, against the baseline path,
//    which divides (the 8- and 16-bit types are covered above, sample by
//    sample against the reference);
//  - the single-precision route from Float to the narrow integers, on every
//    float, against the double route of the AVX2 path.
struct EveryInputRow {
  EDataType::ID from;
  EDataType::ID to;
  std::uint64_t first;
  std::uint64_t end;
  EPath reference;
};

const EveryInputRow kEveryInput[] = {
    {EDataType::Int, EDataType::Double, 1, 0x80000000u, EPath::Baseline},
    {EDataType::UInt, EDataType::Double, 1, 0x100000000u, EPath::Baseline},
    {EDataType::Float, EDataType::Byte, 0, 0x100000000u, EPath::Avx2},
    {EDataType::Float, EDataType::UByte, 0, 0x100000000u, EPath::Avx2},
    {EDataType::Float, EDataType::Short, 0, 0x100000000u, EPath::Avx2},
    {EDataType::Float, EDataType::UShort, 0, 0x100000000u, EPath::Avx2},
};

TEST(VectorRoutes, EqualTheirReferenceOnEveryInput) {
  const std::vector<EPath> paths = Paths();
  // Chunks that stay in the cache, into buffers made once.
  constexpr unsigned kChunk = 1u << 16;
  std::vector<std::uint32_t> source(kChunk);
  std::vector<unsigned char> expected(kChunk * 8), actual(kChunk * 8);
  for (const EveryInputRow& row : kEveryInput) {
    if (std::find(paths.begin(), paths.end(), row.reference) == paths.end()) continue;
    for (EPath path : paths) {
      if (path == row.reference || path == EPath::Baseline) continue;
      SCOPED_TRACE(Describe(EPixelType::Lum, row.from, EPixelType::Lum, row.to) + " on " +
                   PathName(path) + " against " + PathName(row.reference));
      for (std::uint64_t begin = row.first; begin < row.end; begin += kChunk) {
        const unsigned count = unsigned(std::min<std::uint64_t>(kChunk, row.end - begin));
        for (unsigned i = 0; i < count; ++i) source[i] = std::uint32_t(begin + i);
        const Zt::CZtImageFormat sourceFormat(int(count), 1, EPixelType::Lum, row.from);
        const Zt::CZtImageFormat targetFormat(int(count), 1, EPixelType::Lum, row.to);
        RunOnPath(row.reference, expected.data(), source.data(), targetFormat, sourceFormat);
        RunOnPath(path, actual.data(), source.data(), targetFormat, sourceFormat);
        const std::size_t bytes = std::size_t(count) * std::size_t(SampleBytes(row.to));
        ASSERT_EQ(std::memcmp(actual.data(), expected.data(), bytes), 0)
            << "in the inputs from " << begin;
      }
    }
  }
}

}  // namespace
