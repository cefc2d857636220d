#include "pdf/ObjectKeeper.h"

namespace Pdf::Parser
{

void ObjectKeeper::put(Objects& objects, Object&& object)
{
    setAside(objects);
    const Reference reference = object.reference;
    if (reference.generation != 0)
        m_aside.emplace_back(&objects, std::move(object));
    else if (objects.empty() || objects.rbegin()->first < reference)
        objects.emplace_hint(objects.end(), reference, std::move(object)); // Most come in their order.
    else
        objects[reference] = std::move(object);
}

// Only this insert() goes by the comparisons on the way down the tree. All others, emplace() too, look for
// the place first, and take for granted that who is less than one neighbour is not less than the other.
void ObjectKeeper::finish()
{
    for (auto entry = m_aside.rbegin(); entry != m_aside.rend(); ++entry) {
        const Reference reference = entry->second.reference;
        entry->first->insert(Objects::value_type(reference, std::move(entry->second)));
    }
    m_aside.clear();
}

void ObjectKeeper::setAside(Objects& objects)
{
    while (!objects.empty() && objects.begin()->first.generation != 0)
        m_aside.emplace_back(&objects, std::move(objects.extract(objects.begin()).mapped()));
}

} // namespace Pdf::Parser
