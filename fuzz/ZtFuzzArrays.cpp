// Random sequences of operations on the numeric, string and two-dimensional
// arrays, each array beside a plain model of what it must hold. After every
// operation each array is compared with its model; every failure must raise
// the chain of exceptions its contract names and leave the array as the
// contract says. The first byte picks the family.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtCoreEx.h"
#include "ZtFuzzCheck.h"
#include "ZtFuzzModels.h"

using ZtFuzz::Chain;
using ZtFuzz::ExpectRaise;
using ZtFuzz::Link;

namespace {

constexpr int kSlots = 3;
constexpr int kMaxOperations = 64;
constexpr unsigned long long kMaxLength = 24;
constexpr unsigned long long kMaxExtent = 6;

// A value of any bit pattern, NaNs included.
template <class T>
T AnyValue(FuzzedDataProvider& in) {
  const std::uint64_t bits = in.ConsumeIntegral<std::uint64_t>();
  T value;
  std::memcpy(&value, &bits, sizeof(T));
  return value;
}

// An index inside, at or just past the end, or far beyond.
unsigned long long AnyIndex(FuzzedDataProvider& in, unsigned long long length) {
  return in.ConsumeBool() ? in.ConsumeIntegralInRange<unsigned long long>(0, length + 1)
                          : in.PickValueInArray({length, ~0ull, 1ull << 32});
}

// Memory of someone else's, of any element width.
class ForeignMemory : public Zt::IMemoryAccess {
public:
  ForeignMemory(unsigned long long width, unsigned long long length, FuzzedDataProvider& in)
      : m_Width(width), m_Length(length), m_Bytes(width * length + 1) {
    for (auto& b : m_Bytes) b = in.ConsumeIntegral<unsigned char>();
  }
  unsigned long long GetElementSize() const override { return m_Width; }
  unsigned long long Length() const override { return m_Length; }
  const void* GetPointer() const override { return m_Bytes.data(); }
  bool IsValid() const override { return true; }

private:
  unsigned long long m_Width, m_Length;
  std::vector<unsigned char> m_Bytes;
};

class ForeignMemory2D : public Zt::IMemory2DAccess {
public:
  ForeignMemory2D(unsigned long long width, unsigned long long rows, unsigned long long columns,
                  FuzzedDataProvider& in)
      : m_Width(width), m_Rows(rows), m_Columns(columns), m_Bytes(width * rows * columns + 1) {
    for (auto& b : m_Bytes) b = in.ConsumeIntegral<unsigned char>();
  }
  unsigned long long GetElementSize() const override { return m_Width; }
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
bool SameBits(const T* actual, const std::vector<T>& expected) {
  return expected.empty() || std::memcmp(actual, expected.data(), expected.size() * sizeof(T)) == 0;
}

// A run of operations on kSlots arrays of one family, each beside its
// model. Derived reads one operation from the input and applies it to a
// slot in Step, and compares a slot with its model in Verify.
template <class Derived, class Slot>
class Sequence {
public:
  explicit Sequence(FuzzedDataProvider& in) : m_In(in) {}

  void Run() {
    for (int n = 0; n < kMaxOperations && m_In.remaining_bytes() > 0; ++n) {
      static_cast<Derived*>(this)->Step(AnySlot());
      for (const Slot& slot : m_Slots) Derived::Verify(slot);
    }
  }

protected:
  Slot& AnySlot() { return m_Slots[m_In.ConsumeIntegralInRange(0, kSlots - 1)]; }

