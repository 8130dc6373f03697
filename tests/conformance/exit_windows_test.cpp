// A program that ends while it holds the module: the loader takes it down without its workers.
#include "tests/conformance/module_fixture.h"

#include <cstdlib>

using namespace published;

namespace
{
using ExitDeathTest = ModuleFixture;

TEST_F(ExitDeathTest, AProgramMayEndWithAStreamOpen)
{
    Free(); // the program that ends loads it from the same place
    const auto fEnd = [this]
    {
        Load();
        IObject* const pObject = CreateInitialized(RENDER_EFX).release();
        CConnection oConnection;
        std::exit(oConnection.Lock(*Query<IConfiguration>(pObject, CONFIGURATION).release()) == OK ? 7 : 1);
    };
    EXPECT_EXIT(fEnd(), ::testing::ExitedWithCode(7), "");
}
} // namespace
