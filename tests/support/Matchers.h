#pragma once

#include <gmock/gmock.h>

namespace tbScripts::test
{

// The matchers of several suites, by their plain names.
using ::testing::AnyOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

} // namespace tbScripts::test
