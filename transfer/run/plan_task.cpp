#include "plan_task.h"

#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace {

constexpr int kMomentMilliseconds = 50;

} // namespace

PlanTask::PlanTask(TransferRequest RequestToPlan) : Wanted(std::move(RequestToPlan)) {
    try {
        Look.emplace([this] {
            struct stat status;
            for (const std::filesystem::path& operand : Wanted.Operands) {
                stat(operand.c_str(), &status);
            }
            if (Wanted.TargetDirectory) {
                stat(Wanted.TargetDirectory->c_str(), &status);
            }
            return std::string_view();
        });
    } catch (const std::system_error&) {
        // The plan is made without.
        return;
    }
    pollfd over{.fd = Look->OverFd(), .events = POLLIN, .revents = 0};
    poll(&over, 1, kMomentMilliseconds);
}

// Plans again with each drive that has answered: the operands alone do not say which drives there
// are to ask.
std::optional<BuiltPlan> PlanTask::TakePlan() {
    if (Look && !Look->TakeReply()) {
        return std::nullopt;
    }
    Look.reset();
    while (TakeTracks()) {
        std::string unknown;
        BuiltPlan plan = BuildPlan(Wanted, [&](const std::string& Device) {
            const auto known = Known.find(Device);
            if (known != Known.end()) {
                return known->second;
            }
            unknown = Device;
            return KnownDiscs::mapped_type(TrackListFailure());
        });
        if (unknown.empty()) {
            return plan;
        }
        Asked = unknown;
        Reader.emplace(unknown);
    }
    return std::nullopt;
}

// False while a drive is waited for.
bool PlanTask::TakeTracks() {
    if (!Reader) {
        return true;
    }
    std::optional<KnownDiscs::mapped_type> tracks = Reader->TakeResult();
    if (!tracks) {
        return false;
    }
    Known.emplace(std::exchange(Asked, {}), std::move(*tracks));
    Reader.reset();
    return true;
}
