#pragma once

#include <cstdint>

namespace JobParser::Tool
{

/// Readies the heap for the chunks of a job of that many bytes: grown in one step, on large pages where the
/// system has them. Chunks are small and many, and each new page of 4 KiB costs as much as several of them.
/// Does nothing for a job that is small. What fails only leaves the heap as slow as it was.
void prepareHeap(std::int64_t jobSize);

/// Keeps what jobs of a usual size took for the next ones of the thread. To give memory back, each time a job
/// ends, would interrupt the other threads.
void keepHeapForThreads();

} // namespace JobParser::Tool
