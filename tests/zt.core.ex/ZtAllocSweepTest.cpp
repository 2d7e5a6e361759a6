// Each row runs once for each k with the k-th allocation of one kind failing: what must arrive.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtChain.h"
#include "ZtCoreEx.h"
#include "ZtHollowArray.h"
#include "ZtParMap.h"

using Zt::CZtString;
using ZtTest::AllocKind;
using ZtTest::Link;
using Links = std::vector<Link>;

namespace {

struct Outcome {
  enum What { Returned, Raised, BadAlloc, Other } what = Returned;
  bool result = true;  // what a bool operation returned; true for the others
  Links chain;         // when Raised
  long long leaked = 0;
  bool operator==(const Outcome& o) const {
    return std::tie(what, result, chain, leaked) == std::tie(o.what, o.result, o.chain, o.leaked);
  }
};

void PrintTo(const Outcome& o, std::ostream* out) {
  const char* const whats[] = {"returned", "raised", "std::bad_alloc", "another exception"};
  *out << whats[o.what] << (o.what != Outcome::Returned ? "" : o.result ? " true" : " false");
  for (const Link& link : o.chain) *out << "\n    " << ::testing::PrintToString(link);
  *out << "\n    leaving " << o.leaked << " blocks";
}

Outcome Done(bool r = true, long long leaked = 0) { return {Outcome::Returned, r, {}, leaked}; }
Outcome BadAlloc(long long leaked = 0) { return {Outcome::BadAlloc, true, {}, leaked}; }
Outcome Raise(Links chain, long long leaked = 0) { return {Outcome::Raised, true, chain, leaked}; }

const std::pair<AllocKind, const char*> kKinds[] = {
    {AllocKind::Malloc, "malloc"}, {AllocKind::Realloc, "realloc"}, {AllocKind::New, "new"}};

// One run of a row's operation, with the nth allocation of `kind` failing.
struct Attempt {
  explicit Attempt(AllocKind k = AllocKind::New, unsigned long long n = 0) : kind(k), nth(n) {}
  AllocKind kind;
  unsigned long long nth;                     // 0: counting only
  bool fired = false;                         // whether the injected failure happened
  std::array<unsigned long long, 3> calls{};  // by kind
  Outcome outcome;
  long long ownBlocks = 0;  // blocks that the recorded chain holds

  template <class Op>
  void operator()(Op&& op) {
    std::optional<ZtTest::ZtAllocFail> failure(std::in_place, kind, nth);
    // The failure ends before the outcome is recorded, whose allocations must not fail or count.
    const auto stop = [&](Outcome::What what) {
      fired = failure->Fired();
      for (auto& k : kKinds) calls[static_cast<std::size_t>(k.first)] = failure->Calls(k.first);
      failure.reset();
      outcome.what = what;
    };
    try {
      if constexpr (std::is_void_v<decltype(op())>)
        op();
      else
        outcome.result = op();
      stop(Outcome::Returned);
    } catch (Zt::CZtException& e) {
      stop(Outcome::Raised);
      const long long before = ZtTest::LiveBlocks();
      outcome.chain = ZtTest::LinksOf(e);
      ownBlocks = ZtTest::LiveBlocks() - before;
    } catch (std::bad_alloc&) {
      stop(Outcome::BadAlloc);
    } catch (...) {
      stop(Outcome::Other);
    }
  }
};

// The k-th of `calls` allocations of `kind`, made to fail.
struct Point {
  AllocKind kind;
  unsigned long long k, calls;
};
using Failing = std::function<Outcome(const Point&)>;

Failing Always(Outcome outcome) {
  return [outcome](const Point&) { return outcome; };
}
const Failing AnyBadAlloc = Always(BadAlloc());

using Run = std::function<void(Attempt&)>;
struct Row {
  std::string name;
  Run run;  // builds the objects, runs the operation through the attempt once, checks the objects
  Failing failing = nullptr;  // the outcome at each failure point; if none, the sweep's own
  bool leaks = false;      // blocks left by contract: hidden from a leak checker, the count checks
  Outcome clean = Done();  // the outcome with nothing failing
};

template <class F>
Run Just(F op) {
  return [op](Attempt& at) { at(op); };
}
// A run of `op` on a fresh object: `make` it, run `op(object)`, then `check(object, attempt)`.
template <class Make, class Check, class F>
Run On(Make make, Check check, F op) {
  return [=](Attempt& at) {
    auto object = make();
    at([&] { return op(object); });
    check(object, at);
  };
}
const auto kNoCheck = [](const auto&, const Attempt&) {};
template <class T>
void Valid(const T& object, const Attempt& at) {
  EXPECT_EQ(object.IsValid(), !at.fired);
}

struct PointCount {
  unsigned long long n = 0;
  ~PointCount() { std::printf("allocation-failure points: %llu\n", n); }
} g_Points;

Outcome Measure(const Row& row, Attempt& attempt) {
  std::optional<ZtTest::ZtExpectedLeak> hidden;
  if (row.leaks) hidden.emplace();
  const long long before = ZtTest::LiveBlocks();
  row.run(attempt);
  attempt.outcome.leaked = ZtTest::LiveBlocks() - before - attempt.ownBlocks;
  return attempt.outcome;
}

void Sweep(const std::vector<Row>& rows, const Failing& failing = AnyBadAlloc) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Attempt counting;
    EXPECT_EQ(Measure(row, counting), row.clean) << "with nothing failing";
    for (const auto& [kind, name] : kKinds) {
      const unsigned long long calls = counting.calls[static_cast<std::size_t>(kind)];
      for (unsigned long long k = 1; k <= calls + 1; ++k) {
        Attempt attempt(kind, k);
        const Outcome outcome = Measure(row, attempt);
        SCOPED_TRACE(::testing::Message() << name << " " << k << " of " << calls);
        ASSERT_EQ(attempt.fired, k <= calls) << (k > calls ? "more" : "fewer") << " than counted";
        g_Points.n += attempt.fired ? 1 : 0;
        EXPECT_EQ(outcome, attempt.fired ? (row.failing ? row.failing : failing)({kind, k, calls})
                                         : row.clean);
      }
    }
  }
}

