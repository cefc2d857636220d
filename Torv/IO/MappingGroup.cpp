#include "Torv/IO/MappingGroup.h"

#include <atomic>
#include <cstddef>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace Torv::IO
{
namespace
{

constexpr std::size_t rangeSize = std::size_t{32} * 1024 * 1024;
// Systems limit the mappings of a process, and 32 bits its addresses. It needs some for other things.
constexpr int mostMappings = 256;
constexpr int mostRanges = sizeof(void*) < 8 ? 8 : 64;

std::size_t wholePages(std::int64_t size)
{
    static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return (static_cast<std::size_t>(size) + page - 1) / page * page;
}

} // namespace

/// What the groups of several threads know of each other.
struct MappingGroup::Peers {
    std::atomic<int> ranges = 0;
    std::atomic<int> endings = 0; ///< Ranges that are just ending.
};

/// Addresses that mappings fill from the start. They end together, with their last holder.
struct MappingGroup::Range {
    explicit Range(std::shared_ptr<Peers> thePeers)
        : peers(std::move(thePeers)), isOneTooMany(peers->ranges++ >= mostRanges),
          start(::mmap(nullptr, rangeSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)),
          size(start == MAP_FAILED ? 0 : rangeSize)
    {
    }
    Range(const Range&) = delete;
    Range& operator=(const Range&) = delete;
    ~Range()
    {
        if (size > 0) {
            ++peers->endings;
            ::munmap(start, size);
            --peers->endings;
        }
        --peers->ranges;
    }

    bool hasRoomFor(std::size_t count) const { return count <= size - used && mappings < mostMappings; }

    /// Null if the system refuses. Then the range takes nothing more.
    const std::uint8_t* map(int descriptor, std::int64_t offset, std::size_t count)
    {
        auto* const place = static_cast<std::uint8_t*>(start) + used;
        if (::mmap(place, count, PROT_READ, MAP_SHARED | MAP_FIXED, descriptor, offset) == MAP_FAILED) {
            leaveOut(place, count);
            return nullptr;
        }
        used += count;
        ++mappings;
        return place;
    }

    /// Some systems free the addresses of a mapping that failed, and another thread may have them by now.
    void leaveOut(std::uint8_t* place, std::size_t count)
    {
        ::munmap(place + count, size - used - count);
        size = used;
    }

    const std::shared_ptr<Peers> peers;
    const bool isOneTooMany;
    void* const start;
    std::size_t size;
    std::size_t used = 0;
    int mappings = 0;
};

MappingGroup::MappingGroup() : MappingGroup(std::make_shared<Peers>()) {}

MappingGroup::MappingGroup(std::shared_ptr<Peers> peers) : m_peers(std::move(peers)) {}

std::unique_ptr<MappingGroup> MappingGroup::makePeer() const
{
    return std::unique_ptr<MappingGroup>(new MappingGroup(m_peers));
}

std::shared_ptr<const std::uint8_t> MappingGroup::map(int descriptor, std::int64_t offset, std::int64_t size)
{
    // The system makes whoever maps wait until the mappings have ended.
    if (m_isRefused || size > mostMapped || m_peers->endings > 0)
        return nullptr;
    const std::size_t count = wholePages(size);
    if (m_range == nullptr || !m_range->hasRoomFor(count))
        m_range = newRange();
    if (m_range == nullptr)
        return nullptr;
    const std::uint8_t* const place =
        m_range->hasRoomFor(count) ? m_range->map(descriptor, offset, count) : nullptr;
    m_isRefused = place == nullptr;
    if (m_isRefused)
        return nullptr;
    return {m_range, place};
}

/// Null if peers have enough of them.
std::shared_ptr<MappingGroup::Range> MappingGroup::newRange()
{
    m_range.reset();
    // Looked at first, so that who has to do without one does not pay for it with each file.
    if (m_peers->ranges >= mostRanges)
        return nullptr;
    auto range = std::make_shared<Range>(m_peers);
    return range->isOneTooMany ? nullptr : range;
}

} // namespace Torv::IO
