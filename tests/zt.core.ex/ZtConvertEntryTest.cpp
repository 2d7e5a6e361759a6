// The conversion entry points of CZtImage: results, the target on the way, every false.

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "ZtConvertTesting.h"
#include "ZtImage.h"

using Zt::CZtImage;
using Zt::CZtImageFormat;
using namespace ZtTest;

namespace {

using P = EPixelType;
using D = EDataType;
using F = CZtImageFormat;

// Reaches the protected dispatch.
struct Dispatch : CZtImage {
  using CZtImage::_ConvertTrgSwitch;
};

CZtImage Patterned(int w, int h, EPixelType::ID p, EDataType::ID d, std::uint64_t seed = 1) {
  CZtImage image;
  EXPECT_TRUE(image.Create(w, h, p, d));
  const Bytes bytes = RandomBytes(image.GetByteCount(), seed);
  std::memcpy(image.GetDataPtr(), bytes.data(), bytes.size());
  return image;
}

// The image's bytes from `from` to `to` (to its end by default).
Bytes BytesOf(const CZtImage& image, std::size_t from = 0, std::size_t to = SIZE_MAX) {
  const auto* data = static_cast<const unsigned char*>(image.GetDataPtr());
  return Bytes(data + from, data + std::min<std::size_t>(to, image.GetByteCount()));
}

// What Reset leaves: all four fields 0.
const F kZero(0, 0, P::ID(0), D::ID(0));

// Each form converts or copies; without create the target's format and bytes past the run stay.
TEST(ConvertType, ConvertsOrCopiesIntoTheTargetInEachForm) {
  for (const auto& [from, to] :
       {std::pair{F(7, 3, P::BGRA, D::UShort), F(7, 3, P::LumA, D::Float)},
        std::pair{F(5, 4, P::BayerGB, D::Float), F(5, 4, P::BayerGB, D::Float)}}) {
    const CZtImage source = Patterned(from.Width, from.Height, from.PixelType, from.DataType);
    const Bytes expected =
        from == to
            ? BytesOf(source)
            : ZtConvertRef::ConvertImage(to.PixelType, to.DataType, from.PixelType, from.DataType,
                                         from.GetPixelCount(), source.GetDataPtr());
    for (int form = 0; form < 3; ++form) {
      CZtImage target = Patterned(21, 9, P::RGB, D::Byte, 2);
      Bytes want = form == 2 ? BytesOf(target) : expected;  // past the run: as it was
      std::copy(expected.begin(), expected.end(), want.begin());
      ASSERT_TRUE(form == 0 ? source.ConvertType(target, to.PixelType, to.DataType)
                            : CZtImage::ConvertType(&target, &source, to.PixelType, to.DataType,
                                                    form == 1));
      EXPECT_EQ(target.GetFormat(), form == 2 ? F(21, 9, P::RGB, D::Byte) : to);
      EXPECT_EQ(BytesOf(target), want) << "form " << form;
    }
  }
}

TEST(ConvertType, RefusalsLeaveTheTargetAsTheirStepLeftIt) {
  const CZtImage source = Patterned(4, 4, P::Lum, D::UByte);
  const CZtImage invalid;

  // An invalid source: nothing happens to the target, in any form.
  CZtImage target = Patterned(3, 3, P::RGB, D::UByte, 9);
  const Bytes pixels = BytesOf(target);
  EXPECT_FALSE(invalid.ConvertType(target, P::RGB, D::Float));
  EXPECT_FALSE(CZtImage::ConvertType(&target, &invalid, P::RGB, D::Float, true));
  EXPECT_FALSE(CZtImage::ConvertType(&target, &invalid, P::RGB, D::Float, false));
  EXPECT_TRUE(target.IsValid());
  EXPECT_EQ(BytesOf(target), pixels);

  // A type Create refuses: the target has lost its pixels and is Empty.
  for (int unknown : kUnknownDataTypes) {
    CZtImage refused = Patterned(3, 3, P::RGB, D::UByte);
    EXPECT_FALSE(source.ConvertType(refused, P::RGB, AsDataType(unknown)));
    EXPECT_FALSE(refused.IsValid());
    EXPECT_EQ(refused.GetFormat(), kZero);
  }

  // A Bayer target from another type: created, valid, and false.
  for (EPixelType::ID bayer : {P::BayerRG, P::BayerGB}) {
    CZtImage created, fromStatic;
    EXPECT_FALSE(source.ConvertType(created, bayer, D::UShort));
    EXPECT_TRUE(created.IsValid());
    EXPECT_EQ(created.GetFormat(), F(4, 4, bayer, D::UShort));
    EXPECT_FALSE(CZtImage::ConvertType(&fromStatic, &source, bayer, D::UByte, true));
    EXPECT_TRUE(fromStatic.IsValid());
  }

  // Without create, an unknown target type leaves the memory untouched.
  for (int unknown : kUnknownPixelTypes) {
    CZtImage untouched = Patterned(4, 4, P::RGBA, D::Double, 4);
    const Bytes bytes = BytesOf(untouched);
    EXPECT_FALSE(CZtImage::ConvertType(&untouched, &source, AsPixelType(unknown), D::Float, false));
    EXPECT_EQ(BytesOf(untouched), bytes);
  }
}

// What ConvertMemory answers and writes; the dispatch behind it refuses what it refuses.
TEST(ConvertMemory, AnswersAndWritesOverTheSourceCount) {
  const CZtImage source = Patterned(6, 2, P::RGBA, D::Short);  // 96 bytes
  const F bayer(3, 3, P::BayerBG, D::UByte), good(4, 1, P::RGB, D::UByte),
      lum(4, 1, P::Lum, D::Float);
  struct Row {
    F target, source;
    bool ok;
    std::size_t written;
  };
  std::vector<Row> rows = {
      // Equal formats copy the byte count; equal types at another size copy the source's pixels.
      {source.GetFormat(), source.GetFormat(), true, 96},
      {F(1, 1, P::RGBA, D::Short), source.GetFormat(), true, 96},
      // Nothing to copy or convert: two reset formats, and a count that wraps to 0.
      {kZero, kZero, true, 0},
      {F(65536, 65536, P::RGB, D::Float), F(65536, 65536, P::Lum, D::UByte), true, 0},
      // A Bayer format copies at equal size; refused at another, and as a target of another.
      {bayer, bayer, true, 9},
      {F(9, 1, P::BayerBG, D::UByte), bayer, false, 0}};
  for (EPixelType::ID p : {P::BayerRG, P::BayerBG, P::BayerGR, P::BayerGB})
    rows.push_back({F(4, 1, p, D::UByte), good, false, 0});
  for (int p : kUnknownPixelTypes)
    rows.insert(rows.end(), {{F(4, 1, AsPixelType(p), D::Float), good, false, 0},
                             {lum, F(4, 1, AsPixelType(p), D::UByte), false, 0}});
  for (int d : kUnknownDataTypes)
    rows.insert(rows.end(), {{F(4, 1, P::Lum, AsDataType(d)), good, false, 0},
                             {lum, F(4, 1, P::RGB, AsDataType(d)), false, 0}});
  for (const Row& r : rows) {
    SCOPED_TRACE(std::string(r.target.ToString().ToCString()) + " from " +
                 r.source.ToString().ToCString());
    Bytes target(200, kGuard), want = target;
    std::copy_n(BytesOf(source).begin(), r.written, want.begin());
    EXPECT_EQ(CZtImage::ConvertMemory(target.data(), source.GetDataPtr(), r.target, r.source),
              r.ok);
    EXPECT_TRUE(r.ok || !Dispatch::_ConvertTrgSwitch(target.data(), source.GetDataPtr(), r.target,
                                                     r.source));
    EXPECT_EQ(target, want);
  }
}

TEST(ConvertMemory, TwoThreadsConvertAtOnce) {
  const CZtImage a = Patterned(300, 300, P::RGB, D::UShort, 1);
  const CZtImage b = Patterned(300, 300, P::LumA, D::Int, 2);
  CZtImage outA, outB;
  bool okA = false, okB = false;
  std::thread first([&] { okA = a.ConvertType(outA, P::BGRA, D::Float); });
  std::thread second([&] { okB = b.ConvertType(outB, P::RGB, D::UByte); });
  first.join();
  second.join();
  ASSERT_TRUE(okA && okB);
  EXPECT_EQ(BytesOf(outA), ZtConvertRef::ConvertImage(P::BGRA, D::Float, P::RGB, D::UShort, 90000,
                                                      a.GetDataPtr()));
  EXPECT_EQ(BytesOf(outB),
            ZtConvertRef::ConvertImage(P::RGB, D::UByte, P::LumA, D::Int, 90000, b.GetDataPtr()));
}

// The usable paths: those the processor and system run, probed apart from the engine, less those
// that glibc.cpu.hwcaps tunables switch off in a run that names them in ZT_NARROWED.
TEST(ConvertPaths, FollowTheProcessorAndTheTunablesAndLargeRunsTakeTheWidest) {
  const char* narrowed = std::getenv("ZT_NARROWED");
  if (narrowed == nullptr && std::getenv("GLIBC_TUNABLES") != nullptr) GTEST_SKIP();
  std::vector<EPath> expected{EPath::Baseline};
#if defined(__x86_64__)
  const bool fma = __builtin_cpu_supports("fma");
  if (fma && __builtin_cpu_supports("avx2")) expected.push_back(EPath::Avx2);
  if (fma && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"))
    expected.push_back(EPath::Avx512);
#endif
  const auto off = [&](EPath p) {
    return narrowed != nullptr && std::strstr(narrowed, PathName(p));
  };
  expected.erase(std::remove_if(expected.begin(), expected.end(), off), expected.end());
  EXPECT_EQ(Paths(), expected);
  EXPECT_EQ(Zt::Convert::ChoosePath(1u << 20), expected.back());
  EXPECT_EQ(Zt::Convert::ChoosePath(1), EPath::Baseline);
}

}  // namespace