const std::string kWhat = std::bad_alloc().what();

// The rows of one numeric array class; `type` is its element type as failures spell it.
template <class A, class T>
void SweepNumeric(const std::string& type) {
  SCOPED_TRACE("CZtArrayBase<" + type + ">");
  const auto base = [type](const char* member) {
    return Always(Raise({{kWhat, "Zt::CZtArrayBase<" + type + ">::" + member,
                          "source\\zt.core.ex\\ZtArrayBase", true}}));
  };
  // The implementation object is not guarded, its vector is.
  const Failing made = [base](auto& p) { return p.k == p.calls ? base("New")(p) : BadAlloc(); };
  const A ten(10), thousand(1000);
  const auto two = [] { return A(2, T(5)); };
  const auto contents = [](const A& a) {
    const auto* data = static_cast<const T*>(a.GetPointer());
    return std::vector<long long>(data, data + a.Length());
  };
  const std::vector<long long> kept{5, 5};
  // After a failure the array holds `failed` (New empties it first); else 1000 elements.
  const auto holds = [contents](std::vector<long long> failed) {
    return [failed, contents](const A& a, const Attempt& at) {
      EXPECT_EQ(a.Length(), at.fired ? failed.size() : 1000u);
      EXPECT_EQ(at.fired ? contents(a) : failed, failed);
    };
  };
  const auto copied = [&](const A& a, const Attempt& at) {
    EXPECT_EQ(contents(a), at.fired ? kept : contents(ten));
  };
  Sweep({
      {"default constructor", Just([] { A a; })},
      {"length constructor", Just([] { A a(10); }), made},
      {"fill constructor", Just([] { A a(10, T(1)); }), made},
      {"copy constructor", Just([&] { A a(ten); })},
      {"assignment", On(two, copied, [&](A& a) { a = ten; })},
      {"New", On(two, holds({}), [](A& a) { a.New(1000); }), base("New")},
      {"Resize", On(two, holds(kept), [](A& a) { a.Resize(1000); }), base("Resize")},
      {"CopyFrom", On(two, holds(kept), [&](A& a) { a.CopyFrom(&thousand); }), base("Resize")},
  });
}

