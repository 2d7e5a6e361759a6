// Pixel conversion of random formats (unknown ones too), sizes and samples against the reference,
// through ConvertType and ConvertMemory, apart and in place: every `false` and every byte.

#include "ZtConvertReference.h"
#include "ZtConvertTesting.h"
#include "ZtFuzzCheck.h"
#include "ZtImage.h"

using Zt::CZtImage;
using namespace ZtTest;

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

// What converting `s` to the types of `t` writes: the source itself, or the reference's result.
Bytes Converted(const Format& t, const Format& s, const void* source) {
  const auto* p = static_cast<const unsigned char*>(source);
  if (t.SameTypes(s)) return Bytes(p, p + s.Bytes());
  return ZtConvertRef::ConvertImage(t.pixel, t.data, s.pixel, s.data, s.Count(), source);
}

// In place, the result is settled for the same types or target pixels of the source's shape.
bool SettledInPlace(const Format& t, const Format& s) {
  return t.SameTypes(s) ||
         (Writable(t.pixel, t.data) && Components(t.pixel) == Components(s.pixel) &&
          SampleBytes(t.data) == SampleBytes(s.data));
}

// That result: per pixel red, green and blue each read as the buffer stands and stored before the
// next is read, then a second pass writes every alpha.
void ConvertInPlace(unsigned char* buffer, const Format& t, const Format& s) {
  if (t.SameTypes(s)) return;
  const int to = ZtConvertRef::LayoutIndex(t.pixel);
  const ZtConvertRef::Mapping& m = ZtConvertRef::kTable[ZtConvertRef::LayoutIndex(s.pixel)][to];
  // Target positions of red, green and blue (or luminance), and of alpha.
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

// `actual` holds `before` with, if `ok`, the converted pixels in front or the settled in-place
// result; an unsettled in-place result is known only behind `room`.
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

// ConvertMemory apart or in place: it runs a cell for a writable target and readable source.
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

// ConvertType: routes 2 and 3 create the target (member and static form), 4 converts into its
// memory, keeping its format, and 5 in place.
void Type(unsigned route, const Format& t, const Format& s, Format old, const Bytes& pattern) {
  const bool create = route < 4, inPlace = route == 5;
  CZtImage source = Image(s, pattern);
  const std::size_t written = std::size_t(s.Count()) * PixelBytes(t.pixel, t.data);
  if (inPlace && written > s.Bytes()) return;  // would overrun: the caller's fault
  if (!create) {                               // a target with room for what the conversion writes
    old.height = 1;
    old.width =
        int(std::max(written, s.Bytes()) / PixelBytes(old.pixel, old.data)) + 1 + old.width % 4;
  }
  CZtImage other = Image(old, Bytes{std::uint8_t(pattern[0] ^ 0x5A)});
  CZtImage& target = inPlace ? source : other;
  const Format kept = FormatOf(target);
  const Bytes before =
      target.IsValid() ? BytesOf(target, inPlace ? s.Bytes() : old.Bytes()) : Bytes{};
  const bool ok = route == 2 ? source.ConvertType(target, t.pixel, t.data)
                             : CZtImage::ConvertType(&target, &source, t.pixel, t.data, create);
  const std::string context =
      "ConvertType route " + std::to_string(route) + " " + s.Text() + " -> " + t.Text();
  if (create && source.IsValid()) {  // a type Create refuses leaves the target empty
    const Format created{s.width, s.height, t.pixel, t.data};
    ZT_FUZZ_CHECK(Readable(t.pixel, t.data) ? target.IsValid() && FormatOf(target) == created
                                            : !ok && !target.IsValid(),
                  context + ": target not created as " + created.Text());
    ZT_FUZZ_CHECK(!target.IsValid() || ok == (t.SameTypes(s) || !IsBayer(t.pixel)),
                  context + (ok ? ": true" : ": false"));
    ZT_FUZZ_CHECK(!ok || BytesOf(target, created.Bytes()) == Converted(t, s, source.GetDataPtr()),
                  context + ": pixels differ");
    return;
  }
  const bool expected =
      !create && source.IsValid() && (t.SameTypes(s) || Writable(t.pixel, t.data));
  ZT_FUZZ_CHECK(ok == expected, context + (ok ? ": true" : ": false"));
  ZT_FUZZ_CHECK(target.IsValid() == !before.empty() && FormatOf(target) == kept,
                context + ": target format changed");
  if (!target.IsValid()) return;
  ExpectAfter(ok, inPlace, t, s, source.GetDataPtr(),
              static_cast<const unsigned char*>(target.GetDataPtr()), before, before.size(),
              context);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const unsigned route = in.ConsumeIntegralInRange<unsigned>(0, 5);
  const bool images = route >= 2;
  const Format s{in.ConsumeIntegralInRange(0, kMaxSide), in.ConsumeIntegralInRange(0, kMaxSide),
                 PickPixelType(in, images), PickDataType(in, images)};
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
    default: Type(route, t, s, old, pattern); break;
  }
  return 0;
}
