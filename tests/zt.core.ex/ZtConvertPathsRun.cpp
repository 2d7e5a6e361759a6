// At the end of the conversion tests: which instruction-set paths they ran
// on. Every path this processor can run must have been run, so that no path
// goes untested without notice.

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

#include "ZtConvertTesting.h"

namespace {

class CPathsRun : public ::testing::Environment {
public:
  void TearDown() override {
    const std::set<ZtTest::EPath>& run = ZtTest::PathsRun();
    if (run.empty()) return;  // a filter left out every conversion
    std::string names;
    for (ZtTest::EPath path : run) names += std::string(" ") + ZtTest::PathName(path);
    std::printf("conversion paths run:%s\n", names.c_str());
    const std::vector<ZtTest::EPath> usable = ZtTest::Paths();
    EXPECT_EQ(std::set<ZtTest::EPath>(usable.begin(), usable.end()), run)
        << "a path this processor has was not run";
  }
};

const ::testing::Environment* const kPathsRun = ::testing::AddGlobalTestEnvironment(new CPathsRun);

}  // namespace
