// Pixel conversion against the tests' reference of the sample and channel
// rules, for random formats (unknown values too), sizes and samples, through
// ConvertType in both forms and ConvertMemory, apart and in place: every
// `false` against the refusal rules, every byte not to be written unchanged.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "ZtConvertReference.h"
#include "ZtConvertTesting.h"
#include "ZtFuzzCheck.h"
#include "ZtImage.h"

using Zt::CZtImage;
using namespace ZtTest;
using Bytes = std::vector<unsigned char>;

namespace {

constexpr int kMaxSide = 40;

// 0 when either type is unknown.
std::size_t PixelBytes(EPixelType::ID p, EDataType::ID d) {
  return std::size_t(Components(p) * SampleBytes(d));
}
bool IsBayer(EPixelType::ID p) { return Components(p) == 1 && p != EPixelType::Lum; }
bool Readable(EPixelType::ID p, EDataType::ID d) { return PixelBytes(p, d) != 0; }
bool Writable(EPixelType::ID p, EDataType::ID d) { return Readable(p, d) && !IsBayer(p); }

struct Format {
  int width, height;
  EPixelType::ID pixel;
  EDataType::ID data;
  unsigned Count() const { return unsigned(height) * unsigned(width); }
  std::size_t Bytes() const { return std::size_t(Count()) * PixelBytes(pixel, data); }
  Zt::CZtImageFormat Library() const { return {width, height, pixel, data}; }
  bool SameTypes(const Format& o) const { return pixel == o.pixel && data == o.data; }
  bool operator==(const Format& o) const {
    return width == o.width && height == o.height && SameTypes(o);
  }
  std::string Text() const {
    return std::to_string(width) + "x" + std::to_string(height) + " pixel type " +
           std::to_string(int(pixel)) + " data type " + std::to_string(int(data));
  }
};

// Mostly the known values, now and then one that is none.
EPixelType::ID PickPixelType(FuzzedDataProvider& in, bool knownOnly) {
  const unsigned i = in.ConsumeIntegralInRange<unsigned>(0, knownOnly ? 9 : 11);
  return i < 10 ? kPixelTypes[i].type : AsPixelType(in.PickValueInArray(kUnknownPixelTypes));
}
EDataType::ID PickDataType(FuzzedDataProvider& in, bool knownOnly) {
  const unsigned i = in.ConsumeIntegralInRange<unsigned>(0, knownOnly ? 7 : 9);
  return i < 8 ? kDataTypes[i].type : AsDataType(in.PickValueInArray(kUnknownDataTypes));
}

// `size` bytes repeating the fuzzer's pattern.
Bytes Fill(std::size_t size, const Bytes& pattern) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = pattern[i % pattern.size()];
  return bytes;
}

Bytes BytesOf(const CZtImage& image, std::size_t size) {
  const auto* data = static_cast<const unsigned char*>(image.GetDataPtr());
  return Bytes(data, data + size);
}

Format FormatOf(const CZtImage& image) {
  Format f{};
  image.GetSize(f.width, f.height);
  image.GetType(f.pixel, f.data);
  return f;
}

// What a conversion from `s` to the types of `t` must write: the source's
// pixels, or the reference's conversion of them.
Bytes Converted(const Format& t, const Format& s, const void* source) {
  const auto* p = static_cast<const unsigned char*>(source);
  if (t.SameTypes(s)) return Bytes(p, p + s.Bytes());
  return ZtConvertRef::ConvertImage(t.pixel, t.data, s.pixel, s.data, s.Count(), source);
}

// Where in-place conversion has a settled result: the same types, or a cell
// whose target pixels have the size and sample count of the source's.
bool SettledInPlace(const Format& t, const Format& s) {
  return t.SameTypes(s) ||
         (Writable(t.pixel, t.data) && Components(t.pixel) == Components(s.pixel) &&
          SampleBytes(t.data) == SampleBytes(s.data));
}

