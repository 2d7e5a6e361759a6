// Random sequences of operations on the numeric, string and two-dimensional
// arrays, each array beside a plain model of what it must hold. After every
// operation each array is compared with its model; every failure must raise
// the chain of exceptions its contract names and leave the array as the
// contract says. The first byte picks the family.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtCoreEx.h"
#include "ZtFuzzCheck.h"

using ZtFuzz::AnyText;
using ZtFuzz::AnyValue;
using ZtFuzz::Chain;
using ZtFuzz::ExpectRaise;

namespace {

constexpr int kSlots = 3;
constexpr unsigned long long kMaxLength = 24;
constexpr unsigned long long kMaxExtent = 6;

// The element type of a numeric array, and its name in the library's
// messages.
template <class A>
using Elem = std::remove_pointer_t<decltype(std::declval<A&>().GetDataPtr())>;
template <class T>
constexpr const char* kType = std::is_same_v<T, double>          ? "double"
                              : std::is_same_v<T, int>           ? "int"
                              : std::is_same_v<T, unsigned char> ? "unsigned char"
                              : std::is_same_v<T, unsigned int>  ? "unsigned int"
                                                                 : "unsigned short";

// An index inside, at or just past the end, or far beyond.
unsigned long long AnyIndex(FuzzedDataProvider& in, unsigned long long length) {
  return in.ConsumeBool() ? in.ConsumeIntegralInRange<unsigned long long>(0, length + 1)
                          : in.PickValueInArray({length, ~0ull, 1ull << 32});
}

// Someone else's memory of any element width, as a block or a matrix.
class Foreign : public Zt::IMemoryAccess, public Zt::IMemory2DAccess {
public:
  Foreign(unsigned long long width, unsigned long long rows, unsigned long long columns,
          FuzzedDataProvider& in)
      : m_Width(width), m_Rows(rows), m_Columns(columns), m_Bytes(width * rows * columns + 1) {
    for (auto& b : m_Bytes) b = in.ConsumeIntegral<unsigned char>();
  }
  unsigned long long GetElementSize() const override { return m_Width; }
  unsigned long long Length() const override { return m_Rows * m_Columns; }
  void GetSize(unsigned long long& rows, unsigned long long& columns) const override {
    rows = m_Rows;
    columns = m_Columns;
  }
  const void* GetPointer() const override { return m_Bytes.data(); }
  bool IsValid() const override { return true; }

private:
  unsigned long long m_Width, m_Rows, m_Columns;
  std::vector<unsigned char> m_Bytes;
};

template <class T>
std::vector<T> ElementsOf(const void* bytes, unsigned long long count) {
  std::vector<T> elements(count);
  if (count != 0) std::memcpy(elements.data(), bytes, count * sizeof(T));
  return elements;
}

// Compares bit patterns, so that NaNs compare equal to themselves.
template <class T>
bool SameBits(const T* actual, const std::vector<T>& expected, std::size_t count) {
  return count == 0 || std::memcmp(actual, expected.data(), count * sizeof(T)) == 0;
}

// `op` must raise std::length_error.
template <class Op>
void ExpectLengthError(Op&& op, const std::string& context) {
  try {
    op();
  } catch (std::length_error&) {
    return;
  }
  ZT_FUZZ_CHECK(false, context + " raised no length_error");
}

struct Strings {
  using Model = std::optional<std::vector<std::string>>;  // none while invalid
  std::unique_ptr<Zt::CZtArrayString> array = std::make_unique<Zt::CZtArrayString>();
  Model model = std::vector<std::string>();

  static Chain Failure(const std::vector<const char*>& messages, const char* member) {
    Chain chain;
    for (const char* message : messages)
      chain.push_back({message, std::string("Zt::CZtArrayString::") + member, "ZtArrayString"});
    return chain;
  }

