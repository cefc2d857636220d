#pragma once

#include <string>

#include "Torv/GenericException.h"

/// What the call fails with.
template <typename Call> std::string messageOf(Call call)
{
    try {
        call();
    } catch (const Torv::GenericException& error) {
        return error.what();
    }
    return "nothing was thrown";
}
