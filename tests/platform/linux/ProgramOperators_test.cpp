#include <Carbon/MacMemory.h>
#include <macplatform/LiveObjects.h>

#include "support/Allocations.h"

#include <gtest/gtest.h>

// The platform allocates its results and the program frees them. A program may replace operator new and
// operator delete, so the platform must allocate with the program's operators.
TEST(ProgramOperators, AllocateTheResultsOfThePlatform) {
    const Ptr block = NewPtr(100);
    EXPECT_GT(AllocationsOf([] { macplatform::DescribeLiveObjects(); }), 0U);
    DisposePtr(block);
}
