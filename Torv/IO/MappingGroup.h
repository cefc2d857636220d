#pragma once

#include <cstdint>
#include <memory>

#include "Torv/Export.h"

namespace Torv::IO
{

/// Keeps small mappings of files side by side, so that many end in one step: to end a mapping interrupts each
/// processor that runs a thread of the process. Made for threads that go through many small files, each with
/// a group of its own.
///
/// What was mapped ends when 32 MiB or 256 mappings are full, or with the group, as soon as nobody holds any
/// of it. Until then it keeps the disk space of files that are deleted. 64 peers map at a time, 8 where
/// addresses have 32 bits.
///
/// Belongs to one thread. What it gives may be held by any, and outlive it.
class TORV_EXPORT MappingGroup
{
public:
    /// Bytes that one mapping may have.
    static constexpr std::int64_t mostMapped = 1024 * 1024;

    MappingGroup();
    MappingGroup(const MappingGroup&) = delete;
    MappingGroup& operator=(const MappingGroup&) = delete;

    /// A group for another thread, which knows when this one ends mappings. Callable on any thread.
    std::unique_ptr<MappingGroup> makePeer() const;

    /// Maps `size` bytes of a file, 1 or more, from `offset`, a multiple of the page size; the mapping lasts
    /// as long as somebody holds what is returned. Null if `size` is above mostMapped, if the system refuses,
    /// if enough peers map already, or if the thread would have to wait since a peer is ending mappings: such
    /// a stretch is read instead.
    std::shared_ptr<const std::uint8_t> map(int descriptor, std::int64_t offset, std::int64_t size);

private:
    struct Peers;
    struct Range;

    explicit MappingGroup(std::shared_ptr<Peers> peers);

    std::shared_ptr<Range> newRange();

    std::shared_ptr<Peers> m_peers;
    std::shared_ptr<Range> m_range; // Takes the next mapping, if there is room.
    bool m_isRefused = false;       // The system would not map once; it will not the next time.
};

} // namespace Torv::IO
