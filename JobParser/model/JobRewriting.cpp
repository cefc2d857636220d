// The operations of Job that change a parsed job before it is saved. Each looks for its place in the chunk
// list alone and first decides what goes and what comes, then changes the list in one pass: a job of a
// million chunks costs no more a chunk than a short one, and where memory runs out the list is as it was.

#include <algorithm>
#include <optional>
#include <typeinfo>
#include <utility>

#include "JobParser/Job.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/ShrinkingList.h"

#include "Torv/Format.h"
#include "Torv/Text.h"

namespace JobParser
{
namespace
{

using Chunk = std::shared_ptr<IChunk>;
using Chunks = std::vector<Chunk>;
using Indices = std::vector<std::size_t>;

/// Everything that PJL may say has to stand before it, so that it is the anchor of what is inserted.
constexpr std::string_view enterCommand = "ENTER";
constexpr std::string_view jobCommand = "JOB";
constexpr const char* setCommand = "SET";

constexpr const char* actionName = "PROCESSINGACTION";
constexpr const char* actionValue = "APPEND";
constexpr const char* typeName = "PROCESSINGTYPE";
constexpr const char* optionName = "PROCESSINGOPTION";
constexpr const char* boundaryName = "PROCESSINGBOUNDARY";
constexpr const char* boundaryValue = "MOPY";

/// Null if the chunk is no PJL command.
ChunkPjlCmd* asPjlCmd(const Chunk& chunk)
{
    return dynamic_cast<ChunkPjlCmd*>(chunk.get());
}

/// The chunk as that PJL command, in any case; null if it is another one or none at all.
ChunkPjlCmd* asPjlCmd(const Chunk& chunk, std::string_view command)
{
    ChunkPjlCmd* const cmd = asPjlCmd(chunk);
    return cmd != nullptr && Torv::iequals(cmd->cmd, command) ? cmd : nullptr;
}

/// Whether the chunk is of exactly this class, not of one derived from it.
template <typename T> bool isExactly(const Chunk& chunk)
{
    const IChunk* const pointer = chunk.get();
    return pointer != nullptr && typeid(*pointer) == typeid(T);
}

/// A `NAME=VALUE` as it stands in a parameter.
struct Setting {
    std::string name;
    std::string value;

    bool hasName(std::string_view wanted) const { return Torv::iequals(name, wanted); }
    bool hasValue(std::string_view wanted) const { return Torv::iequals(value, wanted); }
};

std::optional<Setting> settingOf(const ChunkPjlCmd& cmd)
{
    Setting setting;
    if (!cmd.parseParamEqValue(setting.name, setting.value))
        return std::nullopt;
    return setting;
}

Chunk makeSetCmd(const char* name, const char* value)
{
    return std::make_shared<ChunkPjlCmd>(setCommand, Torv::format("%s=%s", name, value));
}

std::string nameParam(const std::string& name)
{
    return "NAME=\"" + name + '"';
}

/// The index of the first `ENTER`, or the size of the list.
std::size_t findEnter(const Chunks& chunks)
{
    std::size_t index = 0;
    while (index < chunks.size() && asPjlCmd(chunks[index], enterCommand) == nullptr)
        ++index;
    return index;
}

/// The indices of the chunks for which `test` holds, up to `end`.
template <typename Test> Indices findAll(const Chunks& chunks, std::size_t end, Test test)
{
    Indices found;
    for (std::size_t index = 0; index < end; ++index) {
        if (test(chunks[index]))
            found.push_back(index);
    }
    return found;
}

void removeChunks(Chunks& chunks, const Indices& removed)
{
    if (removed.empty())
        return;
    std::size_t next = 0;
    std::size_t kept = removed.front();
    for (std::size_t index = kept; index < chunks.size(); ++index) {
        if (next < removed.size() && removed[next] == index)
            ++next;
        else
            chunks[kept++] = std::move(chunks[index]);
    }
    chunks.resize(kept);
}

/// Removes the chunks at ascending indices, then puts others before the index `place` of what is left. Says
/// whether this changed the list.
bool change(Chunks& chunks, const Indices& removed, std::size_t place = 0, const Chunks& added = {})
{
    if (removed.size() < added.size())
        chunks.reserve(chunks.size() + added.size() - removed.size());
    removeChunks(chunks, removed);
    chunks.insert(chunks.begin() + static_cast<std::ptrdiff_t>(place), added.begin(), added.end());
    return !removed.empty() || !added.empty();
}

/// Where the parts of the first finishing group of some type stand, up to the boundary that closes it.
class HpGroup
{
public:
    HpGroup(const Chunks& chunks, std::string_view type);