  FuzzedDataProvider& m_In;
  Slot m_Slots[kSlots];
};

// --- Numeric arrays -------------------------------------------------------------

template <class A, class T>
struct Family {
  using Array = A;
  using Elem = T;
};
struct DoubleArrays : Family<Zt::CZtArrayDouble, double> {
  static constexpr const char* Type = "double";
};
struct IntArrays : Family<Zt::CZtArrayInt, int> {
  static constexpr const char* Type = "int";
};
struct UCharArrays : Family<Zt::CZtArrayUChar, unsigned char> {
  static constexpr const char* Type = "unsigned char";
};
struct UIntArrays : Family<Zt::CZtArrayUInt, unsigned int> {
  static constexpr const char* Type = "unsigned int";
};
struct UShortArrays : Family<Zt::CZtArrayUShort, unsigned short> {
  static constexpr const char* Type = "unsigned short";
};

template <class F>
struct NumericSlot {
  std::unique_ptr<typename F::Array> array = std::make_unique<typename F::Array>();
  std::vector<typename F::Elem> model;
  bool storage = false;  // whether the vector has ever had storage
};

template <class F>
class NumericRun : public Sequence<NumericRun<F>, NumericSlot<F>> {
  using A = typename F::Array;
  using T = typename F::Elem;
  using Slot = NumericSlot<F>;
  using Sequence<NumericRun, Slot>::m_In;

public:
  using Sequence<NumericRun, Slot>::Sequence;

private:
  friend Sequence<NumericRun, Slot>;

  static Link BaseFailure(const char* message, const char* member) {
    return {message, std::string("Zt::CZtArrayBase<") + F::Type + ">::" + member,
            "source\\zt.core.ex\\ZtArrayBase"};
  }

  void Step(Slot& s) {
    Slot& other = this->AnySlot();
    const unsigned long long n =
        m_In.template ConsumeIntegralInRange<unsigned long long>(0, kMaxLength);
    Zt::IMemory& memory = *s.array;  // as a caller unaware of the type
    const std::string context = std::string(F::Type) + " array";
    switch (m_In.ConsumeIntegralInRange(0, 10)) {
      case 0: {
        if (m_In.ConsumeBool()) {
          s.array = std::make_unique<A>(n);
          s.model.assign(n, T());
        } else {
          const T value = AnyValue<T>(m_In);
          s.array = std::make_unique<A>(n, value);
          s.model.assign(n, value);
        }
        s.storage = n > 0;
        break;
      }
      case 1:
        memory.New(n);
        s.model.assign(n, T());
        s.storage = s.storage || n > 0;
        break;
      case 2:
        memory.Resize(n);
        s.model.resize(n, T());
        s.storage = s.storage || n > 0;
        break;
      case 3: {
        const void* before = s.array->GetDataPtr();
        memory.Delete();
        s.model.clear();
        ZT_FUZZ_CHECK(s.array->GetDataPtr() == before, context + ": Delete moved the storage");
        break;
      }
      case 4:
        memory.Reset();
        std::fill(s.model.begin(), s.model.end(), T());
        break;
      case 5:  // another array of the family, or this one
        memory.CopyFrom(other.array.get());
        s.model = std::vector<T>(other.model);
        s.storage = s.storage || !s.model.empty();
        break;
      case 6: {  // someone else's memory: only the width must agree
        const ForeignMemory source(m_In.PickValueInArray({1ull, 2ull, 4ull, 8ull}), n, m_In);
        if (source.GetElementSize() != sizeof(T)) {
          ExpectRaise([&] { memory.CopyFrom(&source); },
                      {BaseFailure("Element sizes of memory blocks do not agree", "CopyFrom")},
                      context + ": CopyFrom of another width");
          break;
        }
        memory.CopyFrom(&source);
        s.model = ElementsOf<T>(source.GetPointer(), n);
        s.storage = s.storage || n > 0;
        break;
      }
      case 7:
        ExpectRaise([&] { memory.CopyFrom(nullptr); },
                    {BaseFailure("Invalid memory interface pointer", "CopyFrom")},
                    context + ": CopyFrom(nullptr)");
        break;
      case 8: {
        const unsigned long long index = AnyIndex(m_In, s.model.size());
        const A& constant = *s.array;
        if (index >= s.model.size()) {
          const Chain outside{BaseFailure("Array index out of bounds", "operator []")};
          ExpectRaise([&] { (void)(*s.array)[index]; }, outside, context + ": operator []");
          ExpectRaise([&] { (void)constant[index]; }, outside, context + ": const operator []");
          break;
        }
        const T value = AnyValue<T>(m_In);
        (*s.array)[index] = value;
        s.model[index] = value;
        ZT_FUZZ_CHECK(&constant[index] == s.array->GetDataPtr() + index,
                      context + ": operator [] is not the element");
        break;
      }
      case 9:  // copy construction, or assignment, itself included
        if (m_In.ConsumeBool()) {
          s.array = std::make_unique<A>(*other.array);
          s.storage = !other.model.empty();
        } else {
          *s.array = *other.array;
          s.storage = s.storage || !other.model.empty();
        }
        s.model = std::vector<T>(other.model);
        break;
      default:  // lengths beyond the vector: New empties before it fails
        if (m_In.ConsumeBool()) {
          bool raised = false;
          try {
            memory.Resize(~0ull);
          } catch (std::length_error&) {
            raised = true;
          }
          ZT_FUZZ_CHECK(raised, context + ": Resize(~0) raised no length_error");
        } else {
          bool raised = false;
          try {
            memory.New(~0ull);
          } catch (std::length_error&) {
            raised = true;
          }
          ZT_FUZZ_CHECK(raised, context + ": New(~0) raised no length_error");
          s.model.clear();
        }
        break;
    }
  }

