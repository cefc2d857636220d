#include "pdf/ByteString.h"

#include <new>

namespace Pdf
{

void ByteString::allocate(std::string_view bytes)
{
    static_assert(sizeof(Outside*) <= sizeof(Room));

    auto* const outside = static_cast<Outside*>(::operator new(sizeof(Outside) + bytes.size()));
    new (outside) Outside{1, bytes.size()};
    std::memcpy(reinterpret_cast<char*>(outside + 1), bytes.data(), bytes.size());
    const std::uint64_t address = reinterpret_cast<std::uintptr_t>(outside);
    std::memcpy(m_room.data(), &address, sizeof address);
}

void ByteString::addOwner() const noexcept
{
    outside()->owners.fetch_add(1, std::memory_order_relaxed);
}

void ByteString::release() const noexcept
{
    Outside* const shared = outside();
    if (shared->owners.load(std::memory_order_acquire) != 1 &&
        shared->owners.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    shared->~Outside();
    ::operator delete(shared);
}

} // namespace Pdf
