// Random operations on numeric, string and 2D arrays beside plain models, compared after each
// one; refusals must come where the model says and keep the array. The first byte picks the family.

#include <algorithm>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtCoreEx.h"
#include "ZtFuzzCheck.h"

using namespace ZtFuzz;

namespace {

constexpr unsigned long long kMaxLength = 24;
constexpr unsigned long long kMaxExtent = 6;

// An index inside, at or just past the end, or far beyond.
unsigned long long AnyIndex(FuzzedDataProvider& in, unsigned long long length) {
  return in.ConsumeBool() ? in.ConsumeIntegralInRange<unsigned long long>(0, length + 1)
                          : in.PickValueInArray({length, ~0ull, 1ull << 32});
}

// Someone else's memory of any element width, as a block or a matrix.
struct Foreign : Zt::IMemoryAccess, Zt::IMemory2DAccess {
  Foreign(unsigned long long w, unsigned long long r, unsigned long long c, FuzzedDataProvider& in)
      : width(w), rows(r), columns(c), bytes(in.ConsumeBytes<unsigned char>(w * r * c)) {
    bytes.resize(w * r * c + 1);
  }
  unsigned long long GetElementSize() const override { return width; }
  unsigned long long Length() const override { return rows * columns; }
  void GetSize(unsigned long long& r, unsigned long long& c) const override {
    r = rows, c = columns;
  }
  const void* GetPointer() const override { return bytes.data(); }
  bool IsValid() const override { return true; }
  unsigned long long width, rows, columns;
  std::vector<unsigned char> bytes;
};

// The fields of `text`: every delimiter ends one, empty ones included, and what
// follows the last is one if not empty. So "" has none, "a," one and "," one empty one.
inline std::vector<std::string> SplitFields(const std::string& text, char delimiter) {
  std::vector<std::string> fields(1);
  for (char c : text) c == delimiter ? fields.emplace_back() : fields.back() += c;
  if (fields.back().empty()) fields.pop_back();
  return fields;
}

struct Strings {
  using Model = std::optional<std::vector<std::string>>;  // none while invalid
  std::unique_ptr<Zt::CZtArrayString> array = std::make_unique<Zt::CZtArrayString>();
  Model model = std::vector<std::string>();

  void Step(FuzzedDataProvider& in, Strings& other) {
    const unsigned long long n = in.ConsumeIntegralInRange<unsigned long long>(0, kMaxLength);
    Zt::CZtArrayString& a = *array;
    const int operation = in.ConsumeIntegralInRange(0, 7);
    switch (operation) {
      case 0: {
        const int form = in.ConsumeIntegralInRange(0, 2);
        if (form < 2) {
          array = form == 0 ? std::make_unique<Zt::CZtArrayString>()
                            : std::make_unique<Zt::CZtArrayString>(n);
          model = std::vector<std::string>(form == 0 ? 0 : n);
          break;
        }
        const char delimiter = in.PickValueInArray({',', ';', ' ', '\xff'});
        const std::string text = AnyText(in, 12);
        array = std::make_unique<Zt::CZtArrayString>(Zt::CZtString(text.c_str()), delimiter);
        model = SplitFields(text, delimiter);
        break;
      }
      case 1:
        a.New(n);
        model = std::vector<std::string>(n);
        break;
      case 2:
      case 4:
        if (!model) {  // Resize or Reset of an invalid array
          ExpectRaise([&] { operation == 2 ? a.Resize(n) : a.Reset(); }, "an invalid string array");
        } else if (operation == 4) {
          a.Reset();
          std::fill(model->begin(), model->end(), std::string());
        } else {  // kept elements keep their addresses
          const Zt::CZtString* first = model->empty() ? nullptr : &a[0];
          a.Resize(n);
          model->resize(n);
          ZT_FUZZ_CHECK(n == 0 || first == nullptr || &a[0] == first, "Resize moved a string");
        }
        break;
      case 3:
        a.Delete();
        model.reset();
        break;
      case 5: {
        const unsigned long long index = AnyIndex(in, model ? model->size() : 0);
        const Zt::CZtArrayString& constant = a;
        if (!model || index >= model->size()) {
          ExpectRaise([&] { (void)a[index]; }, "string array operator []");
          ExpectRaise([&] { (void)constant[index]; }, "string array const operator []");
          break;
        }
        const std::string text = AnyText(in, 12);
        a[index] = text.c_str();
        (*model)[index] = text;
        ZT_FUZZ_CHECK(&constant[index] == &a[index], "the const element is another one");
        break;
      }
      case 6:  // a copy of an invalid array is invalid
        array = std::make_unique<Zt::CZtArrayString>(*other.array);
        model = Model(other.model);
        break;
      default:  // assigning an array to itself destroys it
        a = *other.array;
        model = this == &other ? Model() : Model(other.model);
        break;
    }
  }