  static void Verify(const Slot& s) {
    const A& a = *s.array;
    const std::string context = std::string(F::Type) + " array";
    ZT_FUZZ_CHECK(a.IsValid() && a.GetElementSize() == sizeof(T), context);
    ZT_FUZZ_CHECK(a.Length() == s.model.size(), context + ": length " + std::to_string(a.Length()) +
                                                    ", expected " + std::to_string(s.model.size()));
    ZT_FUZZ_CHECK(a.GetPointer() == a.GetDataPtr(), context + ": GetPointer is not GetDataPtr");
    ZT_FUZZ_CHECK((a.GetDataPtr() != nullptr) == s.storage,
                  context + (s.storage ? ": storage lost" : ": storage without a length"));
    ZT_FUZZ_CHECK(SameBits(a.GetDataPtr(), s.model), context + ": contents differ");
  }
};

// --- String arrays -------------------------------------------------------------

// A text as a CZtString holds it: up to the first NUL.
std::string AnyText(FuzzedDataProvider& in) {
  const std::string text = in.ConsumeRandomLengthString(12);
  return text.substr(0, text.find('\0'));
}

struct StringSlot {
  std::unique_ptr<Zt::CZtArrayString> array = std::make_unique<Zt::CZtArrayString>();
  std::optional<std::vector<std::string>> model =
      std::vector<std::string>();  // empty while invalid
};

class StringRun : public Sequence<StringRun, StringSlot> {
  using Slot = StringSlot;
  using Model = std::optional<std::vector<std::string>>;

public:
  using Sequence::Sequence;

private:
  friend Sequence;

  static Link Failure(const char* message, const char* member) {
    return {message, std::string("Zt::CZtArrayString::") + member, "ZtArrayString"};
  }

