#pragma once

#include <cstddef>
#include <sys/mman.h>
#include <unistd.h>

namespace Torv::Test
{

/// Whether anything is mapped at the start of a page.
inline bool isMappedAt(const void* page)
{
    unsigned char resident = 0;
    const auto pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return ::mincore(const_cast<void*>(page), pageSize, &resident) == 0;
}

} // namespace Torv::Test
