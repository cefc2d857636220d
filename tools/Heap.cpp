#include "tools/Heap.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <sys/mman.h>
#include <unistd.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace JobParser::Tool
{
namespace
{

constexpr std::size_t mebibyte = 1024 * 1024;
// Smaller jobs have too few chunks to pay for the clearing of a large page.
constexpr std::int64_t leastJob = 8 * mebibyte;
constexpr std::size_t largePage = 2 * mebibyte;
// What a job without many chunks stays below, so that it clears no large page.
constexpr std::size_t usualHeap = mebibyte / 2;
// What the heap grows by. Memory that is not touched costs nothing.
constexpr std::size_t heapStep = 16 * mebibyte;
// More than the heap of a tool that has only begun has left.
constexpr std::size_t leastGrowth = mebibyte;
// What it grows by from then on, as it does by itself.
constexpr int usualStep = 128 * 1024;
// The list of chunks, which is moved as it grows, stays on the heap, too.
constexpr int leastOutsideHeap = 32 * mebibyte;
// A part of the heap that is free will be wanted again.
constexpr int neverTrimmed = std::numeric_limits<int>::max();
// What each of several threads keeps free: more than the chunks of a usual job and the bytes of its view.
constexpr int mostKept = 16 * mebibyte;
// Larger than any view that is read.
constexpr int leastOutsideKept = 2 * mebibyte;

} // namespace

void prepareHeap(std::int64_t jobSize)
{
#if defined(__GLIBC__)
    if (jobSize < leastJob)
        return;
    mallopt(M_MMAP_THRESHOLD, leastOutsideHeap);
    mallopt(M_TRIM_THRESHOLD, neverTrimmed);
    mallopt(M_TOP_PAD, heapStep);
    auto* const start = static_cast<char*>(sbrk(0));
    void* volatile growth = std::malloc(leastGrowth);
    std::free(growth);
    auto* const end = static_cast<char*>(sbrk(0));
    // Where memory is scarce the next small step may still be had.
    mallopt(M_TOP_PAD, usualStep);
    const std::size_t gap =
        (largePage - reinterpret_cast<std::uintptr_t>(start + usualHeap) % largePage) % largePage;
    auto* const large = start + usualHeap + gap;
    if (large >= end)
        return;
    madvise(large, static_cast<std::size_t>(end - large), MADV_HUGEPAGE);
    // Large pages begin where the system lets them. Memory that is taken and never touched lets what is
    // needed in any case end there.
    static void* volatile untouched = nullptr;
    if (untouched == nullptr)
        untouched = std::malloc(gap);
#endif
}

void keepHeapForThreads()
{
#if defined(__GLIBC__)
    mallopt(M_MMAP_THRESHOLD, leastOutsideKept);
    mallopt(M_TRIM_THRESHOLD, mostKept);
#endif
}

} // namespace JobParser::Tool