TEST(AllocationSweep, NumericArrays) {
  SweepNumeric<Zt::CZtArrayDouble, double>("double");
  SweepNumeric<Zt::CZtArrayInt, int>("int");
  SweepNumeric<Zt::CZtArrayUChar, unsigned char>("unsigned char");
  SweepNumeric<Zt::CZtArrayUInt, unsigned int>("unsigned int");
  SweepNumeric<Zt::CZtArrayUShort, unsigned short>("unsigned short");
}

// Copying an array without its implementation object allocates only as GetElementSize does.
TEST(AllocationSweep, TheCopyOfANumericArrayChecksItsSourceBeforeItAllocates) {
  ZtTest::Hollow<Zt::CZtArrayDouble> hollow;
  Attempt copying, reading;
  copying([&] { Zt::CZtArrayDouble copy(hollow); });
  reading([&] { (void)hollow.GetElementSize(); });
  ASSERT_EQ(copying.outcome.what, Outcome::Raised);
  EXPECT_EQ(copying.calls, reading.calls);  // malloc, realloc, new
}

using Zt::CZtArrayString;

const char* const kMemBase = "ZtMemBase";
const char* const kMemObj = "source\\zt.core.development\\ZtMemObj";
const char* const kStringArray = "ZtArrayString";
const Link kMemResize{"Error setting memory size: ", "Zt::CZtMemBase::Resize", kMemBase};
const Link kCopying{"Error Copying Array", "Zt::CZtArrayString::operator =", kStringArray};
const Link kResizing{"Error resizing Array", "Zt::CZtArrayString::Resize", kStringArray};

// A block of n empty strings made anew, k counted from its own first allocation: the block, its
// pointers, their growth past four, one string at a time (those made before stay allocated).
Outcome MakingStrings(Links head, unsigned long long n, AllocKind kind, unsigned long long k) {
  const std::string objects = "Zt::CZtMemObj<class Zt::CZtString>::";
  const Link sizing{"Error setting memory size to " + std::to_string(n) + " elements",
                    objects + "Resize", kMemObj};
  const Link alloc{kind == AllocKind::Malloc ? "malloc failed" : "realloc failed",
                   "Zt::CZtMemBase::Alloc", kMemBase};
  const Link creating{"Error creating memory object", "Zt::CZtMemBase::CZtMemBase", kMemBase};
  if (kind != AllocKind::New)
    head.insert(head.end(), {kind == AllocKind::Malloc ? creating : sizing, kMemResize, alloc});
  else if (k == 1)
    head.push_back({kWhat, "Zt::CZtArrayString::New", kStringArray, true});
  else
    head.insert(head.end(), {sizing, {kWhat, objects + "InitElements", kMemObj}});
  return Raise(head, kind == AllocKind::New && k > 1 ? static_cast<long long>(k - 2) : 0);
}

// The same, counted from the operation's first allocation; by new, only from its `first` to its
// `last` (counted back from the last one when not positive), the others failing as std::bad_alloc.
Failing Making(Links head, unsigned long long n, long long first = 1, long long last = 0) {
  return [=](const Point& p) {
    const auto at = [&p](long long i) { return i > 0 ? i : static_cast<long long>(p.calls) + i; };
    const long long k = static_cast<long long>(p.k),
                    from = p.kind == AllocKind::New ? at(first) : 1;
    if (p.kind == AllocKind::New && (k < from || k > at(last))) return BadAlloc();
    return MakingStrings(head, n, p.kind, static_cast<unsigned long long>(k - from + 1));
  };
}

// Texts too long to be kept inside a string object, so that copying one allocates.
const char* const kLong1 = "a text long enough to need a block";
const char* const kLong2 = "another text that needs a block too";

// Two long texts copied: the block is made anew, then each text's copy fails as std::bad_alloc.
const Failing kCopyingLongTexts = Making({kCopying}, 2, 1, -2);

// The texts between commas.
CZtArrayString Texts(const CZtString& texts) { return {texts, ','}; }