  void Step(Slot& s) {
    Slot& other = AnySlot();
    const unsigned long long n = m_In.ConsumeIntegralInRange<unsigned long long>(0, kMaxLength);
    Zt::CZtArrayString& a = *s.array;
    switch (m_In.ConsumeIntegralInRange(0, 7)) {
      case 0:
        switch (m_In.ConsumeIntegralInRange(0, 2)) {
          case 0:
            s.array = std::make_unique<Zt::CZtArrayString>();
            s.model = std::vector<std::string>();
            break;
          case 1:
            s.array = std::make_unique<Zt::CZtArrayString>(n);
            s.model = std::vector<std::string>(n);
            break;
          default: {
            const char delimiter = m_In.PickValueInArray({',', ';', ' ', '\xff'});
            const std::string text = AnyText(m_In);
            s.array = std::make_unique<Zt::CZtArrayString>(Zt::CZtString(text.c_str()), delimiter);
            s.model = ZtFuzz::SplitFields(text, delimiter);
            break;
          }
        }
        break;
      case 1:
        a.New(n);
        s.model = std::vector<std::string>(n);
        break;
      case 2: {
        if (!s.model) {
          ExpectRaise([&] { a.Resize(n); },
                      {Failure("Error resizing Array", "Resize"),
                       Failure("Nullptr --> Array Data Invalid", "Resize")},
                      "Resize of an invalid string array");
          break;
        }
        // Kept elements keep their addresses.
        const Zt::CZtString* first = s.model->empty() ? nullptr : &a[0];
        a.Resize(n);
        s.model->resize(n);
        ZT_FUZZ_CHECK(n == 0 || first == nullptr || &a[0] == first, "Resize moved a kept string");
        break;
      }
      case 3:
        a.Delete();
        s.model.reset();
        break;
      case 4:
        if (!s.model) {
          ExpectRaise([&] { a.Reset(); }, {Failure("Nullptr --> Array Data Invalid", "Reset")},
                      "Reset of an invalid string array");
          break;
        }
        a.Reset();
        std::fill(s.model->begin(), s.model->end(), std::string());
        break;
      case 5: {
        const unsigned long long index = AnyIndex(m_In, s.model ? s.model->size() : 0);
        const Zt::CZtArrayString& constant = a;
        if (!s.model || index >= s.model->size()) {
          const Chain failure{
              Failure(s.model ? "Array index out of bounds" : "Nullptr --> Array Data Invalid",
                      "operator []")};
          ExpectRaise([&] { (void)a[index]; }, failure, "string array operator []");
          ExpectRaise([&] { (void)constant[index]; }, failure, "string array const operator []");
          break;
        }
        const std::string text = AnyText(m_In);
        a[index] = text.c_str();
        (*s.model)[index] = text;
        ZT_FUZZ_CHECK(&constant[index] == &a[index], "the const element is another one");
        break;
      }
      case 6:  // a copy of an invalid array is invalid
        s.array = std::make_unique<Zt::CZtArrayString>(*other.array);
        s.model = Model(other.model);
        break;
      default:  // assigning an array to itself destroys it
        a = *other.array;
        s.model = &s == &other ? Model() : Model(other.model);
        break;
    }
  }

  static void Verify(const Slot& s) {
    const Zt::CZtArrayString& a = *s.array;
    ZT_FUZZ_CHECK(a.IsValid() == s.model.has_value(),
                  s.model ? "string array invalid" : "string array valid");
    const std::size_t length = s.model ? s.model->size() : 0;
    ZT_FUZZ_CHECK(a.Length() == length, "string array length " + std::to_string(a.Length()) +
                                            ", expected " + std::to_string(length));
    for (std::size_t i = 0; i < length; ++i) {
      ZT_FUZZ_CHECK((*s.model)[i] == a[i].ToCString(), "string " + std::to_string(i) + " is \"" +
                                                           a[i].ToCString() + "\", expected \"" +
                                                           (*s.model)[i] + "\"");
    }
  }
};

// --- Two-dimensional arrays ------------------------------------------------------

struct Double2DArrays : Family<Zt::CZtArray2DDouble, double> {
  using Other = Zt::CZtArray2DInt;
  static constexpr const char* Type = "double";
};
struct Int2DArrays : Family<Zt::CZtArray2DInt, int> {
  using Other = Zt::CZtArray2DDouble;
  static constexpr const char* Type = "int";
};

// Each copy or assignment of a two-dimensional array leaves the replaced
// matrix allocated for good, a matrix made by any earlier operation among
// them. So runs with copies turn the leak checker off for their whole length
// and runs without keep it on; and this many copies are allowed per process,
// so that a long run stays within its memory.
long g_CopiesLeft = 1 << 14;

// The matrix: extents, the vector's elements, and whether it has storage.
template <class F>
struct Slot2D {
  using T = typename F::Elem;
  std::unique_ptr<typename F::Array> array = std::make_unique<typename F::Array>();
  unsigned long long rows = 0, columns = 0;
  std::vector<T> elements;
  bool storage = false;

