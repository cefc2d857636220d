#pragma once

#include <string>

#include "Torv/Assert.h"
#include "Torv/GenericException.h"

/// While it lives, a failed assertion throws Torv::GenericException with its three texts.
class ThrowingAssertions
{
public:
    ThrowingAssertions() : m_former(Torv::setAssertionHandler(throwFailed)) {}
    ~ThrowingAssertions() { Torv::setAssertionHandler(m_former); }
    ThrowingAssertions(const ThrowingAssertions&) = delete;
    ThrowingAssertions& operator=(const ThrowingAssertions&) = delete;

private:
    static void throwFailed(const char* expression, const char* file, const char* function)
    {
        throw Torv::GenericException(std::string(expression) + ", " + file + ", " + function);
    }

    Torv::AssertionHandler m_former;
};
