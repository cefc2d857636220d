#include "JobParser/model/RewriteStep.h"

#include "JobParser/Job.h"
#include "JobParser/model/Pdl.h"

namespace JobParser
{
namespace
{

constexpr const char* setCommand = "SET";

} // namespace

std::optional<RewriteStep::Kind> RewriteStep::kindOf(std::int32_t number)
{
    constexpr auto lowest = static_cast<std::int32_t>(Kind::Wrap);
    constexpr auto highest = static_cast<std::int32_t>(Kind::StripPrescribe);
    if (number < lowest || number > highest)
        return std::nullopt;
    return static_cast<Kind>(number);
}

int RewriteStep::textsOf(Kind kind)
{
    switch (kind) {
    case Kind::StripPjl:
    case Kind::StripPrescribe: return 0;
    case Kind::JobName:
    case Kind::UnsetFirst:
    case Kind::UnsetAll:
    case Kind::PjlCode: return 1;
    case Kind::Wrap:
    case Kind::JobParam:
    case Kind::Set:
    case Kind::SetQuoted:
    case Kind::Add:
    case Kind::AddQuoted:
    case Kind::Unset:
    case Kind::Finishing: break;
    }
    return 2;
}

bool RewriteStep::makesSense() const
{
    return kind != Kind::Wrap || PdlUtils::fromPjlEnterLang(first) != Pdl::Unknown;
}

void RewriteStep::applyTo(Job& job) const
{
    const auto insertSetting = [&](bool sameValueOnly, bool quoted) {
        job.insertPjlCmd(setCommand, first.c_str(), second, sameValueOnly, quoted);
    };
    switch (kind) {
    case Kind::Wrap: job.wrapIntoPjlJob(PdlUtils::fromPjlEnterLang(first), second); break;
    case Kind::JobName: job.setJobName(first); break;
    case Kind::JobParam: job.setPjlJobParam(first, second); break;
    case Kind::Set: insertSetting(false, false); break;
    case Kind::SetQuoted: insertSetting(false, true); break;
    case Kind::Add: insertSetting(true, false); break;
    case Kind::AddQuoted: insertSetting(true, true); break;
    case Kind::Unset: job.removePjlSetCmd(first.c_str(), second.c_str()); break;
    case Kind::UnsetFirst: job.removePjlSetCmd(first.c_str(), false); break;
    case Kind::UnsetAll: job.removePjlSetCmd(first.c_str(), true); break;
    case Kind::Finishing: job.insertHpPjlProcessingAction(first.c_str(), second.c_str()); break;
    case Kind::PjlCode: job.insertPjlCode(first); break;
    case Kind::StripPjl: job.removePjl(); break;
    case Kind::StripPrescribe: job.removePrescribe(); break;
    }
}

} // namespace JobParser