  void SetDimensions(unsigned long long r, unsigned long long c) {
    rows = r;
    columns = c;
    elements.resize(r * c, T());
    storage = storage || r * c > 0;
  }
  // Keeps each element at its row and column.
  void Resize(unsigned long long r, unsigned long long c) {
    const unsigned long long oldRows = rows, oldColumns = columns;
    if (r == oldRows && c == oldColumns) return;
    if (oldRows == 0 || oldColumns == 0) {
      SetDimensions(r, c);
    } else if (r == 0 || c == 0) {
      SetDimensions(0, 0);
    } else {
      std::vector<T> resized(r * c, T());
      for (unsigned long long y = 0; y < std::min(oldRows, r); ++y) {
        for (unsigned long long x = 0; x < std::min(oldColumns, c); ++x) {
          resized[y * c + x] = elements[y * oldColumns + x];
        }
      }
      rows = r;
      columns = c;
      elements = resized;
      storage = true;
    }
  }
};

template <class F>
class Run2D : public Sequence<Run2D<F>, Slot2D<F>> {
  using A = typename F::Array;
  using T = typename F::Elem;
  using Slot = Slot2D<F>;
  using Sequence<Run2D, Slot>::m_In;

public:
  Run2D(FuzzedDataProvider& in, bool copies) : Sequence<Run2D, Slot>(in), m_Copies(copies) {}

private:
  friend Sequence<Run2D, Slot>;

  void Step(Slot& s) {
    Slot& other = this->AnySlot();
    const unsigned long long r =
        m_In.template ConsumeIntegralInRange<unsigned long long>(0, kMaxExtent);
    const unsigned long long c =
        m_In.template ConsumeIntegralInRange<unsigned long long>(0, kMaxExtent);
    Zt::IMemory2D& memory = *s.array;
    const std::string context = std::string(F::Type) + " 2D array";
    switch (m_In.ConsumeIntegralInRange(0, 8)) {
      case 0:
        if (m_In.ConsumeBool()) {
          s = Slot();
        } else {
          s = Slot();
          s.array = std::make_unique<A>(r, c);
          s.SetDimensions(r, c);
        }
        break;
      case 1:  // the new extents over the old elements in their linear order
        memory.New(r, c);
        s.SetDimensions(r, c);
        break;
      case 2:
        memory.Resize(r, c);
        s.Resize(r, c);
        break;
      case 3:
        memory.Delete();
        s.SetDimensions(0, 0);
        break;
      case 4:
        memory.Reset();
        std::fill(s.elements.begin(), s.elements.end(), T());
        break;
      case 5: {  // another array of the family, or this one
        memory.CopyFrom(other.array.get());
        const std::vector<T> copied(other.elements);
        s.SetDimensions(other.rows, other.columns);
        s.elements = copied;
        break;
      }
      case 6: {  // someone else's memory, or the other family: widths must agree
        const ForeignMemory2D foreign(m_In.PickValueInArray({4ull, 8ull}), r, c, m_In);
        const typename F::Other otherFamily(r, c);
        const Zt::IMemory2DAccess& source =
            m_In.ConsumeBool() ? static_cast<const Zt::IMemory2DAccess&>(foreign) : otherFamily;
        if (source.GetElementSize() != sizeof(T)) {
          ExpectRaise([&] { memory.CopyFrom(&source); },
                      {{"cannot copy Memory2D, elementSize is different",
                        std::string("Zt::CZtMatrix<") + F::Type + ">::CopyFrom",
                        "source\\zt.core.math\\ZtMatrix"}},
                      context + ": CopyFrom of another width");
          break;
        }
        memory.CopyFrom(&source);
        s.SetDimensions(r, c);
        s.elements = ElementsOf<T>(source.GetPointer(), r * c);
        break;
      }
      case 7: {
        const unsigned long long row = AnyIndex(m_In, s.rows);
        const unsigned long long column = AnyIndex(m_In, s.columns);
        const A& constant = *s.array;
        if (!s.storage || row >= s.rows || column >= s.columns) {
          const Chain failure{
              {s.storage ? "Array index out of bounds" : "Nullptr --> Array Data Invalid",
               std::string("Zt::CZtArray2DBase<") + F::Type + ">::operator ()",
               "source\\zt.core.ex\\ZtArray2DBase"}};
          ExpectRaise([&] { (void)(*s.array)(row, column); }, failure, context + ": operator ()");
          ExpectRaise([&] { (void)constant(row, column); }, failure,
                      context + ": const operator ()");
          break;
        }
        const T value = AnyValue<T>(m_In);
        (*s.array)(row, column) = value;
        s.elements[row * s.columns + column] = value;
        ZT_FUZZ_CHECK(&constant(row, column) == s.array->GetDataPtr() + row * s.columns + column,
                      context + ": operator () is not the element");
        break;
      }
      default: {  // copy construction, or assignment, itself included
        if (!m_Copies || g_CopiesLeft-- <= 0) break;
        Slot copy;
        if (&s == &other) {
          *s.array = *other.array;  // empties it: the copy reads the new, empty matrix
          copy.array = std::move(s.array);
        } else {
          if (m_In.ConsumeBool()) {
            copy.array = std::make_unique<A>(*other.array);
          } else {
            *s.array = *other.array;
            copy.array = std::move(s.array);
          }
          copy.SetDimensions(other.rows, other.columns);
          copy.elements = other.elements;
        }
        s = std::move(copy);
        break;
      }
    }
  }