// The settled in-place result: pixel by pixel red, green and blue are each
// read from the buffer as it stands and stored before the next is read,
// then a second pass writes every alpha.
void ConvertInPlace(unsigned char* buffer, const Format& t, const Format& s) {
  if (t.SameTypes(s)) return;
  const int to = ZtConvertRef::LayoutIndex(t.pixel);
  const ZtConvertRef::Mapping& m = ZtConvertRef::kTable[ZtConvertRef::LayoutIndex(s.pixel)][to];
  // Target positions of red, green and blue (luminance alone in Lum and
  // LumA), and of alpha.
  static const std::vector<int> kColours[6] = {{0, 1, 2}, {0, 1, 2}, {0},
                                               {0},       {2, 1, 0}, {2, 1, 0}};
  static const int kAlpha[6] = {-1, 3, -1, 1, -1, 3};
  const std::size_t step = std::size_t(m.targetSamples);
  ZtConvertRef::WithSampleType(s.data, [&](auto sourceSample) {
    ZtConvertRef::WithSampleType(t.data, [&](auto targetSample) {
      using S = decltype(sourceSample);
      using T = decltype(targetSample);
      auto store = [&](unsigned i, int k) {
        T value = ZtConvertRef::Fill<T>();
        if (m.from[k] != ZtConvertRef::F) {
          S sample;
          std::memcpy(&sample, buffer + (i * step + std::size_t(m.from[k])) * sizeof(S), sizeof(S));
          value = ZtConvertRef::Convert<S, T>(sample);
        }
        std::memcpy(buffer + (i * step + std::size_t(k)) * sizeof(T), &value, sizeof(T));
      };
      for (unsigned i = 0; i < s.Count(); ++i) {
        for (int k : kColours[to]) store(i, k);
      }
      for (unsigned i = 0; kAlpha[to] >= 0 && i < s.Count(); ++i) store(i, kAlpha[to]);
    });
  });
}

// After a conversion that returned `ok`, `actual` must hold `before` with the
// converted pixels over its front or, in place, the settled result; of an
// in-place conversion without one only the bytes behind `room` are known.
void ExpectAfter(bool ok, bool inPlace, const Format& t, const Format& s, const void* source,
                 const unsigned char* actual, const Bytes& before, std::size_t room,
                 const std::string& context) {
  Bytes after = before;
  if (ok && !inPlace) {
    const Bytes written = Converted(t, s, source);
    std::copy(written.begin(), written.end(), after.begin());
  } else if (ok && SettledInPlace(t, s)) {
    ConvertInPlace(after.data(), t, s);
  } else if (ok) {
    std::copy(actual, actual + room, after.begin());
  }
  for (std::size_t i = 0; i < before.size(); ++i)
    ZT_FUZZ_CHECK(actual[i] == after[i], context + ": byte " + std::to_string(i));
}

// ConvertMemory on separate buffers or onto one; it runs a cell when the
// target is writable and the source readable, and copies equal formats.
void Memory(bool inPlace, const Format& t, const Format& s, const Bytes& pattern) {
  const Bytes source = Fill(std::max<std::size_t>(s.Bytes(), 1), pattern);
  const std::size_t room =
      std::max(s.Bytes(), std::size_t(s.Count()) * PixelBytes(t.pixel, t.data));
  Bytes before = inPlace ? Fill(s.Bytes(), pattern) : Bytes{};
  before.resize(room + kGuardBytes, kGuard);
  Bytes buffer = before;
  const bool ok = CZtImage::ConvertMemory(buffer.data(), inPlace ? buffer.data() : source.data(),
                                          t.Library(), s.Library());
  const std::string context = std::string(inPlace ? "ConvertMemory in place " : "ConvertMemory ") +
                              s.Text() + " -> " + t.Text();
  const bool expected = t == s || (Writable(t.pixel, t.data) && Readable(s.pixel, s.data));
  ZT_FUZZ_CHECK(ok == expected, context + (ok ? ": true" : ": false"));
  ExpectAfter(ok, inPlace, t, s, source.data(), buffer.data(), before, room, context);
}

// An image of `f` holding the pattern, or an invalid one for a size of 0.
CZtImage Image(const Format& f, const Bytes& pattern) {
  CZtImage image;
  if (f.width > 0 && f.height > 0) {
    ZT_FUZZ_CHECK(image.Create(f.width, f.height, f.pixel, f.data), "Create " + f.Text());
    const Bytes bytes = Fill(f.Bytes(), pattern);
    std::memcpy(image.GetDataPtr(), bytes.data(), bytes.size());
  }
  return image;
}

