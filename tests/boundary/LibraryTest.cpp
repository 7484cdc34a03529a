// The library as a file that a host loads.

#include "JobRunner.h"

namespace {

TEST(LibraryTest, ExportsExactlyTwoPlainFunctions) {
    EXPECT_EQ(PrintedBy("nm -D --defined-only '" OUTPUT_DRIVER_LIBRARY "' | cut -d' ' -f2- | sort"),
              "T createDriverPage\nT createNewPrinterDriver\n");
}

// Thread variables that get their memory late end the host where there is none.
TEST(LibraryTest, HasItsThreadVariablesFromTheStart) {
    EXPECT_EQ(
        PrintedBy("nm -D --undefined-only '" OUTPUT_DRIVER_LIBRARY "' | sed -n /__tls_get_addr/p"),
        "");
}

TEST(LibraryTest, DriversAreIndependentAndTheLibraryLoadsAgain) {
    const BaseFolder folder;
    for (int round = 0; round < 3; ++round) {
        {
            const Driver first;
            EXPECT_EQ(Driver().Call(kGetDriverId), 246);
            EXPECT_EQ(first.Call(kGetDriverId), 246);
        }
        EXPECT_EQ(dlopen(OUTPUT_DRIVER_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << round;
    }
}

}  // namespace