  static void Verify(const Slot& s) {
    const A& a = *s.array;
    const std::string context = std::string(F::Type) + " 2D array";
    unsigned long long rows = ~0ull, columns = ~0ull;
    a.GetSize(rows, columns);
    ZT_FUZZ_CHECK(rows == s.rows && columns == s.columns,
                  context + ": extents " + std::to_string(rows) + "x" + std::to_string(columns) +
                      ", expected " + std::to_string(s.rows) + "x" + std::to_string(s.columns));
    ZT_FUZZ_CHECK(a.GetElementSize() == sizeof(T), context + ": element size");
    ZT_FUZZ_CHECK(a.IsValid() == s.storage, context + (s.storage ? ": invalid" : ": valid"));
    ZT_FUZZ_CHECK((a.GetDataPtr() != nullptr) == s.storage, context + ": GetDataPtr");
    ZT_FUZZ_CHECK(a.GetPointer() == a.GetDataPtr(), context + ": GetPointer is not GetDataPtr");
    ZT_FUZZ_CHECK(
        SameBits(a.GetDataPtr(),
                 std::vector<T>(s.elements.begin(), s.elements.begin() + long(rows * columns))),
        context + ": contents differ");
  }

  const bool m_Copies;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const int family = in.ConsumeIntegralInRange(0, 7);
  // Few runs copy two-dimensional arrays: each sends the fuzzer looking for
  // the leak, which costs as much as many runs.
  const bool copies = family >= 6 && in.ConsumeIntegralInRange(0, 7) == 0;
  std::optional<ZtTest::ZtExpectedLeak> replacedMatrices;
  if (copies) replacedMatrices.emplace();
  switch (family) {
    case 0: NumericRun<DoubleArrays>(in).Run(); break;
    case 1: NumericRun<IntArrays>(in).Run(); break;
    case 2: NumericRun<UCharArrays>(in).Run(); break;
    case 3: NumericRun<UIntArrays>(in).Run(); break;
    case 4: NumericRun<UShortArrays>(in).Run(); break;
    case 5: StringRun(in).Run(); break;
    case 6: Run2D<Double2DArrays>(in, copies).Run(); break;
    default: Run2D<Int2DArrays>(in, copies).Run(); break;
  }
  return 0;
}
