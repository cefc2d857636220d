#include "worker/GhostscriptLibrary.h"

#include <gtest/gtest.h>

#include "tests/worker/InChild.h"

namespace JobParser::Worker
{
namespace
{

TEST(GhostscriptLibrary, HasAllFunctionsThatAreUsed)
{
    const std::string missing = inChild([] {
        const GhostscriptLibrary& library = GhostscriptLibrary::get();
        const bool hasAll = library.newInstance != nullptr && library.deleteInstance != nullptr &&
                            library.setStdio != nullptr && library.setDisplayCallback != nullptr &&
                            library.setArgEncoding != nullptr && library.initWithArgs != nullptr &&
                            library.runString != nullptr && library.exit != nullptr;
        return std::string(hasAll ? "none" : "some");
    });

    EXPECT_EQ(missing, "none");
}

TEST(GhostscriptLibrary, IsLoadedOnce)
{
    const std::string is = inChild([] {
        return std::string(&GhostscriptLibrary::get() == &GhostscriptLibrary::get() ? "same" : "different");
    });

    EXPECT_EQ(is, "same");
}

TEST(GhostscriptLibrary, MakesAnInterpreter)
{
    const std::string codes = inChild([] {
        void* instance = nullptr;
        const int code = GhostscriptLibrary::get().newInstance(&instance, nullptr);
        const bool isMade = instance != nullptr;
        GhostscriptLibrary::get().deleteInstance(instance);
        return std::to_string(code) + (isMade ? " made" : " not made");
    });

    EXPECT_EQ(codes, "0 made");
}

} // namespace
} // namespace JobParser::Worker