  void Step(FuzzedDataProvider& in, Strings& other) {
    const unsigned long long n = in.ConsumeIntegralInRange<unsigned long long>(0, kMaxLength);
    Zt::CZtArrayString& a = *array;
    const char* const invalid = "Nullptr --> Array Data Invalid";
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
        model = ZtFuzz::SplitFields(text, delimiter);
        break;
      }
      case 1:
        a.New(n);
        model = std::vector<std::string>(n);
        break;
      case 2:
      case 4:
        if (!model) {  // Resize or Reset of an invalid array
          ExpectRaise([&] { operation == 2 ? a.Resize(n) : a.Reset(); },
                      operation == 2 ? Failure({"Error resizing Array", invalid}, "Resize")
                                     : Failure({invalid}, "Reset"),
                      "an invalid string array");
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
          const Chain failure =
              Failure({model ? "Array index out of bounds" : invalid}, "operator []");
          ExpectRaise([&] { (void)a[index]; }, failure, "string array operator []");
          ExpectRaise([&] { (void)constant[index]; }, failure, "string array const operator []");
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
    for (std::size_t i = 0; i < length; ++i)
      ZT_FUZZ_CHECK((*model)[i] == a[i].ToCString(), "string " + std::to_string(i));
  }
};

// Each copy or assignment of a two-dimensional array leaves the replaced
// matrix allocated for good, a matrix made by any earlier operation among
// them. So runs with copies turn the leak checker off for their whole length
// and runs without keep it on; and this many copies are allowed per process,
// so that a long run stays within its memory.
long g_CopiesLeft = 1 << 14;
bool g_Copies = false;

// A numeric array of one or two dimensions beside its model: extents (one
// row for a one-dimensional array, none once emptied), the elements row by
// row, and whether the array has ever had storage. The two kinds differ: a
// new two-dimensional array is invalid until it has storage, its New keeps
// the elements in linear order, its Resize keeps them at their row and
// column, and assigning it to itself empties it.
template <class A>
struct Numeric {
  using T = Elem<A>;
  static constexpr bool k2D = std::is_base_of_v<Zt::IMemory2D, A>;
  using Memory = std::conditional_t<k2D, Zt::IMemory2D, Zt::IMemory>;
  using Access = std::conditional_t<k2D, Zt::IMemory2DAccess, Zt::IMemoryAccess>;
  using Other = std::conditional_t<std::is_same_v<T, int>, Zt::CZtArray2DDouble, Zt::CZtArray2DInt>;
  static constexpr const char* kBase = k2D ? "CZtArray2DBase" : "CZtArrayBase";
  std::unique_ptr<A> array = std::make_unique<A>();
  unsigned long long rows = 0, columns = 0;
  std::vector<T> elements;
  bool storage = false;

  static Chain Failure(const char* message, const std::string& member, const char* base = kBase) {
    const std::string file = std::string(base).substr(1);
    return {{message, "Zt::" + std::string(base) + "<" + kType<T> + ">::" + member,
             std::string(file == "ZtMatrix" ? "source\\zt.core.math\\" : "source\\zt.core.ex\\") +
                 file}};
  }

  void SetDimensions(unsigned long long r, unsigned long long c) {
    rows = r;
    columns = c;
    elements.resize(r * c, T());
    storage = storage || r * c > 0;
  }
  // Keeps each element at its row and column.
  void ResizeModel(unsigned long long r, unsigned long long c) {
    const bool wasEmpty = rows == 0 || columns == 0;
    if (wasEmpty || r == 0 || c == 0) {  // from empty as asked; to empty in both extents
      SetDimensions(wasEmpty ? r : 0, wasEmpty ? c : 0);
      return;
    }
    std::vector<T> resized(r * c, T());
    for (unsigned long long y = 0; y < std::min(rows, r); ++y) {
      for (unsigned long long x = 0; x < std::min(columns, c); ++x)
        resized[y * c + x] = elements[y * columns + x];
    }
    rows = r;
    columns = c;
    elements = resized;
  }

