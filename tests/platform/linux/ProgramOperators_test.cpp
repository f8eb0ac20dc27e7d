#include <Carbon/MacMemory.h>
#include <macplatform/LiveObjects.h>

#include "support/Allocations.h"

#include <gtest/gtest.h>

// Answers are made in the platform layer and given back by the program, which may have an operator delete of
// its own.
TEST(ProgramOperators, MakeTheObjectsOfThePlatform) {
    const Ptr block = NewPtr(100);
    EXPECT_GT(AllocationsOf([] { macplatform::DescribeLiveObjects(); }), 0U);
    DisposePtr(block);
}