// ConvertType into a target it creates anew: the member form, or the static
// one with create true.
void TypeCreating(bool member, const Format& t, const Format& s, const Format& old,
                  const Bytes& pattern) {
  const CZtImage source = Image(s, pattern);
  CZtImage target = Image(old, Bytes{std::uint8_t(pattern[0] ^ 0x5A)});
  const Bytes oldBytes = target.IsValid() ? BytesOf(target, old.Bytes()) : Bytes{};
  const bool ok = member ? source.ConvertType(target, t.pixel, t.data)
                         : CZtImage::ConvertType(&target, &source, t.pixel, t.data, true);
  const std::string context =
      std::string(member ? "ConvertType " : "ConvertType created ") + s.Text() + " -> " + t.Text();
  if (!source.IsValid()) {  // nothing happens to the target
    ZT_FUZZ_CHECK(!ok, context + ": true from an invalid source");
    ZT_FUZZ_CHECK(target.IsValid() == !oldBytes.empty(), context + ": target validity changed");
    ZT_FUZZ_CHECK(
        !target.IsValid() || (FormatOf(target) == old && BytesOf(target, old.Bytes()) == oldBytes),
        context + ": target changed");
    return;
  }
  if (!Readable(t.pixel, t.data)) {  // Create refuses the type: the target is left empty
    ZT_FUZZ_CHECK(!ok && !target.IsValid(), context + ": an unknown type was created");
    return;
  }
  const Format created{s.width, s.height, t.pixel, t.data};
  ZT_FUZZ_CHECK(target.IsValid() && FormatOf(target) == created,
                context + ": target not created as " + created.Text());
  ZT_FUZZ_CHECK(ok == (t.SameTypes(s) || !IsBayer(t.pixel)), context + (ok ? ": true" : ": false"));
  ZT_FUZZ_CHECK(!ok || BytesOf(target, created.Bytes()) == Converted(t, s, source.GetDataPtr()),
                context + ": pixels differ");
}

// The static form with create false: only the target's memory is used, and
// its format stays. `inPlace` converts the source onto itself.
void TypeInto(bool inPlace, const Format& t, const Format& s, Format old, const Bytes& pattern) {
  CZtImage source = Image(s, pattern);
  const std::size_t written = std::size_t(s.Count()) * PixelBytes(t.pixel, t.data);
  if (inPlace && written > s.Bytes()) return;  // would overrun: the caller's fault
  // A target with room for what the conversion writes.
  old.height = 1;
  old.width =
      int(std::max(written, s.Bytes()) / PixelBytes(old.pixel, old.data)) + 1 + old.width % 4;
  CZtImage other = Image(old, Bytes{std::uint8_t(pattern[0] ^ 0x5A)});
  CZtImage& target = inPlace ? source : other;
  const Format kept = FormatOf(target);
  const Bytes before =
      target.IsValid() ? BytesOf(target, inPlace ? s.Bytes() : old.Bytes()) : Bytes{};
  const bool ok = CZtImage::ConvertType(&target, &source, t.pixel, t.data, false);
  const std::string context = std::string(inPlace ? "ConvertType in place " : "ConvertType into ") +
                              s.Text() + " -> " + t.Text();
  const bool expected = source.IsValid() && (t.SameTypes(s) || Writable(t.pixel, t.data));
  ZT_FUZZ_CHECK(ok == expected, context + (ok ? ": true" : ": false"));
  if (!target.IsValid()) return;
  ZT_FUZZ_CHECK(FormatOf(target) == kept, context + ": target format changed");
  ExpectAfter(ok, inPlace, t, s, source.GetDataPtr(),
              static_cast<const unsigned char*>(target.GetDataPtr()), before, before.size(),
              context);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const unsigned route = in.ConsumeIntegralInRange<unsigned>(0, 5);
  const bool images = route >= 2;
  Format s{};
  s.width = in.ConsumeIntegralInRange(0, kMaxSide);
  s.height = in.ConsumeIntegralInRange(0, kMaxSide);
  s.pixel = PickPixelType(in, images);
  s.data = PickDataType(in, images);
  Format t = s;
  if (!in.ConsumeBool()) {  // now and then the very same types
    t.pixel = PickPixelType(in, false);
    t.data = PickDataType(in, false);
  }
  if (in.ConsumeBool()) {  // and now and then another size
    t.width = in.ConsumeIntegralInRange(0, kMaxSide);
    t.height = in.ConsumeIntegralInRange(0, kMaxSide);
  }
  // The format a target image has before the call.
  Format old{in.ConsumeIntegralInRange(0, 6), in.ConsumeIntegralInRange(0, 6),
             PickPixelType(in, true), PickDataType(in, true)};
  Bytes pattern = in.ConsumeRemainingBytes<unsigned char>();
  if (pattern.empty()) pattern.push_back(0);
  switch (route) {
    case 0:
    case 1: Memory(route == 1, t, s, pattern); break;
    case 2:
    case 3: TypeCreating(route == 2, t, s, old, pattern); break;
    default: TypeInto(route == 5, t, s, old, pattern); break;
  }
  return 0;
}