TEST(AllocationSweep, StringArrays) {
  const auto two = [] { return CZtArrayString(2); };
  const CZtString fields("a,b,,c"), longFields = CZtString(kLong1) + "," + kLong2;
  const CZtArrayString ab = Texts("a,b"), af = Texts("a,b,c,d,e,f"), longTexts = Texts(longFields);
  using S = CZtArrayString;
  Sweep({
      {"default constructor", Just([] { S a; }), Making({}, 0)},
      {"length constructor", Just([] { S a(6); }), Making({}, 6), true},
      {"splitting constructor", Just([&] { S a(fields, ','); }), Making({}, 4, -4), true},
      {"New", On(two, Valid<S>, [](S& a) { a.New(6); }), Making({}, 6), true},
      // The block grows in place; a failure while its strings are made leaves the new length.
      {"Resize",
       [](Attempt& at) {
         S array = Texts("x,y,z");
         const CZtString* kept = &array[2];
         at([&] { array.Resize(9); });
         EXPECT_EQ(array.Length(), at.fired && at.kind == AllocKind::Realloc ? 3u : 9u);
         EXPECT_EQ(&array[2], kept);
         EXPECT_STREQ(array[2].ToCString(), "z");
       },
       [](const Point& p) { return MakingStrings({kResizing}, 9, p.kind, p.k + 1); }, true},
      {"assignment", On(two, Valid<S>, [&](S& a) { a = af; }), Making({kCopying}, 6), true},
      {"copy constructor", Just([&] { S a(ab); }), Making({kCopying}, 2), true},
      // Copies of texts that allocate come after the block is made.
      {"assignment of long texts",
       On([] { return S(1); },
          [](const S& a, const Attempt& at) {
            EXPECT_EQ(a.IsValid(), !at.fired || at.outcome.what == Outcome::BadAlloc);
          },
          [&](S& a) { a = longTexts; }),
       kCopyingLongTexts, true},
      {"copy constructor of long texts", Just([&] { S a(longTexts); }), kCopyingLongTexts, true},
      // An invalid array: the failure's own allocations fail.
      {"Resize of an invalid array",
       [](Attempt& at) {
         S array;
         array.Delete();
         at([&] { array.Resize(2); });
       },
       AnyBadAlloc, false,
       Raise({kResizing,
              {"Nullptr --> Array Data Invalid", "Zt::CZtArrayString::Resize", kStringArray}})},
      {"splitting constructor of long fields",
       [&](Attempt& at) {
         std::optional<S> split;
         at([&] { split.emplace(longFields, ','); });
         if (at.outcome.what != Outcome::Returned) return;
         ASSERT_LE(split->Length(), 2u);
         EXPECT_EQ(split->Length() == 2u, !at.fired);
         for (unsigned long long i = 0; i < split->Length(); ++i)
           EXPECT_STREQ((*split)[i].ToCString(), i == 0 ? kLong1 : kLong2);
       },
       // A failure in getline, as a field grows, ends the text: the fields read until then.
       [](const Point& p) {
         return p.kind == AllocKind::New && (p.k == 3 || p.k == 6) ? Done()
                                                                   : Making({}, 2, -4, -2)(p);
       },
       true},
  });
}

using Shape2 = std::vector<unsigned long long>;

template <class A, class T>
void Sweep2D(const std::string& type) {
  SCOPED_TRACE("CZtMatrix<" + type + ">");
  const auto shape = [](const A& array) {
    unsigned long long rows = 0, columns = 0;
    array.GetSize(rows, columns);
    return Shape2{rows, columns};
  };
  const Failing resized =
      Always(Raise({{"Error resizing matrix:" + kWhat, "Zt::CZtMatrix<" + type + ">::Resize",
                     "source\\zt.core.math\\ZtMatrix", true}}));
  const A twoByThree(2, 3), big(30, 30);
  // Grown to 30 by 30, keeping its storage iff it fails: Resize then has no extents, others 30x30.
  const auto growing = [&](Shape2 from, bool resizing, void (*op)(A&, const A&)) {
    return [=, &big](Attempt& at) {
      A array(from[0], from[1]);
      const void* storage = array.GetDataPtr();
      at([&] { op(array, big); });
      if (resizing && !at.fired) return;
      EXPECT_EQ(shape(array), (resizing ? Shape2{0, 0} : Shape2{30, 30}));
      EXPECT_EQ(array.GetDataPtr() == storage, at.fired);
    };
  };
  const auto resize = [](A& array, const A&) { array.Resize(30, 30); };
  // The copy replaces its first matrix, which stays allocated; so does the assignment.
  const auto leaving = [](long long n) {
    return [n](const Point& p) { return BadAlloc(p.k == p.calls ? n : 0); };
  };
  Sweep({
      {"default constructor", Just([] { A a; })},
      {"size constructor", Just([] { A a(3, 3); })},
      {"copy constructor", Just([&] { A a(twoByThree); }), leaving(1), true, Done(true, 1)},
      {"assignment",
       [&](Attempt& at) {
         A array(2, 2);
         array(1, 1) = T(7);
         at([&] { array = twoByThree; });
         if (at.fired && shape(array) == Shape2{2, 2}) {
           EXPECT_EQ(array(1, 1), T(7));  // the new matrix was not had
         } else {
           EXPECT_EQ(shape(array), (Shape2{2, 3}));
           EXPECT_EQ(array.IsValid(), !at.fired);
         }
       },
       leaving(2), true, Done(true, 2)},
      {"Resize from 2 by 3", growing({2, 3}, true, resize), resized},
      {"Resize from 0 by 3", growing({0, 3}, true, resize), resized},
      {"New", growing({1, 2}, false, [](A& array, const A&) { array.New(30, 30); })},
      {"CopyFrom", growing({1, 2}, false, [](A& array, const A& from) { array.CopyFrom(&from); })},
  });
}

