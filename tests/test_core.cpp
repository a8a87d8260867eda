// Connection handle, statement execution, diagnostic log, field model and the
// accessor toolkit.
#include "harness.h"
#include "util-db-accessor.h"

using namespace testbed;

TEST_F(LibraryTest, Smoke) {
    EXPECT_EQ(db_query(&h, "select 1"), 0);
}