    /// Whether the walk ended at the boundary of such a group, and not at `ENTER` or at the end of the list.
    bool isClosed() const { return m_closed; }
    std::size_t end() const { return m_end; } ///< Index at which the walk ended.

    /// Takes the group out of the list, and by the same positions whatever stands there when another boundary
    /// follows: the positions are those of one group, whatever the list does meanwhile. Returns the position
    /// of `ENTER`, or of the end of the list, in what is left.
    std::size_t removeFrom(const Chunks& chunks, ShrinkingList& list) const;

private:
    void take(std::size_t index, const Setting& setting, std::string_view type);

    std::optional<std::size_t> m_action;
    std::optional<std::size_t> m_type;
    std::optional<std::size_t> m_option;
    bool m_actionSeen = false;
    bool m_closed = false;
    std::size_t m_end = 0;
};

bool isBoundary(const Setting& setting)
{
    return setting.hasName(boundaryName) && setting.hasValue(boundaryValue);
}

bool isBoundary(const ChunkPjlCmd* cmd)
{
    if (cmd == nullptr || !Torv::iequals(cmd->cmd, setCommand))
        return false;
    const auto setting = settingOf(*cmd);
    return setting && isBoundary(*setting);
}

HpGroup::HpGroup(const Chunks& chunks, std::string_view type)
{
    for (; m_end < chunks.size(); ++m_end) {
        const ChunkPjlCmd* const cmd = asPjlCmd(chunks[m_end]);
        if (cmd == nullptr)
            continue;
        if (Torv::iequals(cmd->cmd, enterCommand))
            return;
        if (!Torv::iequals(cmd->cmd, setCommand))
            continue;
        const auto setting = settingOf(*cmd);
        if (setting)
            take(m_end, *setting, type);
        if (m_closed)
            return;
    }
}

void HpGroup::take(std::size_t index, const Setting& setting, std::string_view type)
{
    if (!m_type) {
        if (setting.hasName(actionName) && setting.hasValue(actionValue)) {
            m_actionSeen = true;
            m_action = index;
        } else if (setting.hasName(typeName)) {
            // An action before another type belongs to that one's group.
            if (setting.hasValue(type))
                m_type = index;
            else
                m_actionSeen = false;
        }
    } else if (!m_option) {
        if (setting.hasName(optionName))
            m_option = index;
    } else {
        m_closed = isBoundary(setting);
    }
}

std::size_t HpGroup::removeFrom(const Chunks& chunks, ShrinkingList& list) const
{
    const auto walk = list.place(m_end);
    const auto option = list.place(*m_option);
    const auto type = list.place(*m_type);
    const auto action = list.place(m_action.value_or(0));
    while (list.holds(walk)) {
        const ChunkPjlCmd* const cmd = asPjlCmd(chunks[list.element(walk)]);
        if (cmd != nullptr && Torv::iequals(cmd->cmd, enterCommand))
            break;
        if (!isBoundary(cmd)) {
            list.advance(walk);
            continue;
        }
        list.remove(walk);
        // The walk stands on the next chunk now, and each chunk that goes besides sends it back by one.
        std::size_t removedBesides = list.remove(option);
        removedBesides += list.remove(type);
        if (m_actionSeen)
            removedBesides += list.remove(action);
        list.goBack(walk, removedBesides);
    }
    return list.position(walk);
}

} // namespace

void Job::wrapIntoPjlJob(Pdl pdl, const std::string& name)
{
    if (jobInfo.pjl)
        return;
    Chunks wrapped;
    wrapped.reserve(chunks.size() + 6);
    wrapped.push_back(std::make_shared<ChunkUel>());
    wrapped.push_back(std::make_shared<ChunkPjlCmd>("JOB", nameParam(name)));
    wrapped.push_back(std::make_shared<ChunkPjlCmd>("ENTER", "LANGUAGE=" + PdlUtils::toPjlEnterLang(pdl)));
    wrapped.insert(wrapped.end(), chunks.begin(), chunks.end());
    wrapped.push_back(std::make_shared<ChunkUel>());
    wrapped.push_back(std::make_shared<ChunkPjlCmd>("EOJ", nameParam(name)));
    wrapped.push_back(std::make_shared<ChunkUel>());
    chunks = std::move(wrapped);
    modified = true;
    jobInfo.setPjl(true);
    jobInfo.setPdl(pdl);
}

void Job::setPjlJobParam(const std::string& name, const std::string& value)
{
    for (const Chunk& chunk : chunks) {
        if (ChunkPjlCmd* const cmd = asPjlCmd(chunk, jobCommand)) {
            cmd->setParam(name, value);
            return;
        }
    }
}

void Job::insertPjlCmd(const char* cmd, const char* name, const std::string& value, bool sameValueOnly,
                       bool quoted)
{
    // Somebody who replaces ENTER itself leaves no place for a new one.
    const std::size_t enter = Torv::iequals(cmd, enterCommand) ? chunks.size() : findEnter(chunks);
    const Indices old = findAll(chunks, enter, [&](const Chunk& chunk) {
        const ChunkPjlCmd* const other = asPjlCmd(chunk, cmd);
        const auto setting = other != nullptr ? settingOf(*other) : std::nullopt;
        return setting && setting->hasName(name) && (!sameValueOnly || setting->hasValue(value));
    });
    Chunks added;
    if (enter < chunks.size()) {
        const char* const form = quoted ? "%s=\"%s\"" : "%s=%s";
        added.push_back(std::make_shared<ChunkPjlCmd>(cmd, Torv::format(form, name, value.c_str())));
    }
    if (change(chunks, old, enter - old.size(), added))
        modified = true;
}

void Job::insertPjlCmd(const char* cmd, const char* name, int value, bool sameValueOnly, bool quoted)
{
    insertPjlCmd(cmd, name, Torv::format("%d", value), sameValueOnly, quoted);
}

void Job::insertHpPjlProcessingAction(const char* type, const char* option)
{
    const HpGroup group(chunks, type);
    std::size_t enter = group.end();
    Indices removed;
    if (group.isClosed()) {
        ShrinkingList list(chunks.size());
        enter = group.removeFrom(chunks, list);
        removed = list.removed();
    }
    const std::size_t left = chunks.size() - removed.size();
    Chunks added;
    if (enter < left)
        added = {makeSetCmd(actionName, actionValue), makeSetCmd(typeName, type),
                 makeSetCmd(optionName, option), makeSetCmd(boundaryName, boundaryValue)};
    if (change(chunks, removed, std::min(enter, left), added))
        modified = true;
}

bool Job::insertPjlCode(const std::string& code)
{
    const std::size_t enter = findEnter(chunks);
    if (enter == chunks.size())
        return false;
    change(chunks, {}, enter, {std::make_shared<ChunkText>(code)});
    modified = true;
    return true;
}

bool Job::removePjlSetCmd(const char* name, const char* value)
{
    const Indices found = findAll(chunks, chunks.size(), [&](const Chunk& chunk) {
        const ChunkPjlCmd* const cmd = asPjlCmd(chunk, setCommand);
        const auto setting = cmd != nullptr ? settingOf(*cmd) : std::nullopt;
        return setting && setting->hasName(name) && setting->hasValue(value);
    });
    if (!change(chunks, found))
        return false;
    modified = true;
    return true;
}

void Job::removePjlSetCmd(const char* prefix, bool all)
{
    const auto fits = [&](const Chunk& chunk) {
        const ChunkPjlCmd* const cmd = asPjlCmd(chunk, setCommand);
        return cmd != nullptr && cmd->param.starts_with(prefix);
    };
    if (all) {
        if (change(chunks, findAll(chunks, chunks.size(), fits)))
            modified = true;
        return;
    }
    const auto first = std::ranges::find_if(chunks, fits);
    if (first == chunks.end())
        return;
    chunks.erase(first);
    modified = true;
}

void Job::removePjl()
{
    const auto isPjl = [](const Chunk& chunk) {
        return asPjlCmd(chunk) != nullptr || isExactly<ChunkUel>(chunk);
    };
    if (change(chunks, findAll(chunks, chunks.size(), isPjl)))
        modified = true;
}

void Job::removePrescribe()
{
    if (change(chunks, findAll(chunks, chunks.size(), isExactly<ChunkPrescribe>)))
        modified = true;
}

void Job::setJobName(const std::string& name)
{
    const std::string param = nameParam(name);
    for (const Chunk& chunk : chunks) {
        if (ChunkPjlCmd* const cmd = asPjlCmd(chunk, jobCommand)) {
            cmd->param = param;
            modified = true;
        }
    }
}

} // namespace JobParser