TEST(AllocationSweep, TwoDimensionalArrays) {
  Sweep2D<Zt::CZtArray2DDouble, double>("double");
  Sweep2D<Zt::CZtArray2DInt, int>("int");
}

using Zt::CZtImage;
using Zt::CZtImageFormat;
using P = Zt::EPixelType;
using D = Zt::EDataType;

// A valid image, replaced by the operation: after a failure it is empty, with a zero format.
void Replaced(const CZtImage& image, const Attempt& at) {
  int width = -1, height = -1;
  P::ID pixelType{};
  D::ID dataType{};
  image.GetSize(width, height);
  image.GetType(pixelType, dataType);
  EXPECT_EQ(image.IsValid(), !at.fired);
  const auto zero = std::make_tuple(0, 0, P::ID{}, D::ID{});
  EXPECT_EQ(at.fired ? std::make_tuple(width, height, pixelType, dataType) : zero, zero);
}

TEST(AllocationSweep, Images) {
  const CZtImageFormat format(5, 3, P::RGB, D::UShort);
  CZtImage from(format);
  from.SetZero();
  const CZtImage empty;
  const auto replacing = [](auto op) {
    return On([] { return CZtImage(CZtImageFormat(2, 2, P::Lum, D::UByte)); }, Replaced, op);
  };
  // A new image, valid unless its block could not be had.
  const auto constructing = [](auto argument) {
    return On([] { return std::optional<CZtImage>(); },
              [](const auto& made, const Attempt& at) { Valid(*made, at); },
              [argument](auto& made) { made.emplace(argument); });
  };
  std::vector<unsigned char> pixels(format.GetByteCount());
  std::vector<float> floats(15);
  std::vector<double> doubles(15);
  const CZtImageFormat lum(5, 3, P::Lum, D::Double);
  Zt::CZtImageMoniker fromView, floatView;
  fromView.Create(from);
  floatView.Create(5, 3, P::Lum, D::Float, floats.data());
  const std::vector<Row> rows{
      {"Create with sizes and types",
       replacing([](auto& i) { return i.Create(5, 3, P::RGB, D::UShort); })},
      {"Create with data",
       replacing([&](auto& i) { return i.Create(5, 3, P::RGB, D::UShort, pixels.data()); })},
      {"Create from an IImage",
       replacing([&](auto& i) { return i.Create(static_cast<const Zt::IImage*>(&fromView)); })},
      {"Create from an image", replacing([&](auto& i) { return i.Create(from); })},
      {"Create from a format", replacing([&](auto& i) { return i.Create(format); })},
      {"assignment", replacing([&](auto& i) { i = from; }), Always(Done())},
      {"copy constructor", constructing(from), Always(Done())},
      {"format constructor", constructing(format), Always(Done())},
      {"ConvertType", replacing([&](auto& i) { return from.ConvertType(i, P::RGBA, D::Float); })},
      {"ConvertType of two images", replacing([&](auto& i) {
         return CZtImage::ConvertType(&i, &from, P::Lum, D::Double, true);
       })},
      // Into memory that is there already: nothing to allocate.
      {"ConvertType into a view",
       Just([&] { return CZtImage::ConvertType(&floatView, &from, P::Lum, D::Float, false); })},
      {"ConvertMemory",
       Just([&] { return CZtImage::ConvertMemory(doubles.data(), pixels.data(), lum, format); })},
      // The view's raising forms: only the failure's own allocations.
      {"view Create from an empty image",
       On([] { return std::make_unique<Zt::CZtImageMoniker>(); }, kNoCheck,
          [&](auto& view) { view->Create(empty); }),
       AnyBadAlloc, false,
       Raise(
           {{"Error creating CZtImageMoniker", "Zt::CZtImageMoniker::Create", "ZtImageMoniker"}})},
  };
  Sweep(rows, Always(Done(false)));  // the others return false when they fail
}

