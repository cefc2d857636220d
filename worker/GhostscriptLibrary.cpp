#include "worker/GhostscriptLibrary.h"

#include <dlfcn.h>
#include <string>

#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

// The version whose headers this is built with; another one has another number.
constexpr const char* libraryName = "libgs.so.10";

template <typename Function> void find(void* library, const char* name, Function& function)
{
    void* address = ::dlsym(library, name);
    if (address == nullptr)
        throw WorkerException(ErrorCode::Missing, std::string("Ghostscript lacks a function: ") + name);
    function = reinterpret_cast<Function>(address);
}

GhostscriptLibrary load()
{
    void* library = ::dlopen(libraryName, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw WorkerException(ErrorCode::Missing,
                              std::string("Ghostscript is not installed: ") + ::dlerror());
    GhostscriptLibrary functions{};
    find(library, "gsapi_new_instance", functions.newInstance);
    find(library, "gsapi_delete_instance", functions.deleteInstance);
    find(library, "gsapi_set_stdio", functions.setStdio);
    find(library, "gsapi_set_display_callback", functions.setDisplayCallback);
    find(library, "gsapi_set_arg_encoding", functions.setArgEncoding);
    find(library, "gsapi_init_with_args", functions.initWithArgs);
    find(library, "gsapi_run_string", functions.runString);
    find(library, "gsapi_exit", functions.exit);
    return functions;
}

} // namespace

const GhostscriptLibrary& GhostscriptLibrary::get()
{
    static const GhostscriptLibrary library = load();
    return library;
}

} // namespace JobParser::Worker
