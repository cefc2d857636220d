#include "worker/FitzContext.h"

#include <array>
#include <gtest/gtest.h>

#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

TEST(FitzContext, DoesWorkToItsEnd)
{
    const FitzContext context;
    int done = 0;

    Fitz::protect(context.get(), [&] { done = 7; });

    EXPECT_EQ(done, 7);
}

TEST(FitzContext, ThrowsWhatMuPdfReports)
{
    const FitzContext context;
    try {
        Fitz::protect(context.get(), [&] { fz_throw(context.get(), FZ_ERROR_GENERIC, "page %d", 3); });
        ADD_FAILURE();
    } catch (const WorkerException& error) {
        EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::BadDocument));
        EXPECT_STREQ(error.what(), "page 3");
    }
}

TEST(FitzContext, TellsALackOfMemoryAsALimit)
{
    const FitzContext context;
    try {
        Fitz::protect(context.get(), [&] { fz_throw(context.get(), FZ_ERROR_MEMORY, "no memory"); });
        ADD_FAILURE();
    } catch (const WorkerException& error) {
        EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::Limit));
    }
}

TEST(FitzContext, WorksOnBehindAnError)
{
    const FitzContext context;
    EXPECT_THROW(Fitz::protect(context.get(), [&] { fz_throw(context.get(), FZ_ERROR_GENERIC, "no"); }),
                 WorkerException);
    int done = 0;

    Fitz::protect(context.get(), [&] { done = 1; });

    EXPECT_EQ(done, 1);
}

TEST(FitzContext, ConvertsColorsWithoutProfiles)
{
    const FitzContext context;
    const std::array<float, 4> black{0, 0, 0, 1};
    std::array<float, 3> rgb{9, 9, 9};

    Fitz::protect(context.get(), [&] {
        fz_convert_color(context.get(), fz_device_cmyk(context.get()), black.data(),
                         fz_device_rgb(context.get()), rgb.data(), nullptr, fz_default_color_params);
    });

    EXPECT_EQ(rgb, (std::array<float, 3>{0, 0, 0}));
}

void countDrop(fz_context*, int* count)
{
    if (count != nullptr)
        ++*count;
}

using Handle = FitzHandle<int, countDrop>;

TEST(FitzHandle, DropsItsObjectOnce)
{
    int count = 0;
    {
        Handle first(nullptr, &count);
        const Handle second(std::move(first));
        EXPECT_EQ(second.get(), &count);
        EXPECT_EQ(count, 0);
    }

    EXPECT_EQ(count, 1);
}

} // namespace
} // namespace JobParser::Worker