using Zt::CZtMetaData;
using TParMap = Zt::CZtParMap<std::string, std::string>;
using TEvent = Zt::CZtParEvent<std::string, std::string>;

const std::string kMap =
    "Zt::CZtParMap<class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> >,class std::basic_string<char,struct std::char_traits<char>,class "
    "std::allocator<char> > >::";
const char* const kMapFile = "source\\zt.core.development\\ZtParMap";
const Link kMapOutOfMemory{kWhat, kMap + "Init", kMapFile, true};

Link Store(const std::string& message, const char* member, bool outOfMemory = false) {
  return {message, std::string("Zt::CZtMetaData::") + member, "ZtMetaData", outOfMemory};
}

// A new store: the map object, bare when it fails; then its seven tables, wrapped, leaving the map.
Outcome Constructing(unsigned long long k) {
  if (k == 1) return Raise({Store(kWhat, "Init", true)});
  return Raise({Store("Error initializing meta-data", "Init"), kMapOutOfMemory}, 1);
}

struct AcceptingEvent final : TEvent {
  void OnRead(TParMap*, const std::string*) override {}
  void OnWrite(TParMap*, const std::string*) override {}
};

TEST(AllocationSweep, ParameterMap) {
  const std::string key(40, 'k');  // long enough to live on the heap
  const std::vector<CZtString> oldList{kLong1, "b"}, newList{kLong2, "c", "d"};
  // A string-array parameter with an event handler, with or without a record, read or written.
  const auto parameter = [&](bool withRecord, bool reading) {
    return [&, withRecord, reading](Attempt& at) {
      Zt::CZtSafePtrRepo<TEvent> events;
      TParMap map;
      map.Init();
      map.GetDirectory()[key].Assign(key, Zt::ParStringArray, "",
                                     Zt::CZtSafePtr<Zt::Constraint::CAny>(),
                                     Zt::CZtSafePtr<TEvent>(new AcceptingEvent, &events));
      if (withRecord) map.GetValue<std::vector<CZtString>>(key).Value = oldList;
      std::vector<CZtString> value;
      at([&] {
        return reading ? map.ReadParameter(key, value) : map.WriteParameter(key, newList);
      });
    };
  };
  Sweep({
      // A failed Init releases its tables and can run again.
      {"Init",
       On([] { return std::make_unique<TParMap>(); },
          [](auto& map, const Attempt& at) {
            if (at.fired) map->Init();
            EXPECT_FALSE(map->HasParameter("x"));
          },
          [](auto& map) { map->Init(); }),
       Always(Raise({kMapOutOfMemory}))},
      {"WriteParameter of a new parameter", parameter(false, false)},
      {"ReadParameter of a new parameter", parameter(false, true)},
      {"WriteParameter of a parameter with a value", parameter(true, false)},
      {"ReadParameter of a parameter with a value", parameter(true, true)},
  });
}