  void Step(FuzzedDataProvider& in, Numeric& other) {
    const unsigned long long r = k2D ? in.ConsumeIntegralInRange(0ull, kMaxExtent) : 1;
    const unsigned long long c = in.ConsumeIntegralInRange(0ull, k2D ? kMaxExtent : kMaxLength);
    // Calls `op` with the extents as the array takes them.
    auto extents = [&](auto op) {
      if constexpr (k2D) {
        op(r, c);
      } else {
        op(c);
      }
    };
    Memory& memory = *array;  // as a caller unaware of the type
    const std::string context = std::string(kType<T>) + (k2D ? " 2D array" : " array");
    switch (in.ConsumeIntegralInRange(0, k2D ? 8 : 10)) {
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
        extents([&](auto... e) { memory.New(e...); });
        if (!k2D) elements.clear();  // the new extents over the old elements in their linear order
        SetDimensions(r, c);
        break;
      case 2:
        extents([&](auto... e) { memory.Resize(e...); });
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
      case 5: {  // another array of the family, or this one
        memory.CopyFrom(other.array.get());
        const std::vector<T> copied(other.elements);
        SetDimensions(other.rows, other.columns);
        elements = copied;
        break;
      }
      case 6: {  // someone else's memory, or the other family: only the width must agree
        const Foreign foreign(
            k2D ? in.PickValueInArray({4ull, 8ull}) : in.PickValueInArray({1ull, 2ull, 4ull, 8ull}),
            r, c, in);
        const Access* source = &foreign;
        std::unique_ptr<Other> otherFamily;
        if constexpr (k2D) {
          otherFamily = std::make_unique<Other>(r, c);
          if (!in.ConsumeBool()) source = otherFamily.get();
        }
        if (source->GetElementSize() != sizeof(T)) {
          ExpectRaise([&] { memory.CopyFrom(source); },
                      k2D ? Failure("cannot copy Memory2D, elementSize is different", "CopyFrom",
                                    "CZtMatrix")
                          : Failure("Element sizes of memory blocks do not agree", "CopyFrom"),
                      context + ": CopyFrom of another width");
          break;
        }
        memory.CopyFrom(source);
        SetDimensions(r, c);
        elements = ElementsOf<T>(source->GetPointer(), r * c);
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
          const Chain failure = Failure(
              storage || !k2D ? "Array index out of bounds" : "Nullptr --> Array Data Invalid",
              k2D ? "operator ()" : "operator []");
          ExpectRaise([&] { (void)at(*array); }, failure, context + ": a non-const element");
          ExpectRaise([&] { (void)at(constant); }, failure, context + ": a const element");
          break;
        }
        at(*array) = elements[row * columns + column] = AnyValue<T>(in);
        ZT_FUZZ_CHECK(&at(constant) == array->GetDataPtr() + row * columns + column,
                      context + ": the element is elsewhere");
        break;
      }
      case 8: {  // copy construction, or assignment, itself included
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
      case 9:
        ExpectRaise([&] { memory.CopyFrom(nullptr); },
                    Failure("Invalid memory interface pointer", "CopyFrom"),
                    context + ": CopyFrom(nullptr)");
        break;
      default:  // lengths beyond the vector: New empties before it fails
        if constexpr (!k2D) {
          if (in.ConsumeBool()) {
            ExpectLengthError([&] { memory.Resize(~0ull); }, context + ": Resize(~0)");
          } else {
            ExpectLengthError([&] { memory.New(~0ull); }, context + ": New(~0)");
            SetDimensions(0, 0);
          }
        }
        break;
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
    ZT_FUZZ_CHECK(r == rows && c == columns && a.GetElementSize() == sizeof(T) &&
                      a.IsValid() == (storage || !k2D) && (a.GetDataPtr() != nullptr) == storage &&
                      a.GetPointer() == a.GetDataPtr() && SameBits(a.GetDataPtr(), elements, r * c),
                  std::string(kType<T>) + (k2D ? " 2D array " : " array ") + std::to_string(r) +
                      "x" + std::to_string(c));
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const int family = in.ConsumeIntegralInRange(0, 7);
  // Few runs copy two-dimensional arrays: each sends the fuzzer looking for
  // the leak, which costs as much as many runs.
  g_Copies = family >= 6 && in.ConsumeIntegralInRange(0, 7) == 0;
  std::optional<ZtTest::ZtExpectedLeak> replacedMatrices;
  if (g_Copies) replacedMatrices.emplace();
  switch (family) {
    case 0: ZtFuzz::Run<Numeric<Zt::CZtArrayDouble>, kSlots>(in); break;
    case 1: ZtFuzz::Run<Numeric<Zt::CZtArrayInt>, kSlots>(in); break;
    case 2: ZtFuzz::Run<Numeric<Zt::CZtArrayUChar>, kSlots>(in); break;
    case 3: ZtFuzz::Run<Numeric<Zt::CZtArrayUInt>, kSlots>(in); break;
    case 4: ZtFuzz::Run<Numeric<Zt::CZtArrayUShort>, kSlots>(in); break;
    case 5: ZtFuzz::Run<Strings, kSlots>(in); break;
    case 6: ZtFuzz::Run<Numeric<Zt::CZtArray2DDouble>, kSlots>(in); break;
    default: ZtFuzz::Run<Numeric<Zt::CZtArray2DInt>, kSlots>(in); break;
  }
  return 0;
}
