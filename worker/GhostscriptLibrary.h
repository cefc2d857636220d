#pragma once

#include <ghostscript/iapi.h>

namespace JobParser::Worker
{

/// The functions of Ghostscript's library that are used here, under the names of its interface without their
/// prefix.
///
/// The library is loaded when it is first asked for: with all that it needs it is most of what a process
/// maps, and every request is done in a copy of a process.
struct GhostscriptLibrary {
    decltype(&gsapi_new_instance) newInstance;
    decltype(&gsapi_delete_instance) deleteInstance;
    decltype(&gsapi_set_stdio) setStdio;
    decltype(&gsapi_set_display_callback) setDisplayCallback;
    decltype(&gsapi_set_arg_encoding) setArgEncoding;
    decltype(&gsapi_init_with_args) initWithArgs;
    decltype(&gsapi_run_string) runString;
    decltype(&gsapi_exit) exit;

    /// The library, which stays loaded. Throws WorkerException if it is not installed.
    static const GhostscriptLibrary& get();
};

} // namespace JobParser::Worker