TEST(AllocationSweep, MetaData) {
  const CZtString name("a name long enough to need a block of its own"), text(kLong1);
  const auto filled = [&] {
    CZtMetaData store;
    store.AddElement("u", "", 1u);
    store.AddElement("d", "", 2.5);
    store.AddElement("s", "", text);
    store.AddElement(name, text, Texts(CZtString(kLong1) + "," + kLong2));
    return store;
  };
  const Zt::CZtArrayUInt numbers(3, 7u);
  const Zt::CZtArrayDouble reals(3, 0.5);
  const CZtArrayString texts = Texts(CZtString(kLong1) + "," + kLong2 + ",c");
  const CZtMetaData source = filled();
  // An operation on a filled store: a new element of each form, a read into a fresh value.
  const auto on = [&](std::function<void(CZtMetaData&)> op) { return On(filled, kNoCheck, op); };
  const auto adding = [&](const auto& value) {
    return on([&name, &text, value](CZtMetaData& s) { s.AddElement(name + "2", text, value); });
  };
  const auto getting = [&](auto tag, auto element) {
    return on([element](CZtMetaData& s) {
      decltype(tag) value{};
      s.GetElement(element, value);
    });
  };
  // The map's report of a type that differs from the element's.
  const auto wrongType = [](const char* member, const std::string& given) {
    return Link{"Wrong type for parameter; Expected type 'unsigned' differs from '" + given + "'",
                kMap + member, kMapFile, false, "Zt.ParInvalidTypeException"};
  };
  Sweep({
      {"constructor", Just([] { CZtMetaData store; }),
       [](const Point& p) { return Constructing(p.k); }, true},
      // A copy builds its own store, guarded, then copies, unguarded.
      {"copy constructor", Just([&] { CZtMetaData copy(source); }),
       [](const Point& p) { return p.k <= 8 ? Constructing(p.k) : BadAlloc(); }, true},
      {"assignment",
       [&](Attempt& at) {
         CZtMetaData store;
         store.AddElement("x", "", 1u);
         at([&] { store = source; });
       }},
      {"AddElement unsigned int", adding(1u)},
      {"AddElement double", adding(1.5)},
      {"AddElement text", adding(text)},
      {"AddElement CZtArrayUInt", adding(numbers)},
      {"AddElement CZtArrayDouble", adding(reals)},
      {"AddElement CZtArrayString", adding(texts)},
      {"SetElement unsigned int", on([](CZtMetaData& s) { s.SetElement("u", 3u); })},
      {"SetElement double", on([](CZtMetaData& s) { s.SetElement("d", 3.5); })},
      {"SetElement text", on([](CZtMetaData& s) { s.SetElement("s", CZtString(kLong2)); })},
      // An element can't be written through an array form: the mismatch's allocations fail.
      {"SetElement CZtArrayString", on([&](CZtMetaData& s) { s.SetElement("u", texts); }),
       AnyBadAlloc, false,
       Raise({Store("Error setting element 'u'", "SetElement"),
              {"Error writing parameter", kMap + "WriteParameter", kMapFile},
              wrongType("WriteParameter", "string[]")})},
      // An array element read as unsigned creates a record.
      {"GetElement unsigned int", getting(0u, name)},
      {"GetElement text", getting(CZtString(), "s")},
      {"GetElement CZtArrayUInt", getting(Zt::CZtArrayUInt(), "u"), AnyBadAlloc, false,
       Raise({Store("Error getting element 'u'", "GetElement"),
              wrongType("ReadParameter", "unsigned[]")})},
      {"GetElement of an unknown name", getting(0.0, "x"), AnyBadAlloc, false,
       Raise({Store("Error getting element 'x'", "GetElement"),
              Store("Element 'x' doesn't exist in meta data", "GetElement")})},
      {"GetElementNameType", on([](CZtMetaData& s) {
         CZtString n, t;
         s.GetElementNameType(0, n, t);
       })},
      {"HasElement", on([&](CZtMetaData& s) { (void)s.HasElement(name); })},
  });
}

TEST(AllocationSweep, CalibrationRecords) {
  using Record = Zt::CZtMetricCalibAddImageResult;
  Record from;
  from.m_aTexts = Texts("a,b");
  const Zt::CZtMetricCalibResult result;
  Sweep({
      // The message, the two numeric arrays' objects, then the string array.
      {"default constructor", Just([] { Record r; }), Making({}, 0, 3, 3)},
      {"copy constructor", Just([&] { Record r(from); }), Making({kCopying}, 2, 4), true},
      {"assignment",
       On([] { return Record(); },
          [](const Record& r, const Attempt& at) { Valid(r.m_aTexts, at); },
          [&](Record& r) { r = from; }),
       Making({kCopying}, 2), true},
      {"result record copy", Just([&] { Zt::CZtMetricCalibResult{result} = result; })},
  });
}

}  // namespace
