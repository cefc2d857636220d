#include "JobParser/languages/ChunkPjlCmd.h"

#include <algorithm>
#include <cstdint>
#include <locale>
#include <memory>
#include <optional>
#include <regex>
#include <string_view>

#include "Torv/Encoding.h"
#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Regex.h"
#include "Torv/Text.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

constexpr std::string_view keyword = "@PJL";
constexpr std::string_view lineEnd = "\r\n";
// std::regex recurses for each byte of the text, so that it is given no more than its stack bears.
constexpr std::size_t maxRegExSubject = 4096;

/// Whether RE2 may mean something else by the pattern than std::regex. Its brackets are never empty, its `\0`
/// and `\10` take octal digits, and it misses alternatives that begin with the same byte from 80 on.
bool meansSomethingElse(std::string_view pattern)
{
    for (const std::string_view part : {"[]", "[^]", "\\x", "\\0", "\\1"}) {
        if (pattern.find(part) != pattern.npos)
            return true;
    }
    return std::ranges::any_of(pattern, [](char byte) { return static_cast<std::uint8_t>(byte) >= 0x80; });
}

/// The same pattern in the engine that neither recurses nor takes exponential time. Null for what only
/// std::regex knows: look-aheads and back references.
std::unique_ptr<const Torv::Regex> linearForm(const char* pattern)
{
    if (meansSomethingElse(pattern))
        return nullptr;
    try {
        return std::make_unique<const Torv::Regex>(pattern);
    } catch (const Torv::GenericException&) {
        return nullptr;
    }
}

void write(Torv::IO::IStream& stream, std::string_view text)
{
    stream.write(text.data(), static_cast<std::uint32_t>(text.size()));
}

void logLine(Torv::Log::ILog& log, const std::string& line)
{
    log.write(Torv::Log::LevelDump, line, {}, false, "", 0);
}

std::string line(const ChunkPjlCmd& chunk)
{
    if (chunk.cmd.empty())
        return std::string(keyword);
    if (chunk.param.empty())
        return Torv::format("@PJL %s", chunk.cmd.c_str());
    return Torv::format("@PJL %s %s", chunk.cmd.c_str(), chunk.param.c_str());
}

std::string loggable(const std::string& bytes)
{
    if (Torv::Encoding::isUtf8(bytes))
        return bytes;
    std::string text;
    Torv::Encoding::appendAsUtf8(text, bytes);
    return text;
}

/// Where in the parameter the value of `name` stands.
std::optional<std::string_view> findValue(std::string_view param, std::string_view name)
{
    static const Torv::Regex nameAndValue(R"re(\s*([^\s]+)\s*=\s*("[^"]*"|[^\s]+))re",
                                          Torv::Regex::Case::Ignored);
    for (std::string_view rest = param;;) {
        const auto foundName = nameAndValue.find(rest, 1);
        const auto foundValue = nameAndValue.find(rest, 2);
        if (!foundName || !foundValue)
            return {};
        if (Torv::iequals(*foundName, name))
            return foundValue;
        rest.remove_prefix(static_cast<std::size_t>(foundValue->data() - rest.data()) + foundValue->size());
    }
}

} // namespace

ChunkPjlCmd::ChunkPjlCmd(UnserializationContext&, const Torv::Variant& dto)
    : cmd(dto["cmd"].toString()), param(dto["param"].toString())
{
}

void ChunkPjlCmd::save(JobFile&, Torv::IO::IStream& stream) const
{
    write(stream, keyword);
    if (!cmd.empty()) {
        write(stream, " ");
        write(stream, cmd);
        if (!param.empty()) {
            write(stream, " ");
            write(stream, param);
        }
    }
    write(stream, lineEnd);
}

std::int64_t ChunkPjlCmd::size() const
{
    std::size_t bytes = keyword.size() + lineEnd.size();
    if (!cmd.empty())
        bytes += 1 + cmd.size() + (param.empty() ? 0 : 1 + param.size());
    return static_cast<std::int64_t>(bytes);
}

void ChunkPjlCmd::dump(Torv::Log::ILog& log)
{
    const std::string text = line(*this);
    if (Torv::Encoding::isUtf8(text)) {
        try {
            logLine(log, text);
            return;
        } catch (const std::exception&) {
            // The command alone may still pass.
        }
    }
    logLine(log, Torv::format("PJL cmd: %s <invalid UTF8 value>", loggable(cmd).c_str()));
}

std::string ChunkPjlCmd::toJson(SerializationContext&) const
{
    Torv::Json::Object json;
    json.add("cmd", cmd);
    json.add("param", param);
    return json.take();
}

void ChunkPjlCmd::setParam(const std::string& name, const std::string& value)
{
    if (const auto old = findValue(param, name)) {
        param.replace(static_cast<std::size_t>(old->data() - param.data()), old->size(), value);
        return;
    }
    // Built first, since the arguments may be parts of this chunk.
    const std::string added = " " + name + "=" + value;
    param += added;
}

bool ChunkPjlCmd::parseParamEqValue(std::string& name, std::string& value) const
{
    std::size_t separator = param.find('=');
    if (separator == std::string::npos)
        separator = param.find(' ');
    if (separator == std::string::npos) {
        name.clear();
        value.clear();
        return false;
    }
    // Copied first, since the results may go into this chunk.
    std::string left(Torv::trim(std::string_view(param).substr(0, separator)));
    std::string right(Torv::trim(std::string_view(param).substr(separator + 1)));
    name = std::move(left);
    value = std::move(right);
    return true;
}

bool ChunkPjlCmd::parseParamRegEx(const char* pattern, std::string& out) const
{
    std::regex compiled;
    compiled.imbue(std::locale::classic());
    compiled.assign(pattern);
    if (param.size() > maxRegExSubject)
        return false;
    if (const auto linear = linearForm(pattern)) {
        if (!linear->matches(param))
            return false;
        out = linear->find(param, 1).value_or("");
        return true;
    }
    std::smatch found;
    if (!std::regex_search(param, found, compiled))
        return false;
    out = found.str(1);
    return true;
}

} // namespace JobParser