  void Verify() const {
    const Zt::CZtArrayString& a = *array;
    const std::size_t length = model ? model->size() : 0;
    ZT_FUZZ_CHECK(a.IsValid() == model.has_value() && a.Length() == length, "string array");
    for (std::size_t i = 0; i < length; ++i) {
      ZT_FUZZ_CHECK((*model)[i] == a[i].ToCString() && a[i].Length() == (*model)[i].size(),
                    "string " + std::to_string(i));
    }
  }
};

// A 2D copy or assignment leaks the replaced matrix for good: runs with copies turn the leak
// checker off throughout, and a process makes this many at most, to bound its memory.
[[maybe_unused]] long g_CopiesLeft = 1 << 14;
[[maybe_unused]] bool g_Copies = false;

// A numeric array beside its extents (one row in 1D, none once emptied), elements row by row and
// whether it ever had storage. A new 2D array is invalid until it has storage, its New keeps the
// linear order, its Resize rows and columns, and assigning it to itself empties it.
template <class A>
struct Numeric {
  using T = std::remove_pointer_t<decltype(std::declval<A&>().GetDataPtr())>;
  static constexpr bool k2D = std::is_base_of_v<Zt::IMemory2D, A>;
  using Memory = std::conditional_t<k2D, Zt::IMemory2D, Zt::IMemory>;
  using Access = std::conditional_t<k2D, Zt::IMemory2DAccess, Zt::IMemoryAccess>;
  std::unique_ptr<A> array = std::make_unique<A>();
  unsigned long long rows = 0, columns = 0;
  std::vector<T> elements;
  bool storage = false;

  // New and Resize with the extents as the array takes them.
  using Extent = unsigned long long;
  static void New(Zt::IMemory& m, Extent, Extent c) { m.New(c); }
  static void New(Zt::IMemory2D& m, Extent r, Extent c) { m.New(r, c); }
  static void Resize(Zt::IMemory& m, Extent, Extent c) { m.Resize(c); }
  static void Resize(Zt::IMemory2D& m, Extent r, Extent c) { m.Resize(r, c); }

  void SetDimensions(unsigned long long r, unsigned long long c) {
    rows = r;
    columns = c;
    elements.resize(r * c, T());
    storage = storage || r * c > 0;
  }
  // Keeps each element at its row and column; from empty as asked, to empty in both extents.
  void ResizeModel(unsigned long long r, unsigned long long c) {
    if (rows * columns > 0 && r * c == 0) r = c = 0;
    std::vector<T> resized(r * c, T());
    for (unsigned long long y = 0; y < std::min(rows, r); ++y) {
      for (unsigned long long x = 0; x < std::min(columns, c); ++x)
        resized[y * c + x] = elements[y * columns + x];
    }
    elements = resized;
    SetDimensions(r, c);
  }

