#include <dlfcn.h>
#include <filesystem>

#include "Torv/FileSystem/Path.h"
#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/Json/Reader.h"

// The tool carries the library's objects, and nothing that is dear to load: most of what a process costs on a
// small job is loading. Only who reads metadata or asks a worker reads JSON, and pays for it then.
namespace Torv::Json
{
namespace
{

using ReadDocument = decltype(&torvReadJsonDocument);

// By its place beside the tool: a search path in the tool would be walked for every library it starts with.
ReadDocument loadReader()
{
    const std::filesystem::path tool = FileSystem::Path::stdExePath();
    const std::filesystem::path path = tool.parent_path() / JOBPARSER_LIBRARY;
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const function = library != nullptr ? dlsym(library, "torvReadJsonDocument") : nullptr;
    if (function == nullptr)
        throw GenericException(format("Cannot load the reader of JSON | error=%s", dlerror()));
    return reinterpret_cast<ReadDocument>(function);
}

} // namespace

const char* readDocument(simdjson::dom::document& document, std::string_view text)
{
    static const ReadDocument reader = loadReader();
    return reader(&document, text.data(), text.size());
}

} // namespace Torv::Json
