#ifndef ZT_TESTS_ZTCHAIN_H
#define ZT_TESTS_ZTCHAIN_H

// A raised chain, outermost first: Links (where each was raised) or (name, message) pairs.

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ZtException.h"

namespace ZtTest {

struct Link {
  std::string message, function, file;
  bool outOfMemory = false;  // a CZtOutOfMemoryException, else a plain CZtException
  std::string name = "";     // the class's name, for a link of any other class
};

inline bool operator==(const Link& a, const Link& b) {
  return std::tie(a.message, a.function, a.file, a.outOfMemory, a.name) ==
         std::tie(b.message, b.function, b.file, b.outOfMemory, b.name);
}

inline void PrintTo(const Link& link, std::ostream* out) {
  *out << (link.outOfMemory ? "out of memory " : "") << link.name << "\"" << link.message
       << "\" from " << link.function << " in " << link.file;
}

inline const Zt::CIException* InnerOf(const Zt::CIException& e) {
  const auto* z = dynamic_cast<const Zt::CZtException*>(&e);
  return z == nullptr ? nullptr : z->GetInnerException();
}

inline std::vector<Link> LinksOf(const Zt::CIException& head) {
  std::vector<Link> links;
  for (const Zt::CIException* e = &head; e != nullptr; e = InnerOf(*e)) {
    const bool outOfMemory = e->GetGUID() == Zt::CZtOutOfMemoryException::ClassGuid;
    const bool plain = outOfMemory || e->GetGUID() == Zt::CZtException::ClassGuid;
    links.push_back({e->GetMessageText(), e->GetFunction(), e->GetFile(), outOfMemory,
                     plain ? "" : e->GetName()});
  }
  return links;
}

inline void ExpectChain(const Zt::CIException& head, const std::vector<Link>& chain) {
  EXPECT_EQ(LinksOf(head), chain);
}

// Runs `op` and expects it to raise `chain`, caught as CZtException as callers do.
inline void ExpectRaise(const std::function<void()>& op, const std::vector<Link>& chain) {
  try {
    op();
    ADD_FAILURE() << "no failure, expected \"" << chain.front().message << "\"";
  } catch (Zt::CZtException& e) {
    ExpectChain(e, chain);
  }
}

using Chain = std::vector<std::pair<std::string, std::string>>;

inline Chain ChainOf(const Zt::CIException& head) {
  Chain chain;
  for (const Zt::CIException* e = &head; e != nullptr; e = InnerOf(*e))
    chain.emplace_back(e->GetName(), e->GetMessageText());
  return chain;
}

// The chain that `operation` raised, empty if it returned.
template <class F>
Chain Raised(F&& operation) {
  try {
    operation();
  } catch (Zt::CZtException& e) {
    return ChainOf(e);
  }
  return {};
}

}  // namespace ZtTest

#endif
