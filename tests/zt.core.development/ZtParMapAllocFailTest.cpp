// Exhausted memory under the parameter map: Init undoes itself and reports
// CZtOutOfMemoryException; every other allocation failure leaves the map as
// the standard library's std::bad_alloc, never converted.

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "ZtAllocFail.h"
#include "ZtParMap.h"

using Zt::CIException;
using Zt::CZtOutOfMemoryException;
using Zt::CZtString;
using ZtTest::AllocKind;
using ZtTest::ZtAllocFail;

namespace {

using TEvent = Zt::CZtParEvent<std::string, std::string>;
using TParMap = Zt::CZtParMap<std::string, std::string>;

// A handler that lets every write pass; it holds nothing to release.
class AcceptingEvent final : public TEvent {
public:
  void OnRead(TParMap*, const std::string*) override {}
  void OnWrite(TParMap*, const std::string*) override {}
};

unsigned long long NewCalls(const std::function<void()>& op) {
  ZtAllocFail counting;
  op();
  return counting.Calls(AllocKind::New);
}

TEST(ParMapOutOfMemory, InitReleasesWhatItMadeAndCanRunAgain) {
  const unsigned long long calls = NewCalls([] {
    TParMap map;
    map.Init();
  });
  ASSERT_EQ(calls, 7u) << "one allocation per table";
  for (unsigned long long k = 1; k <= calls; ++k) {
    TParMap map;
    try {
      ZtAllocFail failure(AllocKind::New, k);
      map.Init();
      ADD_FAILURE() << k << ": no failure";
    } catch (CZtOutOfMemoryException& e) {
      EXPECT_EQ(std::string(e.GetMessageText()), std::bad_alloc().what()) << k;
      EXPECT_STREQ(e.GetFile(), "source\\zt.core.development\\ZtParMap");
      EXPECT_EQ(std::string(e.GetFunction()),
                "Zt::CZtParMap<class std::basic_string<char,struct std::char_traits<char>,class "
                "std::allocator<char> >,class std::basic_string<char,struct "
                "std::char_traits<char>,class std::allocator<char> > >::Init");
      EXPECT_EQ(e.GetInnerException(), nullptr);
    }
    map.Init();  // every table pointer was nulled again
    EXPECT_FALSE(map.HasParameter("x"));
  }
}

TEST(ParMapOutOfMemory, ReadsAndWritesPassBadAllocThroughUnchanged) {
  const std::string key(40, 'k');  // long enough to live on the heap
  const std::vector<CZtString> oldList{"an old text that needs a block", "b"};
  const std::vector<CZtString> newList{"a new text that needs a block too", "c", "d"};
  Zt::CZtSafePtrRepo<TEvent> events;

  // Writes through the event path create the record, copy the old list and
  // store the new one; reads create the record and copy the list out.
  const auto prepare = [&](TParMap& map, bool withRecord) {
    map.Init();
    map.GetDirectory()[key].Assign(key, Zt::ParStringArray, "",
                                   Zt::CZtSafePtr<Zt::Constraint::CAny>(),
                                   Zt::CZtSafePtr<TEvent>(new AcceptingEvent, &events));
    if (withRecord) {
      map.GetValue<std::vector<CZtString>>(key).Value = oldList;
    }
  };
  const struct {
    bool withRecord;
    std::function<void(TParMap&)> operation;
  } cases[] = {
      {false, [&](TParMap& map) { map.WriteParameter(key, newList); }},
      {true, [&](TParMap& map) { map.WriteParameter(key, newList); }},
      {false, [&](TParMap& map) {
         std::vector<CZtString> value;
         map.ReadParameter(key, value);
       }},
      {true, [&](TParMap& map) {
         std::vector<CZtString> value;
         map.ReadParameter(key, value);
       }},
  };
  for (const auto& c : cases) {
    unsigned long long calls = 0;
    {
      TParMap map;
      prepare(map, c.withRecord);
      calls = NewCalls([&] { c.operation(map); });
    }
    ASSERT_GT(calls, 0u);
    for (unsigned long long k = 1; k <= calls; ++k) {
      TParMap map;
      prepare(map, c.withRecord);
      bool fired = false;
      try {
        ZtAllocFail failure(AllocKind::New, k);
        c.operation(map);
      } catch (CIException& e) {
        ADD_FAILURE() << k << ": converted into \"" << e.GetMessageText() << "\"";
      } catch (std::bad_alloc&) {
        fired = true;
      }
      EXPECT_TRUE(fired) << k << " of " << calls;
    }
  }
}

}  // namespace