  void Step(FuzzedDataProvider& in, Numeric& other) {
    const unsigned long long r = k2D ? in.ConsumeIntegralInRange(0ull, kMaxExtent) : 1;
    const unsigned long long c = in.ConsumeIntegralInRange(0ull, k2D ? kMaxExtent : kMaxLength);
    Memory& memory = *array;  // as a caller unaware of the type
    const std::string context =
        std::to_string(sizeof(T)) + (k2D ? "-byte 2D array" : "-byte array");
    switch (in.ConsumeIntegralInRange(0, 8)) {
      case 0:
        if constexpr (k2D) {
          *this = Numeric();
          if (!in.ConsumeBool()) {
            array = std::make_unique<A>(r, c);
            SetDimensions(r, c);
          }
        } else {
          const bool zero = in.ConsumeBool();
          const T value = zero ? T() : AnyValue<T>(in);
          *this = Numeric{zero ? std::make_unique<A>(c) : std::make_unique<A>(c, value), 1, c,
                          std::vector<T>(c, value), c > 0};
        }
        break;
      case 1:
        New(memory, r, c);
        if (!k2D) elements.clear();  // the new extents over the old elements in their linear order
        SetDimensions(r, c);
        break;
      case 2:
        Resize(memory, r, c);
        ResizeModel(r, c);
        break;
      case 3: {
        const void* before = array->GetDataPtr();
        memory.Delete();
        SetDimensions(0, 0);
        ZT_FUZZ_CHECK(array->GetDataPtr() == before, context + ": Delete moved the storage");
        break;
      }
      case 4:
        memory.Reset();
        std::fill(elements.begin(), elements.end(), T());
        break;
      case 5:  // another array of the family, or this one
        memory.CopyFrom(other.array.get());
        elements = other.elements;
        SetDimensions(other.rows, other.columns);
        break;
      case 6: {  // someone else's memory: only the width must agree
        const Foreign foreign(
            k2D ? in.PickValueInArray({4ull, 8ull}) : in.PickValueInArray({1ull, 2ull, 4ull, 8ull}),
            r, c, in);
        const Access* source = &foreign;
        if (source->GetElementSize() != sizeof(T)) {
          ExpectRaise([&] { memory.CopyFrom(source); }, context + ": CopyFrom of another width");
          break;
        }
        memory.CopyFrom(source);
        SetDimensions(r, c);
        const T* copied = static_cast<const T*>(source->GetPointer());
        elements.assign(copied, copied + r * c);
        break;
      }
      case 7: {
        const unsigned long long row = k2D ? AnyIndex(in, rows) : 0;
        const unsigned long long column = AnyIndex(in, columns);
        const A& constant = *array;
        auto at = [&](auto& a) -> auto& {
          if constexpr (k2D) {
            return a(row, column);
          } else {
            return a[column];
          }
        };
        if ((k2D && !storage) || row >= rows || column >= columns) {
          ExpectRaise([&] { (void)at(*array); }, context + ": a non-const element");
          ExpectRaise([&] { (void)at(constant); }, context + ": a const element");
          break;
        }
        at(*array) = elements[row * columns + column] = AnyValue<T>(in);
        ZT_FUZZ_CHECK(&at(constant) == array->GetDataPtr() + row * columns + column,
                      context + ": the element is elsewhere");
        break;
      }
      default: {  // copy construction, or assignment, itself included
        if (k2D && (!g_Copies || g_CopiesLeft-- <= 0)) break;
        const bool construct = (!k2D || this != &other) && in.ConsumeBool();
        Numeric copy;
        copy.storage = !k2D && !construct && storage;  // an assigned vector keeps its storage
        if (construct) {
          copy.array = std::make_unique<A>(*other.array);
        } else {  // a matrix assigned to itself empties: the copy reads the new, empty one
          *array = *other.array;
          copy.array = std::move(array);
        }
        if (!k2D || this != &other) {
          copy.SetDimensions(other.rows, other.columns);
          copy.elements = other.elements;
        }
        *this = std::move(copy);
        break;
      }
    }
  }

  void Verify() const {
    const A& a = *array;
    unsigned long long r = rows, c = columns;
    if constexpr (k2D) {
      a.GetSize(r, c);
    } else if (a.Length() != rows * columns) {
      c = a.Length();
    }
    const bool sameBits =  // so that NaNs equal themselves
        r * c == 0 || std::memcmp(a.GetDataPtr(), elements.data(), r * c * sizeof(T)) == 0;
    ZT_FUZZ_CHECK(r == rows && c == columns && a.GetElementSize() == sizeof(T) &&
                      a.IsValid() == (storage || !k2D) && (a.GetDataPtr() != nullptr) == storage &&
                      a.GetPointer() == a.GetDataPtr() && sameBits,
                  std::to_string(sizeof(T)) + (k2D ? "-byte 2D array " : "-byte array ") +
                      std::to_string(r) + "x" + std::to_string(c));
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
#ifdef ZT_FUZZ_SPLIT  // the split constructor alone: the first byte is the delimiter
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  Strings split;
  split.array = std::make_unique<Zt::CZtArrayString>(Zt::CZtString(text.c_str()), char(data[0]));
  split.model = SplitFields(text.substr(0, text.find('\0')), char(data[0]));
  split.Verify();
#else
  FuzzedDataProvider in(data, size);
  const int family = in.ConsumeIntegralInRange(0, 7);
  // Few runs copy 2D arrays: each sends the fuzzer after the leak, as costly as many runs.
  g_Copies = family >= 6 && in.ConsumeIntegralInRange(0, 7) == 0;
  std::optional<ZtTest::ZtExpectedLeak> replacedMatrices;
  if (g_Copies) replacedMatrices.emplace();
  void (*const runs[])(FuzzedDataProvider&) = {
      Run<Numeric<Zt::CZtArrayDouble>>,   Run<Numeric<Zt::CZtArrayInt>>,
      Run<Numeric<Zt::CZtArrayUChar>>,    Run<Numeric<Zt::CZtArrayUInt>>,
      Run<Numeric<Zt::CZtArrayUShort>>,   Run<Strings>,
      Run<Numeric<Zt::CZtArray2DDouble>>, Run<Numeric<Zt::CZtArray2DInt>>};
  runs[family](in);
#endif
  return 0;
}
