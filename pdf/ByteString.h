#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "JobParser/Export.h"

namespace Pdf
{

/// Bytes that do not change, in the room of a pointer. Up to seven stand in it, as those of most names do; of
/// more there is one copy, which all copies of the string share.
class JOBPARSER_EXPORT ByteString
{
public:
    ByteString() = default;
    ByteString(std::string_view bytes) { assign(bytes); }
    ByteString(const std::string& bytes) : ByteString(std::string_view(bytes)) {}
    ByteString(const char* text) : ByteString(std::string_view(text)) {}
    ByteString(const ByteString& other) noexcept : m_room(other.m_room)
    {
        if (!isInside())
            addOwner();
    }
    ByteString(ByteString&& other) noexcept : m_room(other.m_room) { other.m_room = emptyRoom; }
    ~ByteString()
    {
        if (!isInside())
            release();
    }
    ByteString& operator=(const ByteString& other) noexcept { return *this = ByteString(other); }
    ByteString& operator=(ByteString&& other) noexcept
    {
        std::swap(m_room, other.m_room);
        return *this;
    }

    /// Valid as long as this very object is, and is not assigned to.
    std::string_view view() const
    {
        return isInside() ? std::string_view(m_room.data() + bytesOffset, insideSize()) : outsideView();
    }
    operator std::string_view() const { return view(); }

    bool empty() const { return view().empty(); }

    friend bool operator==(const ByteString& a, const ByteString& b) { return a.view() == b.view(); }
    friend bool operator==(const ByteString& a, std::string_view b) { return a.view() == b; }
    friend bool operator==(const ByteString& a, const char* b) { return a.view() == b; }

private:
    /// Before the bytes that do not stand in the room.
    struct Outside {
        std::atomic<std::uint32_t> owners;
        std::size_t size;
    };

    using Room = std::array<char, 8>;

    // Pointers are even, so that the byte with their low bits tells what is in the room: an odd one is twice
    // the count of bytes inside, and one.
    static constexpr bool isLittleEndian = std::endian::native == std::endian::little;
    static constexpr std::size_t tagOffset = isLittleEndian ? 0 : sizeof(Room) - 1;
    static constexpr std::size_t bytesOffset = isLittleEndian ? 1 : 0;
    static constexpr std::size_t mostInside = sizeof(Room) - 1;
    static constexpr Room emptyRoom = isLittleEndian ? Room{1} : Room{0, 0, 0, 0, 0, 0, 0, 1};

    bool isInside() const { return (m_room[tagOffset] & 1) != 0; }
    std::size_t insideSize() const { return static_cast<std::size_t>(m_room[tagOffset]) >> 1; }

    void assign(std::string_view bytes)
    {
        if (bytes.size() > mostInside) {
            allocate(bytes);
            return;
        }
        m_room[tagOffset] = static_cast<char>(bytes.size() * 2 + 1);
        if (!bytes.empty())
            std::memcpy(m_room.data() + bytesOffset, bytes.data(), bytes.size());
    }

    void allocate(std::string_view bytes);
    Outside* outside() const
    {
        std::uint64_t address = 0;
        std::memcpy(&address, m_room.data(), sizeof address);
        return reinterpret_cast<Outside*>(static_cast<std::uintptr_t>(address));
    }
    std::string_view outsideView() const
    {
        const Outside* const shared = outside();
        return {reinterpret_cast<const char*>(shared + 1), shared->size};
    }
    void addOwner() const noexcept;
    void release() const noexcept;

    alignas(std::uint64_t) Room m_room = emptyRoom;
};

} // namespace Pdf
