#pragma once

#include <cstddef>
#include <vector>

namespace JobParser
{

/// The elements 0 to `size` - 1 of some list, of which some are taken out by their position.
///
/// A place is a position that stays the same while elements go: what stands behind a removed element moves up
/// into it. Taking out at a place takes the same time wherever it is and however long the list, which is what
/// erasing from a vector does not.
class ShrinkingList
{
public:
    /// Names a place; given out by place().
    using Place = std::size_t;

    explicit ShrinkingList(std::size_t size);

    /// A new place at a position, to be called before anything is removed.
    Place place(std::size_t position);

    /// Whether the list still reaches up to the place.
    bool holds(Place place) const { return m_places[place].element != m_end; }
    /// Which element stands there; the list reaches up to the place.
    std::size_t element(Place place) const { return m_places[place].element; }
    std::size_t position(Place place) const { return m_places[place].position; }

    /// Takes out what stands at the place. False if the list does not reach up to it.
    bool remove(Place place);

    /// Moves the place one position on; the list reaches up to it.
    void advance(Place place);
    /// Moves the place back by `count` positions, but not before the first one.
    void goBack(Place place, std::size_t count);

    /// What was taken out, in ascending order.
    std::vector<std::size_t> removed() const;

private:
    struct Position {
        std::size_t position;
        std::size_t element; ///< m_end if the list does not reach up to the position.
    };

    /// The neighbours of each element, in a ring that m_end closes.
    std::vector<std::size_t> m_next;
    std::vector<std::size_t> m_previous;
    std::vector<Position> m_places;
    std::size_t m_end;
    std::size_t m_size;
};

} // namespace JobParser
