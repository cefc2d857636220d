#pragma once

namespace Torv::Async::ProcessPool
{

/// A file descriptor that is closed with its owner.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;

    int number() const { return m_number; } ///< -1 if there is none.
    void close();

private:
    int m_number;
};

/// The two ends of a pipe, which no program inherits and which are none of the three standard streams.
struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

/// Throws GenericException if the system refuses.
Pipe makePipe();

/// Makes reading and writing at this end return at once. The other end stays as it is.
void makeNonBlocking(const Descriptor& descriptor);

} // namespace Torv::Async::ProcessPool
