#pragma once

#include <string_view>
#include <utility>

namespace JobParser::Worker
{

/// Owns a file descriptor.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }

    int get() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }
    void close();

private:
    int m_number = -1;
};

/// Writes all of the text. False if that is not possible.
bool writeAll(int descriptor, std::string_view text);

/// Reads `size` bytes. False if they do not come.
bool readAll(int descriptor, char* bytes, std::size_t size);

} // namespace JobParser::Worker
