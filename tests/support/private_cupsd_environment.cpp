// Stops the tests' print server once the tests of the process have ended.
#include <gtest/gtest.h>

#include "private_cupsd.h"

namespace tv::test_support {
namespace {

class CupsdEnvironment : public ::testing::Environment {
 public:
  void TearDown() override { PrivateCupsd::StopShared(); }
};

[[maybe_unused]] ::testing::Environment* const kEnvironment = ::testing::AddGlobalTestEnvironment(new CupsdEnvironment);

}  // namespace
}  // namespace tv::test_support
