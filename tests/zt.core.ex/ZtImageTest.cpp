#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "ZtChain.h"
#include "ZtCoreEx.h"
#include "ZtTypeLists.h"

using namespace Zt;
using namespace ZtTest;
using Floats = std::vector<float>;

namespace {

std::string Text(const CZtImageFormat& f) { return f.ToString().ToCString(); }

// Components, bytes per pixel, pixels and bytes of a format.
std::tuple<int, int, unsigned, unsigned> Sizes(const CZtImageFormat& f) {
  return {f.GetComponentCount(), f.GetBytesPerPixel(), f.GetPixelCount(), f.GetByteCount()};
}

// A valid image whose bytes count up from `seed`, so copies can be checked.
CZtImage Patterned(int w, int h, EPixelType::ID p, EDataType::ID d, unsigned char seed = 1) {
  CZtImage image;
  EXPECT_TRUE(image.Create(w, h, p, d));
  auto* bytes = static_cast<unsigned char*>(image.GetDataPtr());
  for (unsigned int i = 0; i < image.GetByteCount(); ++i)
    bytes[i] = static_cast<unsigned char>(seed + i);
  return image;
}

bool SameBytes(const CZtImage& a, const CZtImage& b) {
  return a.GetFormat() == b.GetFormat() &&
         std::memcmp(a.GetDataPtr(), b.GetDataPtr(), a.GetByteCount()) == 0;
}

// An image of any format over the test's memory at any address, null included.
struct ImageOver : CZtImage {
  ImageOver(std::uintptr_t origin, const CZtImageFormat& format) {
    m_pData = reinterpret_cast<void*>(origin);
    m_Format = format;
  }
  ~ImageOver() override { m_pData = nullptr; }  // not ours to free
};

const CZtImageFormat kZero(0, 0, AsPixelType(0), AsDataType(0));
bool IsZeroFormat(const CZtImage& image) { return image.GetFormat() == kZero; }

// A view's binding: its memory and its format.
using Binding = std::pair<const void*, CZtImageFormat>;
Binding Bound(const CZtImageMoniker& view) { return {view.GetDataPtr(), view.GetFormat()}; }

// The refusal of a view's raising forms of Create: one plain link.
void ExpectCreateRaises(const std::function<void()>& create) {
  ExpectRaise(create, {{"Error creating CZtImageMoniker", "Zt::CZtImageMoniker::Create",
                        "ZtImageMoniker"}});
}

TEST(CZtImage, EveryKnownPairHasItsSizesAndTextAndMakesAnImageThatAnswersFromIt) {
  for (const auto& p : kPixelTypes) {
    for (const auto& d : kDataTypes) {
      const CZtImageFormat f(7, 3, p.type, d.type);
      const int bytes = p.components * d.bytes;
      const unsigned byteCount = 21u * static_cast<unsigned>(bytes);
      EXPECT_EQ(Sizes(f), std::make_tuple(p.components, bytes, 21u, byteCount));
      EXPECT_EQ(Text(f), std::string("7x3, ") + p.name + ", " + d.name);
      EXPECT_EQ(f.IsBayerPixelType(), std::string(p.name).rfind("Bayer", 0) == 0) << p.name;
      CZtImage image = Patterned(7, 3, p.type, d.type);
      int w = 0, h = 0, ip = 0, id = 0;
      EPixelType::ID pt{};
      EDataType::ID dt{};
      image.GetSize(w, h), image.GetType(pt, dt);
      EXPECT_EQ(std::make_tuple(image.GetBytesPerPixel(), image.GetPixelCount(),
                                image.GetByteCount(), w, h, pt, dt, image.GetFormat()),
                std::make_tuple(bytes, 21u, byteCount, 7, 3, p.type, d.type, f));
      EXPECT_TRUE(image.IsValid() && image.IsOfType(p.type, d.type) &&
                  !image.IsOfType(p.type, EDataType::ID(0)));
      CZtImageMoniker view;  // a view binds every format the same way
      ASSERT_TRUE(view.Create(7, 3, p.type, d.type, image.GetDataPtr()));
      view.GetType(ip, id);  // the integer form, pixel type first
      EXPECT_TRUE(Bound(view) == Binding(image.GetDataPtr(), f) && ip == p.type && id == d.type &&
                  view.IsOfType(p.type, d.type));
      EXPECT_EQ(std::make_tuple(view.GetBytesPerPixel(), view.GetPixelCount(), view.GetByteCount()),
                std::make_tuple(bytes, 21u, byteCount));
      // Normalize takes Lum Float only and refuses every other format unchanged.
      const CZtImage before(image);
      const bool lumFloat = p.type == EPixelType::Lum && d.type == EDataType::Float;
      EXPECT_EQ(image.Normalize(), lumFloat) << Text(f);
      EXPECT_TRUE(lumFloat || SameBytes(image, before));
    }
  }
}

TEST(CZtImageFormat, SizesWrapModulo2To32AndResetComparisonAndUnknownTypes) {
  // Width, height, pixel and data type; pixels and bytes.
  const std::tuple<int, int, EPixelType::ID, EDataType::ID, unsigned, unsigned> cases[] = {
      {65536, 65536, EPixelType::Lum, EDataType::UByte, 0u, 0u},
      {16384, 16384, EPixelType::RGB, EDataType::Double, 268435456u, 2147483648u},
      {32768, 32768, EPixelType::RGBA, EDataType::UByte, 1073741824u, 0u},
      {-1, 2, EPixelType::Lum, EDataType::UByte, 4294967294u, 4294967294u},
      {-3, -5, EPixelType::LumA, EDataType::Short, 15u, 60u},
      {65535, 65537, EPixelType::Lum, EDataType::UByte, 4294967295u, 4294967295u},
  };
  for (const auto& [w, h, p, d, pixels, bytes] : cases) {
    const CZtImageFormat f(w, h, p, d);
    EXPECT_EQ(std::make_pair(f.GetPixelCount(), f.GetByteCount()), std::make_pair(pixels, bytes))
        << w << "x" << h;
  }
  EXPECT_EQ(Text(CZtImageFormat(-64, 480, EPixelType::Lum, EDataType::Int)), "-64x480, Lum, Int");
  CZtImageFormat f(640, 480, EPixelType::RGB, EDataType::UByte);
  EXPECT_TRUE(f == CZtImageFormat(640, 480, EPixelType::RGB, EDataType::UByte) && !(f != f));
  // Each field on its own makes two formats unequal, even at equal byte counts.
  for (const CZtImageFormat& other : {CZtImageFormat{641, 480, EPixelType::RGB, EDataType::UByte},
                                      CZtImageFormat{640, 481, EPixelType::RGB, EDataType::UByte},
                                      CZtImageFormat{640, 480, EPixelType::BGR, EDataType::UByte},
                                      CZtImageFormat{640, 480, EPixelType::RGB, EDataType::Byte}}) {
    EXPECT_TRUE(f != other && !(f == other));
  }
  f.Reset();
  EXPECT_TRUE(f == kZero && Text(f) == "0x0, None, Void");
  EXPECT_EQ(Sizes(f), std::make_tuple(0, 0, 0u, 0u));
  static_assert(sizeof(CZtImageFormat) == 16, "four 32-bit fields, nothing else");
  // Unknown types display None or Void and have no size (a known pixel type's components stay).
  for (int p : kUnknownPixelTypes) {
    const CZtImageFormat f(2, 2, AsPixelType(p), EDataType::UByte);
    EXPECT_TRUE(Text(f) == "2x2, None, UByte" && Sizes(f) == std::make_tuple(0, 0, 4u, 0u)) << p;
  }
  for (int d : kUnknownDataTypes) {
    const CZtImageFormat f(2, 2, EPixelType::RGBA, AsDataType(d));
    EXPECT_TRUE(Text(f) == "2x2, RGBA, Void" && Sizes(f) == std::make_tuple(4, 0, 4u, 0u)) << d;
  }
}

TEST(CZtImage, RefusedCreateLeavesTheStateThatTheRefusalCallsFor) {
  // Sizes below 1 and unknown types zero a valid image, and a bound view in either form.
  std::vector<std::tuple<int, int, int, int>> refused;
  for (const auto& [w, h] : {std::pair<int, int>{100, 0}, {0, 100}, {-1, 5}, {5, -7}, {1, INT_MIN}})
    refused.emplace_back(w, h, EPixelType::RGB, EDataType::UByte);
  for (int p : kUnknownPixelTypes) refused.emplace_back(2, 2, p, EDataType::UByte);
  for (int d : kUnknownDataTypes) refused.emplace_back(2, 2, EPixelType::RGBA, d);
  for (const auto& row : refused) {
    int w = 0, h = 0, p = 0, d = 0;  // not bindings: the lambdas below capture them
    std::tie(w, h, p, d) = row;
    SCOPED_TRACE(testing::Message() << w << "x" << h << " " << p << " " << d);
    CZtImage image = Patterned(4, 4, EPixelType::RGB, EDataType::UByte);
    EXPECT_FALSE(image.Create(w, h, AsPixelType(p), AsDataType(d)));
    EXPECT_TRUE(!image.IsValid() && IsZeroFormat(image));
    const unsigned char memory[64] = {};
    CZtImageMoniker view;
    ASSERT_TRUE(view.Create(2, 2, EPixelType::RGBA, EDataType::Short, memory));
    EXPECT_FALSE(view.Create(w, h, AsPixelType(p), AsDataType(d), memory));
    EXPECT_TRUE(!view.IsValid() && view.GetFormat() == kZero);
    view.Set(memory);
    ExpectCreateRaises([&] { view.Create(w, h, p, d, memory); });
    EXPECT_TRUE(!view.IsValid() && view.GetFormat() == kZero);
    ExpectCreateRaises([&] { view.Create({w, h, AsPixelType(p), AsDataType(d)}, nullptr); });
  }
  CZtImage empty;  // a size below 1 on an Empty image leaves its leftover format alone
  EXPECT_TRUE(!empty.Create(3, 3, EPixelType::RGB, AsDataType(0x1407)) && IsZeroFormat(empty));
  empty.Destroy();
  EXPECT_TRUE(!empty.Create(0, 3, EPixelType::RGB, EDataType::UByte) && IsZeroFormat(empty));
}

TEST(CZtImage, CopyingFormsCopyDeeplyAndRefuseInvalidSourcesWithoutChange) {
  const CZtImage source = Patterned(3, 2, EPixelType::BGRA, EDataType::UShort, 9), empty;
  CZtImage a(source), b, c, d, e;
  EXPECT_TRUE(a.GetDataPtr() != source.GetDataPtr() && b.Create(&source) && c.Create(source));
  d = source;
  EXPECT_TRUE(e.Create(3, 2, EPixelType::BGRA, EDataType::UShort, source.GetDataPtr()));
  for (const CZtImage* copy : {&a, &b, &c, &d, &e}) EXPECT_TRUE(SameBytes(*copy, source));
  // Refused sources change nothing: the old pixels stay.
  CZtImage target = Patterned(2, 2, EPixelType::Lum, EDataType::UByte, 50);
  const CZtImage before(target);
  const void* block = target.GetDataPtr();
  EXPECT_FALSE(target.Create(static_cast<const IImage*>(nullptr)) || target.Create(&empty) ||
               target.Create(empty));
  target = empty;
  EXPECT_TRUE(target.GetDataPtr() == block && SameBytes(target, before));
  EXPECT_FALSE(CZtImage(empty).IsValid());
  // A refused format leaves the format constructor's image Empty.
  EXPECT_FALSE(CZtImage(CZtImageFormat(4, 0, EPixelType::LumA, EDataType::Double)).IsValid());
  CZtImage& alias = a;  // copying from itself ends Empty: Destroy comes first
  EXPECT_TRUE(&(a = alias) == &a && !a.IsValid() && IsZeroFormat(a));
  EXPECT_FALSE(b.Create(&b) || b.IsValid() || c.Create(c) || c.IsValid());
}

TEST(CZtImage, SetCopiesIntoTheExistingBlockOnlyBetweenEqualFormats) {
  CZtImage target = Patterned(3, 3, EPixelType::RGB, EDataType::Short, 1), empty;
  const CZtImage source = Patterned(3, 3, EPixelType::RGB, EDataType::Short, 77);
  const void* block = target.GetDataPtr();
  EXPECT_TRUE(target.Set(source) && target.GetDataPtr() == block && SameBytes(target, source));
  EXPECT_TRUE(target.Set(target));  // onto itself
  for (const auto& other : {CZtImage(), Patterned(3, 3, EPixelType::BGR, EDataType::Short),
                            Patterned(3, 3, EPixelType::RGB, EDataType::UShort),
                            Patterned(9, 1, EPixelType::RGB, EDataType::Short)}) {
    CZtImage t = Patterned(3, 3, EPixelType::RGB, EDataType::Short, 5);
    const CZtImage before(t);
    EXPECT_TRUE(!t.Set(other) && SameBytes(t, before));
  }
  ImageOver hollow(0, source.GetFormat());  // a format without memory refuses on either side
  EXPECT_FALSE(hollow.Set(source) || target.Set(hollow));
  // Set(data) copies into a valid image and still answers false.
  CZtImage raw = Patterned(3, 3, EPixelType::RGB, EDataType::Short, 1);
  EXPECT_TRUE(!raw.Set(source.GetDataPtr()) && SameBytes(raw, source));
  EXPECT_FALSE(empty.Set(source) || empty.Set(source.GetDataPtr()));
  // Destroy zeroes a valid image and leaves an Empty one alone.
  EXPECT_TRUE(raw.Destroy() && !raw.IsValid() && raw.GetDataPtr() == nullptr && IsZeroFormat(raw));
  EXPECT_TRUE(raw.Destroy());
  raw.SetZero();  // zero format, null block: clears nothing
  CZtImage cleared = Patterned(5, 2, EPixelType::LumA, EDataType::UInt);
  cleared.SetZero();
  const std::vector<unsigned char> zeros(cleared.GetByteCount(), 0);
  EXPECT_EQ(std::memcmp(cleared.GetDataPtr(), zeros.data(), zeros.size()), 0);
}

Floats Normalized(Floats samples) {
  const int count = static_cast<int>(samples.size());
  samples.push_back(-7.0f);  // past the image: stays
  ImageOver image(reinterpret_cast<std::uintptr_t>(samples.data()),
                  {count, 1, EPixelType::Lum, EDataType::Float});
  EXPECT_TRUE(image.Normalize());  // for every Lum Float image, stretched or left alone
  EXPECT_EQ(samples.back(), -7.0f);
  return Floats(samples.begin(), samples.begin() + count);
}

TEST(CZtImage, NormalizeStretchesLumFloatInSinglePrecisionFromFixedExtremes) {
  // Each sample: (v - min) / range, subtraction and division in float.
  const float a = 0.1f, b = 0.7f, c = 0.3f, range = b - a;
  EXPECT_EQ(Normalized({a, b, c}), (Floats{0.0f, (b - a) / range, (c - a) / range}));
  // The extremes start at 1e9 and -1e9 and are not seeded from a sample.
  EXPECT_EQ(Normalized({2e9f, 3e9f}), (Floats{0.5f, 1.0f}));
  EXPECT_EQ(Normalized({-3e9f, -2e9f}), (Floats{0.0f, 0.5f}));
  // A constant or single sample is left as it is, and so is a tiny range.
  EXPECT_EQ(Normalized({5.0f, 5.0f}), (Floats{5.0f, 5.0f}));
  EXPECT_EQ(Normalized({0.25f}), (Floats{0.25f}));
  EXPECT_EQ(Normalized({1e-10f, 2e-10f}), (Floats{1e-10f, 2e-10f}));
  // An infinite range is no range: inf > 1e-9, so samples divide by inf.
  const auto withInf = Normalized({0.0f, INFINITY});
  EXPECT_TRUE(withInf[0] == 0.0f && std::isnan(withInf[1]));
  EXPECT_FALSE(CZtImage().Normalize());
}

TEST(CZtImageMoniker, NullDataCreateFromAnImageCopiesAndDestroy) {
  const unsigned char memory[12] = {};
  const CZtImageFormat format(2, 2, EPixelType::RGB, EDataType::UByte);
  CZtImageMoniker a, c, d, view;
  EXPECT_TRUE(a.Create(2, 2, EPixelType::RGB, EDataType::UByte));
  c.Create(2, 2, int{EPixelType::RGB}, int{EDataType::UByte}, nullptr);  // no raise
  d.Create(format, nullptr);
  for (CZtImageMoniker* view : {&a, &c, &d}) {
    EXPECT_TRUE(!view->IsValid() && view->GetFormat() == format);
    view->Set(memory);
    EXPECT_TRUE(view->IsValid() && view->GetDataPtr() == memory);
    view->Set(nullptr);
    EXPECT_TRUE(!view->IsValid() && view->GetFormat() == format);
  }
  // Create from an image reads all first (from itself it stays bound); refusals keep the binding.
  CZtImage image = Patterned(3, 2, EPixelType::BGRA, EDataType::Float), copy;
  const CZtImage empty;
  const CZtImageFormat old(1, 1, EPixelType::Lum, EDataType::Int);
  view.Create(old, memory);
  EXPECT_FALSE(view.Create(static_cast<const IImage*>(nullptr)) || view.Create(&empty));
  ExpectCreateRaises([&] { view.Create(empty); });
  EXPECT_EQ(Bound(view), Binding(memory, old));
  view.Create(image);
  EXPECT_TRUE(view.Create(&view) && Bound(view) == Binding(image.GetDataPtr(), image.GetFormat()));
  // A view as a source of Create gives a deep copy.
  EXPECT_TRUE(copy.Create(&view) && copy.GetDataPtr() != image.GetDataPtr() &&
              copy.GetFormat() == image.GetFormat());
  // Copies share the memory and Destroy zeroes only the one view.
  unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  const Binding bound(bytes, CZtImageFormat(2, 1, EPixelType::LumA, EDataType::UShort));
  view.Create(bound.second, bytes);
  CZtImageMoniker copy2(view), assigned, fresh;
  assigned = view;
  EXPECT_TRUE(view.Destroy() && !view.IsValid() && view.GetFormat() == kZero && bytes[7] == 8);
  EXPECT_TRUE(Bound(copy2) == bound && Bound(assigned) == bound);
  assigned = view;  // an unbound view is assigned too, unlike an invalid CZtImage
  EXPECT_TRUE(!assigned.IsValid() && assigned.GetFormat() == kZero);
  EXPECT_TRUE(fresh.Destroy() && fresh.GetFormat() == kZero);  // zeroes even an unset format
}

// A view converts from and into memory like the image itself (RGBA UShort targets copy).
TEST(CZtImageMoniker, ConvertsFromAndIntoMemoryLikeTheImageItself) {
  const CZtImage source = Patterned(5, 3, EPixelType::RGBA, EDataType::UShort, 11);
  CZtImageMoniker view;
  view.Create(source);
  const CZtImageFormat other(1, 1, EPixelType::BayerGB, EDataType::Byte);
  for (EPixelType::ID p : kTargetPixelTypes) {
    for (const auto& d : kDataTypes) {
      SCOPED_TRACE(testing::Message() << p << " " << d.name);
      CZtImage expected, fromView;
      ASSERT_TRUE(source.ConvertType(expected, p, d.type));
      EXPECT_TRUE(CZtImage::ConvertType(&fromView, &view, p, d.type, true));
      // Without create, into views of a const image and of memory under a format that stays.
      const CZtImage block(expected.GetFormat());
      std::vector<unsigned char> memory(expected.GetByteCount());
      CZtImageMoniker ofImage, ofMemory;
      ofImage.Create(block);
      ofMemory.Create(other, static_cast<const void*>(memory.data()));
      EXPECT_TRUE(CZtImage::ConvertType(&ofImage, &view, p, d.type, false));
      EXPECT_TRUE(CZtImage::ConvertType(&ofMemory, &source, p, d.type, false));
      EXPECT_TRUE(ofMemory.GetFormat() == other && SameBytes(fromView, expected) &&
                  SameBytes(block, expected));
      EXPECT_EQ(std::memcmp(memory.data(), expected.GetDataPtr(), memory.size()), 0);
    }
  }
}

// The 80 pixel types, spelled out from the layout and sample tables; each alias names the same.
template <template <class> class Alias, int C, int A, int R, int G, int B, int AI, int P>
struct Layout {
  template <class T, int D>
  using Pixel = TPixel<T, C, A, R, G, B, AI, P, D>;
  template <class T, int D>
  static constexpr bool kAliased = std::is_same_v<Alias<T>, Pixel<T, D>>;
};
template <class T, int D>
struct Sample {};
using Layouts = std::tuple<
    Layout<TPixelRGB, 3, 0, 0, 1, 2, 0, 6407>, Layout<TPixelRGBA, 3, 1, 0, 1, 2, 3, 6408>,
    Layout<TPixelBGR, 3, 0, 2, 1, 0, 0, 32992>, Layout<TPixelBGRA, 3, 1, 2, 1, 0, 3, 32993>,
    Layout<TPixelLum, 1, 0, 0, 0, 0, 0, 6409>, Layout<TPixelLumA, 1, 1, 0, 0, 0, 1, 6410>,
    Layout<TPixelBayerRG, 1, 0, 0, 0, 0, 0, 8193>, Layout<TPixelBayerBG, 1, 0, 0, 0, 0, 0, 8194>,
    Layout<TPixelBayerGR, 1, 0, 0, 0, 0, 0, 8195>, Layout<TPixelBayerGB, 1, 0, 0, 0, 0, 0, 8196>>;
using Samples = std::tuple<Sample<char, 5120>, Sample<unsigned char, 5121>, Sample<short, 5122>,
                           Sample<unsigned short, 5123>, Sample<int, 5124>,
                           Sample<unsigned int, 5125>, Sample<float, 5126>, Sample<double, 5130>>;

template <class F, class L, class T, int D>
void Call(F& f, L, Sample<T, D>) {
  static_assert(L::template kAliased<T, D>);
  static_assert(std::is_aggregate_v<typename L::template Pixel<T, D>>);
  f(typename L::template Pixel<T, D>{});
}

// Calls f with a value of each of the 80 pixel types.
template <class F>
void ForEachPixelType(F f) {
  auto samples = [&](auto layout) {
    std::apply([&](auto... s) { (Call(f, layout, s), ...); }, Samples{});
  };
  std::apply([&](auto... l) { (samples(l), ...); }, Layouts{});
}

// Sample bits by width: NaNs with payloads, -0 and a denormal for floats, extremes for others.
const std::uint64_t kPatterns[4][4] = {
    {0x80, 0x7F, 0xFF, 0x01},
    {0x8000, 0x7FFF, 0xFFFF, 0x1234},
    {0x7FA00001, 0xFFC12345, 0x80000000, 0x00000001},
    {0x7FF0000000000001, 0xFFF8DEADBEEF0001, 0x8000000000000000, 0x0000000000000001}};

template <class Pixel>
Pixel PatternedPixel(std::size_t rotation) {
  constexpr std::size_t width = sizeof(Pixel::Samples[0]);
  Pixel pixel;
  for (std::size_t i = 0; i < sizeof(Pixel) / width; ++i) {
    const std::uint64_t bits = kPatterns[width == 8 ? 3 : width / 2][(i + rotation) % 4];
    std::memcpy(&pixel.Samples[i], &bits, width);  // the low bytes: little-endian
  }
  return pixel;
}

TEST(CZtImagePixel, EveryTypeMovesBitForBitAtWidthTimesYPlusXWrappedToSigned32Bits) {
  // Width, x, y, landing index: row ends, negative indices, an offset past 4 GiB (2^30 pixels).
  const std::tuple<long long, int, int, long long> rows[] = {{5, 2, 1, 7},
                                                             {5, 5, 0, 5},
                                                             {5, 0, 1, 5},
                                                             {7, -3, 0, -3},
                                                             {4, 1, -2, -7},
                                                             {65536, 5, 65536, 5},
                                                             {65536, 65541, 65535, 5},
                                                             {65536, 65533, 65535, -3},
                                                             {65536, 7, -65536, 7},
                                                             {65536, 0, 32768, -(1LL << 31)},
                                                             {32768, 0, 32768, 1 << 30}};
  ForEachPixelType([&](auto type) {
    using Pixel = decltype(type);
    const long long size = sizeof(Pixel);
    for (const auto& [width, x, y, index] : rows) {
      SCOPED_TRACE(testing::Message() << typeid(Pixel).name() << " at " << x << "," << y);
      std::vector<unsigned char> buffer(static_cast<std::size_t>(16 * size));
      for (std::size_t i = 0; i < buffer.size(); ++i)
        buffer[i] = static_cast<unsigned char>(i * 5 + 1);
      // The image's pointer lies so that the pixel lands at buffer index 8 + near.
      const long long near = (index < -8 || index > 7) ? 0 : index;
      ImageOver image(reinterpret_cast<std::uintptr_t>(buffer.data()) +
                          static_cast<std::uintptr_t>((8 + near - index) * size),
                      {static_cast<int>(width), 1, EPixelType::Lum, EDataType::UByte});
      std::vector<unsigned char> expected = buffer;
      const Pixel written = PatternedPixel<Pixel>(static_cast<std::size_t>(x & 3));
      std::memcpy(expected.data() + (8 + near) * size, &written, sizeof(Pixel));
      image.SetPixel(written, x, y);
      EXPECT_EQ(buffer, expected);
      Pixel read = PatternedPixel<Pixel>(static_cast<std::size_t>(x + 1));
      static_cast<const CZtImage&>(image).GetPixel(read, x, y);
      EXPECT_EQ(std::memcmp(&read, &written, sizeof(Pixel)), 0);
    }
  });
}

}  // namespace
