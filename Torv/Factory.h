#pragma once

#include <any>
#include <functional>
#include <string>
#include <unordered_map>
#include <utility>

#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/NoFactoryException.h"

namespace Torv
{

/// Factory functions by reference, each of a type of its own. Filled once, then read on any thread.
class Factory
{
public:
    /// False, with nothing changed, if the reference is taken.
    template <typename Function> bool add(const std::string& reference, std::function<Function> factory)
    {
        return m_factories.emplace(reference, std::move(factory)).second;
    }

    bool contains(const std::string& reference) const { return m_factories.contains(reference); }

    /// Throws NoFactoryException for an unknown reference, and GenericException if the factory that is there
    /// is not a Function.
    template <typename Function> const std::function<Function>& get(const std::string& reference) const
    {
        const auto found = m_factories.find(reference);
        if (found == m_factories.end())
            throw NoFactoryException(format("Factory: no factory for the reference %s", reference.c_str()));
        const auto* factory = std::any_cast<std::function<Function>>(&found->second);
        if (factory == nullptr)
            throw GenericException(
                format("Factory: invalid factory type for the reference %s", reference.c_str()));
        return *factory;
    }

private:
    std::unordered_map<std::string, std::any> m_factories;
};

} // namespace Torv
