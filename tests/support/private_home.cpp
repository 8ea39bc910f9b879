// Every test process gets a home and a data folder of its own before any test runs. Tests that
// need a folder of their own still set one in their fixture.
#include "private_home.h"

namespace {

const tv::test_support::PrivateHome g_privateHome("tv_tests_home");

}  // namespace
