// Any text is JSON from a stranger, and any bytes are a string that JSON has to carry.

#include <vector>

#include "FuzzSupport.h"

#include "Torv/Json/Json.h"
#include "Torv/Variant.h"
#include "Torv/VariantIterator.h"

namespace
{

using Torv::Variant;

void checkString(std::string_view bytes)
{
    const Variant back = Torv::Json::parse(Torv::Json::_encodeString(bytes));
    Fuzz::require(back.isString() && back.toString() == bytes, "a string comes back as the bytes it was");
}

// Each conversion either gives something or says in the expected way that it cannot.
void checkConversions(const Variant& value)
{
    Fuzz::survives([&] { value.toInt(); });
    Fuzz::survives([&] { value.toInt64(); });
    Fuzz::survives([&] { value.toReal(); });
    Fuzz::survives([&] { value.toBool(); });
    Fuzz::survives([&] { value.toVector(); });
    const bool hasKey = value.contains("a");
    const bool gaveKey = Fuzz::survives([&] { value["a"]; });
    Fuzz::require(hasKey == gaveKey, "a key that is there can be had");
    if (value.isString())
        checkString(value.toString());
}

void checkTree(const Variant& root)
{
    std::vector<Variant> open{root};
    while (!open.empty()) {
        const Variant value = open.back();
        open.pop_back();
        checkConversions(value);
        std::size_t count = 0;
        for (Torv::VariantIterator it = value.begin(), end = value.end(); !(it == end); ++it, ++count)
            open.push_back(it.value());
        Fuzz::require(count == (value.isArray() ? value.size() : 0),
                      "an array has as many elements as it says");
    }
}

void checkRoundTrip(const Variant& value)
{
    const std::string json = value.toJson();
    const Variant again = Torv::Json::parse(json);
    Fuzz::require(again.toJson() == json, "JSON read and written again stays the same");
    Fuzz::require(again.kind() == value.kind(), "a value keeps its kind");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string_view text = Fuzz::asText({data, size});
    const bool carried = Fuzz::survives([&] { checkString(text); });
    Fuzz::require(carried, "JSON carries any bytes");

    Variant value;
    if (!Fuzz::survives([&] { value = Torv::Json::parse(std::string(text)); }))
        return 0;
    checkTree(value);
    const bool kept = Fuzz::survives([&] { checkRoundTrip(value); });
    Fuzz::require(kept, "what was read can be written and read again");
    return 0;
}
